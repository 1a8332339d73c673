#include "Platform/AudioFile.h"
#include "Platform/Playback/FrameReader.h"
#include "Platform/Playback/MovieWriter.h"
#include "Platform/Playback/VideoDecoder.h"
#include "Platform/Stop.h"
#include "Support/ChildProcesses.h"
#include "Support/NumberedClip.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <random>

namespace orvane::test {
namespace {

using platform::FrameReader;
using platform::MediaTime;
using platform::Picture;
using platform::PictureSize;

constexpr MediaTime exactly{};

struct Encoding {
    const char* name;
    const char* rate;
    MediaTime picture; ///< duration of one picture
    const char* options;
    bool isIntraOnly;
};
constexpr Encoding encodings[] = {
    {"long.mov", "24000/1001", {1001, 24000}, "-c:v libx264 -preset ultrafast -g 50 -bf 3", false},
    {"open.mp4", "30000/1001", {1001, 30000}, "-c:v libx264 -g 25 -bf 3 -x264-params open-gop=1", false},
    {"hevc.mov", "60000/1001", {1001, 60000}, "-c:v libx265 -preset ultrafast -g 30 -tag:v hvc1", false},
    {"intra.mov", "25", {1, 25}, "-c:v prores_ks", true},
    {"ten.mp4", "24", {1, 24}, "-c:v libx264 -preset ultrafast -g 24 -pix_fmt yuv422p10le", false},
    {"hr.mxf", "24000/1001", {1001, 24000}, "-c:v dnxhd -profile:v dnxhr_sq -pix_fmt yuv422p", true},
    {"group.mxf", "25", {1, 25}, "-c:v mpeg2video -g 12 -bf 2 -b:v 5M -pix_fmt yuv422p", false},
    {"milliseconds.mkv", "24000/1001", {1001, 24000}, "-c:v libx264 -preset ultrafast -g 25 -bf 2", false},
    {"stream.ts", "50", {1, 50}, "-c:v libx264 -preset ultrafast -g 50 -bf 2", false},
    {"fragments.mp4",
     "25",
     {1, 25},
     "-c:v libx264 -preset ultrafast -g 25 -bf 2 -movflags frag_keyframe+empty_moov",
     false},
    {"old.avi", "25", {1, 25}, "-c:v mjpeg -pix_fmt yuvj420p -q:v 2", true},
    {"coarse.mov",
     "24000/1001",
     {1001, 24000},
     "-c:v libx264 -preset ultrafast -g 24 -video_track_timescale 600",
     false},
};

class FrameReaderOf : public testing::TestWithParam<Encoding> {
  protected:
    const TemporaryDirectory folder_;
};

TEST_P(FrameReaderOf, givesThePictureOfTheMoment) {
    const Encoding& encoding = GetParam();
    const std::string path = folder_.path(encoding.name);
    constexpr int count = 130;
    if (!NumberedClip{count, encoding.rate, encoding.options}.make(path)) GTEST_SKIP() << "no such encoder";
    const auto reader = FrameReader::open(path);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->facts().isIntraOnly, encoding.isIntraOnly);
    EXPECT_EQ(reader->facts().size, (PictureSize{256, 144}));
    EXPECT_NEAR(reader->facts().nominalFrameRate, 1 / encoding.picture.seconds(), 1e-9);
    EXPECT_NEAR(static_cast<double>(reader->facts().pictureCount), count, 1);
    EXPECT_NEAR(reader->facts().duration.seconds(), count * encoding.picture.seconds(), 0.05);

    std::mt19937 random(randomSeed());
    const auto expect = [&](int number, MediaTime time, const char* what) {
        const auto picture = reader->pictureAt(time, exactly, {});
        ASSERT_TRUE(picture) << what << number;
        EXPECT_EQ(NumberedClip::numberIn(*picture), number) << what;
        EXPECT_EQ(picture->number, number) << what;
        EXPECT_EQ(picture->time, encoding.picture * number) << what << number;
        EXPECT_EQ(picture->duration, encoding.picture) << what << number;
    };
    expect(0, {-1, 1}, "before the start ");
    for (int number = 60; number < 80; ++number) expect(number, encoding.picture * number, "forward ");
    for (int i = 0; i < 40; ++i) {
        const int number = std::uniform_int_distribution(0, count - 1)(random);
        // Somewhere in the first 99 % of the picture.
        const MediaTime within{std::uniform_int_distribution(0, 990)(random), 1000};
        const MediaTime length{encoding.picture.value * within.value, encoding.picture.scale * within.scale};
        expect(number, encoding.picture * number + length, "anywhere ");
    }
    expect(count - 1, {1000, 1}, "behind the end ");
    for (int number = count - 1; number > count - 8; --number)
        expect(number, encoding.picture * number, "backward ");

    // With a tolerance, another picture within it may be given.
    for (const MediaTime time : {MediaTime{1, 2}, MediaTime{3, 2}, MediaTime{2, 1}}) {
        const auto picture = reader->pictureAt(time, {1, 4}, {64, 64});
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->size, (PictureSize{64, 36}));
        EXPECT_EQ(NumberedClip::numberIn(*picture), picture->number);
        EXPECT_NEAR(picture->time.seconds(), time.seconds(), 0.25 + encoding.picture.seconds());
    }
}

TEST_P(FrameReaderOf, givesGroupAfterGroupBackwards) {
    const Encoding& encoding = GetParam();
    const std::string path = folder_.path(encoding.name);
    if (!NumberedClip{130, encoding.rate, encoding.options}.make(path)) GTEST_SKIP() << "no such encoder";
    const auto decoder = platform::VideoDecoder::open(path);
    ASSERT_NE(decoder, nullptr);
    constexpr int longest = 40;
    int end = 110;
    for (int groups = 0; groups < 3 && end > 0; ++groups) {
        const int earliest = std::max(end - longest, 0);
        auto result = decoder->groupBefore(encoding.picture * earliest, encoding.picture * end, {}, {});
        ASSERT_TRUE(result.picture) << "before " << end;
        const auto first = static_cast<int>(result.picture->number);
        EXPECT_GE(first, earliest);
        ASSERT_LT(first, end);
        for (int number = first; number < end; ++number) {
            if (number > first) result = decoder->next({}, {});
            ASSERT_TRUE(result.picture) << number;
            EXPECT_EQ(NumberedClip::numberIn(*result.picture), number) << "from " << first;
            EXPECT_EQ(result.picture->time, encoding.picture * number);
        }
        end = first;
    }
}

INSTANTIATE_TEST_SUITE_P(Encodings, FrameReaderOf, testing::ValuesIn(encodings), [](const auto& one) {
    const std::string name = one.param.name;
    return name.substr(0, name.find('.')) + "_" + name.substr(name.find('.') + 1);
});

TEST(SoundOfAVideo, beginsWhereTheFileSays) {
    const TemporaryDirectory folder;
    struct Case {
        const char* name;
        const char* inputs;
        const char* options;
        double begin; ///< seconds before the tone
    };
    for (const Case& test : {Case{"with.mov", "", "-c:a pcm_s24le", 0},
                             Case{"late.mov", "-itsoffset 1.2", "-c:a pcm_s24le", 1.2},
                             Case{"late.mp4", "-itsoffset 1.2", "-c:a aac", 1.2},
                             Case{"parts.mov", "", "-c:a pcm_s16le -movflags frag_keyframe+empty_moov", 0}}) {
        const std::string path = folder.path(test.name);
        const std::string x264 = "-c:v libx264 -preset ultrafast -g 25 -bf 2 ";
        if (!NumberedClip{.encoding = x264 + test.options,
                          .otherInputs = std::string(test.inputs) + " -f lavfi -i sine=d=3:r=48000"}
                 .make(path))
            GTEST_SKIP() << "no such encoder";
        const auto sound = platform::AudioFile::openAllTracks(path);
        ASSERT_NE(sound, nullptr) << test.name;
        EXPECT_NEAR(static_cast<double>(sound->frameCount()) / 48000, 3 + test.begin, 0.1) << test.name;
        std::vector<float> samples(static_cast<std::size_t>(2 * 48000));
        float* const channel = samples.data();
        ASSERT_EQ(sound->read({&channel, 1}, samples.size()), samples.size()) << test.name;
        const auto heard = std::ranges::find_if(samples, [](float sample) { return sample > 0.05F; });
        EXPECT_NEAR(static_cast<double>(heard - samples.begin()) / 48000, test.begin, 0.004) << test.name;
    }
}

TEST(FrameReader, knowsEditListsAndVariableRates) {
    const TemporaryDirectory folder;
    const std::string whole = folder.path("whole.mp4"), cut = folder.path("cut.mp4");
    const std::string varying = folder.path("varying.mp4");
    const std::string x264 = "-c:v libx264 -preset ultrafast -g 50 -bf 2 ";
    if (!NumberedClip{100, "25", x264}.make(whole)) GTEST_SKIP() << "no encoder";
    // The copy begins at a key picture, and its edit list at the picture that was asked for.
    const std::string copying =
        "ffmpeg -nostdin -v error -y -ss 0.8 -i '" + whole + "' -c copy '" + cut + "'";
    ASSERT_EQ(std::system(copying.c_str()), 0);
    auto reader = FrameReader::open(cut);
    ASSERT_NE(reader, nullptr);
    for (const int number : {0, 1, 7, 35, 2}) {
        const auto picture = reader->pictureAt(MediaTime{1, 25} * number, exactly, {});
        ASSERT_TRUE(picture);
        EXPECT_EQ(NumberedClip::numberIn(*picture), number + 20);
        EXPECT_EQ(picture->number, number);
    }
    // Picture n lasts 40 ms, every third 120 ms.
    ASSERT_TRUE((NumberedClip{90, "25", x264 + "-vf 'setpts=(N+2*floor((N+2)/3)+0.1)/25/TB' -vsync vfr"}.make(
        varying)));
    reader = FrameReader::open(varying);
    ASSERT_NE(reader, nullptr);
    for (const int number : {70, 3, 4, 5, 88, 89, 1, 0}) {
        const MediaTime start = MediaTime{1, 25} * (number + 2 * ((number + 2) / 3));
        const auto picture = reader->pictureAt(start + MediaTime{1, 50}, exactly, {});
        ASSERT_TRUE(picture) << number;
        EXPECT_EQ(NumberedClip::numberIn(*picture), number);
        EXPECT_EQ(picture->number, number);
        EXPECT_EQ(picture->time, start);
        if (number < 89) {
            EXPECT_EQ(picture->duration, (number % 3 == 0 ? MediaTime{3, 25} : MediaTime{1, 25}));
        }
    }
}

TEST(FrameReader, showsPicturesUprightInSquarePixels) {
    const TemporaryDirectory folder;
    struct Case {
        const char* name;
        const char* options;
        PictureSize size;
    };
    // The colours of the lower right, upper right and lower left quarters: red, green, blue on black.
    const std::string quarters =
        "-vf \"format=rgb24,drawbox=0:0:iw:ih:black:fill,drawbox=iw/2:ih/2:iw:ih:red:fill,"
        "drawbox=iw/2:0:iw:ih/2:lime:fill,drawbox=0:ih/2:iw/2:ih:blue:fill";
    const Case cases[] = {
        {"hd.mov", "\" -pix_fmt yuv420p -color_range tv -c:v libx264", {256, 144}},
        {"odd.mov", ",scale=251:143\" -pix_fmt yuv444p -c:v libx264", {251, 143}},
        {"wide.mov", ",setsar=2\" -pix_fmt yuv420p -c:v libx264", {512, 144}},
        {"full.mov", ",scale=out_range=pc\" -pix_fmt yuv420p -color_range pc -c:v libx264", {256, 144}},
        {"rgb.mov", "\" -c:v png", {256, 144}},
        {"ten.mov",
         ",scale=out_color_matrix=bt709,setparams=colorspace=bt709\" -pix_fmt yuv422p10le -c:v prores_ks",
         {256, 144}},
        {"fields.mxf",
         ",scale=720:576:interl=1\" -flags +ilme+ildct -top 1 -pix_fmt yuv422p -b:v 20M -c:v mpeg2video",
         {720, 576}},
    };
    for (const Case& one : cases) {
        const std::string path = folder.path(one.name);
        ASSERT_TRUE((NumberedClip{3, "25", quarters + one.options}.make(path))) << one.name;
        const auto reader = FrameReader::open(path);
        ASSERT_NE(reader, nullptr) << one.name;
        const auto picture = reader->pictureAt({}, exactly, {});
        ASSERT_TRUE(picture) << one.name;
        EXPECT_EQ(picture->size, one.size) << one.name;
        const auto at = [&](int x, int y) {
            const auto place =
                4 * (y * picture->size.height / 4 * picture->size.width + x * picture->size.width / 4);
            const std::uint8_t* pixel = picture->pixels.get() + place;
            std::string colour;
            for (int channel = 0; channel < 3; ++channel) // within 12 of 0 or 255
                colour += pixel[channel] < 12 ? '0' : pixel[channel] > 243 ? '1' : '?';
            return colour;
        };
        EXPECT_EQ(at(1, 1) + " " + at(3, 1) + " " + at(1, 3) + " " + at(3, 3), "000 010 100 001") << one.name;
    }
    // A rotation, as a camera that is held upright writes it.
    const std::string turned = folder.path("turned.mov");
    const std::string turning = "ffmpeg -nostdin -v error -y -i '" + folder.path("hd.mov") +
                                "' -c copy -metadata:s:v rotate=90 '" + turned + "'";
    ASSERT_EQ(std::system(turning.c_str()), 0);
    const auto picture = FrameReader::open(turned)->pictureAt({}, exactly, {72, 0});
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->size, (PictureSize{72, 128}));
    const std::uint8_t* corner = picture->pixels.get() + 4 * (72 * 8 + 12);
    EXPECT_GT(corner[1], 200) << "the first axis of the file's matrix points up: what was right is above";
    EXPECT_LT(corner[2], 50);
}

TEST(MovieWriter, framesAndCutsPicturesOfAnotherSize) {
    const TemporaryDirectory folder;
    platform::MovieWriter writer(folder.path("sizes.mov"), {}, "test");
    for (const int side : {8, 4, 16}) {
        platform::Picture picture;
        picture.size = {side, side};
        const std::shared_ptr<std::uint8_t[]> white(new std::uint8_t[picture.bytes()]);
        std::fill_n(white.get(), picture.bytes(), std::uint8_t{255});
        picture.pixels = white;
        writer.addPicture(picture);
    }
    writer.finish();
    const auto reader = FrameReader::open(folder.path("sizes.mov"));
    for (const int number : {1, 2}) {
        const auto picture = reader->pictureAt({number, 25}, exactly, {});
        ASSERT_TRUE(picture && picture->size == (PictureSize{8, 8}));
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const bool isInside = number == 2 || (std::min(x, y) >= 2 && std::max(x, y) < 6);
                ASSERT_EQ(picture->pixels.get()[4 * (8 * y + x)], isInside ? 255 : 0) << x << ", " << y;
            }
    }
}

TEST(FrameReader, showsOneMomentOfTwoFieldsAndColoursTimesAlpha) {
    const TemporaryDirectory folder;
    // Each frame holds two pictures of numbers 37 apart, line by line.
    const std::string combed = folder.path("combed.mov"), clear = folder.path("clear.mov");
    if (!NumberedClip{600, "50",
                      "-vf \"select='not(mod(n,37))',setpts=N/50/TB,tinterlace=interleave_top\" -r 25 "
                      "-flags +ilme+ildct -c:v prores_ks",
                      256, 288}
             .make(combed))
        GTEST_SKIP() << "no encoder";
    const auto fields = FrameReader::open(combed);
    ASSERT_NE(fields, nullptr);
    for (const int frame : {0, 1, 3, 6}) {
        const auto picture = fields->pictureAt({frame, 25}, exactly, {});
        ASSERT_TRUE(picture);
        EXPECT_EQ(NumberedClip::numberIn(*picture), 74 * frame);
    }
    ASSERT_TRUE((NumberedClip{3, "25", "-vf format=rgba,colorchannelmixer=aa=0.5 -c:v png"}.make(clear)));
    const auto picture = FrameReader::open(clear)->pictureAt({1, 25}, exactly, {});
    ASSERT_TRUE(picture);
    const std::uint8_t* last = picture->pixels.get() + 4 * (36 * 256 + 250); // in the bar of the lowest bit
    EXPECT_NEAR(last[3], 128, 1);
    EXPECT_NEAR(last[1], 110, 2) << "half of the colour";
}

TEST(FrameReader, readsWhatItCanOfDamagedFiles) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("whole.mov");
    ASSERT_TRUE(
        (NumberedClip{120, "25", "-c:v libx264 -preset ultrafast -g 10 -movflags +faststart"}.make(path)));
    const auto whole = FrameReader::open(path);
    ASSERT_NE(whole, nullptr);
    for (const int number : {7, 8}) {
        for (const pid_t helper : children()) {
            ::kill(helper, SIGKILL);
            siginfo_t ended{}; // the file may be the cause if a helper ends during a request
            ::waitid(P_PID, static_cast<id_t>(helper), &ended, WEXITED | WNOWAIT);
        }
        const auto picture = whole->pictureAt({number, 25}, exactly, {});
        ASSERT_TRUE(picture) << "another process reads on";
        EXPECT_EQ(NumberedClip::numberIn(*picture), number);
    }
    const auto bytes = folder.read("whole.mov");
    EXPECT_EQ(FrameReader::open(folder.path("missing.mov")), nullptr);
    EXPECT_EQ(FrameReader::open(folder.write("text.mov", "no video")), nullptr);

    const auto cut = FrameReader::open(folder.write("cut.mov", bytes.substr(0, bytes.size() / 2)));
    ASSERT_NE(cut, nullptr);
    const auto last = cut->pictureAt({1000, 1}, exactly, {});
    ASSERT_TRUE(last) << "the last picture that is there";
    EXPECT_GT(NumberedClip::numberIn(*last), 20);
    EXPECT_LT(cut->facts().duration.seconds(), 4);
    EXPECT_EQ(NumberedClip::numberIn(*cut->pictureAt({}, exactly, {})), 0);

    std::string damaged = bytes;
    for (std::size_t i = damaged.size() / 2; i < damaged.size() / 2 + 3000; ++i) damaged[i] = 'x';
    const auto reader = FrameReader::open(folder.write("damaged.mov", damaged));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(NumberedClip::numberIn(*reader->pictureAt({118, 25}, exactly, {})), 118);
    EXPECT_EQ(NumberedClip::numberIn(*reader->pictureAt({3, 25}, exactly, {})), 3);
    EXPECT_TRUE(reader->pictureAt({60, 25}, exactly, {})) << "a neighbour of what cannot be decoded";

    std::filesystem::resize_file(folder.path("damaged.mov"), 0);
    const auto gone = reader->pictureAt({90, 25}, exactly, {});
    if (gone) {
        EXPECT_LE(gone->time, (MediaTime{118, 25}));
    }

    // The second half in another size.
    const std::string first = folder.path("first.ts"), second = folder.path("second.ts");
    const std::string encoding = "-c:v libx264 -preset ultrafast -g 25";
    ASSERT_TRUE((NumberedClip{50, "25", encoding}.make(first)));
    ASSERT_TRUE((NumberedClip{50, "25", encoding + " -output_ts_offset 2", 384, 216}.make(second)));
    const auto changing =
        FrameReader::open(folder.write("changing.ts", folder.read("first.ts") + folder.read("second.ts")));
    ASSERT_NE(changing, nullptr);
    for (const int number : {49, 50, 75, 10}) {
        const auto picture = changing->pictureAt({number, 25}, exactly, {});
        ASSERT_TRUE(picture);
        EXPECT_EQ(NumberedClip::numberIn(*picture), number % 50);
        EXPECT_EQ(picture->size.width, number < 50 ? 256 : 384);
    }

    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(cut->pictureAt({}, exactly, {}, stop.get_token()), platform::Stopped);
}

} // namespace
} // namespace orvane::test
