#include "OrvaneSyncCore/Models/FilePaths.h"
#include "Support/RandomSeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace orvane {
namespace {

TEST(FilePaths, haveOneOrderHoweverTheyAreListed) {
    // Numbers are ordered by value, letters without case. Paths are compared folder by folder, not as one
    // text. Names that look the same are ordered by their bytes; some names are not UTF-8.
    const std::vector<std::string> expected{"/s/A/Clip 2.mov", "/s/A/Clip 10.mov", "/s/A/clip 11.mov",
                                            "/s/A B/x.mov",    "/s/A.mov",         "/s/Card2/x.mov",
                                            "/s/Card10/x.mov", "/s/e\xCC\x81.mov", "/s/\xC3\xA9.mov",
                                            "/s/\xFE.mov",     "/s/\xFF.mov"};
    std::vector<FileURL> files;
    for (const std::string& path : expected) files.push_back({path});
    for (std::size_t later = 1; later < files.size(); ++later)
        for (std::size_t sooner = 0; sooner < later; ++sooner) {
            std::vector<FileURL> pair{files[later], files[sooner]};
            sortByPath(pair);
            EXPECT_EQ(pair.front(), files[sooner]) << files[sooner].path << " and " << files[later].path;
        }
    for (const unsigned seed : test::seeds(50)) {
        std::ranges::shuffle(files, std::mt19937(seed));
        sortByPath(files);
        std::vector<std::string> sorted;
        for (const FileURL& file : files) sorted.push_back(file.path);
        ASSERT_EQ(sorted, expected) << "seed " << seed;
    }
}

TEST(FilePaths, FoldersAreShownWhereNamesRepeat) {
    struct Case {
        const char* name;
        std::vector<const char*> paths, texts;
    };
    const Case cases[] = {
        {"a name that is there once", {"/s/1/a.mov", "/s/2/b.mov"}, {"a.mov", "b.mov"}},
        {"cards", {"/s/CARD_1/a.mov", "/s/CARD_2/a.mov"}, {"CARD_1/a.mov", "CARD_2/a.mov"}},
        {"what all have in common is not said",
         {"/s/CARD_1/DCIM/a.mov", "/s/CARD_2/DCIM/a.mov"},
         {"CARD_1/a.mov", "CARD_2/a.mov"}},
        {"the first name that differs is enough",
         {"/s/1/CLIP/a.mov", "/s/2/PRIVATE/a.mov"},
         {"1/a.mov", "2/a.mov"}},
        {"unless others have it too",
         {"/s/1/x/a.mov", "/s/1/y/a.mov", "/s/2/a.mov"},
         {"1/x/a.mov", "1/y/a.mov", "2/a.mov"}},
        {"a folder above the other", {"/s/a.mov", "/s/1/a.mov"}, {"s/a.mov", "s/1/a.mov"}},
        {"a folder within one of its name", {"/s/x/a.mov", "/s/x/x/a.mov"}, {"x/a.mov", "x/x/a.mov"}},
        {"the root", {"/a.mov", "/1/a.mov"}, {"a.mov", "1/a.mov"}},
    };
    for (const Case& test : cases) {
        FileNames names;
        for (const char* path : test.paths) names.add(FileURL{path});
        names.add(FileURL{test.paths.front()}); // a second time
        for (std::size_t i = 0; i < test.paths.size(); ++i)
            EXPECT_EQ(names.of(FileURL{test.paths[i]}), test.texts[i]) << test.name;
    }
}

} // namespace
} // namespace orvane
