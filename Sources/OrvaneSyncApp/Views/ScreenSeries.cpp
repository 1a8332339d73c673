#include "OrvaneSyncApp/Views/ScreenSeries.h"

#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncApp/Views/Review/SyncLensView.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Review/ReviewTable.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QDialog>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <fstream>
#include <memory>
#include <utility>

namespace orvane::views {

namespace {

constexpr QSize sizeOfSettings{1020, 720};
constexpr QSize sizes[] = {{1024, 700}, {1440, 800}, {2560, 1300}};
constexpr int settled = 150;    ///< milliseconds in which a window lays itself out
constexpr int mostRounds = 200; ///< the maximum number of rounds to wait for something

/// Runs steps one after the other. Before each one it waits until the window has laid itself out.
class Walk : public QTimer {
  public:
    Walk(MainWindow& window, QString folder, std::function<void()> done)
        : QTimer(&window), window_(window), folder_(std::move(folder)), done_(std::move(done)) {
        connect(this, &QTimer::timeout, this, [this] { next(); });
        waitUntil([this] { return !window_.isScanning(); });
        atEachSize(QStringLiteral("window"));
        lists();
        review();
        multicam();
        folders();
        start(settled);
    }

  private:
    void then(std::function<void()> act) {
        steps_.push_back([act = std::move(act)] {
            act();
            return true;
        });
    }
    void waitUntil(std::function<bool()> holds) { steps_.push_back(std::move(holds)); }

    void grab(QWidget& widget, const QString& name) {
        QImage picture = widget.grab().toImage();
        picture.setText(QStringLiteral("Software"), text(renderingMark));
        QBuffer png;
        picture.save(&png, "PNG");
        try {
            OutputGuard(OutputKind::picture, {}, {false, "take that file away"})
                .write(utf8(QDir(folder_).filePath(name + QStringLiteral(".png"))), png.data().toStdString());
        } catch (const platform::FileError& why) {
            std::fprintf(stderr, "%s\n", why.what());
        }
    }

    void atEachSize(const QString& name) {
        for (const QSize size : sizes) {
            then([this, size] { window_.resize(size); });
            then([] {});
            then([this, size, name] { grab(window_, QStringLiteral("%1-%2").arg(name).arg(size.width())); });
        }
    }

    void lists() {
        then([this] {
            window_.resize(sizes[1]);
            window_.results().table()->selectRow(0);
        });
        then([this] { grab(window_, QStringLiteral("selected")); });
        then([this] { window_.findChild<QAction*>(QStringLiteral("listen"))->trigger(); });
        waitUntil([this] { return !window_.desktop().controller().derivedDoubts().listening(); });
        then([this] { grab(window_, QStringLiteral("listened")); });
        then([this] { loadTables(); });
        waitUntil([this] { return window_.desktop().controller().reports().aleMatchStatus().has_value(); });
        waitUntil([this] { return isOpen(tr("Review Table")); });
        then([this] {
            showReport(window_.desktop(), &window_);
            showExport(window_.desktop(), &window_);
            showBatchRenamer(window_.desktop(), &window_);
            showAtmoBuilder(window_.desktop(), &window_);
            showDiagnostics(window_.desktop(), &window_);
            showFeedback(window_.desktop(), &window_);
            showAbout(&window_);
        });
        waitUntil([this] {
            const auto sheets = window_.findChildren<QDialog*>();
            return std::ranges::all_of(sheets, [](const QDialog* one) { return isFilled(*one); });
        });
        then([this] {
            for (auto* field : window_.findChildren<QLineEdit*>()) // so that a preview is shown
                if (field->accessibleName() == tr("Prefix")) field->setText(QStringLiteral("A "));
        });
        then([this] { grabSheets(); });
        then([this] {
            settings_ = std::make_unique<SettingsWindow>(window_.desktop(), &window_);
            settings_->resize(sizeOfSettings); // without a display, the screen is smaller than any real one
            settings_->show();
            tab_ = 0;
        });
        waitUntil([this] { return isLastTabGrabbed(); });
    }

    /// Grabs the open sheets; the pictures are named after their titles.
    void grabSheets() {
        for (QDialog* sheet : window_.findChildren<QDialog*>()) {
            if (!sheet->isVisible()) continue;
            grab(*sheet, QStringLiteral("sheet-") + sheet->windowTitle().toLower().replace(' ', '-'));
            sheet->close();
        }
    }
    bool isOpen(const QString& title) {
        return std::ranges::any_of(window_.findChildren<QDialog*>(), [&](const QDialog* one) {
            return one->isVisible() && one->windowTitle() == title;
        });
    }
    /// Loads a report and a review table in which no line can be used, so the clips do not change.
    void loadTables() {
        if (work().syncGroups().empty()) return;
        using enum ReviewColumn;
        ReviewLine unknown, wrong;
        unknown[cameraFile] = "A999C001.mov";
        wrong[cameraFile] = work().syncGroups().front().video.filename;
        wrong[offsetFrames] = "later";
        const auto written = [this](const char* name, const std::string& contents) {
            const std::string path = utf8(tables_.filePath(QString::fromLatin1(name)));
            std::ofstream(path, std::ios::binary) << contents;
            return path;
        };
        JSON arguments = JSON::object();
        arguments.set("path", written("report.csv", "Name,Scene,Take\nA999C001,99,1\n"));
        window_.desktop().run("loadALE", std::move(arguments));
        applyReviewTable(window_.desktop(), text(written("table.tsv", writtenReviewTable({unknown, wrong}))),
                         &window_);
    }

    /// Grabs one tab in each round, because a page's content arrives a while after the page is opened. True
    /// after the last tab.
    bool isLastTabGrabbed() {
        if (!isFilled(*settings_)) return false;
        if (!std::exchange(isTabLaidOut_, true)) return false; // one more round for the layout
        isTabLaidOut_ = false;
        if (tab_ > 0) grab(*settings_, QStringLiteral("settings-%1").arg(tab_ - 1));
        if (tab_ < settings_->tabCount()) {
            settings_->showTab(tab_++);
            return false;
        }
        settings_.reset();
        return true;
    }

    /// Whether nothing in view is still being looked up.
    static bool isFilled(const QWidget& top) {
        const QStringList waiting{tr("Looking…"), tr("Listening")};
        for (const auto* label : top.findChildren<QLabel*>())
            if (label->isVisible() && waiting.contains(label->text())) return false;
        for (const auto* report : top.findChildren<QPlainTextEdit*>())
            if (report->isVisible() && waiting.contains(report->toPlainText())) return false;
        return true;
    }
    const OpenWork& work() { return window_.desktop().controller().work(); }
    /// The first clip that has sound; if there is none, the review is not pictured.
    std::optional<UUID> clipWithSound() {
        for (const SyncGroup& clip : work().syncGroups())
            if (!clip.isMOS()) return clip.id;
        return std::nullopt;
    }
    bool isPictureThere() {
        const auto& transport = window_.desktop().players().review()->engine()->transport();
        return !transport.isLoading && !window_.desktop().controller().timeline().waveform()->isLoading() &&
               (!transport.isLoaded || window_.review().picture().canvas().hasPicture());
    }
    void toggleLens() {
        for (QAction* action : window_.findChildren<QAction*>())
            if (action->shortcut() == QKeySequence(Qt::Key_S)) action->toggle();
    }
    void toggleLock() {
        JSON arguments = JSON::object();
        arguments.set("groupID", window_.review().clip()->text());
        window_.desktop().run("toggleLocked", std::move(arguments));
    }

    void review() {
        const auto shown = [this](auto act) {
            then([this, act] {
                if (window_.review().clip()) act();
            });
        };
        then([this] {
            if (const auto clip = clipWithSound()) window_.openReview(*clip);
        });
        waitUntil([this] { return isPictureThere(); });
        atEachSize(QStringLiteral("review"));
        shown([this] {
            window_.resize(sizes[1]);
            toggleLens();
        });
        waitUntil([this] { return !window_.review().picture().lens().isLoading(); });
        shown([this] { grab(window_, QStringLiteral("review-lens")); });
        shown([this] {
            toggleLens();
            window_.review().keyOverlay()->open();
        });
        shown([this] {
            grab(window_, QStringLiteral("review-keys"));
            window_.review().keyOverlay()->hide();
            for (auto* one : window_.findChildren<QPushButton*>())
                if (one->isVisible() && one->text() == tr("Attach…")) one->click();
        });
        shown([this] { grabSheets(); });
        shown([this] { toggleLock(); });
        shown([this] { grab(window_, QStringLiteral("review-locked")); });
        shown([this] { menus(); });
        shown([this] {
            toggleLock();
            window_.desktop().players().review()->fullscreen().toggleFullscreen();
        });
        then([] {});
        shown([this] {
            for (QWidget* one : QApplication::topLevelWidgets())
                if (FullscreenWindow::isOne(one) && one->isVisible())
                    grab(*one, QStringLiteral("fullscreen"));
            window_.desktop().players().review()->fullscreen().hide();
        });
    }

    /// Opens each menu of the menu bar over the review and grabs it.
    void menus() {
        for (const QAction* one : window_.menuBar()->actions()) {
            one->menu()->popup(window_.mapToGlobal(QPoint()));
            grab(*one->menu(), QStringLiteral("menu-") + one->text().remove(QLatin1Char('&')).toLower());
            one->menu()->close();
        }
    }

    void multicam() {
        then([this] {
            std::vector<UUID> first;
            for (const SyncGroup& clip : work().syncGroups()) {
                const auto cameras = MulticamViewModel::camerasFor(work(), {clip.id});
                if (cameras.size() > 1) return window_.openMulticam(cameras);
                if (first.size() < 2) first.push_back(clip.id);
            }
            // If no take has several cameras, two single clips are shown.
            if (first.size() > 1) window_.openMulticam(first);
        });
        waitUntil([this] {
            for (const auto& [id, engine] : window_.desktop().players().multicam()->bag().engines())
                if (engine->transport().isLoading ||
                    (engine->player() != nullptr && !engine->player()->picture()))
                    return false;
            return true;
        });
        const QString name = QStringLiteral("multicam");
        for (const QSize size : sizes) {
            then([this, size] { window_.resize(size); });
            then([] {});
            then([this, size, name] {
                if (window_.desktop().players().multicam()->isOpen())
                    grab(window_, QStringLiteral("%1-%2").arg(name).arg(size.width()));
            });
        }
    }

    /// Grabs the screen where folders are chosen, and a scan of them while it runs.
    void folders() {
        then([this] { window_.findChild<QAction*>(QStringLiteral("newScan"))->trigger(); });
        atEachSize(QStringLiteral("start"));
        for (const QSize size : sizes) {
            then([this, size] { window_.resize(size); });
            then([] {});
            then([this, size] {
                const ScanController& scan = window_.desktop().controller().scan();
                if (!scan.canScan()) return;
                window_.scanFolders(folderPaths());
                while (window_.isScanning()) {
                    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
                    if (scan.progress().file.empty()) continue;
                    grab(window_, QStringLiteral("scanning-%1").arg(size.width()));
                    break;
                }
            });
            waitUntil([this] { return !window_.isScanning(); });
        }
    }
    QStringList folderPaths() {
        QStringList paths;
        for (const FileURL& folder : work().folders()) paths << text(folder.path);
        return paths;
    }

    void next() {
        if (!steps_.empty()) {
            if (!steps_.front()() && ++tries_ < mostRounds) return;
            tries_ = 0;
            steps_.pop_front();
            return;
        }
        stop();
        done_();
    }

    MainWindow& window_;
    const QString folder_;
    const std::function<void()> done_;
    std::deque<std::function<bool()>> steps_;
    int tries_ = 0;
    QTemporaryDir tables_;
    std::unique_ptr<SettingsWindow> settings_;
    int tab_ = 0;               ///< the tab of the settings that is next
    bool isTabLaidOut_ = false; ///< the tab before it was laid out
};

} // namespace

void writeScreens(MainWindow& window, const QString& folder, std::function<void()> done) {
    QDir().mkpath(folder);
    new Walk(window, folder, std::move(done));
}

} // namespace orvane::views
