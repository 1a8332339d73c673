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

constexpr int keyRowHeight = 22, leastKeyRowHeight = 17;
constexpr int keyShade = 250; ///< of 255: only the bright parts of the screen below are visible

bool takesTypedText(const QWidget* widget) {
    return widget != nullptr && widget->testAttribute(Qt::WA_InputMethodEnabled) &&
           !widget->property("readOnly").toBool();
}

bool isModifierKey(int key) {
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_Meta ||
           key == Qt::Key_AltGr;
}

QFont titleFontOfKeys() {
    QFont bold = textFont();
    bold.setWeight(QFont::DemiBold);
    return bold;
}

/// The widths of the key names and of the texts beside them, each with the space after it.
struct KeyWidths {
    explicit KeyWidths(const std::vector<KeyGroup>& groups) {
        const QFontMetrics ofNames(factsFont()), ofLabels(textFont());
        for (const KeyGroup& group : groups)
            for (const KeyGroup::Row& row : group.rows) {
                name = std::max(name, ofNames.horizontalAdvance(translatedKey(row.key)) + space::medium);
                label = std::max(label, ofLabels.horizontalAdvance(translated(row.label)) + space::large);
            }
    }
    int name = 0, label = 0;
};

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
    setAccessibleDescription(accessibleText());
    raise();
    show();
}

QString KeyOverlay::accessibleText() const {
    QStringList lines;
    for (const KeyGroup& group : groups_)
        for (const KeyGroup::Row& row : group.rows)
            if (row.acts) lines << tr("%1: %2").arg(translatedKey(row.key), translated(row.label));
    return lines.join(QLatin1Char('\n'));
}

bool KeyOverlay::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (watched == over_ && type == QEvent::Resize) setGeometry(over_->rect());
    if (type != QEvent::KeyPress && type != QEvent::ShortcutOverride) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (isVisible()) {
        // The key that closes the overlay does nothing else, not even as a shortcut.
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
    const int top = space::large + 2 * keyRowHeight;
    const KeyWidths widths(groups_);
    const int columnWidth = widths.name + widths.label;
    const KeyColumns positioned =
        keyColumns(groups_, std::max(1, (width() - 2 * space::medium) / columnWidth));
    const int rowHeight = std::clamp((height() - top - space::medium) / std::max(positioned.lines, 1),
                                     leastKeyRowHeight, keyRowHeight);
    const int left = std::max<int>((width() - positioned.columns * columnWidth) / 2, space::medium);
    painter.setFont(titleFont());
    painter.setPen(all.text);
    painter.drawText(QRect(left, space::medium, width() - 2 * left, 2 * keyRowHeight), Qt::AlignVCenter,
                     tr("Keys"));
    painter.setFont(factsFont());
    painter.setPen(all.facts);
    painter.drawText(
        QRect(left + widths.name, space::medium, width() - left - widths.name, 2 * keyRowHeight),
        Qt::AlignVCenter,
        tr("Grey: does nothing at the moment. Any key closes this. Settings > Keyboard changes them."));
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        QRect line(left + positioned.places[i].column * columnWidth,
                   top + positioned.places[i].line * rowHeight, columnWidth, rowHeight);
        painter.setFont(titleFontOfKeys());
        painter.setPen(all.text);
        painter.drawText(line, Qt::AlignVCenter, translated(groups_[i].title));
        for (const KeyGroup::Row& row : groups_[i].rows) {
            line.translate(0, rowHeight);
            painter.setPen(row.acts ? all.text : all.disabled);
            painter.setFont(factsFont());
            painter.drawText(line, Qt::AlignVCenter, translatedKey(row.key));
            painter.setFont(textFont());
            painter.drawText(line.adjusted(widths.name, 0, 0, 0), Qt::AlignVCenter, translated(row.label));
        }
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
    now.hasNext = has(1);
    now.hasPrevious = has(-1);
    now.canUndo = work.undoState().canUndo;
    now.canRedo = work.undoState().canRedo;
    now.hasWork = !work.syncGroups().empty();
    return now;
}

} // namespace orvane::views
