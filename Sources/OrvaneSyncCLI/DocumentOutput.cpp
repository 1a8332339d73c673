#include "OrvaneSyncCLI/DocumentOutput.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCLI/CureCommand.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Text.h"

namespace orvane::cli {

namespace {

constexpr std::string_view standardOutput = "-";

std::optional<fcpxml::FCPXMLVersion> documentVersion(const Arguments& arguments) {
    const auto named = arguments.value("--fcpxml-version");
    if (!named) return std::nullopt;
    if (const auto version = fcpxml::fcpxmlVersionFrom(*named)) return version;
    throw UsageError("--fcpxml-version takes 1.6 to 1.14, not '" + *named + "'");
}

std::string writtenText(const ImportController& controller, const ExportResult& result,
                        const std::string& output) {
    std::string text = "Wrote " + platform::text::printable(output) + ": " +
                       counted(result.syncClipCount, "synchronized clip", "synchronized clips");
    // Settings may leave single clips, or those without sound, out of the document.
    const WorkState::Counts& all = controller.work().counts();
    const int withSound = all.withSound - all.excludedWithSound;
    const int mos = all.withoutSound - all.excludedWithoutSound;
    if (result.syncClipCount == withSound + mos)
        text += " (" + std::to_string(withSound) + " with sound, " + std::to_string(mos) + " MOS)";
    const struct {
        int count;
        const char *one, *many;
    } others[] = {
        {result.multicamCount, "multicam clip", "multicam clips"},
        {result.nativeRateCount, "native-rate clip", "native-rate clips"},
        {result.projectRateCount, "project-rate clip", "project-rate clips"},
        {result.sourceMediaCount, "source media file", "source media files"},
    };
    for (const auto& other : others)
        if (other.count > 0) text += ", " + counted(other.count, other.one, other.many);
    text += ", in " + counted(result.eventCount, "event", "events");
    if (result.sceneEventCount > 0) text += " (" + std::to_string(result.sceneEventCount) + " by scene)";
    text += ".";
    const int unmatched = controller.work().unmatchedCount();
    const int excluded = all.excludedWithSound + all.excludedWithoutSound;
    std::vector<std::string> left;
    if (unmatched > 0) left.push_back(counted(unmatched, "clip", "clips") + " without a match");
    if (excluded > 0) left.push_back(counted(excluded, "excluded clip", "excluded clips"));
    if (!left.empty()) text += " Not in it: " + platform::text::joined(left, ", ") + ".";
    return text + "\n";
}

} // namespace

const std::vector<Option>& documentOptions() {
    static const std::vector<Option> options{
        {"--output", "OUT.fcpxml", "where the document goes; - is standard output", "-o"},
        {"--force", "", "replace a file that is no document of OrvaneSync; never media, never what is read"},
        {"--event", "NAME", "the name of the event in Final Cut Pro"},
        {"--no-multicam", "", "build no multicam clips"},
        {"--fcpxml-version", "V",
         "version of the format: 1.10 to 1.14, also 1.8 and 1.9; 1.6 and 1.7 are not checked "
         "(default 1.14)"},
    };
    return options;
}

DocumentOutput::DocumentOutput(Context& context, const Arguments& arguments, RunInputs inputs)
    : context_(context), output_(arguments.value("--output").value_or("")),
      inputs_(std::move(inputs)), permission_{.replacesOthers = arguments.has("--force")},
      version_(documentVersion(arguments)), asJSON_(arguments.has("--json")),
      isNameChosen_(arguments.has("--event") || context.settings->find(settings::eventName)) {
    if (output_ == "/dev/stdout") output_ = standardOutput;
    if (output_.empty()) throw UsageError("where to? -o OUT.fcpxml is missing");
    if (output_ == standardOutput && asJSON_) throw UsageError("-o - and --json both want standard output");
    document.eventName = arguments.value("--event");
    if (document.eventName && document.eventName->empty()) throw UsageError("--event needs a name");
    if (arguments.has("--no-multicam")) document.generateMulticam = false;
    if (output_ == standardOutput) return;
    try {
        OutputGuard(OutputKind::document, inputs_, permission_).check(output_);
    } catch (const OutputRefused& refused) {
        if (refused.reason() == OutputRefused::Reason::nameOfMedia) throw UsageError(refused.what());
        throw;
    }
    const std::string ending = FileURL{output_}.lowercasedExtension();
    if (ending == "tsv" || ending == "csv")
        throw UsageError("-o takes the document, and '" + output_ +
                         "' is named as a table; write OUT.fcpxml");
    if (!ending.empty() && ending != "fcpxml" && ending != "xml")
        context.warn("the name '" + output_ +
                     "' does not end with .fcpxml, by which programs know a document");
}

void DocumentOutput::write(const ImportController& controller, const std::function<void()>& written) const {
    ExportSettings settings = controller.exporting().exportSettings(document);
    if (version_) settings.fcpxmlVersion = *version_;
    ExportResult result = controller.exporting().exportFCPXML(settings);
    if (output_ == standardOutput) {
        const std::string& text = result.fcpxmlString;
        context_.out.write(text.data(), static_cast<std::streamsize>(text.size()));
    } else {
        RunInputs inputs = inputs_;
        inputs.add(inputsOf(controller)());
        OutputGuard(OutputKind::document, std::move(inputs), permission_).write(output_, result.fcpxmlString);
    }
    written();
    const WorkSnapshot work(controller);
    addOwnWarnings(work, result, matching);
    if (asJSON_) {
        result.warnings.insert(result.warnings.end(), warnedAlready.begin(), warnedAlready.end());
        context_.out << exportJSON(work, result, output_, smartAudioMode).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (output_ != standardOutput)
        context_.out << stateText(controller, context_.mayColour) << smartAudioText(controller) << "\n"
                     << writtenText(controller, result, output_)
                     << exportPreviewText(controller.work().syncGroups(), settings, isNameChosen_,
                                          smartAudioMode != SmartAudioMode::off)
                     << lastLine;
    for (const std::string& warning : result.warnings) context_.warn(warning);
    if (matching == Matching::isDone) return;
    const std::vector<std::string> cures = cureCommands(context_.call(), work);
    if (cures.empty()) return;
    context_.err << (cures.size() == 1 ? "To apply the cure, run:\n" : "To apply a cure, run one of:\n");
    for (const std::string& command : cures) context_.err << "  " << command << "\n";
}

} // namespace orvane::cli
