#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Support/BadDisk.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace orvane {
namespace {

constexpr double rate = 1000; // Hz, so that a frame is a millisecond

class TakeAudioTest : public testing::Test {
  protected:
    /// A file of `frames` frames whose name begins with the letter. Its sample `i` of channel `c` (from 0) is
    /// `base(letter)` + i + c / 8.
    TakeSound::File file(char letter, int firstChannel, int channels, double startSeconds, int frames,
                         std::uint32_t sampleRate = 1000) {
        std::vector<float> samples;
        for (int i = 0; i < frames; ++i)
            for (int channel = 0; channel < channels; ++channel)
                samples.push_back(base(letter) + static_cast<float>(i) + static_cast<float>(channel) / 8);
        const auto wave = test::WaveMaker()
                              .format({channels, sampleRate, test::SampleFormat::float32})
                              .samples(samples)
                              .bytes();
        const std::string name = letter + std::to_string(++files_) + ".wav";
        return {{folder_.write(name, wave)}, firstChannel, channels, startSeconds, frames / rate};
    }
    static float base(char letter) { return 20000.0F * static_cast<float>(letter - 'a' + 1); }
    static TakeSound sound(std::vector<TakeSound::File> files) {
        TakeSound sound;
        sound.files = std::move(files);
        return sound;
    }
    /// All samples of each channel, read in pieces.
    static std::vector<std::vector<float>> read(platform::AudioFile& audio, std::size_t piece) {
        std::vector<std::vector<float>> all(static_cast<std::size_t>(audio.channelCount()));
        for (std::size_t got = piece; got == piece;) {
            std::vector<float*> into;
            const std::size_t had = all[0].size();
            for (auto& channel : all) {
                channel.resize(had + piece, -1);
                into.push_back(channel.data() + had);
            }
            got = audio.read(into, piece);
            for (auto& channel : all) channel.resize(had + got);
        }
        return all;
    }
    test::TemporaryDirectory folder_;
    int files_ = 0;
};

/// A text of a case has one line per channel and one letter per frame: the file that is heard, "." for
/// silence.
TEST_F(TakeAudioTest, placesFilesToTheSample) {
    struct Case {
        const char* name;
        std::vector<TakeSound::File> files;
        std::vector<std::string> channels;
        std::vector<IncompleteFile> incomplete;
    };
    const auto a = [&](int channel, double start, int frames, int channels = 1) {
        return file('a', channel, channels, start, frames);
    };
    const auto b = [&](int channel, double start, int frames, int channels = 1) {
        return file('b', channel, channels, start, frames);
    };
    const TakeSound::File missing{{folder_.path("none.wav")}, 2, 1, 0, 0.002};
    const TakeSound::File slow = file('s', 2, 1, 0, 3, 999);
    const std::vector<Case> cases{
        {"side by side, one behind the other's start and short",
         {a(1, 0, 4), b(2, 0.001, 2)},
         {"aaaa", ".bb."},
         {}},
        {"with channels of their own number", {a(1, 0, 2, 2), b(3, 0, 3)}, {"aa.", "aa.", "bbb"}, {}},
        {"a gap", {a(1, 0, 2), b(1, 0.004, 2)}, {"aa..bb"}, {}},
        {"an overlap: the earlier to its end", {a(1, 0, 4), b(1, 0.002, 4)}, {"aaaabb"}, {}},
        {"a part within the other", {a(1, 0, 4), b(1, 0.001, 2)}, {"aaaa"}, {}},
        {"a part with a channel more", {a(1, 0, 2), b(1, 0.002, 2, 2)}, {"aabb", "..bb"}, {}},
        {"to the nearest sample", {a(1, 0, 2), b(1, 0.00249, 2)}, {"aabb"}, {}},
        {"a missing file", {a(1, 0, 3), missing}, {"aaa", "..."}, {{"none.wav", 0, 0.002}}},
        {"a file at another rate",
         {a(1, 0, 3), slow},
         {"aaa", "..."},
         {{slow.url.lastPathComponent(), 0, 0.003}}},
    };
    for (const Case& row : cases) {
        const OpenTake take = openTake(sound(row.files));
        const auto& audio = take.audio;
        ASSERT_NE(audio, nullptr) << row.name;
        EXPECT_EQ(audio->frameCount(), std::ssize(row.channels[0])) << row.name;
        const auto samples = read(*audio, 2);
        EXPECT_EQ(take.incompleteFiles(), row.incomplete) << row.name;
        ASSERT_EQ(samples.size(), row.channels.size()) << row.name;
        for (std::size_t channel = 0; channel < samples.size(); ++channel)
            for (std::size_t i = 0; i < samples[channel].size(); ++i) {
                const char letter = row.channels[channel][i];
                const auto own = std::ranges::find(row.files, letter, [](const TakeSound::File& one) {
                    return one.url.lastPathComponent().front();
                });
                double expected = 0;
                if (own != row.files.end())
                    expected = base(letter) + static_cast<double>(i) - std::round(own->startSeconds * rate) +
                               (static_cast<double>(channel) + 1 - own->firstChannel) / 8;
                EXPECT_EQ(samples[channel][i], expected) << row.name << ", channel " << channel << ", " << i;
            }
    }
}

TEST_F(TakeAudioTest, readsTheSameFromAnywhereAndOnAnyReader) {
    const OpenTake take =
        openTake(sound({file('a', 1, 2, 0, 5000), file('b', 1, 2, 5, 3000), file('c', 3, 1, 0.1, 9000)}));
    const auto& audio = take.audio;
    const auto whole = read(*audio, 4096);
    const auto other = audio->another();
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(read(*other, 777), whole);
    std::vector<float> first(3000), third(3000);
    const std::vector<float*> into{first.data(), first.data(), third.data()};
    for (const std::size_t at : {8000U, 4990U, 0U, 99U, 6500U, 9099U}) {
        ASSERT_TRUE(other->seek(static_cast<std::int64_t>(at)));
        const std::size_t got = other->read(into, third.size());
        ASSERT_EQ(got, std::min(third.size(), whole[2].size() - at));
        EXPECT_TRUE(std::equal(third.begin(), third.begin() + static_cast<long>(got),
                               whole[2].begin() + static_cast<long>(at)));
        ASSERT_TRUE(other->seek(static_cast<std::int64_t>(at)));
        const std::vector<float> kept = third;
        other->read(std::span(into).first(1), first.size());
        EXPECT_EQ(third, kept) << "what was not given is not written to";
        EXPECT_TRUE(std::equal(first.begin(), first.begin() + static_cast<long>(got),
                               whole[0].begin() + static_cast<long>(at)));
    }
    EXPECT_FALSE(other->seek(audio->frameCount() + 1));
    EXPECT_FALSE(openTake(sound({{{folder_.path("x")}, 1, 1, 0, 1}, {{folder_.path("y")}, 2, 1, 0, 1}})));
    EXPECT_FALSE(openTake({}));
}

TEST_F(TakeAudioTest, namesTheFileThatBreaksOffWhileItIsRead) {
    const TakeSound::File cut = file('b', 2, 1, 0.5, 4000);
    const OpenTake take = openTake(sound({file('a', 1, 1, 0, 5000), cut}));
    EXPECT_EQ(take.incompleteFiles(), std::vector<IncompleteFile>());
    std::filesystem::resize_file(cut.url.path, std::filesystem::file_size(cut.url.path) - 4 * 1500);
    const auto other = take.audio->another();
    const auto heard = read(*other, 4096);
    EXPECT_EQ(heard[1][2999], base('b') + 2499);
    EXPECT_EQ(heard[1][3001], 0) << "silent from there on";
    EXPECT_EQ(heard[0].back(), base('a') + 4999) << "the others are heard to their ends";
    EXPECT_EQ(take.incompleteFiles(), (std::vector<IncompleteFile>{{cut.url.lastPathComponent(), 2.5, 4}}));
    EXPECT_NO_THROW(take.throwIfReadFailed()) << "it is cut, and the disk is well";

    const TakeSound::File bad = file('b', 2, 1, 0.5, 4000);
    const std::vector<std::vector<TakeSound::File>> takes{{bad}, {file('a', 1, 1, 0, 5000), bad}};
    for (const auto& files : takes) {
        const OpenTake broken = openTake(sound(files));
        const test::BadDisk disk(bad.url.path, 2);
        read(*broken.audio->another(), 1000);
        EXPECT_EQ(broken.audio->failedAt(), 2000);
        try {
            broken.throwIfReadFailed();
            ADD_FAILURE() << "a failing disk goes unseen";
        } catch (const ReadFailed& failed) {
            EXPECT_NE(std::string(failed.what()).find(bad.url.lastPathComponent() + " past 0:02 of 0:04"),
                      std::string::npos)
                << failed.what();
        }
    }
}

} // namespace
} // namespace orvane
