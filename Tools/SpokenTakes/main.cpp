#include "SpokenTakes/MicrophoneScore.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

// How often the chosen microphone is the speaker's own, on takes with known truth:
//     microphone_check FOLDER [FIRST_SEED [SEEDS]]
// FOLDER is for the rendered voices and takes. Ends with 1 if the choice by speaker misses its required
// values.

namespace {

using namespace orvane;
using namespace orvane::test;

struct Scores {
    MicrophoneScore takeDefault, loudest, speaker;
};

class Check {
  public:
    Check(std::string folder, unsigned firstSeed, unsigned seeds)
        : folder_(std::move(folder)), voices_(folder_), firstSeed_(firstSeed), seeds_(seeds) {}

    /// The takes of all plans of the grid for each seed, in one row for each kind.
    void grid(const char* name, const std::function<void(TakePlan&)>& change,
              const std::function<std::string(const TakePlan&)>& kindOf, bool inMonoFiles = false) {
        kinds_.clear();
        std::map<std::string, Means>& kinds = kinds_;
        for (unsigned seed = firstSeed_; seed < firstSeed_ + seeds_; ++seed)
            for (const int speakers : {2, 3, 4})
                for (const double bleed : {-6.0, -10.0, -15.0, -20.0})
                    for (const double noise : {-62.0, -42.0})
                        for (const double speech : {-20.0, -28.0}) {
                            TakePlan plan{.seed = seed * 1000 + static_cast<unsigned>(speakers * 100 - bleed),
                                          .speakers = speakers,
                                          .bleedDB = bleed,
                                          .noiseDB = noise,
                                          .speechDB = speech};
                            change(plan);
                            const Scores scores = measure(plan, inMonoFiles);
                            kinds[name].add(scores);
                            if (kindOf) kinds[std::string(name) + ", " + kindOf(plan)].add(scores);
                        }
        for (const auto& [kind, means] : kinds) means.print(kind);
        std::fflush(stdout);
    }

    /// The requirements for a row of the last grid: the share on the speaker's own lav, its lead over the
    /// loudest lav, and that every speaker is heard.
    void want(const std::string& kind, double leastShare, double leastAhead) {
        const Means& means = kinds_.at(kind);
        const double share = means.speaker / means.takes, ahead = share - means.loudest / means.takes;
        if (share >= leastShare && ahead >= leastAhead && means.heard == means.people) return;
        isMissed_ = true;
        std::printf("  missed: at least %.0f %%, %.0f points ahead, everybody heard\n", 100 * leastShare,
                    100 * leastAhead);
    }
    bool isMissed() const { return isMissed_; }

  private:
    struct Means {
        int takes = 0;
        double takeDefault = 0, loudest = 0, speaker = 0, worst = 1;
        int people = 0, heardByDefault = 0, heard = 0;

        void add(const Scores& scores) {
            ++takes;
            takeDefault += scores.takeDefault.share();
            loudest += scores.loudest.share();
            speaker += scores.speaker.share();
            worst = std::min(worst, scores.speaker.share());
            people += scores.speaker.speakers;
            heard += scores.speaker.heard;
            heardByDefault += scores.takeDefault.heard;
        }
        void print(const std::string& kind) const {
            constexpr double percent = 100;
            std::printf("%-34s %5d  %6.1f %6.1f %6.1f   %6.1f   %4d of %d, %d by default\n", kind.c_str(),
                        takes, percent * takeDefault / takes, percent * loudest / takes,
                        percent * speaker / takes, percent * worst, heard, people, heardByDefault);
        }
    };

    Scores measure(const TakePlan& plan, bool inMonoFiles) const {
        const SpokenTake take = voices_.take(plan);
        SmartAudioBlockSettings byDefault, bySpeaker;
        byDefault.routing = SmartAudioRouting::takeDefault;
        Scores scores{scoreOf(take, analysed(take, byDefault, folder_, inMonoFiles).blocks),
                      scoreOf(take, loudestOfTwoSeconds(take)),
                      scoreOf(take, analysed(take, bySpeaker, folder_, inMonoFiles).blocks)};
        return scores;
    }

    std::string folder_;
    VoiceBank voices_;
    unsigned firstSeed_, seeds_;
    std::map<std::string, Means> kinds_; ///< of the last grid
    bool isMissed_ = false;
};

void run(Check& check) {
    std::printf("%-34s takes default loudest speaker  worst   speakers heard\n", "");
    const auto byBleed = [](const TakePlan& plan) {
        return "bleed " + std::to_string(static_cast<int>(plan.bleedDB));
    };
    constexpr double aheadInMuchBleed = 0.03, ofQuickDialogue = 0.6;
    check.grid(
        "dialogue", [](TakePlan&) {}, byBleed);
    check.want("dialogue", 0, 0);
    check.want("dialogue, bleed -6", 0, aheadInMuchBleed);
    check.grid("quick dialogue",
               [](TakePlan& plan) {
                   plan.shortestTurn = 0.8;
                   plan.longestTurn = 2;
                   plan.longestPause = 0.4;
               },
               {});
    check.want("quick dialogue", ofQuickDialogue, -1);
    check.grid(
        "lavs up to 6 dB apart", [](TakePlan& plan) { plan.gainSpreadDB = 6; }, byBleed);
    check.grid("one speaks once", [](TakePlan& plan) { plan.lastSpeaksOnce = true; }, {});
    check.grid("overlap", [](TakePlan& plan) { plan.overlapShare = 0.4; }, {});
    check.grid("a truck", [](TakePlan& plan) { plan.truckDB = -30; }, {});
    for (const auto& [name, failure] : {std::pair{"a dead lav", TakePlan::Failure::dead},
                                        std::pair{"a lav that hums", TakePlan::Failure::hum},
                                        std::pair{"a lav under clothing", TakePlan::Failure::clothing}})
        check.grid(name, [failure = failure](TakePlan& plan) { plan.failure = failure; }, {});
    const auto shorter = [](std::uint32_t rate) {
        return [rate](TakePlan& plan) {
            plan.seconds = 30;
            plan.sampleRate = rate;
        };
    };
    check.grid("44.1 kHz", shorter(44100), {});
    check.grid("96 kHz", shorter(96000), {});
    check.grid("mono files at 48 kHz", shorter(48000), {}, true);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: microphone_check FOLDER [FIRST_SEED [SEEDS]]\n");
        return 2;
    }
    try {
        std::filesystem::create_directories(argv[1]);
        const auto number = [&](int at, unsigned otherwise) {
            return argc > at ? static_cast<unsigned>(std::strtoul(argv[at], nullptr, 10)) : otherwise;
        };
        Check check(argv[1], number(2, 1), number(3, 1));
        run(check);
        if (check.isMissed()) return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
    return 0;
}
