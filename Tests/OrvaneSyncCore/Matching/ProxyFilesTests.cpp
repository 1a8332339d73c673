#include "OrvaneSyncCore/Services/Matching/ProxyFiles.h"
#include "Support/Assets.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

MediaAsset picture(const char* path, const char* start = "10:00:00:00", double seconds = 10,
                   int width = 1280) {
    MediaAsset made = test::video(path, start, seconds);
    made.width = width;
    made.height = width * 9 / 16;
    return made;
}

TEST(ProxyFiles, LieInAFolderForThemAndAreSmallCopies) {
    const MediaAsset original = picture("CARD/A001C001.MOV", "10:00:00:00", 10, 3840);
    MediaAsset unknownSize = picture("CARD/Proxy/A001C001.MOV");
    unknownSize.width.reset();
    const struct {
        const char* name;
        MediaAsset file;
        bool isProxy;
    } cases[] = {
        {"in a folder for proxies", picture("CARD/Proxy/A001C001.MOV"), true},
        {"whatever the case, of another container", picture("CARD/PROXIES/day/a001c001.mp4"), true},
        {"in a tree of their own", picture("sub/CARD/A001C001.MOV"), true},
        {"in a folder with more to its name", picture("CARD/Day1 Proxies 1-2/A001C001.MOV"), true},
        {"the number of an XAVC proxy", picture("CARD/Sub/A001C001S03.MP4"), true},
        {"an ending", picture("CARD/LRV/A001C001_Proxy.mov"), true},
        {"a frame late and short", picture("CARD/Proxy/A001C001.MOV", "10:00:00:01", 9.96), true},
        {"two frames late", picture("CARD/Proxy/A001C001.MOV", "10:00:00:02"), false},
        {"two frames short", picture("CARD/Proxy/A001C001.MOV", "10:00:00:00", 9.92), false},
        {"no start", picture("CARD/Proxy/A001C001.MOV", ""), false},
        {"of the original's size", picture("CARD/Proxy/A001C001.MOV", "10:00:00:00", 10, 3840), false},
        {"of unknown size", unknownSize, false},
        {"another clip", picture("CARD/Proxy/A001C002.MOV"), false},
        {"another folder", picture("CARD/Subject/A001C001.MOV"), false},
    };
    for (const auto& test : cases) {
        std::vector<MediaAsset> videos{original, test.file};
        const auto proxies = ProxyFiles::takeOut(videos);
        EXPECT_EQ(videos.size(), test.isProxy ? 1U : 2U) << test.name;
        EXPECT_EQ(videos.front(), original) << test.name;
        ASSERT_EQ(proxies.size(), test.isProxy ? 1U : 0U) << test.name;
        for (const ProxyFile& proxy : proxies) EXPECT_EQ(proxy.originalURL, original.url) << test.name;
    }
    // A proxy does not replace an original that is missing, and a folder that contains both is no evidence.
    std::vector<MediaAsset> alone{
        picture("Proxy/A001C001.MOV", "10:00:00:00", 10, 1920), picture("LRV/A001C001.MOV"),
        picture("offline/x/A001C002.MOV", "10:00:00:00", 10, 1920), picture("offline/y/A001C002.MOV")};
    EXPECT_TRUE(ProxyFiles::takeOut(alone).empty());
    EXPECT_EQ(alone.size(), 4U);
}

} // namespace
} // namespace orvane
