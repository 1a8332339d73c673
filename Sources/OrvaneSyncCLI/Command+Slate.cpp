#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Slate/SlateDetector.h"
#include "Platform/Files.h"
#include "Platform/ReadErrorWatch.h"
#include "Platform/Text.h"

namespace orvane::cli {

namespace {

/// Throws if the command line names no video. If there is also sound to analyse, a video without pictures is
/// accepted.
void expectPictures(Context& context, const std::string& path, bool hasSound) {
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    if (platform::FrameReader::open(path)) return;
    const std::string missed = missedLibraryText();
    const std::string problem =
        "can't read '" + path + "': " + (missed.empty() ? "it holds no picture that can be decoded" : missed);
    if (!hasSound) throw CommandError(problem);
    context.warn(problem);
}

void print(std::ostream& out, const SlateResult& result) {
    if (result.hasClap())
        out << (result.clapMethod == ClapMethod::audioTransient ? "Clap heard at " : "Clap seen at ")
            << formatted("%.2f s\n", *result.clapPointSeconds);
    if (!result.hasSlate()) {
        out << "No slate in the first and the last 10 seconds of the video.\n";
        return;
    }
    out << formatted("Slate at %.2f s\n", *result.slateFrameTime);
    const std::pair<const char*, const std::optional<std::string>*> fields[] = {
        {"Scene", &result.ocrScene}, {"Take", &result.ocrTake}, {"Roll", &result.ocrRoll}};
    for (const auto& [label, value] : fields)
        if (*value) out << "  " << label << " " << platform::text::printable(**value) << "\n";
    if (!result.hasOCR()) out << "  Neither scene nor take can be read on it.\n";
}

void slate(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one video, please");
    const std::string& video = arguments.positionals().front();
    const auto audio = arguments.value("--audio");
    expectPictures(context, video, audio.has_value());
    if (audio) openSound(*audio);
    const platform::TextRecognitionState recognition = platform::textRecognitionState();
    if (!recognition.isAvailable) context.warn(recognition.description);

    ProgressLine progress(context, arguments.has("--quiet"));
    constexpr int percent = 100;
    const auto url = [](const std::string& path) { return FileURL{platform::files::standardized(path)}; };
    const platform::ReadErrorWatch watch;
    const SlateResult result = SlateDetector::ofThisMachine()->detect(
        url(video), audio ? std::optional(url(*audio)) : std::nullopt, [&](double share) {
            progress.show({"Looking for the slate", static_cast<int>(share * percent), percent}, share);
        });
    progress.clear();
    if (watch.hasSeenError()) // the unread part may contain a slate
        throw CommandError("can't read all of '" + video + "'" + (audio ? " or '" + *audio + "'" : "") +
                           ": the disk or share fails; see that the file can be copied, and try again");
    if (arguments.has("--json"))
        context.out << toJSON(result).dump(platform::JSON::Layout::pretty) << "\n";
    else
        print(context.out, result);
}

} // namespace

const Command& slateCommand() {
    static const Command command{"slate",
                                 "VIDEO [--audio FILE] [options]",
                                 "Find the clapper board of a clip, and read scene and take on it.",
                                 "orvanesync slate demo/shoot/camera/A001C001_261120_R1AB.mov",
                                 {{"--audio", "FILE", "search this recording for the clap"}},
                                 slate};
    return command;
}

} // namespace orvane::cli
