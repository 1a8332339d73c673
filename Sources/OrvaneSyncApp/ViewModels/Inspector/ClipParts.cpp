#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncCore/Models/LockitField.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <array>

namespace orvane {

namespace {

using ImportedFields = std::map<std::string, std::string>;

platform::JSON argumentsFor(const SyncGroup& group) {
    platform::JSON arguments = platform::JSON::object();
    arguments.set("groupID", group.id.text());
    return arguments;
}

/// Adds the steps that apply to this clip only, not to the whole shoot.
void addStepsForClip(const SyncGroup& group, const SyncDoubt& doubt, DoubtsPart::Doubt& shown) {
    if (doubt.kind == SyncDoubt::Kind::mutedSpeech) {
        if (doubt.channel) {
            platform::JSON arguments = argumentsFor(group);
            arguments.set("trackIndex", *doubt.channel);
            shown.steps.push_back({"Switch Channel " + std::to_string(*doubt.channel) + " On",
                                   "toggleTrackActive", std::move(arguments), false});
        }
    } else if (doubt.kind == SyncDoubt::Kind::ambiguous) {
        // One click on a recording below decides for this clip. From a single clip, nothing is decided for
        // the whole shoot.
        shown.cure = group.isLocked
                         ? "locked, it stays out of the document: ⟨lockCurrent⟩ first, then Ctrl+1 takes the "
                           "first one under Recordings"
                         : "choose under Recordings: Ctrl+1 takes the first one, and so does ⟨lockCurrent⟩";
        shown.steps.clear();
    }
}

DoubtsPart::Doubt shownDoubt(const ImportController& controller, const SyncGroup& group,
                             const SyncDoubt& doubt) {
    const CardDoubt* card = controller.doubts().ofCard(doubt);
    Cure cure = cureInWords(doubt.cure, card == nullptr
                                            ? std::vector<UUID>()
                                            : clipsForOffset(controller.work().syncGroups(), card->groupIDs));
    if (doubt.suggestion) offerSuggestions(cure, controller, {group.id});
    DoubtsPart::Doubt shown{messageInWords(doubt), std::move(cure.text), std::move(cure.steps),
                            messageInRow(doubt)};
    addStepsForClip(group, doubt, shown);
    // Without folders nothing can be scanned again.
    if (!controller.scan().canScan())
        std::erase_if(shown.steps, [](const CureStep& step) { return step.scansAgain; });
    return shown;
}

std::string fieldOrEmpty(const std::optional<ImportedFields>& fields, std::string_view key) {
    if (!fields) return {};
    const auto found = fields->find(std::string(key));
    return found == fields->end() ? std::string() : found->second;
}

void addNoteIfSaid(std::vector<std::pair<std::string, std::string>>& rows, std::string_view title,
                   const std::optional<std::string>& value) {
    if (value && !platform::text::trimmed(*value).empty()) rows.emplace_back(title, *value);
}

} // namespace

void DoubtsPart::keepLastSteps(std::vector<Doubt>& doubts) {
    for (auto doubt = doubts.begin(); doubt != doubts.end(); ++doubt)
        std::erase_if(doubt->steps, [&](const CureStep& step) {
            return std::any_of(doubt + 1, doubts.end(), [&](const Doubt& later) {
                return std::ranges::find(later.steps, step) != later.steps.end();
            });
        });
}

DoubtsPart DoubtsPart::of(const ImportController& controller, const SyncGroup& group) {
    DoubtsPart part;
    const auto& all = controller.doubts().byGroup;
    if (const auto found = all.find(group.id); found != all.end())
        for (const SyncDoubt& doubt : found->second)
            part.doubts.push_back(shownDoubt(controller, group, doubt));
    keepLastSteps(part.doubts);
    // If there are several recordings, the doubts say more.
    if (group.isMOS()) part.whyUnmatched = controller.derivedDoubts().whyUnmatched(group.id);
    return part;
}

NamePart NamePart::of(const ImportController& controller, const SyncGroup& group) {
    const platform::SettingsStore& store = *controller.work().environment.settings;
    NamePart part;
    part.name = GroupNaming::manualName(group).value_or("");
    part.automatic =
        GroupNaming::baseName(group, store.get(settings::clipNamingSource),
                              store.get(settings::customNamingPattern), store.get(settings::namingSeparator));
    part.exported = exportedName(controller, group, part.name);
    part.isPickup = group.isPickup;
    part.isExcluded = group.isExcludedFromExport;
    part.isExcludedFromMulticam = group.isExcludedFromMulticam();
    part.isMOS = group.matchStatus.kind == MatchStatus::Kind::mos;
    part.canBeMOS = group.isMOS();
    return part;
}

std::string exportedName(const ImportController& controller, const SyncGroup& group, std::string_view name) {
    return NameChange::of(controller, group, name).exported;
}

NameChange NameChange::of(const ImportController& controller, const SyncGroup& group, std::string_view name) {
    const DisplayNames& present = controller.work().displayNames();
    NameChange change;
    if (GroupNaming::manualName(group).value_or("") == name) {
        change.exported = present.at(group.id);
        return change;
    }
    const platform::SettingsStore& store = *controller.work().environment.settings;
    SyncGroupList groups = controller.work().syncGroups();
    groups.update(group.id, [&](SyncGroup& own) { own.manualClipName = std::string(name); });
    const std::vector<std::string> names =
        ClipNames::inDocument(groups, store.get(settings::clipNamingSource),
                              store.get(settings::customNamingPattern), store.get(settings::namingSeparator));
    for (std::size_t i = 0; i < groups.size(); ++i) {
        std::string exported = GroupNaming::appendingOffspeedTag(names[i], groups[i]);
        if (groups[i].id == group.id) {
            change.exported = std::move(exported);
        } else if (const std::string& before = present.at(groups[i].id);
                   before != exported && ++change.others == 1) {
            change.before = before;
            change.now = std::move(exported);
        }
    }
    return change;
}

std::string NameChange::othersText() const {
    if (others == 0) return "";
    const std::string names = "“" + before + "” to “" + now + "”";
    return others == 1
               ? "The name of another clip changes from " + names + "."
               : "The names of " + std::to_string(others) + " other clips change, such as " + names + ".";
}

MetadataPart MetadataPart::of(const ImportController& controller, const SyncGroup& group) {
    const FileNames& names = controller.work().fileNames();
    MetadataPart part;
    part.files = {{std::string(cameraFile), names.of(group.video)},
                  {"Starts", startText(group.video)},
                  {"Length", lengthText(group.video)},
                  {"Picture", group.video.formatDescription()}};
    addNoteIfSaid(part.files, "Codec", group.video.videoCodecFourCC);
    if (const MediaAsset* audio = group.primaryAudio()) {
        part.files.emplace_back(recording, names.of(*audio));
        part.files.emplace_back("Sound", audio->formatDescription());
        addNoteIfSaid(part.files, "Recorder", audio->bextOriginator);
        if (const auto& ixml = audio->ixmlData) {
            addNoteIfSaid(part.files, "Scene", ixml->scene);
            addNoteIfSaid(part.files, "Take", ixml->take);
            addNoteIfSaid(part.files, "Roll", ixml->tape);
            addNoteIfSaid(part.files, "Project", ixml->project);
            if (ixml->isCircled()) part.files.emplace_back("Circled", "yes");
        }
    }
    if (group.hasALEMetadata())
        part.sources.push_back(
            {"Report", "clearALEMetadata", MetadataFieldGrouping::grouped(*group.aleMetadata)});
    if (group.hasLockitMetadata()) {
        auto grouped = MetadataFieldGrouping::grouped(*group.lockitMetadata);
        for (auto& one : grouped)
            for (auto& [key, value] : one.rows)
                if (const auto field = fromRawValue<LockitField>(key)) key = displayName(*field);
        part.sources.push_back({"LockitNetwork", "clearLockitMetadata", std::move(grouped)});
    }
    return part;
}

bool MetadataPart::operator==(const MetadataPart& other) const {
    return files == other.files &&
           std::ranges::equal(sources, other.sources, [](const Source& a, const Source& b) {
               return a.title == b.title &&
                      std::ranges::equal(a.groups, b.groups, [](const auto& one, const auto& another) {
                          return one.group == another.group && one.rows == another.rows;
                      });
           });
}

NotesPart NotesPart::of(const ImportController& controller, const SyncGroup& group) {
    NotesPart part;
    const MediaAsset* audio = group.primaryAudio();
    if (audio != nullptr && audio->ixmlData)
        addNoteIfSaid(part.notes, "Sound recordist", audio->ixmlData->note);
    if (group.aleMetadata)
        for (const auto& [key, value] : *group.aleMetadata) {
            const std::string lower = platform::text::lowercased(key);
            constexpr std::array<std::string_view, 4> written{"note", "comment", "description", "remark"};
            if (std::ranges::any_of(
                    written, [&](std::string_view word) { return lower.find(word) != std::string::npos; }))
                addNoteIfSaid(part.notes, "Report, " + key, value);
        }
    for (const LockitField field :
         {LockitField::shotDescription, LockitField::takeComment, LockitField::tags})
        addNoteIfSaid(part.notes, displayName(field), fieldOrEmpty(group.lockitMetadata, rawValue(field)));

    const SlateResult* slate = controller.slates().result(group.id);
    part.isSearched = slate != nullptr;
    if (const std::string& phase = controller.slates().progress().phase; !phase.empty()) {
        part.slate = phase + "…";
        return part;
    }
    if (slate == nullptr) {
        part.slate = "Slate: not searched for yet.";
        return part;
    }
    part.slateProblem = controller.slates().problem(group.id).value_or("");
    std::vector<std::string> found;
    if (slate->ocrScene) found.push_back("scene " + *slate->ocrScene);
    if (slate->ocrTake) found.push_back("take " + *slate->ocrTake);
    if (slate->ocrRoll) found.push_back("roll " + *slate->ocrRoll);
    if (slate->slateFrameTime) found.push_back(formatted("seen at %.1f s", *slate->slateFrameTime));
    const bool isSlateRead = !found.empty();
    if (slate->clapPointSeconds)
        found.push_back(formatted("clap at %.3f s", *slate->clapPointSeconds) +
                        (slate->clapMethod ? " (" + std::string(rawValue(*slate->clapMethod)) + ")" : ""));
    part.slate = found.empty() ? "No slate and no clap were found."
                               : (isSlateRead ? "On the slate: " : "No slate was read: ") +
                                     platform::text::joined(found, ", ");
    if (const auto offered = controller.slates().proposal(group.id)) {
        std::vector<std::string> taken;
        if (offered->scene) taken.push_back("scene " + *offered->scene);
        if (offered->take) taken.push_back("take " + *offered->take);
        if (offered->clipName) taken.push_back("name “" + *offered->clipName + "”");
        part.proposal = "Take over " + platform::text::joined(taken, ", ");
    }
    return part;
}

} // namespace orvane
