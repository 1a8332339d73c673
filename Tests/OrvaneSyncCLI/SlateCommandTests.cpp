#include "OrvaneSyncCLI/RunCommand.h"

#include "MediaFactory/WaveMaker.h"
#include "Support/DrawnPictures.h"
#include "Support/Test.h"

namespace orvane::cli {
namespace {

TEST(SlateCommand, readsTheSlateOfAVideo) {
    const test::TemporaryDirectory folder;
    const std::string video = folder.path("A.mov");
    test::drawVideo(video, "color=gray:r=24", test::DrawnSlate().filters(), 1);
    std::vector<float> samples(std::size_t{10} * 8000, 0.001F);
    samples[8000] = 0.9F;
    const std::string audio =
        folder.write("a.wav", test::WaveMaker().format({.sampleRate = 8000}).samples(samples).bytes());

    const Outcome seen = runWith({"slate", video, "--json"});
    ASSERT_EQ(seen.status, done) << seen.err;
    const platform::JSON json = seen.json();
    ASSERT_TRUE(json.find("ocrScene") && json.find("ocrTake")) << seen.out;
    EXPECT_EQ(*json.find("ocrScene")->string(), "12A");
    EXPECT_EQ(*json.find("ocrTake")->string(), "3");
    EXPECT_EQ(*json.find("clapMethod")->string(), "Visual");
    const Outcome heard = runWith({"slate", video, "--audio", audio});
    EXPECT_NE(heard.out.find("Clap heard at 1.00 s"), std::string::npos) << heard.out;
    EXPECT_EQ(runWith({"slate", audio}).status, failed);
    EXPECT_EQ(runWith({"slate"}).status, wrongUsage);

    const test::ScopedEnvironment data("TESSDATA_PREFIX", "/nowhere");
    EXPECT_NE(runWith({"doctor"}).out.find("install tesseract-ocr-eng"), std::string::npos);
    const Outcome blind = runWith({"slate", video, "--audio", audio, "--json"});
    EXPECT_EQ(blind.status, done);
    EXPECT_NE(blind.err.find("install tesseract-ocr-eng"), std::string::npos) << blind.err;
    EXPECT_EQ(blind.json().find("clapPointSeconds")->number(), 1);
}

} // namespace
} // namespace orvane::cli
