#include "Platform/MediaRecognition.h"

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "Support/Test.h"

namespace orvane::platform {
namespace {

using namespace std::string_literals;

bool begins(const std::string& bytes) {
    auto file = RandomAccessFile::overBytes(std::as_bytes(std::span(bytes)));
    return beginsAsMedia(file);
}

std::string packets(std::size_t front, std::size_t length) {
    std::string bytes;
    for (int i = 0; i < 6; ++i) bytes += std::string(front, 'x') + "G" + std::string(length - front - 1, 'x');
    return bytes;
}

TEST(MediaRecognition, mediaIsRecognisedByItsFirstBytesWhateverItsName) {
    const std::string partition = "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01\x02\x04"s;
    const std::string movie = test::MovieMaker().video({}).bytes();
    const std::pair<const char*, std::string> media[] = {
        {"a recording", test::WaveMaker().format({}).silence(10).bytes()},
        {"a large one", test::WaveMaker().format({}).rf64().silence(10).bytes()},
        {"a movie", movie},
        {"a movie without ftyp", movie.substr(movie.find("moov") - 4)},
        {"a movie behind room for its header", test::atom("wide") + test::atom("free", "room") + movie},
        {"a movie that was cut off", test::atomClaiming(1U << 30U, "mdat", "x")},
        {"AIFF", "FORM\x00\x00\x10\x00"
                 "AIFFCOMM"s},
        {"R3D", "\x00\x00\x01\x78RED2"s},
        {"MXF", partition},
        {"MXF behind a run-in", std::string(5000, ' ') + partition},
        {"Matroska", "\x1A\x45\xDF\xA3\x01"s},
        {"a transport stream", packets(0, 188)},
        {"that of an AVCHD camera", packets(4, 192)},
        {"MP3", ("\xFF\xFB\x90\x00"s + std::string(413, 'x')) +
                    ("\xFF\xFB\x92\x00"s + std::string(414, 'x')) + "\xFF\xFB\x90\x00"s},
        {"AAC", ("\xFF\xF1\x50\x80\x01\x1F\xFC"s + "x") + ("\xFF\xF1\x50\x80\x01\x1F\xFC"s + "x") +
                    "\xFF\xF1\x50\x80\x01\x1F\xFC"s},
        {"AAC in LATM", "\x56\xE0\x01x\x56\xE0\x01x\x56\xE0\x01x"s},
        {"TrueHD", "\xC0\x20\x00\x00\xF8\x72\x6F\xBA"s},
        {"BMP", "BM\x0A\x00\x00\x00\x00\x00\x00\x00"s},
        {"PPM", "P6\n640 480\n255\n"},
        {"a raw picture", "II*\x00\x08\x00"s},
        {"a picture", "\x89PNG\r\n\x1A\n"s}};
    for (const auto& [name, bytes] : media) EXPECT_TRUE(begins(bytes)) << name;

    const std::pair<const char*, std::string> texts[] = {
        {"nothing", ""},
        {"a document", "<?xml version=\"1.0\"?>\n<fcpxml version=\"1.14\">"},
        {"a report in UTF-16", "\xFF\xFEN\x00"
                               "a\x00m\x00"
                               "e\x00"s +
                                   std::string(9000, '\0')},
        {"words that kinds of media have too", "The free moov"},
        {"the same", "BMW, day 1"},
        {"the same", "P6\nProtokoll"},
        {"the same", "Format: AIFF"},
        {"the same", "The RED2 camera"},
        {"the same", "ARRI Alexa, day 1"},
        {"free room and nothing behind it", test::atom("free", "room")}};
    for (const auto& [name, bytes] : texts)
        EXPECT_FALSE(begins(bytes)) << name << ": " << bytes.substr(0, 20);

    for (const char* name : {"A001.R3D", "a/b.braw", "x.MXF", "GX01.360", "t.wav", "T01.W64", "c.fcpxml.MOV"})
        EXPECT_TRUE(isMediaName(name)) << name;
    for (const char* name : {"out.fcpxml", "wav", "a.mov/out", "day.csv", "a.mov.txt", "", "x."})
        EXPECT_FALSE(isMediaName(name)) << name;
}

} // namespace
} // namespace orvane::platform
