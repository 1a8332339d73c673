#include "MediaFactory/SmallShoot.h"

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "Platform/Files.h"

#include <cstdint>

namespace orvane::test {

namespace {

constexpr std::uint32_t sampleRate = 48000;
constexpr std::uint32_t framesPerSecond = 25;
constexpr std::uint32_t tenOClock = 36000;

void makeClip(const std::string& path, std::uint32_t firstFrame, std::uint32_t frames) {
    MovieMaker().video({.frames = frames}).timecode({.firstFrame = firstFrame}).writeTo(path);
}

void makeRecording(const std::string& path, std::uint32_t start, const std::string& scene) {
    const IXMLText ixml{.scene = scene,
                        .take = "003",
                        .tape = "SR001",
                        .tracks = {"Mix", "Boom", "Lav Anna", "Lav Ben", "Lav Cleo", "Plant"}};
    WaveMaker()
        .format({.channels = 6, .sampleRate = sampleRate, .samples = SampleFormat::pcm16})
        .bext({.originator = "Recorder",
               .date = "2026-11-20",
               .timeReference = std::uint64_t{start} * sampleRate})
        .iXML(ixml.text())
        .silence(std::uint64_t{20} * sampleRate)
        .writeTo(path);
}

} // namespace

void makeSmallShoot(const std::string& folder) {
    const std::string camera = folder + "/camera/", sound = folder + "/sound/";
    platform::files::createDirectories(camera);
    platform::files::createDirectories(sound);
    const std::uint32_t first = tenOClock * framesPerSecond;
    makeClip(camera + "A001C001_261120_R1AB.mov", first + 2 * framesPerSecond, 8 * framesPerSecond);
    makeClip(camera + "B001C001_261120_R1CD.mov", first + 2 * framesPerSecond + 12, 8 * framesPerSecond);
    makeClip(camera + "A001C002_261120_MOS.mov", first + 600 * framesPerSecond, 4 * framesPerSecond);
    makeClip(camera + "A001C003_261120_R1AB.mov", first + 900 * framesPerSecond, 4 * framesPerSecond);
    makeRecording(sound + "DAY1_T01.WAV", tenOClock, "12A");
    makeRecording(sound + "DAY1_ROOMTONE.WAV", tenOClock + 595, "12");
}

} // namespace orvane::test
