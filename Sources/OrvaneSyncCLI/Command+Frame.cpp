#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "Platform/JSON.h"
#include "Platform/Playback/FrameReader.h"
#include "Platform/Playback/PicturePNG.h"
#include "Platform/ReadErrorWatch.h"
#include "Platform/Text.h"

namespace orvane::cli {

namespace {

using platform::FrameReader;
using platform::JSON;
using platform::MediaTime;

std::unique_ptr<FrameReader> openVideo(const std::string& path) {
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    if (auto reader = FrameReader::open(path)) return reader;
    const std::string missed = missedLibraryText();
    throw CommandError("can't read '" + path +
                       "': " + (missed.empty() ? "it holds no picture that can be decoded" : missed));
}

void frame(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one video, please");
    const std::string& path = arguments.positionals().front();
    const auto seconds = arguments.number("--at");
    const auto output = arguments.value("-o");
    if (!seconds) throw UsageError("--at says at which second");
    if (*seconds < 0) throw UsageError("--at counts from the first picture, which is at 0");
    if (!output || output->empty() || *output == "-") throw UsageError("-o needs the name of a file");
    RunInputs inputs;
    inputs.addFile(path, "the video");
    const OutputGuard guard(OutputKind::picture, inputs, {.replacesOthers = arguments.has("--force")});
    guard.check(*output);

    const platform::ReadErrorWatch watch;
    const auto reader = openVideo(path);
    // Seconds with few digits mean the picture that begins just after them.
    constexpr MediaTime slack{1, 100'000};
    const auto picture = reader->pictureAt(MediaTime::fromSeconds(*seconds) + slack, {}, {});
    if (!picture)
        throw CommandError("no picture of '" + path +
                           "' can be decoded there: the file is damaged or cut off");
    if (watch.hasSeenError()) // the requested picture may be another one
        throw CommandError("can't read all of '" + path +
                           "': its disk or share fails; see that the file can be copied, and try again");
    guard.write(*output, platform::encodedPNG(platform::colourPicture(*picture), renderingMark));
    if (arguments.has("--json")) {
        JSON json;
        json.set("seconds", picture->time.seconds());
        json.set("number", static_cast<double>(picture->number));
        json.set("width", picture->size.width);
        json.set("height", picture->size.height);
        context.out << json.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    context.out << "Picture " << picture->number
                << formatted(", shown from %.3f s, ", picture->time.seconds()) << picture->size.width
                << " by " << picture->size.height << "\nWrote " << platform::text::printable(*output) << "\n";
}

} // namespace

const Command& frameCommand() {
    static const Command command{
        "frame",
        "VIDEO --at SECONDS -o OUT.png [options]",
        "Write the picture that a video shows at a moment: upright, with square pixels.",
        "orvanesync frame demo/shoot/camera/A001C001_261120_R1AB.mov --at 1.5 -o /tmp/A001C001.png",
        {{"--at", "SECONDS", "since the first picture; behind the end it is the last one"},
         {"-o", "OUT.png", "where to write it"},
         {"--force", "", "replace a file that is no picture of OrvaneSync; never media, never what is read"}},
        frame};
    return command;
}

} // namespace orvane::cli
