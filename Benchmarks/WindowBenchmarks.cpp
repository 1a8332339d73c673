#include "WindowBenchmarks.h"

#include "Corpus.h"
#include "Process.h"
#include "Table.h"
#include "WindowSystem.h"

#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <QPaintEvent>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

namespace orvane::bench {

namespace {

constexpr int clips = 10000;
constexpr int channels = 8;
constexpr int frames = 200;

/// The time of a clock of the system, in milliseconds.
double milliseconds(clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now);
    constexpr double perSecond = 1e3, perNanosecond = 1e-6;
    return perSecond * static_cast<double>(now.tv_sec) + perNanosecond * static_cast<double>(now.tv_nsec);
}
double ofProcess() { return milliseconds(CLOCK_PROCESS_CPUTIME_ID); }
double ofThread() { return milliseconds(CLOCK_THREAD_CPUTIME_ID); }

/// Open work of many clips, and its list on a screen.
class List {
  public:
    explicit List(const std::string& folder) {
        const auto settings = std::make_shared<platform::MemorySettingsStore>();
        registerStandardDefaults(*settings);
        views::Desktop::Dependencies dependencies;
        dependencies.mainThread = views::qtMainThread();
        dependencies.settings = settings;
        dependencies.sessionsDir = folder + "/list-sessions";
        desktop_ = std::make_unique<views::Desktop>(std::move(dependencies));
        desktop_->controller().openStoredWork({{}, {}, matchedGroups(clips, channels)});
    }

    /// Processor time of the process until the first rows are painted, in milliseconds.
    double open() {
        const double begin = ofProcess();
        view_ = std::make_unique<views::ResultsView>(*desktop_, views::ScreenHost{});
        view_->resize(1440, 800);
        view_->show();
        QCoreApplication::processEvents();
        return ofProcess() - begin;
    }

    /// Scrolls down so many points in each frame: the time that nineteen of twenty frames do not exceed.
    double scroll(int points) {
        QScrollBar& bar = *view_->table()->verticalScrollBar();
        bar.setValue(0);
        QCoreApplication::processEvents();
        std::vector<double> times;
        for (int i = 0; i < frames; ++i) {
            const double begin = ofThread();
            bar.setValue(points * (i + 1) % bar.maximum());
            QCoreApplication::processEvents();
            times.push_back(ofThread() - begin);
        }
        constexpr double most = 0.95;
        const auto place = times.begin() + static_cast<std::ptrdiff_t>(most * frames);
        std::ranges::nth_element(times, place);
        return *place;
    }

    struct Repaint {
        int rows = 0; ///< that were painted at least in part
        double milliseconds = 0;
    };
    /// The repaint after a decision about one visible clip.
    Repaint changeOne() {
        class Watch : public QObject {
          public:
            bool eventFilter(QObject*, QEvent* event) override {
                if (event->type() == QEvent::Paint) painted += static_cast<QPaintEvent*>(event)->region();
                return false;
            }
            QRegion painted;
        } watch;
        QTableView& table = *view_->table();
        table.verticalScrollBar()->setValue(0);
        QCoreApplication::processEvents();
        table.viewport()->installEventFilter(&watch);
        constexpr std::size_t inView = 3;
        const UUID id = desktop_->controller().work().syncGroups()[inView].id;
        const double begin = ofThread();
        desktop_->controller().clips().toggleApproved(id);
        QCoreApplication::processEvents();
        const double passed = ofThread() - begin;
        int rows = 0;
        for (int row = table.rowAt(0); row >= 0 && row <= table.rowAt(table.viewport()->height() - 1); ++row)
            if (watch.painted.intersects(QRect(0, table.rowViewportPosition(row), table.viewport()->width(),
                                               table.rowHeight(row))))
                ++rows;
        return {rows, passed};
    }

  private:
    std::unique_ptr<views::Desktop> desktop_;
    std::unique_ptr<views::ResultsView> view_;
};

/// Measures whole processes without a screen, each with settings of its own, until the window accepts keys.
void printStartRow(const std::string& programs, const std::string& folder) {
    const auto started = [&](const std::vector<std::string>& program) {
        std::vector<std::string> words{"env", "QT_QPA_PLATFORM=offscreen"};
        for (const char* place : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            words.push_back(std::string(place) + "=" + folder + "/start");
        words.insert(words.end(), program.begin(), program.end());
        constexpr int runs = 15;
        return medianRun(words, runs);
    };
    const ProcessCost empty = started({programs + "/orvane_empty_window"});
    const ProcessCost ours = started({programs + "/orvanesync-app", "--measure-start"});
    const std::string work = "start to a usable window, whole process";
    if (!empty.succeeded || !ours.succeeded) return printFailure(work, "an empty window");
    constexpr double most = 3;
    printRatio(work, ours.seconds * 1000, empty.seconds * 1000, "an empty window", most);
}

} // namespace

void printWindowRows(const std::string& programs, const std::string& folder) {
    printStartRow(programs, folder);
    windowSystem();
    List list(folder);
    constexpr double mostToOpen = 300, mostOfAFrame = 8;
    const double opened = list.open();
    printRow("list of 10,000 clips, opens", text("%.0f ms of a core", opened), "", "", "< 300 ms",
             opened < mostToOpen);
    constexpr int wheel = 132, page = 700, far = 79190;
    for (const auto& [how, points] :
         {std::pair("by three rows", wheel), std::pair("by pages", page), std::pair("far", far)}) {
        const double ms = list.scroll(points);
        printRow(std::string("the same, scrolled ") + how, text("%.2f ms", ms), "", "", "< 8 ms a frame",
                 ms < mostOfAFrame);
    }
    const List::Repaint repaint = list.changeOne();
    printRow("the same, one clip changed", text("%.2f ms", repaint.milliseconds), "",
             text("%.0f row(s) painted", repaint.rows), "1 row", repaint.rows == 1);
}

} // namespace orvane::bench
