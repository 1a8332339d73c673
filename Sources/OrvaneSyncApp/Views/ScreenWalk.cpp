#include "OrvaneSyncApp/Views/ScreenWalk.h"

#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/ExportSheet.h"

#include <QDir>
#include <QStackedWidget>
#include <QTableView>
#include <QTimer>

namespace orvane::views {

namespace {

constexpr QSize sizes[] = {{1024, 700}, {1440, 800}, {2560, 1300}};
constexpr int settled = 150; ///< milliseconds for a window to lay itself out

void grab(QWidget& widget, const QString& folder, const QString& name) {
    widget.grab().save(QDir(folder).filePath(name + QStringLiteral(".png")));
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
            case 2: {
                ExportSheet sheet(window.desktop(), &window);
                sheet.ensurePolished();
                sheet.adjustSize();
                grab(sheet, folder, QStringLiteral("export"));
                return;
            }
            case 3: {
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
