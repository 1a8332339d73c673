#include "OrvaneSyncCore/Services/Ingest/CameraCopies.h"
#include "Support/TemporaryDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(CameraCopies, AreOfOneNameAndOfEqualBytes) {
    std::string bytes(100'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 % 251 + 1);
    std::string otherEnd = bytes, otherMiddle = bytes, reserved = bytes, otherZeros = bytes;
    otherEnd.back() = '\0';
    otherMiddle.replace(30'000, 20'000, 20'000, '\0');
    reserved.replace(60'001, std::string::npos, bytes.size() - 60'001, '\0');
    otherZeros.replace(60'001, std::string::npos, bytes.size() - 60'001, '\0').replace(0, 1, "x");
    const struct {
        const char* name;
        const char* path; ///< the second file; the first is 2/A001C001.MOV
        std::string bytes;
        bool endsEarly;
        const char* leftOut; ///< folder of the file that is left out; null: both files are clips
    } cases[] = {
        {"a second copy", "3/A001C001.MOV", bytes, false, "3"},
        {"the first path stays", "1/a001c001.mov", bytes, false, "2"},
        {"another name", "3/A001C002.MOV", bytes, false, nullptr},
        {"the same folder", "2/a001c001.mov", bytes, false, nullptr},
        {"the last byte", "3/A001C001.MOV", otherEnd, false, nullptr},
        {"other pictures", "3/A001C001.MOV", otherMiddle, false, nullptr},
        {"shorter, and complete", "3/A001C001.MOV", bytes.substr(0, 60'000), false, nullptr},
        {"a part", "1/A001C001.MOV", bytes.substr(0, 60'001), true, "1"},
        {"a part of full size", "1/A001C001.MOV", reserved, true, "1"},
        {"a part of another clip", "1/A001C001.MOV", otherZeros, true, nullptr},
        {"a part of anything", "1/A001C001.MOV", std::string(60'000, '\0'), true, nullptr},
        {"an empty file", "1/A001C001.MOV", "", true, nullptr},
    };
    for (const auto& test : cases) {
        const test::TemporaryDirectory cards;
        for (const char* name : {"1", "2", "3"}) std::filesystem::create_directory(cards.path(name));
        const auto made = [&](const char* path, const std::string& content, bool endsEarly) {
            MediaAsset file(FileURL{cards.write(path, content)}, AssetKind::video);
            file.fileSizeBytes = content.size();
            if (endsEarly) file.heldShare = 0.5;
            return file;
        };
        std::vector<MediaAsset> videos{made("2/A001C001.MOV", bytes, false),
                                       made(test.path, test.bytes, test.endsEarly)};
        std::ranges::sort(videos, {}, [](const MediaAsset& one) { return one.url.path; });
        const auto copies = CameraCopies::takeOut(videos);
        ASSERT_EQ(copies.size(), test.leftOut ? 1U : 0U) << test.name;
        EXPECT_EQ(videos.size(), 2 - copies.size()) << test.name;
        for (const CameraCopy& copy : copies) {
            EXPECT_TRUE(copy.url.path.starts_with(cards.path(test.leftOut) + "/")) << test.name;
            EXPECT_EQ(copy.originalURL, videos.front().url) << test.name;
            EXPECT_EQ(copy.endsEarly, test.endsEarly) << test.name;
        }
    }
}

} // namespace
} // namespace orvane
