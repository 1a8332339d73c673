#include "PictureBenchmarks.h"

#include "PlainDecoding.h"
#include "PlaybackBenchmarks.h"
#include "Process.h"
#include "Sound.h"
#include "Table.h"
#include "WaveformBenchmarks.h"

#include "Platform/MainThread.h"
#include "Platform/Playback/Player.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <random>
#include <sstream>
#include <thread>
#include <unistd.h>
#include <vector>

namespace orvane::bench {

namespace {

using namespace platform;

constexpr double ms = 1000;
constexpr double clipSeconds = 60;

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Seconds of processor time of this process and its children, so far.
double coreSeconds() {
    timespec own{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
    double seconds = static_cast<double>(own.tv_sec) + static_cast<double>(own.tv_nsec) * 1e-9;
    for (const std::string& process : children()) {
        std::ifstream file("/proc/" + process + "/stat");
        std::string text((std::istreambuf_iterator<char>(file)), {});
        std::istringstream fields(text.substr(std::min(text.rfind(')') + 2, text.size())));
        constexpr int before = 11; // fields between the name and the two times
        std::string skipped;
        for (int i = 0; i < before; ++i) fields >> skipped;
        double user = 0, system = 0;
        fields >> user >> system;
        seconds += (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
    }
    return seconds;
}

/// The highest memory use, measured each second. In a separate thread, as counting pages takes longer than a
/// picture is shown.
class MemoryWatch {
  public:
    double most() {
        thread_.request_stop();
        thread_.join();
        return most_;
    }

  private:
    void watch(const std::stop_token& stop) {
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any stopped;
        while (!stopped.wait_for(lock, stop, std::chrono::seconds(1), [&] { return stop.stop_requested(); }))
            most_ = std::max(most_, bytesInMemory());
    }

    double most_ = 0;
    std::jthread thread_{[this](const std::stop_token& stop) { watch(stop); }};
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

bool makeVideo(const std::string& path, const std::string& encoding) {
    if (std::filesystem::exists(path)) return true;
    // Ten seconds are encoded and repeated.
    const std::string part = path + ".part.mov";
    const std::string make =
        "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=1920x1080:r=25:d=10,noise=alls=12:allf=t "
        "-f lavfi -i 'aevalsrc=" +
        std::string("sin(440*t)|sin(550*t)|sin(660*t)|sin(770*t)|sin(880*t)|sin(990*t)|sin(1100*t)|"
                    "sin(1210*t):s=48000:d=10:c=7.1'") +
        " -c:a pcm_s24le " + encoding + " " + part;
    const std::string repeat =
        "ffmpeg -nostdin -v error -y -stream_loop 5 -i " + part + " -map 0 -c copy " + path;
    const bool isMade = std::system(make.c_str()) == 0 && std::system(repeat.c_str()) == 0;
    std::filesystem::remove(part);
    return isMade;
}

/// A player in its own loop.
class Bench {
  public:
    void run(const std::function<void()>& begin) {
        loop->post(begin);
        loop->run();
    }
    void wait(double seconds) {
        loop->after(
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)),
            [this] { loop->quit(); });
        loop->run();
    }
    std::unique_ptr<Player> load(const std::string& path) {
        auto player = system->makePlayer();
        run([&] { player->load({path, {}, {}}, [this](const PlayerFacts&) { loop->quit(); }); });
        return player;
    }
    /// Seconds until the picture is shown.
    double seek(Player& player, MediaTime time) {
        const double before = secondsNow();
        run([&] { player.seek(time, [this](bool) { loop->quit(); }); });
        return secondsNow() - before;
    }

    std::shared_ptr<RunLoop> loop = RunLoop::create();
    std::unique_ptr<PlayerSystem> system = PlayerSystem::create(loop);
};

void printSeeks(Bench& bench, const std::string& work, const std::string& path, bool isIntra) {
    std::mt19937 random(15); // the same places in each run
    std::vector<double> ours, floor;
    const auto player = bench.load(path);
    PlainDecoding plain(path);
    for (int i = 0; i < 25; ++i) {
        const int picture = std::uniform_int_distribution(0, static_cast<int>(clipSeconds * 25) - 30)(random);
        const double before = secondsNow();
        plain.seekTo(picture / 25.0);
        floor.push_back(secondsNow() - before);
        ours.push_back(bench.seek(*player, {picture, 25}));
        bench.wait(0.1);
    }
    const double own = median(ours), other = median(floor);
    if (isIntra)
        printRow(work, text("%.1f ms", own * ms), text("%.1f ms libav", other * ms),
                 text("+%.1f ms", (own - other) * ms), "<= +10 ms", own - other <= 0.010);
    else
        printRow(work, text("%.1f ms", own * ms), text("%.1f ms libav", other * ms),
                 text("%.2f x", own / other), "<= 1.3 x", own <= 1.3 * other);
}

void printOpening(Bench& bench, const std::string& path) {
    std::vector<double> ours, floor;
    for (int i = 0; i < 7; ++i) {
        constexpr MediaTime clap{109, 25};
        double before = secondsNow();
        PlainDecoding(path).seekTo(clap.seconds());
        floor.push_back(secondsNow() - before);
        before = secondsNow();
        const auto player = bench.load(path);
        bench.seek(*player, clap);
        ours.push_back(secondsNow() - before);
    }
    const double own = median(ours), other = median(floor);
    printRow("open a clip until its picture at the clap", text("%.1f ms", own * ms),
             text("%.1f ms libav", other * ms), text("+%.1f ms", (own - other) * ms), "<= +40 ms",
             own - other <= 0.040);
}

/// Milliseconds for each picture, decoded in sequence.
double plainPicture(const std::string& path) {
    constexpr int pictures = 50;
    PlainDecoding plain(path);
    plain.seekTo(16);
    const double before = secondsNow();
    for (int i = 0; i < pictures; ++i) plain.decodeNext();
    return (secondsNow() - before) * ms / pictures;
}

void printSteps(Bench& bench, const std::string& path) {
    const auto player = bench.load(path);
    const double floor = plainPicture(path);
    for (const int direction : {1, -1}) {
        bench.seek(*player, {400, 25});
        std::vector<double> steps;
        for (int i = 1; i <= 4; ++i) {
            bench.wait(0.3); // like a person who looks at each picture
            steps.push_back(bench.seek(*player, {400 + direction * i, 25}));
        }
        const double own = median(steps);
        printRow(direction > 0 ? "step one frame forward" : "step one frame backward",
                 text("%.2f ms", own * ms), text("%.1f ms libav", floor), text("%.2f x", own * ms / floor),
                 "<= 4 ms", own <= 0.004);
    }
}

void printPlaying(Bench& bench, const std::string& path) {
    double before = coreSeconds();
    {
        PlainDecoding plain(path);
        plain.seekTo(0);
        plain.decodeRest();
    }
    const double floor = coreSeconds() - before;
    const auto player = bench.load(path);
    bench.seek(*player, {});
    before = coreSeconds();
    player->setRate(1);
    MemoryWatch memory;
    bench.wait(clipSeconds + 0.5);
    const double most = memory.most();
    const double own = coreSeconds() - before;
    printRow("play H.264 with 8 channels for 60 s: dropped",
             text("%.0f", static_cast<double>(player->droppedPictures())), "", "", "0",
             player->droppedPictures() == 0);
    printRow("the same, processor time", text("%.1f s", own), text("%.1f s libav", floor),
             text("%.2f x", own / floor), "<= 1.5 x", own <= 1.5 * floor);
    printRow("the same, memory with the helpers", text("%.0f MB", most / 1e6), "", "", "<= 300 MB",
             most <= 300e6);
}

void printShown(Bench& bench, const std::string& work, const std::string& path, int count, PictureSize limit,
                double rate) {
    std::vector<std::unique_ptr<Player>> players;
    for (int i = 0; i < count; ++i) {
        players.push_back(bench.load(path));
        players.back()->setPictureSize(limit);
        bench.seek(*players.back(), {rate > 0 ? 0 : 40, 1});
    }
    const auto start = players.front()->hostTime() + std::chrono::milliseconds(50);
    for (const auto& player : players) player->setRate(rate, {rate > 0 ? 0 : 40, 1}, start);
    constexpr double seconds = 20;
    const double before = coreSeconds();
    MemoryWatch memory;
    bench.wait(seconds);
    const double most = memory.most();
    const double used = (coreSeconds() - before) / seconds;
    std::int64_t dropped = 0;
    for (const auto& player : players) dropped += player->droppedPictures();
    const double shown = 1 - static_cast<double>(dropped) / (seconds * 25 * count);
    const double cores = plainPicture(path) * 25 * count / ms;
    printRow(work, text("%.1f %%", 100 * shown), text("libav needs %.2f cores", cores),
             text("%.2f cores", used), ">= 95 %", shown >= 0.95);
    printRow("the same, memory with the helpers", text("%.0f MB", most / 1e6), "", "", "<= 300 MB a player",
             most <= 300e6 * count);
}

void printHalfHour(const std::string& folder) {
    constexpr std::uint32_t sampleRate = 48000;
    const std::string recording = folder + "/30-minutes.wav";
    makeRecording(recording, 30, sampleRate);
    printWaveformRows(recording, folder);
}

} // namespace

std::string groupVideo(const std::string& folder) {
    const std::string path = folder + "/group.mov";
    const bool isMade =
        makeVideo(path, "-c:v libx264 -preset veryfast -g 25 -bf 2 -b:v 12M -pix_fmt yuv420p");
    return isMade ? path : std::string();
}

void printPictureRows(const std::string& folder, const std::string& only) {
    const std::string group = groupVideo(folder), intra = folder + "/intra.mov";
    if (group.empty() || !makeVideo(intra, "-c:v prores_ks -profile:v 2"))
        return printFailure("pictures and the player", "no media tool");
    Bench bench;
    const std::vector<std::pair<std::string, std::function<void()>>> parts{
        {"open", [&] { printOpening(bench, group); }},
        {"seek", [&] { printSeeks(bench, "seek to a random frame, groups of 1 s", group, false); }},
        {"seek-intra", [&] { printSeeks(bench, "seek to a random frame, all-intra", intra, true); }},
        {"step", [&] { printSteps(bench, group); }},
        {"play", [&] { printPlaying(bench, group); }},
        {"nudge", [&] { printNudgeRow(group); }},
        {"cameras",
         [&] {
             printShown(bench, "four cameras at quarter size, shown", group, 4, {480, 270}, 1);
         }},
        {"reverse", [&] { printShown(bench, "reverse at 1, shown", group, 1, {}, -1); }},
        {"waveform", [&] { printHalfHour(folder); }},
    };
    for (const auto& [name, print] : parts)
        if (only.empty() || only == name) print();
}

} // namespace orvane::bench
