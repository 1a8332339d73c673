#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"

#include "ManualQueue.h"
#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/MediaFactory.h"
#include "Support/BadDisk.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>

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

/// Whichever read of a file fails, the file is reported and not cached; the other file is cached.
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
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
    settings->setByName("ltc.enabled", true);
    for (const char* name : {"movie.mov", "cut.mov", "take.wav", "ltc.wav", "sound.aif"}) {
        const std::vector<FileURL> urls{{folder.path(name)}, {folder.path("neighbour.mov")}};
        const JSON whole = withoutID(MediaProbeService(settings, nullptr).probe(urls[0], AssetKind::video));
        int failures = 0;
        for (bool wentWrong = true; wentWrong; ++failures) {
            SCOPED_TRACE(name + std::string(", reads that go well: ") + std::to_string(failures));
            ASSERT_LT(failures, 1000);
            // Each attempt has its own cache folder, so it does not see what the last attempt read.
            const auto cache =
                std::make_shared<ProbeCache>(folder.path(std::string(name) + std::to_string(failures)),
                                             std::make_unique<test::ManualQueue>());
            MediaProbeService service(settings, cache);
            std::vector<FileURL> unread;
            {
                const test::BadDisk disk(urls[0].path, failures);
                service.probeAll(urls, AssetKind::video, {},
                                 [&](const FileURL& url) { unread.push_back(url); });
                wentWrong = disk.hasFailed();
            }
            EXPECT_EQ(unread, wentWrong ? std::vector{urls[0]} : std::vector<FileURL>());
            EXPECT_EQ(cache->lookup(urls[0]).has_value(), !wentWrong);
            EXPECT_EQ(cache->count(), wentWrong ? 1U : 2U);
            EXPECT_TRUE(cache->lookup(urls[1]).has_value());
            EXPECT_EQ(withoutID(service.probe(urls[0], AssetKind::video)), whole) << "once the disk is well";
        }
        EXPECT_GT(failures, 1) << "the reads of " << name << " do not come through here";
    }
}

TEST(ReadErrors, filesThatCannotBeOpenedAreNotRemembered) {
    const test::TemporaryDirectory folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe.wav").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop.mov", folder.path("loop.mov"));
    const std::vector<FileURL> urls{
        {folder.path("pipe.wav")}, {folder.path("vanished.mov")}, {folder.path("loop.mov")}};
    const auto cache = std::make_shared<ProbeCache>(folder.path("c"), std::make_unique<test::ManualQueue>());
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
    std::vector<FileURL> unread;
    MediaProbeService(settings, cache).probeAll(urls, AssetKind::video, {}, [&](const FileURL& url) {
        unread.push_back(url);
    });
    EXPECT_EQ(unread, urls);
    EXPECT_EQ(cache->count(), 0U);
}

} // namespace
} // namespace orvane
