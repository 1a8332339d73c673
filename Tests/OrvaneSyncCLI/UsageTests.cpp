#include "OrvaneSyncCLI/RunCommand.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "Platform/Files.h"
#include "Platform/JSON.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <algorithm>
#include <filesystem>

namespace orvane::cli {
namespace {

using platform::JSON;

TEST(CommandLine, tellsWrongUsageFromFailure) {
    const test::TemporaryDirectory folder;
    folder.write("take.wav", "");
    folder.write("empty/notes.txt", "");
    std::filesystem::resize_file(folder.write("huge.csv", ""), (std::uintmax_t{1} << 30U) + 1);
    // `says`: a text in the first line of standard error
    const auto check = [&](const std::vector<std::string>& words, int status, const std::string& says) {
        const Outcome outcome = runWith(words);
        const std::string line = outcome.err.substr(0, outcome.err.find('\n'));
        SCOPED_TRACE(line);
        EXPECT_EQ(outcome.status, status);
        EXPECT_TRUE(line.starts_with("error: "));
        EXPECT_NE(line.find(says), std::string::npos) << says;
        EXPECT_EQ(outcome.out, "");
        const auto lines = std::ranges::count(outcome.err, '\n');
        EXPECT_EQ(lines, status == wrongUsage ? 2 : 1); // a usage line is printed only with wrong usage
    };
    check({"snyc"}, 2, "did you mean 'sync'?");
    check({"help", "snyc"}, 2, "did you mean 'sync'?");
    check({"--json", "scan", "x"}, 2, "the command comes first, and '--json' behind it");
    check({"scan"}, 2, "which folder?");
    check({"scan", "--vidoe", "x"}, 2, "did you mean '--video'?");
    check({"scan", "-zFILE", "x"}, 2, "-zFILE");
    check({"timecode", "from-frames", "9223372036854775807", "--rate", "fps25"}, 2,
          "than a timecode can hold");
    check({"scan", "--video"}, 2, "needs a value");
    check({"scan", "x", "--exclude", "--quiet"}, 2, "'--quiet' is an option");
    check({"scan", "x", "--review", "b.fcpxml"}, 2, "write OUT.tsv");
    check({"sync", "x", "-o", "a.tsv"}, 2, "write OUT.fcpxml");
    check({"scan", "--json=1", "x"}, 2, "takes no value");
    check({"scan", folder.path(), "--exclude", ""}, 2, "--exclude needs a pattern");
    check({"scan", folder.path(), "--sound-offset", "1h"}, 2, "[-]HH:MM:SS:FF");
    check({"scan", folder.path(), "--tc-rate", "25", "--sound-offset", "-00:00:01:25"}, 2, "frames go to 24");
    check({"scan", folder.path(), "--sound-date", "1899-01-01"}, 2, "outside of the years 1970 to 2199");
    check({"scan", folder.path(), "--days", "same", "--days", "auto"}, 2, "was given 'same' and 'auto'");
    check({"scan", folder.path(), "--sound-date", "2026-02-30"}, 2, "no day");
    check({"scan", folder.path(), "--tc-rate", "fast"}, 2, "is none");
    check({"scan", folder.path(), "--choose", "last"}, 2, "--choose takes first");
    check({"scan", folder.path(), "--report", folder.path("gone.csv")}, 2, "gone.csv': No such file");
    check({"sync", folder.path(), "-o", "x", "--apply", folder.path("gone.tsv")}, 2, "No such file");
    check({"sync", folder.path(), "-o", "x", "--apply", folder.path("empty/notes.txt")}, 1, "'camera_file'");
    check({"scan", folder.path(), "--set", "trimMode=vidoe"}, 2, "takes one of common, video");
    check({"timecode", "to-seconds", "01:00:00", "--fps", "25"}, 2, "it is no timecode");
    check({"timecode", "to-seconds", "01:00:00:25", "--fps", "25"}, 2, "frames go to 24");
    check({"timecode", "to-seconds", "01:01:00;01", "--fps", "29.97"}, 2, "drop frame leaves");
    check({"timecode", "to-seconds", "01:60:00:00", "--fps", "25"}, 2, "go to 59");
    check({"timecode", "from-seconds", "1e300", "--fps", "25"}, 2, "more than a timecode can hold");
    check({"scan", "--set", "novalue", "x"}, 2, "KEY=VALUE");
    check({"scan", ""}, 2, "name is empty");
    check({"sync", "x", "-o", "y", "--event", ""}, 2, "--event needs a name");
    check({"sync", "--audio", folder.path("empty"), "-o", "x"}, 1, "no video or audio files in '");
    check({"scan", folder.path("nowhere")}, 1, "nowhere': No such file or directory");
    check({"scan", folder.path("take.wav")}, 1, "it is not a folder");
    check({"sync", folder.path()}, 2, "-o OUT.fcpxml is missing");
    check({"sync", folder.path(), "-o", "-", "--json"}, 2, "both want standard output");
    check({"sync", folder.path(), "-o", "/dev/stdout", "--json"}, 2, "both want standard output");
    check({"report", folder.write("sound.csv", test::WaveMaker().format({}).silence(10).bytes())}, 1,
          "it is a media file");
    check({"sync", folder.path(), "-o", folder.path("take.wav")}, 2, "names a media file");
    check({"sync", folder.path(), "-o", folder.path("no/where.fcpxml")}, 1, "No such file or directory");
    check({"sync", folder.path(), "-o", folder.path()}, 1, "it is a folder");
    check({"sync", folder.path(), "-o", "x", "--fcpxml-version", "2.0"}, 2, "1.6 to 1.14");
    check({"sync", folder.path(), "-o", "x", "--smart-audio", "loud"}, 2, "standard, studio");
    check({"sync", folder.path(), "-o", "x", "--smart-audio", "studio", "--no-smart-audio"}, 2, "contradict");
    check({"scan", folder.path(), "--set", "trimmode=video"}, 2, "did you mean 'trimMode'?");
    check({"scan", folder.path(), "--set", "colour=7"}, 2, "no setting is called 'colour'");
    check({"frame", "x.mov", "--at", "1"}, 2, "-o needs the name of a file");
    check({"play", "--clip", "x"}, 2, "--session and --clip go together");
    check({"probe"}, 2, "which file?");
    check({"probe", folder.path("gone.wav")}, 1, "gone.wav': No such file or directory");
    check({"ltc", folder.path("gone.wav")}, 1, "No such file or directory");
    check({"report"}, 2, "one file");
    check({"report", folder.path("gone.ale")}, 1, "gone.ale': No such file or directory");
    check({"report", folder.path("empty/notes.txt")}, 1, "notes.txt: No column header found in the file");
    check({"report", folder.path("huge.csv")}, 1, "huge.csv': it is larger than 1 GB");
    check({"ltc", folder.path("take.wav")}, 1, "holds no sound");
    check({"analyze", folder.path("take.wav"), "--diagnose", "1", "--mode", "off"}, 2, "used with --mode");
    check({"analyze", folder.path("take.wav"), "--candidates", "1,x"}, 2, "tracks such as 1,3");
    check({"analyze", folder.path("take.wav"), "--candidates", "1,"}, 2, "tracks such as 1,3");
    check({"analyze", folder.path("gone.wav"), "--channels", "65536"}, 2, "1 to 65535");
    check({"analyze", folder.path("take.wav"), "--json"}, 1, "holds no sound");
    check({"loudness", folder.path("take.wav"), "--json"}, 1, "holds no sound");
    check({"loudness", folder.path("gone.wav")}, 1, "No such file");
    check({"ltc", folder.path("take.wav"), "--channel", "two"}, 2, "takes a whole number");
    EXPECT_EQ(runWith({"scan", folder.path("empty")}).out, "No video or audio files found.\n");
    check({"timecode"}, 2, "which conversion?");
    check({"timecode", "from-frames", "1.5", "--fps", "25"}, 2, "no whole number");
    check({"timecode", "from-seconds", "1"}, 2, "--fps or --rate is missing");
    check({"timecode", "from-seconds", "1", "--rate", "fps29"}, 2, "did you mean 'fps2");
    check({"timecode", "to-seconds", "01:00:00:00", "--fps", "0"}, 2, "above 0");
}

TEST(CommandLine, everyCommandHelpsWithAnExampleThatItTakes) {
    const std::string readme = platform::files::readText(ORVANE_SOURCE_DIR "/README.md");
    for (const Command* command : allCommands()) {
        const Outcome help = runWith({std::string(command->name), "--help"});
        EXPECT_EQ(help.status, done);
        EXPECT_NE(help.out.find("usage: orvanesync " + std::string(command->name)), std::string::npos);
        EXPECT_NE(help.out.find(command->example), std::string::npos);
        EXPECT_NE(runWith({"--help"}).out.find("  " + std::string(command->name)), std::string::npos);
        const bool isListed = readme.find("\n| `" + std::string(command->name)) != std::string::npos;
        EXPECT_TRUE(isListed || readme.find("orvanesync " + std::string(command->name)) != std::string::npos)
            << "README.md lacks " << command->name;
        EXPECT_THROW(argumentsOf(*command, {}).has("--undeclared"), std::logic_error);
    }
    EXPECT_NE(runWith({"sync", "--help"}).out.find("exportFCPXML {output, "), std::string::npos);
    for (const commands::Command& method : commands::allCommands())
        for (const std::string_view command : method.counterparts)
            EXPECT_EQ(std::ranges::count(allCommands(), command, &Command::name), 1) << method.id;
    EXPECT_TRUE(runWith({"--version"}).out.starts_with("orvanesync "));
    EXPECT_EQ(runWith({}).status, wrongUsage);
}

TEST(CommandLine, calculatesTimecodes) {
    const auto seconds = [](double value) { return JSON(JSON::Object{{"seconds", value}}); };
    const auto timecode = [](const char* value) { return JSON(JSON::Object{{"timecode", value}}); };
    const auto rate = [](JSON value) { return JSON(JSON::Object{{"rate", std::move(value)}}); };
    const auto check = [&](std::vector<std::string> words, const JSON& expected, const char* text) {
        words.insert(words.begin(), "timecode");
        EXPECT_EQ(runWith(words).out, std::string(text) + "\n");
        words.emplace_back("--json");
        EXPECT_TRUE(runWith(words).json() == expected) << runWith(words).out;
    };
    check({"to-seconds", "01:00:00;00", "--fps", "29.97"}, seconds(3599.9964000000004), "3599.9964000000004");
    check({"to-seconds", "01:10:00;00", "--fps", "29.97"}, seconds(4199.995800000001), "4199.995800000001");
    check({"from-seconds", "3600", "--fps", "29.97"}, timecode("01:00:00;00"), "01:00:00;00");
    check({"from-seconds", "-1", "--rate", "fps25"}, timecode("00:00:-1:00"), "00:00:-1:00");
    check({"from-frames", "1800", "--rate", "fps29_97d"}, timecode("00:01:00;02"), "00:01:00;02");
    check({"from-samples", "172800000", "--sample-rate", "48000", "--rate", "fps25"}, timecode("01:00:00:00"),
          "01:00:00:00");
    check({"rate-of", "23.98"}, rate("fps23_976"), "fps23_976");
    check({"rate", "30000/1001 NDF"}, rate("fps29_97"), "fps29_97");
    check({"rate", "soon"}, rate(nullptr), "none");
}

TEST(Settings, aValueThatNobodyTakesIsAnErrorAndAWarningWhereItIsStored) {
    const auto check = [&](const std::string& assignment, const std::string& says) {
        const Outcome outcome = runWith({"timecode", "rate-of", "25", "--set", assignment});
        EXPECT_EQ(outcome.status, wrongUsage);
        EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;

        const auto store = std::make_shared<platform::MemorySettingsStore>();
        const std::size_t equals = assignment.find('=');
        const std::string key = assignment.substr(0, equals), value = assignment.substr(equals + 1);
        store->setByName(key, value == "7" ? JSON(7) : value == "-0.1" ? JSON(-0.1) : JSON(value));
        const Outcome stored = runWith({"timecode", "rate-of", "25"}, false, {}, store);
        EXPECT_EQ(stored.status, done);
        EXPECT_NE(stored.err.find("warning: stored settings: "), std::string::npos);
        EXPECT_NE(stored.err.find(says + "; '"), std::string::npos) << stored.err;
        EXPECT_NE(stored.err.find("' is used instead"), std::string::npos);
    };
    check("trimMode=vidoe", "takes one of common, video, none, overlap; not 'vidoe'");
    check("alternateWidth=wide", "takes an integer, not 'wide'");
    check("ltc.enabled=maybe", "takes a boolean, not 'maybe'");
    check("smartAudio.voiceIso=7", "takes a number from 0 to 1, not '7'");
    check("smartAudio.loudness=-0.1", "takes a number from 0 to 1, not '-0.1'");
    check("globalAudioOffset.frames=2073601", "takes a number from -2073600 to 2073600, not '2073601'");
    for (const char* good : {"trimMode=none", "alternateWidth=1998", "ltc.enabled=true", "eventName=7",
                             "smartAudioMode= CINEMATIC ", "smartAudio.loudness=1"})
        EXPECT_EQ(runWith({"timecode", "rate-of", "25", "--set", good}).err, "") << good;
}

} // namespace
} // namespace orvane::cli
