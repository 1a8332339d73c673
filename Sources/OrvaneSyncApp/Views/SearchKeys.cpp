#include "OrvaneSyncApp/Views/SearchKeys.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLineEdit>

namespace orvane::views {

SearchKeys::SearchKeys(QLineEdit& field, QAbstractItemView& list)
    : QObject(&field), field_(field), list_(list) {
    field.installEventFilter(this);
}

bool SearchKeys::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (event->type() == QEvent::ShortcutOverride) {
        // Otherwise the field would use this key, which is that of the export, to move to its end.
        const bool isExport = key->modifiers() == Qt::ControlModifier && key->key() == Qt::Key_E;
        if (isExport) event->ignore();
        return isExport;
    }
    switch (key->key()) {
    case Qt::Key_Down:
        goToFound(false);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        goToFound(true);
        if (whenAccepted && !field_.text().isEmpty() && list_.currentIndex().isValid()) whenAccepted();
        return true;
    case Qt::Key_Escape:
        field_.text().isEmpty() ? giveToList(Qt::OtherFocusReason, true) : field_.clear();
        return true;
    default:
        return false;
    }
}

void SearchKeys::goToFound(bool isLeft) {
    if (list_.model()->rowCount() == 0) return;
    // Without a search text the list has not changed, so its current row is kept.
    if (!field_.text().isEmpty() || !list_.currentIndex().isValid())
        list_.setCurrentIndex(list_.model()->index(firstRow ? firstRow() : 0, 0));
    giveToList(Qt::TabFocusReason, isLeft); // first, because another screen may open; the list's keys apply
    if (whenFound && !field_.text().isEmpty()) whenFound(list_.currentIndex().row());
}

void SearchKeys::giveToList(Qt::FocusReason reason, bool isLeft) {
    isLeft&& leave ? leave() : list_.setFocus(reason);
}

} // namespace orvane::views
