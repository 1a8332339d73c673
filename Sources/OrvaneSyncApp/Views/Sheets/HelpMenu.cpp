#include "OrvaneSyncApp/Views/Sheets/HelpMenu.h"

#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QAction>
#include <QMenu>
#include <QUrl>

namespace orvane::views {

void addHelpEntries(Desktop& desktop, QWidget* window, QMenu* help) {
    help->addAction(QObject::tr("Diagnostics…"), window,
                    [&desktop, window] { showDiagnostics(desktop, window); });
    help->addAction(QObject::tr("Send Feedback…"), window,
                    [&desktop, window] { showFeedback(desktop, window); });
    QAction* about = help->addSeparator();
    help->addAction(QObject::tr("About OrvaneSync"), window, [window] { showAbout(window); });
    auto* updates = new QAction(QObject::tr("Check for Updates…"), help);
    updates->setVisible(false);
    QObject::connect(updates, &QAction::triggered, help, [&desktop, window, updates] {
        desktop.openOutside(window, QUrl(updates->data().toString()));
    });
    help->insertAction(about, updates);
    // The address may be configured, or removed, while the window is open.
    const auto look = [window, updates] {
        findServices(window, [updates](const ServiceConfiguration& found) {
            updates->setData(text(found.updatesURL.value_or("")));
            updates->setVisible(found.updatesURL.has_value());
        });
    };
    QObject::connect(help, &QMenu::aboutToShow, help, look);
    look();
}

} // namespace orvane::views
