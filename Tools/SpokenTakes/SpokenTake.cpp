#include "SpokenTakes/SpokenTake.h"

#include "Platform/AudioFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <random>
#include <stdexcept>

namespace orvane::test {

namespace {

constexpr std::size_t voiceRate = 22050; ///< the sample rate of the voices
constexpr std::array<const char*, mostSpeakers> voices{"en+f3", "en+m3", "en+f5", "en+m7"};
constexpr std::array<const char*, mostSpeakers> names{"Lav Anna", "Lav Ben", "Lav Carla", "Lav David"};
constexpr std::array<const char*, 8> sentences{
    "We should leave before the rain comes, or we will never find the road again.",
    "Then take the long road and tell nobody that you were ever here.",
    "I have seen the letters. All of them. And I know who wrote them.",
    "No. That is not what she said.",
    "Give me one good reason why I should believe a single word of this.",
    "Yes, of course. Tomorrow morning then.",
    "My father built this house with his own hands, and I am not going to sell it now.",
    "Listen to me. There is somebody at the door."};

double linear(double decibels) { return std::pow(10, decibels / 20); }

double rmsOf(const std::vector<float>& sound, std::size_t from, std::size_t to) {
    double energy = 0;
    for (std::size_t i = from; i < to; ++i) energy += double{sound[i]} * double{sound[i]};
    return to > from ? std::sqrt(energy / static_cast<double>(to - from)) : 0;
}

/// The voice engine adds silence before and after.
std::vector<float> trimmed(const std::vector<float>& sound) {
    constexpr float audible = 0.01F;
    const auto isAudible = [](float sample) { return std::abs(sample) > audible; };
    const auto first = std::ranges::find_if(sound, isAudible);
    const auto last = std::find_if(sound.rbegin(), sound.rend(), isAudible).base();
    return first < last ? std::vector<float>(first, last) : std::vector<float>{};
}

std::vector<float> rendered(const std::string& folder, const char* voice, const char* sentence) {
    const std::string path = folder + "/spoken.wav";
    const std::string command =
        std::string("espeak-ng -v ") + voice + " -w '" + path + "' '" + sentence + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("espeak-ng is not installed");
    const auto file = platform::AudioFile::open(path);
    if (!file || file->sampleRate() != voiceRate)
        throw std::runtime_error("espeak-ng speaks at another rate");
    std::vector<float> samples(static_cast<std::size_t>(file->frameCount()));
    std::array<float*, 1> channels{samples.data()};
    samples.resize(file->read(channels, samples.size()));
    return trimmed(samples);
}

/// Linear interpolation: more precision would not change the measurement.
std::vector<float> resampled(const std::vector<float>& sound, double rate) {
    const double step = voiceRate / rate;
    std::vector<float> result(static_cast<std::size_t>(static_cast<double>(sound.size()) / step));
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double at = static_cast<double>(i) * step;
        const auto before = static_cast<std::size_t>(at);
        const float share = static_cast<float>(at - static_cast<double>(before));
        const float next = before + 1 < sound.size() ? sound[before + 1] : sound[before];
        result[i] = sound[before] + share * (next - sound[before]);
    }
    return result;
}

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    double between(double low, double high) {
        return low + (high - low) * static_cast<double>(engine_()) / 4294967296.0;
    }
    int below(int n) { return static_cast<int>(between(0, n)); }
    /// Approximately normal, with a standard deviation of 1.
    float noise() {
        noise_ = noise_ * 1664525U + 1013904223U;
        const auto one = static_cast<float>(static_cast<std::int32_t>(noise_)) / 2147483648.0F;
        return one * std::numbers::sqrt3_v<float>;
    }

  private:
    std::mt19937 engine_;
    std::uint32_t noise_ = 12345;
};

/// What each speaker says, without noise and bleed, at the voices' rate and an RMS of 1 while they speak.
using Speech = std::vector<std::vector<float>>;

void say(std::vector<float>& speech, const std::vector<std::vector<float>>& said, double start,
         double seconds, double levelDB, Random& random) {
    auto at = static_cast<std::size_t>(start * voiceRate);
    const auto end = std::min(at + static_cast<std::size_t>(seconds * voiceRate), speech.size());
    const auto gain = static_cast<float>(linear(levelDB));
    constexpr std::size_t fade = voiceRate / 50;
    while (at < end) {
        const auto& sentence = said[static_cast<std::size_t>(random.below(static_cast<int>(said.size())))];
        for (std::size_t i = 0; i < sentence.size() && at < end; ++i, ++at)
            speech[at] +=
                gain * sentence[i] * std::min(1.0F, static_cast<float>(end - at) / static_cast<float>(fade));
        at += voiceRate / 5;
    }
}

Speech dialogue(const TakePlan& plan, const std::vector<std::vector<std::vector<float>>>& sentencesOf,
                Random& random) {
    const auto people = static_cast<std::size_t>(plan.speakers);
    Speech speech(people, std::vector<float>(static_cast<std::size_t>(plan.seconds * voiceRate)));
    const int regular = plan.lastSpeaksOnce ? plan.speakers - 1 : plan.speakers;
    double at = random.between(0.5, 2);
    int speaker = random.below(regular), turns = 0;
    bool hasSpokenOnce = !plan.lastSpeaksOnce;
    while (at < plan.seconds - plan.shortestTurn) {
        double turn = random.between(plan.shortestTurn, plan.longestTurn);
        if (!hasSpokenOnce && at > plan.seconds / 2) {
            hasSpokenOnce = true;
            speaker = plan.speakers - 1;
            turn = 3;
        }
        const auto who = static_cast<std::size_t>(speaker);
        say(speech[who], sentencesOf[who], at, turn, random.between(-2, 2), random);
        if (random.between(0, 1) < plan.overlapShare) {
            const auto other =
                static_cast<std::size_t>((speaker + 1 + random.below(plan.speakers - 1)) % plan.speakers);
            say(speech[other], sentencesOf[other], at + random.between(0.2, 0.8) * turn,
                random.between(0.4, 1.5), random.between(-6, 3), random);
        }
        at += turn + random.between(0.1, plan.longestPause);
        ++turns;
        // In turn at first, so that all speak; then any other speaker.
        speaker = turns < regular ? (speaker + 1) % regular
                  : regular > 1   ? (speaker + 1 + random.below(regular - 1)) % regular
                                  : 0;
        speaker %= std::max(regular, 1);
    }
    return speech;
}

std::vector<std::vector<int>> truth(const Speech& speech) {
    constexpr double speaks = 0.1; // of the RMS of speech
    constexpr std::size_t quarter = voiceRate / 4;
    std::vector<std::vector<int>> speakersAt(speech.front().size() / quarter);
    for (std::size_t window = 0; window < speakersAt.size(); ++window)
        for (std::size_t who = 0; who < speech.size(); ++who)
            if (rmsOf(speech[who], window * quarter, (window + 1) * quarter) > speaks)
                speakersAt[window].push_back(static_cast<int>(who));
    return speakersAt;
}

/// The speech as another person's lav picks it up: later and quieter.
void mix(std::vector<float>& track, const std::vector<float>& dry, double levelDB, std::size_t delay) {
    const auto gain = static_cast<float>(linear(levelDB));
    for (std::size_t i = delay; i < track.size(); ++i) track[i] += gain * dry[i - delay];
}

void addNoise(std::vector<float>& track, double levelDB, Random& random) {
    const auto gain = static_cast<float>(linear(levelDB));
    for (float& sample : track) sample += gain * random.noise();
}

/// Low-frequency noise that fades in and out.
void addRumble(std::vector<float>& track, double levelDB, double from, double to, Random& random) {
    constexpr float smooth = 0.98F, makeUp = 10;
    float last = 0;
    const auto end = std::min(track.size(), static_cast<std::size_t>(to * voiceRate));
    for (auto i = static_cast<std::size_t>(from * voiceRate); i < end; ++i) {
        const double within = (static_cast<double>(i) / voiceRate - from) / (to - from);
        last = smooth * last + (1 - smooth) * random.noise();
        track[i] += makeUp * last * static_cast<float>(linear(levelDB) * std::sin(std::numbers::pi * within));
    }
}

void breakLav(std::vector<float>& track, const TakePlan& plan, Random& random) {
    switch (plan.failure) {
    case TakePlan::Failure::none:
        break;
    case TakePlan::Failure::dead:
        std::ranges::fill(track, 0.0F);
        break;
    case TakePlan::Failure::hum:
        for (std::size_t i = 0; i < track.size(); ++i)
            track[i] = static_cast<float>(
                0.05 * std::sin(2 * std::numbers::pi * 50 * static_cast<double>(i) / voiceRate));
        break;
    case TakePlan::Failure::clothing:
        for (double at = random.between(0, 4); at < plan.seconds; at += random.between(2, 6))
            addRumble(track, plan.speechDB + 4, at, at + random.between(0.2, 1.2), random);
        break;
    }
}

} // namespace

VoiceBank::VoiceBank(const std::string& folder) {
    for (const char* voice : voices) {
        auto& said = sentences_.emplace_back();
        for (const char* sentence : sentences) {
            Sound& sound = said.emplace_back(rendered(folder, voice, sentence));
            const auto gain = static_cast<float>(1 / rmsOf(sound, 0, sound.size()));
            for (float& sample : sound) sample *= gain;
        }
    }
}

SpokenTake VoiceBank::take(const TakePlan& plan) const {
    Random random(plan.seed);
    const Speech speech = dialogue(plan, sentences_, random);
    SpokenTake take;
    take.sampleRate = plan.sampleRate;
    take.speakersAt = truth(speech);
    const bool hasBoom = plan.boomDB > -200;
    if (hasBoom) {
        take.names.emplace_back("Boom");
        auto& boom = take.tracks.emplace_back(speech.front().size());
        for (const auto& dry : speech) mix(boom, dry, plan.boomDB, 0);
        addNoise(boom, plan.noiseDB, random);
    }
    for (std::size_t own = 0; own < speech.size(); ++own) {
        auto& lav = take.tracks.emplace_back(speech.front().size());
        take.names.emplace_back(names.at(own));
        take.lavOf.push_back(static_cast<int>(take.tracks.size()));
        const double gainDB = random.between(-plan.gainSpreadDB, plan.gainSpreadDB);
        for (std::size_t who = 0; who < speech.size(); ++who) {
            constexpr double spreadDB = 2, shortest = 0.003, longest = 0.012; // 1 to 4 m
            const double level = plan.speechDB + gainDB +
                                 (who == own ? 0 : plan.bleedDB + random.between(-spreadDB, spreadDB));
            const double delay = who == own ? 0 : random.between(shortest, longest);
            mix(lav, speech[who], level, static_cast<std::size_t>(delay * voiceRate));
        }
        if (plan.truckDB > -200)
            addRumble(lav, plan.truckDB + gainDB, plan.seconds * 0.4, plan.seconds * 0.6, random);
        if (own + 1 == speech.size()) breakLav(lav, plan, random);
        if (plan.failure != TakePlan::Failure::dead || own + 1 < speech.size())
            addNoise(lav, plan.noiseDB, random);
    }
    if (plan.failure == TakePlan::Failure::dead || plan.failure == TakePlan::Failure::hum)
        take.lavOf.back() = 0;
    if (plan.sampleRate != voiceRate)
        for (auto& track : take.tracks) track = resampled(track, plan.sampleRate);
    return take;
}

} // namespace orvane::test
