#include "OrvaneSyncApp/Views/RecentPlaces.h"

#include "OrvaneDesignKit/KeptState.h"
#include <QFileInfo>
#include <QMenu>

namespace orvane::views::RecentPlaces {

namespace {

constexpr qsizetype most = 10;
const QString key = QStringLiteral("recent");
const QChar between(0); // a character that no path contains

QStringList entries() { return design::keptState::value(key).toStringList(); }

QString title(const QStringList& paths) {
    QStringList names;
    for (const QString& path : paths) names << QFileInfo(path).fileName();
    names.removeDuplicates();
    return names.join(QStringLiteral(" + ")).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

void add(const QStringList& paths) {
    if (paths.isEmpty()) return;
    QStringList all = entries();
    const QString entry = paths.join(between);
    all.removeAll(entry);
    all.prepend(entry);
    design::keptState::set(key, all.mid(0, most));
}

QMenu* menu(QMenu* parent, std::function<void(const QStringList& paths)> open) {
    QMenu* made = parent->addMenu(QObject::tr("Open Recent"));
    made->setToolTipsVisible(true);
    QObject::connect(made, &QMenu::aboutToShow, made, [made, open = std::move(open)] {
        made->clear();
        for (const QString& entry : entries()) {
            const QStringList paths = entry.split(between);
            QAction* action = made->addAction(title(paths), made, [open, paths] { open(paths); });
            action->setToolTip(paths.join(QLatin1Char('\n')));
        }
        if (made->isEmpty()) made->addAction(QObject::tr("Nothing yet"))->setEnabled(false);
        if (entries().isEmpty()) return;
        made->addSeparator();
        made->addAction(QObject::tr("Clear List"), made, [] { design::keptState::remove(key); });
    });
    return made;
}

} // namespace orvane::views::RecentPlaces
