#include "Platform/Stop.h"
#include "Platform/TextRecognizer.h"
#include "Support/DrawnPictures.h"
#include "Support/InterfaceWatching.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <utility>

namespace orvane::platform {
namespace {

using test::drawnPicture;
using test::DrawnSlate;

std::vector<std::string> textsOf(TextRecognizer& recognizer, const Picture& picture, RecognitionLevel level) {
    std::vector<std::string> texts;
    for (const TextLine& line : recognizer.lines(picture, level)) texts.push_back(line.text);
    return texts;
}

TEST(TextRecognizer, readsASlateCellByCell) {
    const auto recognizer = TextRecognizer::create();
    ASSERT_TRUE(recognizer) << textRecognitionState().description;
    const std::string turned = ",rotate=5*PI/180:c=gray";
    const std::string inPerspective = ",perspective=x0=80:y0=40:x1=1200:y1=-30:x2=30:y2=700:x3=1130:y3=790:"
                                      "sense=destination";
    const std::string leaves =
        "geq=lum=128+110*sin(X/7+3*sin(Y/11))*sin(Y/9+4*cos(X/17))*random(1):cb=128:cr="
        "128,gblur=sigma=1.5,";
    struct Case {
        const char* name;
        std::string before;
        DrawnSlate slate;
        std::string behind;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"black on white", {}, {}, {}, {"SCENE 12A", "TAKE 3", "PROD NIGHT TRAIN", "CAMERA BRANDT"}},
        {"chalk on black",
         {},
         {.ink = "white", .board = "0x151515"},
         {},
         {"SCENE 12A", "TAKE 3", "DIRECTOR KELLER"}},
        {"German",
         {},
         {"SZENE", "AUFNAHME", "REGIE", "KAMERA"},
         {},
         {"SZENE 12A", "AUFNAHME 3", "REGIE KELLER", "KAMERA BRANDT"}},
        {"held at an angle", {}, {}, turned, {"SCENE 12A", "TAKE 3"}},
        {"in perspective", {}, {}, inPerspective, {"SCENE 12A", "TAKE 3"}},
        {"faint", {}, {.ink = "0x909090", .board = "0xb8b8b8"}, {}, {"SCENE 12A"}},
        {"before leaves", leaves, {}, {}, {"SCENE 12A", "TAKE 3"}},
    };
    for (const Case& one : cases) {
        const Picture picture = drawnPicture("color=gray", one.before + one.slate.filters() + one.behind);
        const auto texts = textsOf(*recognizer, picture, RecognitionLevel::accurate);
        for (const std::string& line : one.lines)
            EXPECT_TRUE(std::ranges::find(texts, line) != texts.end())
                << one.name << ": no \"" << line << "\" in " << testing::PrintToString(texts);
        EXPECT_LE(texts.size(), 9U) << one.name << testing::PrintToString(texts);
    }
}

TEST(TextRecognizer, keepsShortValuesBesideTheirLabels) {
    const auto recognizer = TextRecognizer::create();
    ASSERT_TRUE(recognizer) << textRecognitionState().description;
    const auto row = [](const std::string& text, int y) {
        return "drawtext=fontfile=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf:fontsize=70:text=" + text +
               ":x=300:y=" + std::to_string(y);
    };
    const Picture picture =
        drawnPicture("color=white", row("Scene\\\\: 14B", 150) + "," + row("Take\\\\: 7", 300) + "," +
                                        row("Roll   C7", 450));
    auto texts = textsOf(*recognizer, picture, RecognitionLevel::accurate);
    for (std::string& text : texts) std::erase(text, ':'); // its dots are no letters
    EXPECT_EQ(texts, (std::vector<std::string>{"Scene 14B", "Take 7", "Roll C7"}));
}

TEST(TextRecognizer, isReportedOnTheInterfaceThread) {
    const auto recognizer = TextRecognizer::create();
    ASSERT_TRUE(recognizer) << textRecognitionState().description;
    const std::pair<const char*, std::function<void()>> reads[] = {
        {"create", [] { TextRecognizer::create(); }},
        {"state", [] { textRecognitionState(); }},
        {"lines", [&] { recognizer->lines({}, RecognitionLevel::fast); }}};
    for (const auto& [name, read] : reads) EXPECT_FALSE(test::whatHoldsUp(read).empty()) << name;
}

TEST(TextRecognizer, readsNoTextInTexture) {
    const auto recognizer = TextRecognizer::create();
    ASSERT_TRUE(recognizer);
    const std::string face = "geq=lum=60+120*lt(hypot(X-330\\,Y-330)\\,150)-90*lt(hypot(X-280\\,Y-290)\\,20)"
                             "-90*lt(hypot(X-390\\,Y-290)\\,20)+20*random(1):cb=118:cr=140";
    const std::string sign = "drawbox=x=200:y=200:w=300:h=100:color=blue:t=fill,drawtext=text=HAUPTSTRASSE:"
                             "fontfile=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf:x=210:y=235:"
                             "fontsize=34:fontcolor=white";
    struct Case {
        const char* name;
        std::string source, filters;
        std::size_t most;
    };
    const Case cases[] = {
        {"noise", "color=gray", "noise=alls=100", 0},
        {"leaves", "color=gray",
         "geq=lum=128+110*sin(X/7+3*sin(Y/11))*sin(Y/9+4*cos(X/17))*random(1):cb=128:cr=128,gblur=sigma=1.5",
         0},
        {"twigs", "cellauto=rule=30", "gblur=sigma=3", 0},
        {"a face", "color=gray", face, 0},
        {"an even wall", "color=gray", "null", 0},
        {"a street sign", "color=gray", sign, 1},
    };
    for (const Case& one : cases) {
        const Picture picture = drawnPicture(one.source, one.filters);
        for (const auto level : {RecognitionLevel::fast, RecognitionLevel::accurate}) {
            const auto texts = textsOf(*recognizer, picture, level);
            EXPECT_LE(texts.size(), one.most) << one.name << testing::PrintToString(texts);
        }
    }
    EXPECT_TRUE(textsOf(*recognizer, Picture{}, RecognitionLevel::fast).empty());
    Picture pixel = drawnPicture("color=gray", "null");
    pixel.size = {1, 1};
    EXPECT_TRUE(textsOf(*recognizer, pixel, RecognitionLevel::accurate).empty());
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(recognizer->lines(drawnPicture("color=gray", DrawnSlate().filters()), RecognitionLevel::fast,
                                   stopped.get_token()),
                 Stopped);
}

TEST(TextRecognizer, saysWhatToInstallWithoutData) {
    const test::ScopedEnvironment data("TESSDATA_PREFIX", "/nowhere");
    EXPECT_FALSE(TextRecognizer::create());
    const TextRecognitionState state = textRecognitionState();
    EXPECT_FALSE(state.isAvailable);
    EXPECT_NE(state.description.find("tesseract-ocr-eng"), std::string::npos) << state.description;
}

} // namespace
} // namespace orvane::platform
