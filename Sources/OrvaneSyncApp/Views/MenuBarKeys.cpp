#include "OrvaneSyncApp/Views/MenuBarKeys.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include <utility>

namespace orvane::views {

MenuBarKeys::MenuBarKeys(QMainWindow& window, QAction& quit, std::function<void()> takeKeyboard)
    : window_(window), quit_(quit), takeKeyboard_(std::move(takeKeyboard)) {
    connect(&quit_, &QAction::triggered, this, [this] { closeWindow(); });
    for (const QAction* one : window_.menuBar()->actions())
        connect(
            one->menu(), &QMenu::aboutToHide, this, [this] { leaveMenuBar(); }, Qt::QueuedConnection);
    window_.menuBar()->installEventFilter(this);
    QCoreApplication::instance()->installEventFilter(this);
}

/// The keys of a menu are disabled while a sheet is open.
bool MenuBarKeys::isQuittingOverSheet(const QObject& watched, const QEvent& event) const {
    if (event.type() != QEvent::KeyPress || !watched.isWidgetType() ||
        QApplication::activeModalWidget() == nullptr)
        return false;
    return QKeySequence(static_cast<const QKeyEvent&>(event).keyCombination()) == quit_.shortcut();
}

void MenuBarKeys::closeWindow() {
    // Closes sheets as their close button does, which stops what they run.
    while (QWidget* sheet = QApplication::activeModalWidget())
        if (!sheet->close()) return;
    QMetaObject::invokeMethod(
        &window_, [this] { window_.close(); }, Qt::QueuedConnection);
}

bool MenuBarKeys::eventFilter(QObject* watched, QEvent* event) {
    if (isQuittingOverSheet(*watched, *event)) {
        closeWindow();
        return true;
    }
    const bool isEscape =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (isEscape && watched == window_.menuBar()) // Escape leaves the menu entry
        QMetaObject::invokeMethod(
            this, [this] { returnKeyboard(); }, Qt::QueuedConnection);
    return false;
}

/// After Escape has closed a menu, its title stays marked, and the menu bar would get the next keys.
void MenuBarKeys::leaveMenuBar() {
    QMenuBar* bar = window_.menuBar();
    if (QApplication::activePopupWidget() == nullptr && bar->hasFocus()) bar->setActiveAction(nullptr);
    returnKeyboard();
}

void MenuBarKeys::returnKeyboard() {
    const QMenuBar* bar = window_.menuBar();
    if (bar->hasFocus() && bar->activeAction() == nullptr && QApplication::activePopupWidget() == nullptr)
        takeKeyboard_();
}

} // namespace orvane::views
