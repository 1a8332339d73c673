#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int keyRowHeight = 22;
constexpr int keyLabelWidth = 232;
constexpr int leastKeyNameWidth = 108;
constexpr int keyShade = 235; ///< of 255: the screen below shines through a little

bool takesTypedText(const QWidget* widget) {
    return widget != nullptr && widget->testAttribute(Qt::WA_InputMethodEnabled) &&
           !widget->property("readOnly").toBool();
}

bool isModifierKey(int key) {
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_Meta ||
           key == Qt::Key_AltGr;
}

QString keyName(const KeyGroup::Row& row) {
    return row.key == keyText(Shortcut::unbound) ? QObject::tr("no key") : translatedKey(row.key);
}

int widthOfKeyNames(const std::vector<KeyGroup>& groups) {
    const QFontMetrics metrics(factsFont());
    int widest = leastKeyNameWidth;
    for (const KeyGroup& group : groups)
        for (const KeyGroup::Row& row : group.rows)
            widest = std::max(widest, metrics.horizontalAdvance(keyName(row)) + space::small);
    return widest;
}

int heightOfKeys(const KeyGroup& group) { return (static_cast<int>(group.rows.size()) + 2) * keyRowHeight; }

} // namespace

KeyOverlay::KeyOverlay(QWidget* over, std::function<std::vector<KeyGroup>()> keys)
    : QWidget(over), over_(over), keys_(std::move(keys)) {
    setObjectName(QStringLiteral("keyOverlay"));
    setVisible(false);
    qApp->installEventFilter(this);
}

KeyOverlay::~KeyOverlay() { qApp->removeEventFilter(this); }

void KeyOverlay::open() {
    groups_ = keys_();
    setGeometry(over_->rect());
    setAccessibleName(tr("Keys"));
    setAccessibleDescription(spoken());
    raise();
    show();
}

QString KeyOverlay::spoken() const {
    QStringList lines;
    for (const KeyGroup& group : groups_)
        for (const KeyGroup::Row& row : group.rows)
            if (row.acts) lines << tr("%1: %2").arg(keyName(row), translated(row.label));
    return lines.join(QLatin1Char('\n'));
}

bool KeyOverlay::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (watched == over_ && type == QEvent::Resize) setGeometry(over_->rect());
    if (type != QEvent::KeyPress && type != QEvent::ShortcutOverride) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (isVisible()) {
        // The key that closes does nothing else, not as a shortcut either.
        if (isModifierKey(key->key())) return false;
        if (type == QEvent::ShortcutOverride)
            event->accept();
        else
            hide();
        return true;
    }
    if (type != QEvent::KeyPress || key->text() != QStringLiteral("?") || !over_->isVisible() ||
        QApplication::activeWindow() != over_->window() || takesTypedText(QApplication::focusWidget()))
        return false;
    open();
    return true;
}

void KeyOverlay::mousePressEvent(QMouseEvent*) { hide(); }

void KeyOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Colours& all = colours();
    QColor ground = all.window;
    ground.setAlpha(keyShade);
    painter.fillRect(rect(), ground);
    // Groups go into the columns one after the other, each into the first that has room.
    const int top = space::large + 2 * keyRowHeight;
    const int room = height() - top - space::medium;
    const int keyNameWidth = widthOfKeyNames(groups_);
    const int columns = std::max(1, (width() - space::medium) / (keyNameWidth + keyLabelWidth));
    // What is left of the width is for the labels.
    const int keyColumnWidth =
        std::min((width() - 2 * space::medium) / columns, keyNameWidth + 2 * keyLabelWidth);
    std::vector<int> used(static_cast<std::size_t>(columns), 0);
    const int left = std::max<int>((width() - columns * keyColumnWidth) / 2, space::medium);
    painter.setFont(titleFont());
    painter.setPen(all.text);
    painter.drawText(QRect(left, space::medium, width() - 2 * left, 2 * keyRowHeight), Qt::AlignVCenter,
                     tr("Keys"));
    painter.setFont(factsFont());
    painter.setPen(all.facts);
    painter.drawText(
        QRect(left + keyNameWidth, space::medium, width() - left - keyNameWidth, 2 * keyRowHeight),
        Qt::AlignVCenter,
        tr("Grey: does nothing at the moment. Any key closes this. Settings > Keyboard changes them."));
    for (const KeyGroup& group : groups_) {
        auto column = std::ranges::find_if(used, [&](int y) { return y + heightOfKeys(group) <= room; });
        if (column == used.end()) column = std::ranges::min_element(used);
        const int x = left + static_cast<int>(column - used.begin()) * keyColumnWidth;
        int y = top + *column;
        QFont bold = textFont();
        bold.setWeight(QFont::DemiBold);
        painter.setFont(bold);
        painter.setPen(all.text);
        painter.drawText(QRect(x, y, keyColumnWidth, keyRowHeight), Qt::AlignVCenter,
                         translated(group.title));
        y += keyRowHeight;
        for (const KeyGroup::Row& row : group.rows) {
            painter.setPen(row.acts ? all.text : all.disabled);
            painter.setFont(factsFont());
            painter.drawText(QRect(x, y, keyNameWidth, keyRowHeight), Qt::AlignVCenter, keyName(row));
            painter.setFont(textFont());
            const QRect place(x + keyNameWidth, y, keyColumnWidth - keyNameWidth - space::medium,
                              keyRowHeight);
            painter.drawText(
                place, Qt::AlignVCenter,
                painter.fontMetrics().elidedText(translated(row.label), Qt::ElideRight, place.width()));
            y += keyRowHeight;
        }
        *column += heightOfKeys(group);
    }
}

ReviewSituation situationOf(Desktop& desktop, ReviewViewModel& review,
                            const std::function<std::optional<UUID>(const UUID& of, int step)>& neighbour) {
    const OpenWork& work = desktop.controller().work();
    const auto& id = review.groupID();
    const SyncGroup* clip = id ? work.syncGroups().find(*id) : nullptr;
    const auto has = [&](int step) { return clip != nullptr && (!neighbour || neighbour(*id, step)); };
    ReviewSituation now;
    now.hasClip = clip != nullptr;
    now.isLoaded = review.engine()->transport().isLoaded;
    now.hasSound = clip != nullptr && !clip->isMOS();
    now.isLocked = clip != nullptr && clip->isLocked;
    now.isLooping = review.engine()->loop().isLooping;
    now.canCheckClap = review.canCheckClap();
    now.hasChoice = clip != nullptr && RecordingsPart::of(desktop.controller(), *clip).hasChoice();
    now.hasSuggestion = clip != nullptr && desktop.controller().timeline().siblingSuggestion(*id).has_value();
    now.hasNext = has(1);
    now.hasPrevious = has(-1);
    now.canUndo = work.undoState().canUndo;
    now.canRedo = work.undoState().canRedo;
    now.hasWork = !work.syncGroups().empty();
    return now;
}

} // namespace orvane::views
