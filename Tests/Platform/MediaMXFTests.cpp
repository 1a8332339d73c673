#include "MediaFactory/MediaFactory.h"
#include "MediaInspectionText.h"
#include "Platform/Media/MXFHeaders.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::mxfHeader;
using test::MXFSpec;

/// Frames, rate and drop flag of the start, and whether the header alone is enough.
std::string mxfText(const std::string& bytes) {
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(bytes)));
    const auto mxf = platform::inspectMXF(file);
    if (!mxf) return "nothing";
    std::string text = mxf->isComplete ? "" : "incomplete ";
    const auto& start = mxf->facts.startTimecode;
    if (!start) return text + "no start";
    return text + std::to_string(start->frames) + " at " + std::to_string(start->rateNumerator) + "/" +
           std::to_string(start->rateDenominator) + (start->isDrop ? " drop" : "");
}

TEST(MXF, theStartThatCounts) {
    const auto check = [](const char* name, const MXFSpec& spec, const char* expected) {
        EXPECT_EQ(mxfText(mxfHeader(spec)), expected) << name;
    };
    check("the material package's", {.packages = {{{{90000}}}, {{{500}}}}}, "90000 at 25/1");
    check("moved by no position of its own", {.packages = {{{{90000}}, 10}, {{{500}}}}}, "90000 at 25/1");
    check("the file's where that is 0", {.packages = {{{{0}}, 10}, {{{500}}}}}, "510 at 25/1");
    check("the file's where that is absent", {.packages = {{}, {{{500}}}}}, "500 at 25/1");
    check("the tape's, at the clip's place on it", {.packages = {{{{0}}}, {{}, 750}, {{{90000}}}}},
          "90750 at 25/1");
    check("a tape that counts from 0", {.packages = {{{{0}}}, {{}, 750}, {{{0}}}}}, "750 at 25/1");
    check("a midnight with frames in front", {.packages = {{{{0}}, 10}, {{{0}}}}}, "0 at 25/1");
    check("a stated midnight", {.packages = {{{{0}}}, {{{0}}}}}, "0 at 25/1");
    check("none at all", {.packages = {{}, {}}}, "no start");
    check("drop frame",
          {.rateNumerator = 30000, .rateDenominator = 1001, .packages = {{{{1800, 30, true}}}, {}}},
          "1800 at 30000/1001 drop");
    check("a base that counts pairs", {.rateNumerator = 50, .packages = {{{{100, 25}}}, {}}}, "100 at 25/1");
    check("pairs of fractional frames",
          {.rateNumerator = 60000, .rateDenominator = 1001, .packages = {{{{100, 30}}}, {}}},
          "100 at 30000/1001");
    check("no base", {.packages = {{{{100, 0}}}, {{{7}}}}}, "7 at 25/1");
    check("a clip that is its own source ends", {.packages = {{{{0}}, 5}}}, "incomplete 0 at 25/1");
    check("unknown length", {.duration = -1}, "incomplete 0 at 25/1");
    check("unknown codec", {.coding = "\x04\x01\x02\x02\x7F"}, "incomplete 0 at 25/1");
}

TEST(MXF, theFinishedHeaderCounts) {
    const MXFSpec open{.duration = -1, .packages = {{{{0}}}, {}}, .status = 1},
        done{.packages = {{{{90000}}}, {}}};
    for (const bool headerKnowsFooter : {true, false})
        EXPECT_EQ(mxfText(test::mxfWithFooter(open, done, headerKnowsFooter)), "90000 at 25/1");
    EXPECT_EQ(mxfText(mxfHeader(open)), "incomplete 0 at 25/1") << "a recording that was cut off";
    EXPECT_EQ(mxfText(std::string(60000, 'x') + mxfHeader(done)), "90000 at 25/1") << "behind a run-in";
    EXPECT_EQ(mxfText(std::string(70000, 'x') + mxfHeader(done)), "nothing");
}

TEST(MXF, theShareThatACopyReached) {
    const std::string front = mxfHeader({}), footer = test::mxfWithFooter({}, {}, true).substr(front.size());
    constexpr std::size_t size = 1 << 20U;
    std::string whole = front;
    for (std::uint32_t at = 0; whole.size() < size; ++at) whole += static_cast<char>(at * 2654435761U >> 24U);
    constexpr std::size_t footerAt = 24 + 20; // within the partition's pack, after its key and length
    whole.replace(footerAt, 8, test::be64(size)).append(footer);
    const auto share = [](std::string bytes, std::size_t zerosFrom) {
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(zerosFrom), bytes.end(), '\0');
        return test::inspectBytes(bytes)->heldShare.value_or(-1);
    };
    EXPECT_EQ(share(whole, whole.size()), -1);
    EXPECT_NEAR(share(whole, size / 2), 0.5, 0.001);
    EXPECT_EQ(share(whole, size - 4), -1) << "a damaged footer alone";
    EXPECT_EQ(share(whole.replace(size / 2, size / 2, size / 2, '\0'), whole.size()), -1) << "black pictures";
}

TEST(MXF, sizesAndLength) {
    const auto check = [](const MXFSpec& spec, const char* expected) {
        EXPECT_EQ(test::inspectionText(test::inspectBytes(mxfHeader(spec))), expected);
    };
    check({}, "10 s, AVdn 1920x1080 25 fps");
    check({.soundDuration = 250}, "10 s, AVdn 1920x1080 25 fps, 48000 Hz 2 ch");
    check({.height = 540, .frameLayout = 1}, "10 s, AVdn 1920x1080 25 fps");
    check({.rateNumerator = 24000, .rateDenominator = 1001, .duration = 24},
          "1.001 s, AVdn 1920x1080 23.97602 fps");
}

TEST(MXF, anyCutOfAFileIsReadOrNot) {
    const std::string whole = mxfHeader({.created = test::be16(2024) + std::string("\x05\x11\x0A\0\0\0", 6)});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string text = mxfText(whole.substr(0, size));
        EXPECT_TRUE(text == "nothing" || text.ends_with("no start") || text.ends_with("0 at 25/1")) << size;
    }
    EXPECT_EQ(test::inspectBytes(whole)->headerTime, 1715940000) << "2024-05-17 10:00 UTC";
}

} // namespace
} // namespace orvane
