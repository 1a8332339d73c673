#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"
#include "Support/Test.h"

#include <cmath>

namespace orvane {
namespace {

std::vector<ChannelStats> statsOf(const std::vector<std::pair<float, float>>& rmsAndWidth) {
    std::vector<ChannelStats> stats;
    for (const auto& [rms, width] : rmsAndWidth)
        stats.push_back(
            {.trackIndex = static_cast<int>(stats.size()) + 1, .averageRMS = rms, .spectralWidth = width});
    return stats;
}

TEST(ChannelClassifier, usesTheRecordersNames) {
    const auto check = [&](const char* name, ChannelKind kind, float confidence, const char* speaker,
                           bool isPreMixed) {
        SCOPED_TRACE(name);
        const auto result = ChannelClassifier::classify(1, {{1, name}}, {});
        ASSERT_EQ(result.size(), 1U);
        EXPECT_EQ(result[0].kind, kind);
        EXPECT_EQ(result[0].confidence, confidence);
        EXPECT_EQ(result[0].speakerName.value_or(""), speaker);
        EXPECT_EQ(result[0].isPreMixed, isPreMixed);
        EXPECT_EQ(result[0].source,
                  std::string("iXML: ") + name +
                      (kind == ChannelKind::unknown ? " (no role keyword — treated as unknown)" : ""));
    };
    check("Boom", ChannelKind::boom, 0.95F, "", false);
    check("Boom Mix", ChannelKind::boom, 0.95F, "", true); // the first rule wins
    check("ISO 3", ChannelKind::lav, 0.95F, "iso 3", false);
    check("Isolde", ChannelKind::unknown, 0.4F, "isolde", false); // "iso" needs its blank
    check("Tr1 ISO", ChannelKind::lav, 0.95F, "tr1 iso", false);
    check("SLAVE", ChannelKind::lav, 0.95F, "", false); // keywords match inside words
    check("Out LR bus", ChannelKind::mix, 0.95F, "", false);
    check("L+R", ChannelKind::mix, 0.95F, "l+r", false);
    check("Stereo", ChannelKind::mix, 0.95F, "", true);
    check("Lav 1 (Anna)", ChannelKind::lav, 0.95F, "anna", false);
    check("  Kamera Links ", ChannelKind::unknown, 0.4F, "kamera links", false);
    check("Gerfried", ChannelKind::unknown, 0.4F, "gerfried",
          false); // "rf" removes the speaker; the whole name is used instead
    check("ÄNNE (Lav)", ChannelKind::lav, 0.95F, "", false);
}

TEST(ChannelClassifier, findsTheSpeakerInAName) {
    for (const auto& [name, speaker] : std::vector<std::pair<std::string, std::string>>{
             {"Lav 1 (Anna)", "anna"},
             {"Anna (Lav)", ""},
             {"Boom - Hans", "hans"},
             {"Hans - Boom", "hans"},
             {"Gerfried", ""},
             {"", ""},
             {" \n", ""},
             {"Lav (Anna (2))", "anna (2)"}, // the last ")"
             {"Lav ) Anna (", ""},           // no pair
             {"Lav ( )", ""},                // nothing in it
             {"Lav (Boom 2)", "boom 2"},     // only an exact role keyword is not a speaker
             {"Lav—Peter—Maria", "maria"},   // the last piece that is not a role
             {"Peter – Lav: Radio", "peter"},
             {"Lav: Anna   Maria", "anna maria"},
             {"Anna   Maria", "anna   maria"}, // a whole name keeps its blanks
             {"- Anna", "- anna"},             // one piece only: the whole name
             {"Lav - Boom", ""},
             {"Öz - MIX", "öz"},
         })
        EXPECT_EQ(ChannelClassifier::extractSpeakerName(name).value_or(""), speaker) << name;
}

TEST(ChannelClassifier, usesTheSignalWithoutNames) {
    const auto results = [](int count, const std::vector<IXMLTrack>& names,
                            const std::vector<ChannelStats>& stats) {
        std::string text;
        for (const auto& one : ChannelClassifier::classify(count, names, stats)) {
            EXPECT_FALSE(one.speakerName);
            EXPECT_FALSE(one.isPreMixed);
            text += std::to_string(one.trackIndex) + " " + std::string(rawValue(one.kind)) + " " +
                    std::to_string(std::lround(one.confidence * 100)) + " " + one.source + "\n";
        }
        return text;
    };
    EXPECT_EQ(results(0, {{1, "Boom"}}, {}), "");
    EXPECT_EQ(results(-1, {}, {}), "");
    EXPECT_EQ(results(2, {}, statsOf({{0.1F, 0.3F}, {0.1F, 0.3F}})),
              "1 unknown 30 Heuristic: 2-ch file — no role to assign\n"
              "2 unknown 30 Heuristic: 2-ch file — no role to assign\n");
    EXPECT_EQ(results(3, {}, statsOf({{0.1F, 0.181F}, {0.1F, 0.18F}})), // the third has no record
              "1 boom 55 Heuristic: wide spectrum → Boom\n"
              "2 lav 55 Heuristic: narrow spectrum → Lav\n"
              "3 lav 55 Heuristic: narrow spectrum → Lav\n");
    EXPECT_EQ(results(4, {}, statsOf({{0.1F, 0.3F}, {0.1F, 0.3F}, {0.1F, 0.3F}, {0.1F, 0.1F}})),
              "1 mix 60 Heuristic: ch 1 of multitrack → Mix (recorder convention)\n"
              "2 lav 50 Heuristic: ch 2 of multitrack → Mix (recorder convention) (demoted: another track is "
              "Mix)\n"
              "3 boom 55 Heuristic: wide spectrum → Boom\n"
              "4 lav 55 Heuristic: narrow spectrum → Lav\n");
    // A name for a channel that does not exist still shows that the recorder names channels; a blank name
    // does not.
    EXPECT_EQ(results(4, {{9, "Boom"}}, statsOf({{0.0000999F, 0.3F}, {0.0001F, 0}, {0.1F, 0}, {0.1F, 0}})),
              "1 lav 40 Heuristic: very low level on ch 1\n"
              "2 mix 60 Heuristic: ch 2 of multitrack → Mix (recorder convention)\n"
              "3 lav 55 Heuristic: no iXML on this ch — defaulting to Lav\n"
              "4 lav 55 Heuristic: no iXML on this ch — defaulting to Lav\n");
    EXPECT_EQ(results(2, {{1, " \n"}}, {}), results(2, {}, {}));
}

TEST(ChannelClassifier, keepsOneMix) {
    const auto result = ChannelClassifier::classify(
        4, {{1, "Old"}, {3, "Mix R (Anna)"}, {2, "Mix L"}, {1, "Boom"}, {1, " "}, {64, "Stereo"}},
        statsOf({{0, 0}, {0, 0}, {0, 0}, {0.1F, 0.3F}}));
    ASSERT_EQ(result.size(), 4U);
    EXPECT_EQ(result[0].source, "iXML: Boom"); // the channel's last name that is not blank
    EXPECT_EQ(result[1].kind, ChannelKind::mix);
    EXPECT_TRUE(result[1].isPreMixed);
    EXPECT_EQ(result[2], (ChannelClassification{3, ChannelKind::lav, 0.95F - 0.2F,
                                                "iXML: Mix R (Anna) (demoted: another track is Mix)",
                                                std::nullopt, false}));
    EXPECT_FLOAT_EQ(result[2].confidence, 0.75F);
    EXPECT_EQ(result[3].kind, ChannelKind::boom);
}

} // namespace
} // namespace orvane
