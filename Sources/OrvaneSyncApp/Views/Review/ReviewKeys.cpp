#include "OrvaneSyncApp/Views/Review/ReviewKeys.h"

#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextEdit>

#include <utility>

namespace orvane::views {

namespace {

bool isTextEdited(const QWidget* focus) {
    if (const auto* line = qobject_cast<const QLineEdit*>(focus)) return !line->isReadOnly();
    if (const auto* page = qobject_cast<const QTextEdit*>(focus)) return !page->isReadOnly();
    if (const auto* page = qobject_cast<const QPlainTextEdit*>(focus)) return !page->isReadOnly();
    if (const auto* list = qobject_cast<const QComboBox*>(focus)) return list->isEditable();
    return qobject_cast<const QAbstractSpinBox*>(focus) != nullptr;
}

/// Whether the control reacts to the key: it was reached by Tab, so its keys are meant for it.
bool worksBy(const QWidget* control, int key) {
    const bool isArrow =
        key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
    const bool isPress = key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
    if (qobject_cast<const QAbstractButton*>(control) != nullptr) return key == Qt::Key_Space;
    if (qobject_cast<const QAbstractSlider*>(control) != nullptr) return isArrow;
    if (qobject_cast<const QComboBox*>(control) != nullptr ||
        qobject_cast<const QAbstractItemView*>(control) != nullptr)
        return isArrow || isPress;
    return false;
}

/// With Control, Alt or Super, K belongs to a menu or to nothing; it must not act as K when it is released.
bool isOtherK(const KeyEvent& event) {
    return event.isDown && event.keyCode == Shortcut::KeyCode::k && event.modifiers != ModifierSet::none &&
           event.modifiers != ModifierSet::shift;
}

} // namespace

ReviewKeys::ReviewKeys(Desktop& desktop, QWidget& window, Screens screens)
    : desktop_(desktop), window_(window), screens_(std::move(screens)) {
    QApplication::instance()->installEventFilter(this);
}

ReviewKeys::~ReviewKeys() { QApplication::instance()->removeEventFilter(this); }

bool ReviewKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::FocusIn) {
        followFocus(*watched, static_cast<const QFocusEvent&>(*event));
        return false;
    }
    if (event->type() == QEvent::WindowDeactivate) {
        // A key that is released in another window is not reported here.
        if (watched == &window_) desktop_.players().keyboard().keyboardLost();
        return false;
    }
    // A dialog opens over the window, and would be behind the fullscreen picture.
    if (event->type() == QEvent::WindowBlocked && screens_.isInFront() &&
        FullscreenWindow::isOne(qobject_cast<const QWidget*>(watched)))
        screens_.handleFullscreen(*keyEventNamed("escape", ModifierSet::none, true, false));
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease &&
        event->type() != QEvent::ShortcutOverride)
        return false;
    const auto* receiver = qobject_cast<const QWidget*>(watched);
    if (receiver == nullptr) return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (!screens_.isInFront()) {
        if (receiver->window() == &window_) noteElsewhere(key);
        // The key that left a screen is released on the next one: the set of held keys must still be right.
        if (const auto up = event->type() == QEvent::KeyRelease ? keyEventOf(key) : std::nullopt)
            desktop_.players().keyboard().handle(*up, true);
        return false;
    }
    const bool isFullscreen = FullscreenWindow::isOne(receiver->window());
    if (receiver->window() != &window_ && !isFullscreen) return false;
    // An event that was not accepted is sent again to each parent.
    const QWidget* focus = QApplication::focusWidget();
    if (receiver != focus && receiver != receiver->window()) return false;
    if (qobject_cast<const QMenuBar*>(focus) != nullptr)
        return false; // Alt was pressed before: letters open menus
    if (event->type() == QEvent::KeyRelease && key.key() == elsewhere_.key && !key.isAutoRepeat())
        elsewhere_.isDown = false;
    if (isOfAnotherScreen(key)) {
        event->accept();
        return true;
    }
    if (event->type() != QEvent::ShortcutOverride) return handle(key, isFullscreen);
    const auto meant = keyEventOf(key);
    if (!meant || isTextEdited(focus) || isOtherK(*meant) || !isBound(*meant)) return false;
    event->accept(); // before the shortcuts of menus get it
    return true;
}

void ReviewKeys::followFocus(const QObject& watched, const QFocusEvent& event) {
    const auto* widget = qobject_cast<const QWidget*>(&watched);
    if (widget == nullptr || widget->window() != &window_) return;
    if (event.lostFocus()) {
        // When a control is disabled or hidden, Qt gives its focus to the next control, as if Tab had been
        // pressed.
        isHandedOver_ = !widget->isEnabled() || widget->isHidden();
        if (isHandedOver_) // if no control can take it, the next one is not the neighbour
            QMetaObject::invokeMethod(
                this, [this] { isHandedOver_ = false; }, Qt::QueuedConnection);
        return;
    }
    const auto reason = event.reason();
    isFocusByTab_ = !isHandedOver_ && (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason);
    if (!std::exchange(isHandedOver_, false) || !screens_.isInFront()) return;
    const auto toScreen = [this, next = QPointer(widget)] {
        if (next != nullptr && next == QApplication::focusWidget() && screens_.isInFront())
            screens_.takeKeyboard();
    };
    QMetaObject::invokeMethod(this, toScreen, Qt::QueuedConnection);
}

void ReviewKeys::noteElsewhere(const QKeyEvent& event) {
    if (event.type() == QEvent::KeyPress && !event.isAutoRepeat())
        elsewhere_ = {event.key(), event.timestamp(), true};
    else if (event.type() == QEvent::KeyRelease && !event.isAutoRepeat())
        elsewhere_.isDown = false;
}

bool ReviewKeys::isOfAnotherScreen(const QKeyEvent& event) const {
    if (event.type() == QEvent::KeyRelease || event.key() != elsewhere_.key) return false;
    if (event.isAutoRepeat()) return elsewhere_.isDown;
    const auto between = static_cast<std::uint64_t>(QApplication::doubleClickInterval());
    return elsewhere_.at != 0 && event.timestamp() - elsewhere_.at < between;
}

bool ReviewKeys::isBound(const KeyEvent& event) const {
    using Code = Shortcut::KeyCode;
    if (event.keyCode == Code::k || event.keyCode == Code::escape) return true;
    KeyboardMonitor& keyboard = desktop_.players().keyboard();
    if (keyboard.kHeld() && (event.keyCode == Code::j || event.keyCode == Code::l)) return true;
    const auto shortcut = shortcutFor(event);
    const auto action =
        shortcut ? desktop_.players().shortcuts()->action(shortcut->key, shortcut->modifiers) : std::nullopt;
    return action && keyAction(*action);
}

bool ReviewKeys::handle(const QKeyEvent& event, bool isFullscreen) {
    const auto meant = keyEventOf(event);
    if (!meant || isOtherK(*meant)) return false;
    const QWidget* focus = QApplication::focusWidget();
    const bool isTyped = !isFullscreen && isTextEdited(focus);
    // Return leaves the search field; the second press of a double press must not mark the clip.
    if (isTyped && (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter)) noteElsewhere(event);
    if (!isFullscreen && isFocusByTab_ && worksBy(focus, event.key())) return false;
    const bool isEscape = meant->isDown && !meant->isRepeat && meant->keyCode == Shortcut::KeyCode::escape &&
                          meant->modifiers == ModifierSet::none;
    // Escape leaves a field, after the field has made of it what it means there: a search is cleared by it.
    if (isTyped && isEscape) clearFieldFocus();
    ReviewViewModel& review = *desktop_.players().review();
    // Escape ends a running loop; without one, it leaves the screen.
    const bool leaves = isEscape && !isFullscreen && !isTyped && !review.engine()->loop().isLooping;
    try {
        if (isFullscreen && screens_.handleFullscreen(*meant)) return true;
        const std::string typed = meant->charactersIgnoringModifiers.value_or("");
        const bool isDigit = typed.size() == 1 && typed[0] >= '1' && typed[0] <= '9';
        if (!isTyped && meant->isDown && isDigit && meant->modifiers == ModifierSet::none &&
            !isBound(*meant) && screens_.hear(static_cast<std::size_t>(typed[0] - '1')))
            return true;
        const bool used = desktop_.players().keyboard().handle(*meant, isTyped);
        if (leaves) screens_.leave();
        return used || leaves;
    } catch (const std::exception& why) {
        desktop_.sayWhyNot(translatedSentence(why.what()));
        return true;
    }
}

void ReviewKeys::clearFieldFocus() {
    QMetaObject::invokeMethod(
        QApplication::focusWidget(),
        [] {
            if (QWidget* focus = QApplication::focusWidget(); isTextEdited(focus)) focus->clearFocus();
        },
        Qt::QueuedConnection);
}

} // namespace orvane::views
