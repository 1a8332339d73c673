#include "OrvaneSyncCLI/LockitMapping.h"

#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"
#include "OrvaneSyncCore/Utilities/NearestWord.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

namespace {

template <RawValued Case>
Case caseNamed(const std::string& word, std::string_view what) {
    if (const auto named = fromRawValue<Case>(word)) return *named;
    throw UsageError("there is no " + std::string(what) + " '" + word + "'" +
                     didYouMean(word, RawValues<Case>::texts) +
                     "; 'orvanesync lockit mapping list' lists them");
}

std::string tableText(const LockitFieldMapping& mapping, bool mayColour) {
    Table table({{"FIELD"}, {"SHOWN AS"}, {"TARGET"}, {"IN FINAL CUT PRO"}});
    for (const LockitField field : allLockitFields) {
        const FCPMetaTarget target = mapping.target(field);
        table.add({std::string(rawValue(field)), std::string(displayName(field)),
                   std::string(rawValue(target)),
                   mapping.metadataKey(field).value_or(std::string(displayName(target)))});
    }
    std::vector<std::string> targets;
    for (const std::string_view text : RawValues<FCPMetaTarget>::texts) targets.emplace_back(text);
    return table.text(mayColour) + "\nTargets: " + platform::text::joined(targets, ", ") + "\n";
}

/// The change that the words request, while it is written to the disk.
platform::SettingsWrite changed(platform::SettingsStore& store, const std::vector<std::string>& words) {
    const std::string& verb = words[1];
    if (verb == "reset" && words.size() == 2) return LockitFieldMapping::resetToDefaults(store);
    if ((verb != "set" && verb != "custom") || words.size() != 4)
        throw UsageError("lockit mapping takes list, set FIELD TARGET, custom FIELD KEY or reset");
    const auto field = caseNamed<LockitField>(words[2], "field");
    if (verb == "custom") return LockitFieldMapping::set(store, FCPMetaTarget::custom, words[3], field);
    return LockitFieldMapping::set(store, caseNamed<FCPMetaTarget>(words[3], "target"), field);
}

} // namespace

void lockitMapping(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    if (words.size() > 2 || (words.size() == 2 && words[1] != "list"))
        changed(*context.settings, words).wait();
    const auto mapping = LockitFieldMapping::current(*context.settings);
    if (arguments.has("--json"))
        context.out << toJSON(mapping).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << tableText(mapping, context.mayColour);
}

} // namespace orvane::cli
