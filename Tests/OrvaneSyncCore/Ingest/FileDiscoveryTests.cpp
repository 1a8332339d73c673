#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"

#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvane {
namespace {

using Names = std::vector<std::string>;

class Discovery : public testing::Test {
  protected:
    void touch(const Names& names) const {
        for (const std::string& name : names) folder.write(name, "");
    }
    /// Paths below the folder, sorted.
    Names below(const std::vector<FileURL>& urls) const {
        Names names;
        for (const FileURL& url : urls) names.push_back(url.path.substr(folder.path().size() + 1));
        std::ranges::sort(names);
        return names;
    }

    test::TemporaryDirectory folder;
    FileDiscoveryService service;
};

TEST_F(Discovery, namesDecideWhatIsFound) {
    const struct {
        const char* folder;
        Names there, videos, audios;
    } cases[] = {
        {"the extension alone",
         {"CLIP.MOV", "clip.mov", "a/b/c/deep.Mxf", "x.mp4", "y.m4v", "t.aiff", "t.aif", "t.wav", "t.BWF",
          "t.mp3", "t.m4a", "t.mxf.txt", "mov", ".mov", "wav.", "ROOMTONE.wav"},
         {"CLIP.MOV", "a/b/c/deep.Mxf", "clip.mov", "x.mp4", "y.m4v"},
         {"ROOMTONE.wav", "t.BWF", "t.aif", "t.aiff", "t.wav"}},
        {"hidden and packaged files are nobody's business",
         {".hidden/a.mov", ".b.mov", "x/.Trashes/c.wav", "Edit.fcpbundle/Original Media/d.mov",
          "Player.APP/e.wav", "notapackage.d/f.mov"},
         {"notapackage.d/f.mov"},
         {}},
        {"a folder named like a clip is listed and entered",
         {"shoot.mov/inside.mov"},
         {"shoot.mov", "shoot.mov/inside.mov"},
         {}},
        {"names are bytes",
         {"a \"quoted\".mov", "emoji \xF0\x9F\x8E\xAC.mov", "latin-1 \xE9.mov", "line\nbreak.mov"},
         {"a \"quoted\".mov", "emoji \xF0\x9F\x8E\xAC.mov", "latin-1 \xE9.mov", "line\nbreak.mov"},
         {}},
    };
    for (const auto& row : cases) {
        const std::string base = std::string(row.folder) + "/";
        for (const std::string& name : row.there) touch({base + name});
        const DiscoveryResult result = service.discover(folder.path(row.folder));
        const auto found = [&](const std::vector<FileURL>& urls) {
            Names names = below(urls);
            for (std::string& name : names) name.erase(0, base.size());
            return names;
        };
        EXPECT_EQ(found(result.videoURLs), row.videos) << row.folder;
        EXPECT_EQ(found(result.audioURLs), row.audios) << row.folder;
        EXPECT_EQ(result.totalCount(), row.videos.size() + row.audios.size()) << row.folder;
    }
}

TEST_F(Discovery, linkedFoldersAreEnteredOnceAndFilesHaveOneName) {
    touch({"card/a.mov", "card/b.mov", "nas/c.wav", "nas/x8812.mov", "Edit.fcpbundle/d.mov", ".store/e.mov"});
    const auto link = [&](const char* to, const char* from) {
        std::filesystem::create_symlink(folder.path(to), folder.path(from));
    };
    std::filesystem::create_directory(folder.path("shoot"));
    for (const char* name : {"shoot/1", "shoot/2"}) link("card", name);
    link("nas", "shoot/sound");
    link("shoot", "nas/back");
    link("Edit.fcpbundle", "shoot/edit");
    link(".store", "shoot/kept");
    link("card/a.mov", "shoot/again.mov");
    link("nas/x8812.mov", "shoot/A001.mov");
    link("nas/x8812.mov", "shoot/B001.mov");
    const auto found = service.discoverOnce({folder.path("shoot"), folder.path("card")});
    EXPECT_EQ(below(found.videoURLs), (Names{".store/e.mov", "card/a.mov", "card/b.mov", "nas/x8812.mov"}));
    EXPECT_EQ(below(found.audioURLs), Names{"nas/c.wav"});
    const auto named = service.discoverOnce({folder.path("shoot")}, {}, {"sound", "1", "2", "C.*"});
    EXPECT_EQ(below(named.videoURLs), (Names{".store/e.mov", "shoot/A001.mov", "shoot/again.mov"}))
        << "the first link stands for a file that is not found itself";
    EXPECT_EQ(named.unusedExclusions, Names{"C.*"});
}

TEST_F(Discovery, loopsEnd) {
    touch({"real/a.mov"});
    std::filesystem::create_directory_symlink(folder.path(), folder.path("real/up"));
    std::filesystem::create_symlink("nowhere.mov", folder.path("real/dangling.mov"));
    std::filesystem::create_symlink("a.mov", folder.path("real/link.mov"));
    std::filesystem::create_symlink("nowhere", folder.path("real/notes.txt"));
    std::filesystem::create_symlink("nowhere", folder.path("real/card"));
    const DiscoveryResult result = service.discover(folder.path());
    EXPECT_EQ(below(result.videoURLs), (Names{"real/a.mov", "real/link.mov"}));
    EXPECT_EQ(below(result.brokenLinks), (Names{"real/card", "real/dangling.mov"}))
        << "of media, and of what may have been a folder";
}

TEST_F(Discovery, whatCannotBeReadIsEmpty) {
    touch({"locked/a.mov", "open/b.mov"});
    EXPECT_TRUE(service.discover(folder.path("missing")).isEmpty());
    EXPECT_TRUE(service.discover(folder.path("open/b.mov")).isEmpty());
    EXPECT_TRUE(service.discover(Names{}).isEmpty());
    ::chmod(folder.path("locked").c_str(), 0);
    const DiscoveryResult result = service.discover(folder.path());
    const bool seesLocked = ::access(folder.path("locked").c_str(), R_OK) == 0; // root can read it
    ::chmod(folder.path("locked").c_str(), 0700);
    EXPECT_EQ(below(result.videoURLs),
              seesLocked ? (Names{"locked/a.mov", "open/b.mov"}) : Names{"open/b.mov"});
}

TEST_F(Discovery, foldersAreAppendedInOrder) {
    touch({"1/a.mov", "2/b.mov", "2/c.wav"});
    const DiscoveryResult result =
        service.discover({folder.path("2"), folder.path("gone"), folder.path("1")});
    ASSERT_EQ(result.videoCount(), 2U);
    EXPECT_EQ(result.videoURLs[0].path, folder.path("2/b.mov"));
    EXPECT_EQ(result.videoURLs[1].path, folder.path("1/a.mov"));
    EXPECT_EQ(result.audioCount(), 1U);
}

} // namespace
} // namespace orvane
