#include "MediaFactory/MediaFactory.h"
#include "Platform/AudioFile.h"
#include "Platform/MediaHelper/HelperProcess.h"
#include "Platform/MediaHelper/MediaLibraryClient.h"
#include "Platform/MediaInspectionText.h"
#include "Platform/Modules.h"
#include "Support/ChildProcesses.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>

namespace orvane::test {
namespace {

/// 16-bit AIFF at 48 kHz (whose rate is an 80-bit float).
std::string aiff(int channels, const std::vector<int>& samples) {
    const auto chunk = [](const std::string& id, const std::string& body) {
        return id + be32(body.size()) + body;
    };
    std::string sound;
    for (const int sample : samples) sound += be16(static_cast<std::uint64_t>(sample));
    const auto count = static_cast<std::uint64_t>(channels);
    const std::string common =
        be16(count) + be32(samples.size() / count) + be16(16) + be16(0x400E) + be64(0xBB80ULL << 48U);
    const std::string body = "AIFF" + chunk("COMM", common) + chunk("SSND", be64(0) + sound);
    return "FORM" + be32(body.size()) + body;
}

/// Makes a file with the media tools that the build installs.
bool makeWithTool(const std::string& arguments) {
    return std::system(("ffmpeg -nostdin -v error -y " + arguments + " 2>/dev/null").c_str()) == 0;
}

std::vector<float> readAll(platform::AudioFile& file, int channel, std::size_t block) {
    std::vector<float> all;
    std::vector<std::vector<float>> room(static_cast<std::size_t>(file.channelCount()),
                                         std::vector<float>(block));
    std::vector<float*> channels;
    for (auto& one : room) channels.push_back(one.data());
    while (const std::size_t got = file.read(channels, block)) {
        const auto& read = room[static_cast<std::size_t>(channel)];
        all.insert(all.end(), read.begin(), read.begin() + static_cast<std::ptrdiff_t>(got));
    }
    return all;
}

struct TestModule {
    static constexpr const char* fileName = "libtest_module.so";
    std::uint64_t version = platform::interfaceVersion;
};

TEST(MediaLibrary, isFoundBesideTheProgramAndMayBeMissing) {
    ASSERT_NE(platform::mediaLibrary(), nullptr);
    const TemporaryDirectory folder;
    // A text file with the name of a module. A name without a folder would be searched for in the system's
    // folders.
    folder.write(TestModule::fileName, "no module");
    const std::array folders = {folder.path("missing"), folder.path()};
    const auto found = platform::modules::load<TestModule>(folders);
    EXPECT_EQ(found.module, nullptr);
    EXPECT_NE(found.problem.find("can't be loaded"), std::string::npos) << found.problem;
    const std::array names = {std::string("libm.so.6")};
    EXPECT_EQ(platform::modules::entryPoint(names, "cos"), nullptr);
}

TEST(Modules, ofThisBuildHaveTheirRecords) {
    for (const char* name : {ORVANE_MODULES})
        EXPECT_EQ(platform::modules::find(platform::modules::programFolders(), name).problem, "");
}

TEST(MediaLibrary, reportsWhenItsAnswerIsNotFinal) {
    static const auto library = [](auto inspect) {
        static platform::MediaLibrary made;
        made.inspect = inspect;
        return []() -> const platform::MediaLibrary* { return &made; };
    };
    const auto runsOut = [](const platform::MediaLibrary* (*fetch)(), const std::string& bytes) {
        bool ranOut = false;
        auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(bytes)));
        platform::inspectMediaWith(fetch, "", file, ranOut);
        return ranOut;
    };
    using Result = std::optional<platform::MediaInspection>;
    const auto ready = library([](const std::string&, bool&) noexcept { return Result(); });
    const auto slow = library([](const std::string&, bool& ranOut) noexcept {
        ranOut = true;
        return Result(platform::MediaInspection());
    });
    const auto missing = []() -> const platform::MediaLibrary* { return nullptr; };
    EXPECT_FALSE(runsOut(ready, "what is this"));
    EXPECT_TRUE(runsOut(slow, "what is this"));
    EXPECT_TRUE(runsOut(missing, "what is this"));
    EXPECT_FALSE(runsOut(missing, "")) << "an empty file needs no library";
    EXPECT_FALSE(runsOut(missing, MovieMaker().video({}).bytes()));
}

TEST(MediaLibrary, inspectsWhatOurOwnWalksDoNot) {
    const TemporaryDirectory folder;
    EXPECT_EQ(inspectionText(platform::inspectMedia(folder.write("a.aif", aiff(2, std::vector<int>(48000))))),
              "0.5 s, 48000 Hz 2 ch");
    if (!makeWithTool("-f lavfi -i testsrc2=d=2:r=30000/1001:s=320x240 -f lavfi -i anoisesrc=d=2:r=48000 "
                      "-metadata date=2024 -c:v mpeg2video -c:a pcm_s16le -timecode 10:00:00:00 " +
                      folder.path("a.mxf")))
        GTEST_SKIP() << "no tool to make an MXF with";
    const std::string mxf = inspectionText(platform::inspectMedia(folder.path("a.mxf")));
    EXPECT_EQ(mxf, "2.002 s, m2v1 320x240 29.97003 fps, 48000 Hz 1 ch");
}

TEST(MediaLibrary, givesNothingForUnreadableFiles) {
    const TemporaryDirectory folder;
    // A demuxer would follow a playlist to other files.
    folder.write("sound.wav", WaveMaker().format({}).silence(100).bytes());
    for (const std::string& contents :
         {std::string(), std::string(1, 'x'), std::string(3'000'000, '\0'), std::string(100000, 'x'),
          aiff(1, {1, 2}).substr(0, 20),
          std::string("#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nsound.wav\n"),
          std::string("ffconcat version 1.0\nfile sound.wav\n"),
          MovieMaker().video({}).bytes().substr(0, 400)})
        for (const char* name : {"file.mov", "file.mxf", "file.aif"}) {
            const std::string path = folder.write(name, contents);
            EXPECT_EQ(inspectionText(platform::inspectMedia(path)), "nothing")
                << name << contents.substr(0, 20);
            EXPECT_EQ(platform::AudioFile::open(path), nullptr) << name << contents.substr(0, 20);
        }
    ASSERT_EQ(::mkfifo(folder.path("pipe.wav").c_str(), 0600), 0);
    EXPECT_EQ(platform::AudioFile::open(folder.path("pipe.wav")), nullptr);
    EXPECT_FALSE(platform::inspectMedia(folder.path("missing.mxf")));
    EXPECT_FALSE(platform::inspectMedia(folder.path()));
    EXPECT_EQ(platform::AudioFile::open(folder.path("missing.wav")), nullptr);
    EXPECT_EQ(platform::AudioFile::open("http://localhost/sound.wav"), nullptr);
}

/// The most memory that a process has had, in kilobytes.
long mostMemory(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;)
        if (long kilobytes = 0; word == "VmHWM:" && status >> kilobytes) return kilobytes;
    return 0;
}

TEST(MediaLibrary, mayEndOverAFileWithoutHarm) {
    const TemporaryDirectory folder;
    const std::string sound = folder.write("a.aif", aiff(1, std::vector<int>(48000, 99)));
    std::vector<std::unique_ptr<platform::AudioFile>> open;
    for (int i = 0; i < 3; ++i) open.push_back(platform::AudioFile::open(sound));
    EXPECT_EQ(readAll(*open[0], 0, 1000).size(), 48000U);
    for (const pid_t helper : children()) ::kill(helper, SIGKILL);
    for (const auto& file : open) {
        EXPECT_TRUE(readAll(*file, 0, 1000).empty());
        EXPECT_EQ(file->failedAt(), file == open[0] ? 48000 : 0);
        EXPECT_FALSE(file->seek(0));
        EXPECT_EQ(file->sampleRate(), 48000);
    }
    const auto again = platform::AudioFile::open(sound);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(readAll(*again, 0, 1000).size(), 48000U);
}

/// A helper that hangs. The clock advances where the helper is waited for; a signal ends the first wait
/// early.
TEST(MediaLibrary, endsAHelperThatDoesNotAnswer) {
    using namespace platform;
    const std::shared_ptr<helper::Process> process = helper::Process::borrow();
    ASSERT_NE(process, nullptr);
    for (const pid_t child : children()) ::kill(child, SIGSTOP);
    std::chrono::milliseconds time{0};
    std::vector<int> waits;
    process->useClock({.now = [&] { return std::chrono::steady_clock::time_point(time); },
                       .poll =
                           [&](pollfd& /*wanted*/, int milliseconds) {
                               waits.push_back(milliseconds);
                               const bool isCutShort = waits.size() == 1;
                               time += std::chrono::milliseconds(isCutShort ? 5'000 : milliseconds);
                               errno = EINTR;
                               return isCutShort ? -1 : 0;
                           }});
    EXPECT_FALSE(process->ask<helper::About>(helper::Request::about));
    EXPECT_EQ(waits, (std::vector{20'000, 15'000}));
    EXPECT_TRUE(process->wasTooSlow());
    EXPECT_FALSE(process->isRunning());
    for (const pid_t child : children()) ::kill(child, SIGCONT); // the other helpers, which were free
    EXPECT_NE(helper::Process::borrow(), nullptr);
}

/// The next clip starts no process: it uses the helpers of the clip before.
TEST(MediaLibrary, keepsTheHelpersOfAReview) {
    using platform::helper::Process, platform::helper::Purpose;
    std::vector<std::shared_ptr<Process>> review(3);
    std::vector<pid_t> before;
    for (int clip = 0; clip < 2; ++clip) {
        for (auto& helper : review) helper = Process::borrow(Purpose::pictures);
        if (clip == 0) before = children();
        EXPECT_EQ(children(), before);
        review.assign(review.size(), nullptr);
    }
}

TEST(MediaLibrary, mayWriteNoFile) {
    const TemporaryDirectory folder;
    const auto open = platform::AudioFile::open(folder.write("a.aif", aiff(1, std::vector<int>(48000))));
    ASSERT_NE(open, nullptr);
    const auto helpers = children();
    ASSERT_FALSE(helpers.empty());
    for (const pid_t helper : helpers) {
        rlimit size{1, 1};
        ASSERT_EQ(::prlimit(helper, RLIMIT_FSIZE, nullptr, &size), 0);
        EXPECT_EQ(size.rlim_max, 0U) << "not even the helper itself can raise it";
    }
}

TEST(MediaLibrary, takesBoundedMemoryForAHeaderThatClaimsMuch) {
    const auto atom = [](const std::string& name, const std::string& body) {
        return be32(body.size() + 8) + name + body;
    };
    const TemporaryDirectory folder;
    const std::string sound = folder.write("a.aif", aiff(1, std::vector<int>(48000)));
    for (const std::uint64_t claimed : {0x0F000000U, 0x70000000U, 0xFFFFFFFFU}) {
        const std::string packed =
            atom("dcom", "zlib") + atom("cmvd", be32(claimed) + std::string(100'000, 'x'));
        const std::string movie =
            atom("ftyp", "qt  " + be32(0) + "qt  ") + atom("moov", atom("cmov", packed));
        const std::string path = folder.write("packed.mov", movie);
        EXPECT_EQ(platform::AudioFile::open(path), nullptr);
        platform::inspectMedia(path);
        EXPECT_NE(platform::AudioFile::open(sound), nullptr) << "the next file is unharmed";
        for (const pid_t helper : children()) EXPECT_LT(mostMemory(helper), 600'000) << claimed;
    }
}

TEST(AudioFile, readsSamplesExactly) {
    // Values that each of the formats can hold; the last one is the lowest.
    std::vector<float> samples;
    for (int i = -128; i < 128; ++i)
        samples.insert(samples.end(), {static_cast<float>(i) / 128, i % 2 == 0 ? 0.5F : -1.0F});
    std::vector<float> left, right;
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        left.push_back(samples[i]);
        right.push_back(samples[i + 1]);
    }
    const TemporaryDirectory folder;
    for (const SampleFormat format : {SampleFormat::pcm8, SampleFormat::pcm16, SampleFormat::pcm24,
                                      SampleFormat::pcm32, SampleFormat::float32})
        for (const std::size_t block : {1U, 100U, 100000U}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(format) << " " << block);
            const std::string bytes =
                WaveMaker().format({.channels = 2, .samples = format}).samples(samples).bytes();
            const auto file = platform::AudioFile::open(folder.write("a.wav", bytes));
            ASSERT_NE(file, nullptr);
            EXPECT_EQ(file->sampleRate(), 48000);
            ASSERT_EQ(file->channelCount(), 2);
            EXPECT_EQ(file->frameCount(), 256);
            EXPECT_EQ(readAll(*file, 0, block), left);
            ASSERT_TRUE(file->seek(0));
            EXPECT_EQ(readAll(*file, 1, block), right);
            ASSERT_TRUE(file->seek(250));
            EXPECT_EQ(readAll(*file, 0, block), std::vector(left.begin() + 250, left.end()));
            ASSERT_TRUE(file->seek(256));
            EXPECT_TRUE(readAll(*file, 0, block).empty());
            EXPECT_FALSE(file->seek(257));
            EXPECT_FALSE(file->seek(-1));
        }
}

TEST(AudioFile, readsRecordingsThatWereCutOff) {
    const TemporaryDirectory folder;
    for (const std::uint32_t claimed : {0U, 0xFFFFFFFFU, 0x7FFFFFFEU}) {
        const WaveMaker maker =
            WaveMaker().format({.samples = SampleFormat::pcm16}).silenceClaiming(claimed, 5000);
        const auto file = platform::AudioFile::open(folder.write("cut.wav", maker.bytes()));
        ASSERT_NE(file, nullptr) << claimed;
        EXPECT_EQ(readAll(*file, 0, 1000).size(), 5000U) << claimed;
    }
}

TEST(AudioFile, knowsWhatACutFileShouldHold) {
    const TemporaryDirectory folder;
    const std::string whole = folder.write("whole.wav", WaveMaker().format({}).silence(48000).bytes());
    for (const std::string extension : {"caf", "w64", "aiff"}) {
        SCOPED_TRACE(extension);
        const std::string path = folder.path("cut." + extension);
        if (!makeWithTool("-i " + whole + " -c:a " + (extension == "w64" ? "pcm_s24le " : "pcm_s24be ") +
                          path))
            GTEST_SKIP() << "no tool to make the file with";
        std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
        const auto file = platform::AudioFile::open(path);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->promisedFrames(), 48000);
        EXPECT_NEAR(static_cast<double>(file->frameCount()), 24000, 1500);
        EXPECT_EQ(readAll(*file, 0, 1000).size(), file->frameCount());
    }
}

/// Sound in a movie is read by the other library, whose decoder starts at packets that may overlap.
TEST(AudioFile, readsSoundOfMoviesAtAnyFrame) {
    const TemporaryDirectory folder;
    std::vector<float> ramp;
    for (int i = 0; i < 32768; ++i) ramp.push_back(static_cast<float>(i) / 32768);
    folder.write("ramp.wav", WaveMaker().format({.samples = SampleFormat::pcm16}).samples(ramp).bytes());
    for (const std::string codec : {"alac", "pcm_s24be", "aac -aac_pns 0"}) {
        SCOPED_TRACE(codec);
        const std::string path = folder.path("ramp.mov");
        if (!makeWithTool("-i " + folder.path("ramp.wav") + " -c:a " + codec + " " + path))
            GTEST_SKIP() << "no tool to make a movie with";
        const auto file = platform::AudioFile::open(path);
        ASSERT_NE(file, nullptr);
        const std::vector<float> whole = readAll(*file, 0, 1000);
        ASSERT_GE(whole.size(), ramp.size());
        if (!codec.starts_with("aac")) {
            EXPECT_EQ(whole, ramp);
            EXPECT_EQ(file->frameCount(), 32768);
        }
        for (const int frame : {0, 1, 4095, 4096, 20001, 32000}) {
            ASSERT_TRUE(file->seek(frame)) << frame;
            EXPECT_EQ(readAll(*file, 0, 777), std::vector(whole.begin() + frame, whole.end())) << frame;
        }
    }
}

TEST(AudioFile, keepsItsRateWhereThatOfTheFramesChanges) {
    const TemporaryDirectory folder;
    std::string both;
    for (const std::string rate : {"48000", "32000"}) {
        if (!makeWithTool("-f lavfi -i sine=f=1000:r=" + rate + ":d=2 -c:a mp2 " + folder.path("part.ts")))
            GTEST_SKIP() << "no tool to make a stream with";
        both += folder.read("part.ts");
    }
    const auto file = platform::AudioFile::open(folder.write("both.ts", both));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->sampleRate(), 48000);
    const std::vector<float> whole = readAll(*file, 0, 1000);
    EXPECT_NEAR(static_cast<double>(whole.size()), 4 * 48000, 5000);
    int rises = 0; // in the last second
    for (std::size_t i = whole.size() - 48000; i < whole.size(); ++i)
        rises += whole[i - 1] < 0 && whole[i] >= 0;
    EXPECT_NEAR(rises, 1000, 40);
}

} // namespace
} // namespace orvane::test
