#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCLI/RunCommand.h"
#include "Support/Test.h"

#include <set>

namespace orvane::cli {
namespace {

using platform::JSON;

struct ShotFile {
    std::string path; ///< below the shoot; the digit before the point tells which take it is of
    int start;        ///< seconds since midnight
    int seconds;
    std::string day = "2024-05-17";
};

/// Takes 1 to 4, five minutes and some seconds apart.
std::vector<ShotFile> takes(const std::string& prefix, const std::string& ending, int later, int seconds,
                            const std::string& day = "2024-05-17") {
    std::vector<ShotFile> files;
    for (int take = 1; take <= 4; ++take)
        files.push_back({prefix + std::to_string(take) + ending, 36000 + 300 * take + 7 * take * take + later,
                         seconds, day});
    return files;
}

constexpr std::size_t firstFolder = 3; ///< behind the command and two options

/// Uses a cure as it is told: its options, without a folder that it says to leave away. Where it says that
/// links have to be made, none.
std::optional<std::vector<std::string>> appliedTo(std::vector<std::string> words, const std::string& cure) {
    const std::string_view without = "without the folder '";
    bool isUsed = false;
    if (cure.find("--video '") != std::string::npos) words.resize(firstFolder); // it names all folders
    for (std::size_t at = cure.find(without); at != std::string::npos; at = cure.find(without, at + 1)) {
        const std::size_t from = at + without.size();
        isUsed = std::erase(words, cure.substr(from, cure.find('\'', from) - from)) > 0;
    }
    for (std::size_t at = cure.find("--"); at != std::string::npos; at = cure.find("--", at + 2)) {
        if (cure.compare(at, 8, "--review") == 0) continue; // the table is another way
        const std::size_t blank = cure.find(' ', at);
        const bool isQuoted = cure[blank + 1] == '\'';
        const std::size_t from = blank + (isQuoted ? 2 : 1);
        words.push_back(cure.substr(at, blank - at));
        words.push_back(cure.substr(from, cure.find_first_of(isQuoted ? "'" : " ,;)", from) - from));
        isUsed = true;
    }
    return isUsed && cure.find("links") == std::string::npos ? std::optional(words) : std::nullopt;
}

TEST(Cures, doWhatTheySayWhenTheyAreUsedAsTold) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        std::vector<std::vector<ShotFile>> cards;
        std::vector<std::string> folders; ///< of the scan, below the shoot
        std::size_t clips;                ///< that the cured scan shows
    };
    const auto clips = [](const std::string& prefix, int later = 0) {
        return takes(prefix, ".mov", later, 10);
    };
    const auto sound = [](const std::string& prefix, int later = -3) {
        return takes(prefix, ".WAV", later, 20);
    };
    const std::vector<Case> cases{
        {"half an hour late", {clips("C/A"), sound("S/T", 1797)}, {""}, 4},
        {"a clock of a zone of its own", {clips("C/A"), sound("S/T", -19803)}, {""}, 4},
        {"another year", {clips("C/240517_A"), takes("S/T", ".WAV", -3, 20, "2000-01-01")}, {""}, 4},
        {"a date that stood still for a day",
         {clips("D1/C/240517_A"), sound("D1/S/T"), clips("D2/C/240518_A"), sound("D2/S/U")},
         {""},
         4},
        {"a second recorder", {clips("C/A"), sound("S1/T"), sound("S2/U")}, {""}, 4},
        {"a recorder in a folder below", {clips("C/A"), sound("S/T"), sound("S/BAG/U")}, {""}, 4},
        {"folders that were named one by one",
         {clips("C/A"), sound("S1/T"), sound("S2/U")},
         {"C", "S1", "S2"},
         4},
        {"names that a pattern would read", {clips("C/A"), sound("S[1]/T"), sound("S'[2]/U")}, {""}, 4},
        {"a bag an hour late beside a cart and its clips",
         {clips("CART/A"), sound("CART/T"), sound("BAG/U", 3597)},
         {""},
         4},
        {"a bag of another year beside a cart",
         {clips("C/240517_A"), sound("CART/T"), takes("BAG/U", ".WAV", -3, 20, "2000-01-01")},
         {""},
         4},
        {"a bag of the day before, its files, those of the cart and the clips in one folder",
         {clips("S/240517_A"), sound("S/T"), takes("S/U", ".WAV", -3, 20, "2024-05-16")},
         {""},
         4},
        {"a bag an hour late in the folder of the cart, with names of the same letters",
         {clips("C/A"), sound("S/T"), sound("S/T_bag", 3597)},
         {""},
         4},
        {"a date that stood still, the clips of both days in one folder",
         {clips("C/240517_A"), sound("S1/T"), clips("C/240518_B"), sound("S2/U")},
         {""},
         4},
        {"a camera an hour early beside another one with the sound",
         {clips("B/B"), sound("B/T"), clips("A/A", -3600)},
         {""},
         4},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const test::TemporaryDirectory shoot;
        float level = 0.1F;
        for (const auto& card : one.cards)
            for (const ShotFile& file : card) {
                const std::string path = shoot.path(file.path);
                std::filesystem::create_directories(path.substr(0, path.rfind('/')));
                if (path.ends_with(".mov")) {
                    test::MovieMaker()
                        .video({.frames = static_cast<std::uint32_t>(25 * file.seconds)})
                        .timecode({.firstFrame = static_cast<std::uint32_t>(25 * file.start)})
                        .writeTo(path);
                    continue;
                }
                test::WaveMaker()
                    .format({.sampleRate = 8000, .samples = test::SampleFormat::pcm16})
                    .bext(
                        {.date = file.day, .timeReference = 8000ULL * static_cast<std::uint64_t>(file.start)})
                    .samples(
                        std::vector<float>(8000 * static_cast<std::size_t>(file.seconds), level += 0.01F))
                    .writeTo(path);
            }
        std::vector<std::string> words{"diagnose", "--json", "--no-cache"};
        for (const std::string& folder : one.folders)
            words.push_back(folder.empty() ? shoot.path() : shoot.path(folder));
        const JSON before = runWith(words).json();
        const auto& told = *before.find("doubts")->elements();
        ASSERT_FALSE(told.empty());
        const std::string cure = *told.front().find("cure")->string();
        const auto cured = appliedTo(words, cure);
        ASSERT_TRUE(cured) << cure;
        const Outcome outcome = runWith(*cured);
        ASSERT_EQ(outcome.status, done) << outcome.err;
        EXPECT_EQ(outcome.err, "") << cure;
        EXPECT_TRUE(outcome.json().find("doubts")->elements()->empty()) << cure << "\n" << outcome.out;
        std::vector<std::string> scan = *cured;
        scan.front() = "scan";
        const JSON state = runWith(scan).json();
        EXPECT_EQ(state.find("syncGroups")->elements()->size(), one.clips) << cure;
        for (const JSON& group : *state.find("syncGroups")->elements()) {
            const auto takeOf = [](const JSON& asset) {
                const std::string name = *asset.find("filename")->string();
                return name[name.find('.') - 1];
            };
            const auto& matches = *group.find("audioMatches")->elements();
            ASSERT_EQ(matches.size(), 1U) << cure;
            EXPECT_EQ(takeOf(*matches.front().find("audio")), takeOf(*group.find("video")));
        }
    }
}

} // namespace
} // namespace orvane::cli
