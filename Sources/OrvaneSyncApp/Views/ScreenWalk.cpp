#include "OrvaneSyncApp/Views/ScreenWalk.h"

#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"

#include <QDialog>
#include <QDir>
#include <QStackedWidget>
#include <QTableView>
#include <QTimer>

namespace orvane::views {

namespace {

constexpr QSize sizes[] = {{1024, 700}, {1440, 800}, {2560, 1300}};
constexpr int settled = 150;       ///< milliseconds for a window to lay itself out
constexpr int sheetsFilled = 4000; ///< for what sheets look up

void grab(QWidget& widget, const QString& folder, const QString& name) {
    widget.grab().save(QDir(folder).filePath(name + QStringLiteral(".png")));
}

/// Those that are open over the window, by their titles.
void grabSheets(QWidget& window, const QString& folder) {
    for (QDialog* sheet : window.findChildren<QDialog*>()) {
        if (!sheet->isVisible()) continue;
        grab(*sheet, folder, QStringLiteral("sheet-") + sheet->windowTitle().toLower().replace(' ', '-'));
        sheet->close();
    }
}

} // namespace

void walkScreens(MainWindow& window, const QString& folder, std::function<void()> done) {
    QDir().mkpath(folder);
    auto* timer = new QTimer(&window);
    // Steps that each end in a picture; the first waits for the scan.
    auto step = std::make_shared<int>(0);
    QObject::connect(
        timer, &QTimer::timeout, &window, [&window, folder, done = std::move(done), timer, step] {
            auto* pages = window.findChild<QStackedWidget*>();
            if (*step == 0 && window.isScanning()) return;
            constexpr int sizeCount = std::size(sizes);
            const int at = (*step)++;
            if (at < 2 * sizeCount) {
                const QSize size = sizes[at / 2];
                if (at % 2 == 0)
                    window.resize(size);
                else
                    grab(window, folder,
                         QStringLiteral("window-%1-%2").arg(pages->currentIndex()).arg(size.width()));
                return;
            }
            switch (at - 2 * sizeCount) {
            case 0:
                window.resize(sizes[1]);
                window.results().table()->selectRow(0);
                return;
            case 1:
                grab(window, folder, QStringLiteral("selected"));
                return;
            case 2:
                showExport(window.desktop(), &window);
                showBatchRenamer(window.desktop(), &window);
                showAtmoBuilder(window.desktop(), &window);
                showDiagnostics(window.desktop(), &window);
                showFeedback(window.desktop(), &window);
                showAbout(&window);
                timer->setInterval(sheetsFilled);
                return;
            case 3:
                timer->setInterval(settled);
                grabSheets(window, folder);
                return;
            case 4: {
                SettingsWindow settings(window.desktop(), &window);
                for (int tab = 0; tab < settings.tabCount(); ++tab) {
                    settings.showTab(tab);
                    grab(settings, folder, QStringLiteral("settings-%1").arg(tab));
                }
                return;
            }
            default:
                break;
            }
            timer->stop();
            done();
        });
    timer->start(settled);
}

} // namespace orvane::views
