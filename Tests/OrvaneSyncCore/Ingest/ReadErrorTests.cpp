#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"

#include "ManualQueue.h"
#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/MediaFactory.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// The file whose reads fail, and how many of them go well before.
std::atomic<ino_t> badFile = 0;
std::atomic<int> goodReads = 0;
std::atomic<bool> hasFailed = false;

} // namespace

/// Takes the place of the system's own in this program: every reader of ours goes through it.
extern "C" ssize_t pread(int file, void* into, size_t count, off_t at) {
    struct stat status {};
    if (badFile != 0 && ::fstat(file, &status) == 0 && status.st_ino == badFile && goodReads-- <= 0) {
        hasFailed = true;
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_pread64, file, into, count, at);
}

namespace orvane {
namespace {

JSON withoutID(const MediaAsset& asset) {
    JSON json = toJSON(asset);
    json.remove("id");
    return json;
}

std::string aiff() {
    const std::string common =
        test::be16(1) + test::be32(8) + test::be16(16) + test::be16(0x400E) + test::be64(0xBB80ULL << 48U);
    const std::string body = "AIFFCOMM" + test::be32(common.size()) + common + "SSND" + test::be32(24) +
                             test::be64(0) + std::string(16, '\1');
    return "FORM" + test::be32(body.size()) + body;
}

/// Whichever read of a file fails, the file is named, nothing of it is remembered, and its neighbour is.
TEST(ReadErrors, areNeverRemembered) {
    const test::TemporaryDirectory folder;
    const auto movie = test::MovieMaker().video({.frames = 250}).timecode({25, 1, 90000}).mediaBytes(100'000);
    const auto sound = test::ltcSignal(test::ltcBits(10, 0, 0, 0) + test::ltcBits(10, 0, 0, 1), 24);
    folder.write("neighbour.mov", movie.bytes());
    folder.write("movie.mov", movie.bytes());
    folder.write("cut.mov", movie.bytes().substr(0, 100'000));
    folder.write("take.wav", test::WaveMaker().bext({.timeReference = 48000}).silence(48000).bytes());
    folder.write("ltc.wav", test::WaveMaker().format({}).samples(sound).bytes());
    folder.write("sound.aif", aiff());
    platform::MemorySettingsStore settings;
    settings.set("ltc.enabled", true);
    for (const char* name : {"movie.mov", "cut.mov", "take.wav", "ltc.wav", "sound.aif"}) {
        const std::vector<FileURL> urls{{folder.path(name)}, {folder.path("neighbour.mov")}};
        const JSON whole = withoutID(MediaProbeService(settings, nullptr).probe(urls[0], AssetKind::video));
        struct stat status {};
        ASSERT_EQ(::stat(urls[0].path.c_str(), &status), 0);
        int failures = 0;
        for (bool wentWrong = true; wentWrong; ++failures) {
            SCOPED_TRACE(name + std::string(", reads that go well: ") + std::to_string(failures));
            ASSERT_LT(failures, 1000);
            const auto cache =
                std::make_shared<ProbeCache>(folder.path("c"), std::make_unique<test::ManualQueue>());
            MediaProbeService service(settings, cache);
            std::vector<FileURL> unread;
            hasFailed = false;
            goodReads = failures;
            badFile = status.st_ino;
            service.probeAll(urls, AssetKind::video, {}, [&](const FileURL& url) { unread.push_back(url); });
            badFile = 0;
            wentWrong = hasFailed;
            EXPECT_EQ(unread, wentWrong ? std::vector{urls[0]} : std::vector<FileURL>());
            EXPECT_EQ(cache->lookup(urls[0]).has_value(), !wentWrong);
            EXPECT_TRUE(cache->lookup(urls[1]).has_value());
            EXPECT_EQ(withoutID(service.probe(urls[0], AssetKind::video)), whole) << "once the disk is well";
        }
        EXPECT_GT(failures, 1) << "the reads of " << name << " do not come through here";
    }
}

TEST(ReadErrors, soAreFilesThatCannotBeOpened) {
    const test::TemporaryDirectory folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe.wav").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop.mov", folder.path("loop.mov"));
    const std::vector<FileURL> urls{
        {folder.path("pipe.wav")}, {folder.path("vanished.mov")}, {folder.path("loop.mov")}};
    const auto cache = std::make_shared<ProbeCache>(folder.path("c"), std::make_unique<test::ManualQueue>());
    platform::MemorySettingsStore settings;
    std::vector<FileURL> unread;
    MediaProbeService(settings, cache).probeAll(urls, AssetKind::video, {}, [&](const FileURL& url) {
        unread.push_back(url);
    });
    EXPECT_EQ(unread, urls);
    EXPECT_EQ(cache->count(), 0U);
}

} // namespace
} // namespace orvane
