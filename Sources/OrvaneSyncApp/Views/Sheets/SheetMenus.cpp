#include "OrvaneSyncApp/Views/Sheets/SheetMenus.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QAction>
#include <QDesktopServices>
#include <QMenu>
#include <QUrl>

namespace orvane::views {

SheetActions addSheetActions(Desktop& desktop, QWidget* window, QMenu* clip, QMenu* audio, QMenu* help) {
    SheetActions actions{};
    clip->addSeparator();
    actions.renameClips =
        clip->addAction(design::icon(design::Glyph::rename), translated(desktop.command("batchRename").title),
                        window, [&desktop, window] { showBatchRenamer(desktop, window); });
    actions.renameClips->setStatusTip(translated(desktop.command("batchRename").help));
    audio->addSeparator();
    actions.buildRoomTone =
        audio->addAction(design::icon(design::Glyph::roomTone), QObject::tr("Build Room Tone…"), window,
                         [&desktop, window] { showAtmoBuilder(desktop, window); });
    actions.buildRoomTone->setStatusTip(translated(desktop.command("buildAtmo").help));
    audio->addAction(QObject::tr("Calibration…"), window, [&desktop, window] {
        SettingsWindow settings(desktop, window);
        settings.showTab(SettingPage::calibration);
        settings.exec();
    });

    help->addAction(QObject::tr("Diagnostics…"), window,
                    [&desktop, window] { showDiagnostics(desktop, window); });
    help->addAction(QObject::tr("Send Feedback…"), window,
                    [&desktop, window] { showFeedback(desktop, window); });
    QAction* about = help->addSeparator();
    help->addAction(QObject::tr("About OrvaneSync"), window, [window] { showAbout(window); });
    auto* updates = new QAction(QObject::tr("Check for Updates…"), help);
    updates->setVisible(false);
    QObject::connect(updates, &QAction::triggered, help,
                     [updates] { QDesktopServices::openUrl(QUrl(updates->data().toString())); });
    help->insertAction(about, updates);
    // The address may be put there, or go, while the window is open.
    const auto look = [window, updates] {
        findServices(window, [updates](const ServiceConfiguration& found) {
            updates->setData(text(found.updatesURL.value_or("")));
            updates->setVisible(found.updatesURL.has_value());
        });
    };
    QObject::connect(help, &QMenu::aboutToShow, help, look);
    look();
    return actions;
}

} // namespace orvane::views
