#include "OrvaneSyncApp/Controllers/Commands/WorkDiagnosis.h"
#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ReviewFile.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane::cli {

namespace {

std::string unreadText(const CardContents& contents) {
    std::vector<std::string> kinds;
    for (const auto& [kind, count] : contents.unread) kinds.push_back(std::to_string(count) + " " + kind);
    return kinds.empty() ? "-" : platform::text::joined(kinds, ", ");
}

std::string cardsText(const WorkSnapshot& work, bool bold) {
    Table table({{"CARD"}, {"CLIPS AND RECORDINGS", Table::Align::right}, {"CAN'T BE READ"}});
    for (const CardContents& contents : cardContents(work))
        table.add({contents.path, std::to_string(contents.files), unreadText(contents)});
    return table.text(bold) + "\n";
}

std::string countsText(const ImportController& controller) {
    const OpenWork& work = controller.work();
    return counted(work.syncGroups().size(), "clip", "clips") + ": " + std::to_string(work.syncClipCount()) +
           " with sound, " + std::to_string(work.mosCount()) + " MOS, " +
           std::to_string(work.unmatchedCount()) + " not matched; " +
           counted(work.wildTracks().size(), "recording", "recordings") + " without picture.\n";
}

/// What the cameras' microphones could not decide, and where they do not confirm the timecode.
std::string heardText(const WorkDoubts::Listened& listened, const NotCompared& notCompared) {
    std::string text = roughOffsetText(listened) + (listened.isOffsetRough ? "\n" : "");
    if (listened.unheard > 0)
        text += "The cameras' microphones heard the sound of " + std::to_string(listened.heard) + " of " +
                counted(listened.heard + listened.unheard, "clip", "clips") + " that were compared, and in " +
                std::to_string(listened.unheard) + " nothing of it.\n";
    return text + (notCompared.isEmpty() ? "" : notCompared.text() + "\n");
}

/// Where nothing is in doubt of what was read, whoever looks at the last line alone takes all for right.
/// `byEar`: the clips that are in no doubt because their microphones heard the recording.
std::string nothingInDoubt(const WorkSnapshot& work, std::size_t byEar) {
    const std::string nothing =
        byEar > 0
            ? "Microphones heard the recordings of " + counted(byEar, "clip", "clips") +
                  " in their places. By timecode alone, as 'sync' has it without the table of --review, "
                  "these clips are in doubt. Nothing else is in doubt"
        : work.notCompared().isEmpty() ? "Nothing is in doubt"
                                       : "Nothing is in doubt by timecode";
    const auto& found = work.discoveryResult;
    if (!found || found->unreadMedia.empty()) return nothing + ".\n";
    const auto count = found->unreadMedia.size();
    return nothing + " of what was read; " + counted(count, "file", "files") + " can't be read: convert " +
           (count == 1 ? "it" : "them") + " to QuickTime, MP4, MXF, WAVE or AIFF first.\n";
}

std::string findingsText(const WorkSnapshot& work, std::size_t byEar, std::span<const std::string> call) {
    if (work.scanResult()->totalFiles() == 0) return "No video or audio files found.\n";
    const std::string left = leftOver(work).text();
    if (!work.doubts().isEmpty()) return doubtsText(work, call) + left;
    return left.empty() ? nothingInDoubt(work, byEar) : left;
}

void diagnose(Context& context, const Arguments& arguments) {
    const ReviewFile review(arguments);
    ScanRun run(context, arguments);
    run.scan(ScanRun::Analysis::none);
    run.show("Listening to some clips...");
    run.wait(run.controller().listenForDoubts());
    const ImportController& controller = run.controller();
    const WorkSnapshot work(controller);
    const bool isJSON = arguments.has("--json");
    std::size_t filledIn = 0;
    if (review || !isJSON) {
        std::vector<ReviewLine> lines = reviewLines(work);
        filledIn = fillInWhatWasHeard(lines, work);
        if (review) review.write(lines, controller);
    }
    if (isJSON)
        context.out << diagnosisJSON(work).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << cardsText(work, context.mayColour) << issuesText(controller, context.mayColour)
                    << countsText(controller)
                    << heardText(controller.derivedDoubts().listened(), work.notCompared())
                    << findingsText(work, filledIn, context.call());
    if (review && !isJSON)
        context.out << review.text() << counted(filledIn, "line is", "lines are") << " filled in.\n";
}

} // namespace

const Command& diagnoseCommand() {
    static const Command command{
        "diagnose",
        "FOLDER... [options]",
        "What is on the cards, what matches, what is uncertain, and how to fix it.",
        "orvanesync diagnose demo/shoot",
        ReviewFile::withOptions(scanOptions()),
        diagnose,
        "  Also compares some clips of each card with the sound of their cameras: only that shows\n"
        "  a clock that is wrong by some seconds or by the distance of two takes. Changes nothing.\n"};
    return command;
}

} // namespace orvane::cli
