#include "ViewBenchmarks.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "PictureBenchmarks.h"
#include "Platform/InterfaceThread.h"
#include "Process.h"
#include "Table.h"
#include "TimelineBenchmarks.h"

#include <QApplication>
#include <QEvent>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cxxabi.h>
#include <filesystem>
#include <malloc.h>
#include <typeinfo>
#include <utility>
#include <vector>

namespace orvane::bench {

namespace {

constexpr double ms = 1000;
constexpr int clipSeconds = 8;
constexpr double clapSeconds = 2;
constexpr std::size_t clipCount = 500;
constexpr int eveningClips = 150, changes = 1000;

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

/// Bytes that the heap of this process has allocated, for all threads.
double bytesInUse() {
    char* report = nullptr;
    std::size_t length = 0;
    FILE* out = open_memstream(&report, &length);
    malloc_info(0, out);
    std::fclose(out);
    const std::string all(report, length);
    std::free(report);
    // These values are followed by the sums of all areas.
    const auto sum = [&](const char* what) {
        const std::size_t at = all.find("size=\"", all.rfind(what));
        return at == std::string::npos ? 0 : std::strtod(all.c_str() + at + std::strlen("size=\""), nullptr);
    };
    return sum("<system type=\"current\"") + sum("<total type=\"mmap\"") - sum("<total type=\"fast\"") -
           sum("<total type=\"rest\"");
}

std::string classOf(const QObject& object) {
    int status = 0;
    char* name = abi::__cxa_demangle(typeid(object).name(), nullptr, nullptr, &status);
    std::string result = status == 0 ? name : "";
    std::free(name);
    return result.substr(result.rfind(':') + 1);
}

/// Measures each event of the loop except paint events.
class WatchedApplication : public QApplication {
  public:
    using QApplication::QApplication;

    struct Piece {
        double milliseconds = 0; ///< of processor time
        std::string name;
    };
    std::vector<Piece> longest() {
        std::ranges::sort(pieces_, std::greater<>(), &Piece::milliseconds);
        return pieces_;
    }
    void forget() { pieces_.clear(); }

    bool notify(QObject* receiver, QEvent* event) override {
        if (isUnderWay_) return QApplication::notify(receiver, event);
        const QEvent::Type type = event->type();
        const bool isPaint = type == QEvent::Paint || type == QEvent::UpdateRequest;
        std::string name = isPaint ? std::string() : classOf(*receiver);
        workOfPiece().clear();
        isUnderWay_ = true;
        const double begin = threadSeconds();
        const bool isUsed = QApplication::notify(receiver, event);
        const double took = (threadSeconds() - begin) * ms;
        isUnderWay_ = false;
        constexpr double worthKeeping = 2;
        if (isPaint || took < worthKeeping) return isUsed;
        name += workOfPiece().empty() ? " " + std::to_string(type) : ", " + workOfPiece();
        pieces_.push_back({took, std::move(name)});
        return isUsed;
    }
    /// The name of the posted work that ran last on the interface thread.
    static std::string& workOfPiece() {
        static std::string work;
        return work;
    }

  private:
    bool isUnderWay_ = false;
    std::vector<Piece> pieces_;
};

/// Runs the loop, without a pause, until the condition holds. False after a minute.
bool waitFor(const std::function<bool()>& holds) {
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(std::chrono::minutes(1));
    while (!holds()) {
        if (!limit.isActive()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Detects when the picture of the clip is on the screen.
class PaintWatch : public QObject {
  public:
    explicit PaintWatch(views::PictureCanvas& canvas) : canvas_(canvas) { canvas.installEventFilter(this); }
    bool isPainted = false;

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint && canvas_.hasPicture()) isPainted = true;
        return false;
    }

  private:
    views::PictureCanvas& canvas_;
};

/// A window with many clips; all show the same few seconds under different names.
class Evening {
  public:
    explicit Evening(const std::string& folder) : folder_(folder + "/evening") {
        std::filesystem::create_directories(folder_);
        registerStandardDefaults(*settings_);
        views::Desktop::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_ + "/sessions";
        dependencies.openPlayers = [this] {
            return std::shared_ptr(platform::PlayerSystem::create(mainThread_));
        };
        desktop_ = std::make_unique<views::Desktop>(std::move(dependencies));
        window_ = std::make_unique<views::MainWindow>(*desktop_);
    }

    bool makeMedia() {
        const std::string video = folder_ + "/clip.mov", sound = folder_ + "/take.wav";
        const std::string make = "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=960x540:r=25:d=" +
                                 std::to_string(clipSeconds) +
                                 " -c:v libx264 -preset veryfast -g 25 -pix_fmt yuv420p " + video;
        if (!std::filesystem::exists(video) && std::system(make.c_str()) != 0) return false;
        constexpr std::uint32_t rate = 48'000;
        std::vector<float> samples(std::size_t{2} * rate * clipSeconds);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = (i % 7 == 0 ? 0.2F : -0.1F) * static_cast<float>(i % 9000) / 9000;
        test::WaveMaker().format({.channels = 2, .sampleRate = rate}).samples(samples).writeTo(sound);
        std::vector<SyncGroup> clips;
        for (std::size_t i = 0; i < clipCount; ++i) {
            const std::string number = std::to_string(1000 + i);
            MediaAsset picture = asset(AssetKind::video, video, "A" + number + ".mov");
            picture.frameRate = 25;
            MediaAsset recording = asset(AssetKind::audio, sound, "T" + number + ".wav");
            recording.channelCount = 2;
            recording.sampleRate = rate;
            SyncGroup clip(std::move(picture), {AudioMatch(std::move(recording), 0, 1)},
                           MatchStatus::matched());
            clip.audioAnchorOffsetInAudioSeconds = clapSeconds;
            ids_.push_back(clip.id);
            clips.push_back(std::move(clip));
        }
        desktop_->controller().openStoredWork({{}, {}, SyncGroupList(std::move(clips))});
        constexpr int width = 1600, height = 1000;
        window_->resize(width, height);
        window_->show();
        window_->openReview(ids_.front());
        return waitFor([this] { return canvas().hasPicture(); });
    }

    views::PictureCanvas& canvas() { return window_->review().picture().canvas(); }
    views::PictureView& picture() { return window_->review().picture(); }
    void press(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QTest::keyClick(window_.get(), key, held);
        QCoreApplication::processEvents();
    }

    /// Seconds from the key press until the clip's picture is painted; absent if it is not.
    std::optional<double> goOn(Qt::Key key) {
        PaintWatch watch(canvas());
        const double begin = secondsNow();
        QTest::keyClick(window_.get(), key);
        if (!waitFor([&] { return watch.isPainted; })) return std::nullopt;
        return secondsNow() - begin;
    }

    /// Seconds that the player alone needs for another clip.
    double loadAlone(std::size_t number) {
        if (!engine_)
            engine_ = VideoEngine::create(
                {.mainThread = mainThread_, .openPlayers = [this] { return desktop_->players().players(); }});
        const SyncGroup& clip = *desktop_->controller().work().syncGroups().find(ids_.at(number));
        const double begin = secondsNow();
        const platform::Task loading =
            engine_->loadClip(clip.video.url, TakeSound(clip.primaryAudio()->url), 0, clapSeconds);
        waitFor([&] { return loading.isDone(); });
        const double took = secondsNow() - begin;
        engine_->cleanup();
        return took;
    }

    void run(std::string_view command) { desktop_->run(command); }

    /// Closes the clip, measures when all its operations have ended, and opens it again.
    void atRest(const std::function<void()>& measure) {
        const auto clip = window_->review().clip();
        window_->review().leave();
        constexpr int pause = 100, enough = 5, most = 60; // a pause in milliseconds
        constexpr double little = 8192;                   // bytes of timers and other small objects
        double last = 0;
        for (int i = 0, same = 0; i < most && same < enough; ++i) {
            QTest::qWait(pause);
            const double now = bytesInUse();
            same = std::abs(now - last) < little ? same + 1 : 0;
            last = now;
        }
        measure();
        window_->openReview(*clip);
        waitFor([this] { return canvas().hasPicture(); });
    }

  private:
    MediaAsset asset(AssetKind kind, const std::string& file, const std::string& name) {
        const std::filesystem::path path = std::filesystem::path(folder_) / name;
        if (!std::filesystem::exists(path)) std::filesystem::create_hard_link(file, path);
        MediaAsset made(FileURL{path}, kind);
        made.startTimecodeString = "10:00:00:00";
        made.durationSeconds = clipSeconds;
        return made;
    }

    const std::string folder_;
    const std::shared_ptr<platform::MainThread> mainThread_ = views::qtMainThread();
    const std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::unique_ptr<views::Desktop> desktop_;
    std::unique_ptr<views::MainWindow> window_;
    std::shared_ptr<VideoEngine> engine_;
    std::vector<UUID> ids_;
};

void printPicture(Evening& evening) {
    constexpr int paints = 41;
    constexpr double most = 3;
    waitFor([&] { return evening.canvas().isSettled(); });
    QImage image(evening.picture().size(), QImage::Format_RGB32);
    std::vector<double> times;
    for (int i = 0; i < paints; ++i) {
        const double begin = threadSeconds();
        evening.picture().render(&image);
        times.push_back((threadSeconds() - begin) * ms);
    }
    printRow(
        text("picture of 960 pixels, enlarged to %.0f, with what lies around it", evening.canvas().width()),
        text("%.2f ms", median(times)), "", "", text("< %.0f ms", most), median(times) < most);
}

void printNextClip(Evening& evening) {
    constexpr int clips = 31;
    constexpr double most = 20;
    std::vector<double> own, alone;
    for (int i = 0; i < clips; ++i) {
        alone.push_back(evening.loadAlone(clipCount - 1 - static_cast<std::size_t>(i)) * ms);
        const auto took = evening.goOn(Qt::Key_BracketRight);
        if (!took) return printFailure("next clip, key press to picture", "no picture");
        own.push_back(*took * ms);
        QTest::qWait(200); // like a person who looks at it: thumbnails and waveform are made
    }
    const double more = median(own) - median(alone);
    printRow("next clip, key press to picture", text("%.1f ms", median(own)),
             text("%.1f ms player alone", median(alone)), text("+%.1f ms", more), text("<= +%.0f ms", most),
             more <= most);
}

void printPieces(WatchedApplication& application, Evening& evening) {
    application.forget();
    for (int i = 0; i < eveningClips; ++i) {
        if (!evening.goOn(Qt::Key_BracketRight)) return printFailure("an evening", "no picture");
        for (const Qt::Key key : {Qt::Key_Period, Qt::Key_Period, Qt::Key_Period, Qt::Key_Comma,
                                  Qt::Key_Right, Qt::Key_Left, Qt::Key_C, Qt::Key_Escape, Qt::Key_Space,
                                  Qt::Key_Space, Qt::Key_A, Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Return})
            evening.press(key);
        evening.press(Qt::Key_L, Qt::ControlModifier);
        for (const char* command : {"undo", "redo"}) evening.run(command);
    }
    const auto pieces = application.longest();
    const double most = std::chrono::duration<double, std::milli>(platform::longestInterfaceWork).count();
    const double longest = pieces.empty() ? 0 : pieces.front().milliseconds;
    printRow(text("longest piece of work of an evening of %.0f clips, but painting", eveningClips),
             text("%.1f ms", longest), "", "", text("< %.0f ms", most), longest < most);
    constexpr std::size_t named = 8;
    for (std::size_t i = 0; i < std::min(named, pieces.size()); ++i)
        printRow("  " + pieces[i].name.substr(0, 100), text("%.1f ms", pieces[i].milliseconds), "", "", "",
                 pieces[i].milliseconds < most);
}

/// The average change from one value to the next, and its error.
struct Slope {
    double perStep = 0;
    double error = 0; ///< standard error
};

/// The median of the slopes between any two values (Theil and Sen), which a few outliers do not change. Its
/// error is computed from the median distance of the values to that line.
Slope slopeOf(const std::vector<double>& values) {
    std::vector<double> slopes, levels, distances;
    for (std::size_t i = 0; i < values.size(); ++i)
        for (std::size_t j = i + 1; j < values.size(); ++j)
            slopes.push_back((values[j] - values[i]) / static_cast<double>(j - i));
    Slope slope{median(std::move(slopes))};
    for (std::size_t i = 0; i < values.size(); ++i)
        levels.push_back(values[i] - slope.perStep * static_cast<double>(i));
    const double level = median(levels);
    for (const double one : levels) distances.push_back(std::abs(one - level));
    constexpr double deviationsPerMedian = 1.4826; // of a normal distribution
    const auto n = static_cast<double>(values.size());
    slope.error = deviationsPerMedian * median(distances) / std::sqrt(n * (n * n - 1) / 12);
    return slope;
}

/// How memory changes over clip changes once the caches are full. It is read while no clip is open: the
/// number of decoded pictures in a player varies by more than a leak adds in hours.
void printMemory(Evening& evening) {
    constexpr double mega = 1e6, mostInUse = 1, most = 5;
    constexpr int there = 200, filling = 2 * there, step = 50;
    std::vector<double> inUse, inMemory;
    for (int i = 0; i <= filling + changes; ++i) {
        if (i >= filling && i % step == 0) {
            evening.atRest([&] {
                inUse.push_back(bytesInUse());
                malloc_trim(0);
                inMemory.push_back(bytesInMemory());
            });
        }
        if (!evening.goOn(i / there % 2 == 0 ? Qt::Key_BracketRight : Qt::Key_BracketLeft))
            return printFailure("memory", "no picture");
    }
    const auto print = [](const std::string& name, const std::vector<double>& readings, double reach) {
        const Slope slope = slopeOf(readings);
        const double grown = slope.perStep / step * changes / mega,
                     error = slope.error / step * changes / mega;
        printRow("memory " + name + text(" per %.0f clip changes", changes),
                 text("%+.2f MB", grown) + text(" +- %.2f", error),
                 text("of %.0f MB", median(readings) / mega), "", text("<= +%.0f MB", reach),
                 grown <= reach && error <= reach);
    };
    print("in use", inUse, mostInUse);
    print("of the process and its helpers", inMemory, most);
}

} // namespace

void printViewRows(const std::string& folder) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int count = 1;
    static std::array<char, 6> name{"bench"};
    static std::array<char*, 2> arguments{name.data(), nullptr};
    platform::watchInterfaceWork({.hasRun = [](const char* work, std::chrono::nanoseconds) {
        WatchedApplication::workOfPiece() = work;
    }});
    // Not destroyed, because other rows use it after these.
    auto& application = *new WatchedApplication(count, arguments.data());
    QCoreApplication::setOrganizationName(QStringLiteral("OrvaneSyncBench"));
    design::applyTheme(application);
    const std::string video = groupVideo(folder);
    if (video.empty()) return printFailure("the window", "no media tool");
    printTimelineRows(video);
    Evening evening(folder);
    if (!evening.makeMedia()) return printFailure("the review", "no media tool");
    printPicture(evening);
    printNextClip(evening);
    printPieces(application, evening);
    printMemory(evening);
}

} // namespace orvane::bench
