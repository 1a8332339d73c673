#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCLI/RunCommand.h"
#include "Support/Test.h"

#include <set>

namespace orvane::cli {
namespace {

using platform::JSON;

struct ShotFile {
    std::string path; ///< below the shoot; the digit before the point is the number of its take
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

void write(const test::TemporaryDirectory& shoot, const std::vector<std::vector<ShotFile>>& cards) {
    float level = 0.1F;
    for (const auto& card : cards)
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
                .bext({.date = file.day, .timeReference = 8000ULL * static_cast<std::uint64_t>(file.start)})
                .samples(std::vector<float>(8000 * static_cast<std::size_t>(file.seconds), level += 0.01F))
                .writeTo(path);
        }
}

std::vector<ShotFile> clipsOf(const std::string& prefix, int later = 0) {
    return takes(prefix, ".mov", later, 10);
}
std::vector<ShotFile> soundOf(const std::string& prefix, int later = -3,
                              const std::string& day = "2024-05-17") {
    return takes(prefix, ".WAV", later, 20, day);
}

constexpr std::size_t firstFolder = 3; ///< after the command and two options

/// Applies a cure as its text says: adds its options and removes a folder that it names. Absent if the user
/// would have to make links.
std::optional<std::vector<std::string>> appliedTo(std::vector<std::string> words, const std::string& cure) {
    const std::string_view without = "without the folder '";
    bool isUsed = false;
    if (cure.find("--video '") != std::string::npos) words.resize(firstFolder); // it names all folders
    for (std::size_t at = cure.find(without); at != std::string::npos; at = cure.find(without, at + 1)) {
        const std::size_t from = at + without.size();
        isUsed = std::erase(words, cure.substr(from, cure.find('\'', from) - from)) > 0;
    }
    for (std::size_t at = cure.find("--"); at != std::string::npos; at = cure.find("--", at + 2)) {
        if (cure.compare(at, 8, "--review") == 0 || cure.compare(at, 7, "--apply") == 0)
            continue; // the table is another way of the cure
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
        std::size_t clips;                ///< clips that the cured scan shows
    };
    const std::vector<Case> cases{
        {"half an hour late", {clipsOf("C/A"), soundOf("S/T", 1797)}, {""}, 4},
        {"a clock of a zone of its own", {clipsOf("C/A"), soundOf("S/T", -19803)}, {""}, 4},
        {"another year", {clipsOf("C/240517_A"), soundOf("S/T", -3, "2000-01-01")}, {""}, 4},
        {"a date that stood still for a day",
         {clipsOf("D1/C/240517_A"), soundOf("D1/S/T"), clipsOf("D2/C/240518_A"), soundOf("D2/S/U")},
         {""},
         4},
        {"a second recorder", {clipsOf("C/A"), soundOf("S1/T"), soundOf("S2/U")}, {""}, 4},
        {"a recorder in a folder below", {clipsOf("C/A"), soundOf("S/T"), soundOf("S/BAG/U")}, {""}, 4},
        {"folders that were named one by one",
         {clipsOf("C/A"), soundOf("S1/T"), soundOf("S2/U")},
         {"C", "S1", "S2"},
         4},
        {"names that a pattern would read", {clipsOf("C/A"), soundOf("S[1]/T"), soundOf("S'[2]/U")}, {""}, 4},
        {"a bag an hour late beside a cart and its clips",
         {clipsOf("CART/A"), soundOf("CART/T"), soundOf("BAG/U", 3597)},
         {""},
         4},
        {"a bag of another year beside a cart",
         {clipsOf("C/240517_A"), soundOf("CART/T"), soundOf("BAG/U", -3, "2000-01-01")},
         {""},
         4},
        {"a bag of the day before, its files, those of the cart and the clips in one folder",
         {clipsOf("S/240517_A"), soundOf("S/T"), soundOf("S/U", -3, "2024-05-16")},
         {""},
         4},
        {"a bag an hour late in the folder of the cart, with names of the same letters",
         {clipsOf("C/A"), soundOf("S/T"), soundOf("S/T_bag", 3597)},
         {""},
         4},
        {"a date that stood still, the clips of both days in one folder",
         {clipsOf("C/240517_A"), soundOf("S1/T"), clipsOf("C/240518_B"), soundOf("S2/U")},
         {""},
         4},
        {"two days of a clock that was two years behind, each kind in one folder",
         {clipsOf("C/240517_A"), soundOf("S/T", -3, "2022-01-01"), clipsOf("C/240518_B", 40),
          soundOf("S/U", 37, "2022-01-02")},
         {""},
         4},
        {"a night of another year",
         {{{"C/240517_A1.mov", 85000, 10},
           {"C/240517_A2.mov", 85530, 10},
           {"C/240517_A3.mov", 86100, 10},
           {"C/240518_A4.mov", 90, 10},
           {"S/T1.WAV", 84997, 20, "2000-01-01"},
           {"S/T2.WAV", 85527, 20, "2000-01-01"},
           {"S/T3.WAV", 86097, 20, "2000-01-01"},
           {"S/T4.WAV", 87, 20, "2000-01-02"}}},
         {""},
         4},
        {"a camera a day and an hour ahead beside another one with the sound",
         {clipsOf("B/240517_B"), soundOf("B/T"), clipsOf("A/240518_A", 3600)},
         {""},
         4},
        {"a second unit half an hour late beside the main unit",
         {clipsOf("MAIN/C/A"), soundOf("MAIN/S/T"), clipsOf("U2/C/B", 100), soundOf("U2/S/U", 1897)},
         {""},
         4},
        {"a camera an hour early beside another one with the sound",
         {clipsOf("B/B"), soundOf("B/T"), clipsOf("A/A", -3600)},
         {""},
         4},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const test::TemporaryDirectory shoot;
        write(shoot, one.cards);
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

TEST(Cures, tellNoOptionThatWouldLeaveWrongSound) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        std::vector<std::vector<ShotFile>> cards;
        const char* told; ///< in the message or the cure
    };
    const std::vector<Case> cases{
        {"two units, whose folders do not tell which sound is whose",
         {clipsOf("A/A"), clipsOf("B/B"), soundOf("S1/T"), soundOf("S2/U")},
         "clip by clip"},
        {"two days without dates, a camera's clips of both in one folder",
         {clipsOf("C/A001C"), clipsOf("C/A002C", 3), soundOf("S1/T", -3, ""), soundOf("S2/U", -3, "")},
         "clip by clip"},
        {"a second day at the same hours, whose sound was not copied",
         {clipsOf("C/240517_A"), clipsOf("C/240518_B", 3), soundOf("S/T")},
         "look for the sound of 2024-05-18"},
        {"a camera without dates, and two recorders",
         {clipsOf("C/A"), soundOf("S1/T", -3, ""), soundOf("S2/U", -3, "")},
         "clip by clip"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const test::TemporaryDirectory shoot;
        write(shoot, one.cards);
        const JSON told = runWith({"diagnose", "--json", "--no-cache", shoot.path()}).json();
        ASSERT_FALSE(told.find("doubts")->elements()->empty());
        for (const JSON& doubt : *told.find("doubts")->elements()) {
            const std::string cure = *doubt.find("cure")->string();
            EXPECT_FALSE(appliedTo({}, cure)) << cure;
            EXPECT_NE((*doubt.find("message")->string() + cure).find(one.told), std::string::npos) << cure;
        }
    }
}

} // namespace
} // namespace orvane::cli
