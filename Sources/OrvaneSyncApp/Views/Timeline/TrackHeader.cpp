#include "OrvaneSyncApp/Views/Timeline/TrackHeader.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;
using RowKind = TimelineLayout::RowKind;

namespace {

constexpr int boxHeight = 19;
constexpr int boxPadding = 6;
constexpr int foldSize = 20;
constexpr int nameHeight = 22;
constexpr double swatch = 9;

/// The commands that a channel's switch runs, without and with Alt.
struct BoxCommands {
    const char* word;
    std::string_view one, alone;
};
constexpr BoxCommands boxCommands[] = {{"ALGO", "toggleAlgorithmInclusion", "soloAlgorithmInclusion"},
                                       {"ON", "toggleTrackActive", "soloTrackActive"},
                                       {"SOLO", "toggleSoloMonitor", "toggleSoloMonitor"}};

/// Shows or hides the rows of the channels.
class FoldButton : public QAbstractButton {
  public:
    explicit FoldButton(QWidget* parent) : QAbstractButton(parent) {
        setCheckable(true);
        setFocusPolicy(Qt::StrongFocus);
        resize(foldSize, foldSize);
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        if (underMouse()) painter.fillRect(rect(), colours().hovered);
        draw(painter, isChecked() ? Glyph::unfolded : Glyph::folded, QRectF(rect()).adjusted(3, 3, -3, -3),
             colours().text);
        if (hasFocus()) {
            painter.setPen(colours().focus);
            painter.drawRect(rect().adjusted(0, 0, -1, -1));
        }
    }
    void nextCheckState() override {}
};

} // namespace

QString shownName(const TimelineChannel& channel) {
    return channel.isNamed ? text(channel.name) : translatedSentence(channel.name);
}

TrackBox::TrackBox(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setFont(factsFont());
}

QSize TrackBox::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + 2 * boxPadding, boxHeight};
}

bool TrackBox::event(QEvent* event) {
    // A box with the focus is pressed by Space, which then plays nothing.
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::FocusIn && focused) focused();
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) update();
    return QAbstractButton::event(event);
}

void TrackBox::paintEvent(QPaintEvent* /*event*/) {
    const Colours& all = colours();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isOn = isChecked();
    painter.setPen(QPen(hasFocus() ? all.focus : isOn ? all.selected : all.line, hasFocus() ? 2 : 1));
    painter.setBrush(isOn ? all.selected : underMouse() ? all.hovered : all.raised);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 3, 3);
    painter.setPen(!isEnabled() ? all.disabled : isOn ? all.onSelected : all.facts);
    painter.drawText(rect(), Qt::AlignCenter, text());
}

TrackHeader::TrackHeader(Desktop& desktop, std::function<void()> fold, QWidget* parent)
    : QWidget(parent), desktop_(desktop), area_(new QWidget(this)), fold_(new FoldButton(area_)) {
    setFixedWidth(width);
    setAttribute(Qt::WA_OpaquePaintEvent);
    fold_->setObjectName(QStringLiteral("foldChannels"));
    fold_->setAccessibleName(tr("Show a row for each channel"));
    fold_->setToolTip(tr("Shows or hides a row for each channel (A)."));
    connect(fold_, &QAbstractButton::clicked, this, std::move(fold));
}

void TrackHeader::show(const TimelineLayout& layout, bool isExpanded) {
    layout_.emplace(layout);
    isExpanded_ = isExpanded;
    placeBoxes();
    update();
}

TrackHeader::Boxes TrackHeader::makeBoxes(int track) {
    Boxes boxes;
    for (const Box box : {algorithm, active, solo}) {
        auto* made = new TrackBox(area_);
        made->setObjectName(QStringLiteral("%1-%2").arg(QLatin1String(boxCommands[box].word)).arg(track));
        made->setText(translated(boxCommands[box].word));
        const BoxCommands& commands = boxCommands[box];
        const QString help = translated(desktop_.command(commands.one).help);
        made->setToolTip(commands.one == commands.alone ? help
                                                        : tr("%1 With Alt: only this track.").arg(help));
        made->resize(made->sizeHint());
        connect(made, &QAbstractButton::clicked, this, [this, track, box] {
            run(track, box, QGuiApplication::keyboardModifiers().testFlag(Qt::AltModifier));
        });
        made->focused = [this, made] { bringIntoView(*made); };
        boxes[box] = made;
    }
    return boxes;
}

void TrackHeader::placeBoxes() {
    const TimelineRows& rows = layout_->content();
    const std::size_t count = isExpanded_ ? rows.channels.size() : 0;
    while (boxes_.size() < count) boxes_.push_back(makeBoxes(static_cast<int>(boxes_.size()) + 1));
    for (std::size_t i = 0; i < boxes_.size(); ++i) {
        const auto* row = i < count ? layout_->row(RowKind::channel, static_cast<int>(i)) : nullptr;
        int x = space::small;
        for (const Box box : {algorithm, active, solo}) {
            TrackBox& one = *boxes_[i][box];
            // Rows that are scrolled out of view keep their place in the order of Tab.
            one.setVisible(row != nullptr);
            if (row == nullptr) continue;
            const TimelineChannel& channel = rows.channels[i];
            const bool isOn[] = {channel.isUsedByAlgorithm, channel.isActive, channel.isSolo};
            one.setChecked(isOn[box]);
            one.setAccessibleName(QStringLiteral("%1: %2").arg(
                shownName(channel), translated(desktop_.command(boxCommands[box].one).title)));
            one.move(x, static_cast<int>(row->y - TimelineLayout::rulerHeight) + nameHeight + 2);
            x += one.width() + space::tight;
        }
    }
    const auto* sound = layout_->row(RowKind::sound);
    fold_->setChecked(isExpanded_);
    fold_->setVisible(sound != nullptr && !rows.channels.empty());
    if (sound != nullptr)
        fold_->move(space::tight, static_cast<int>(sound->y - TimelineLayout::rulerHeight) + space::tight);
}

void TrackHeader::bringIntoView(const QWidget& box) {
    const int above = box.y() - nameHeight, below = box.geometry().bottom() + space::tight - area_->height();
    if (scrolledBy && (above < 0 || below > 0)) scrolledBy(above < 0 ? above : below);
}

void TrackHeader::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    constexpr int top = static_cast<int>(TimelineLayout::rulerHeight);
    area_->setGeometry(0, top, QWidget::width(), std::max(height() - top, 0));
}

void TrackHeader::run(int track, Box box, bool isAlone) {
    JSON arguments;
    arguments.set("groupID", layout_->content().groupID.text());
    arguments.set("trackIndex", track);
    desktop_.run(isAlone ? boxCommands[box].alone : boxCommands[box].one, std::move(arguments));
}

bool TrackHeader::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && layout_) {
        const auto* help = static_cast<QHelpEvent*>(event);
        QString words;
        for (const TimelineLayout::Row& row : layout_->rows()) {
            if (help->pos().y() < row.y || help->pos().y() >= row.y + row.height) continue;
            const TimelineRows& rows = layout_->content();
            if (row.kind == RowKind::channel)
                words = translatedSentence(rows.channels[static_cast<std::size_t>(row.index)].tooltip());
            if (row.kind == RowKind::picture) words = text(rows.pictureName);
            if (row.kind == RowKind::sound) words = text(rows.soundName);
        }
        QToolTip::showText(help->globalPos(), words.toHtmlEscaped().replace('\n', "<br>"), this);
        return true;
    }
    return QWidget::event(event);
}

void TrackHeader::wheelEvent(QWheelEvent* event) {
    constexpr double half = 0.5;
    if (scrolledBy) scrolledBy(-half * event->angleDelta().y());
    event->accept();
}

void TrackHeader::paintEvent(QPaintEvent* /*event*/) {
    const Colours& all = colours();
    QPainter painter(this);
    painter.fillRect(rect(), all.panel);
    if (!layout_) return;
    const TimelineRows& rows = layout_->content();
    const auto line = [&](double x, double y, double right, const QFont& font, const QColor& colour,
                          const QString& words, Qt::Alignment side = Qt::AlignLeft) {
        painter.setFont(font);
        painter.setPen(colour);
        const QRectF place(x, y, right - x, nameHeight);
        const QString fitting = QFontMetricsF(font).elidedText(words, Qt::ElideMiddle, place.width());
        painter.drawText(place, side | Qt::AlignVCenter, fitting);
        return QFontMetricsF(font).horizontalAdvance(fitting);
    };
    const double end = width - space::small;
    for (const TimelineLayout::Row& row : layout_->rows()) {
        if (row.y > height() || row.y + row.height < TimelineLayout::rulerHeight) continue;
        const double top = row.y + 2;
        switch (row.kind) {
        case RowKind::picture:
            line(space::small, top, end, textFont(), all.text, tr("Picture"));
            line(space::small, top + nameHeight - 2, end, factsFont(), all.facts, text(rows.pictureName));
            break;
        case RowKind::sound:
            line(space::tight + foldSize + space::tight, top + 2, end, textFont(), all.text,
                 rows.hasSound ? tr("Sound") : tr("No sound"));
            if (!rows.hasSound) break;
            line(space::small, top + nameHeight, end, factsFont(), all.facts, text(rows.soundName));
            line(space::small, top + 2 * nameHeight - 4, end, factsFont(), all.facts,
                 translatedSentence(rows.offsetText()));
            break;
        case RowKind::channel: {
            const TimelineChannel& channel = rows.channels[static_cast<std::size_t>(row.index)];
            painter.fillRect(QRectF(0, row.y, 3, row.height - 1), channelColour(row.index));
            const double name = line(space::small, top, end, textFont(),
                                     channel.isHeard() ? all.text : all.facts, shownName(channel));
            const double left = space::small + name + space::small;
            QString why = translated(channel.kindText());
            if (!channel.why.empty()) {
                const QString whole = why + QStringLiteral(" · ") + translatedSentence(channel.why);
                // A cut text says less than the kind alone; the tooltip has the whole text.
                if (QFontMetricsF(factsFont()).horizontalAdvance(whole) <= end - left) why = whole;
            }
            if (end - left > swatch * 3) line(left, top, end, factsFont(), all.facts, why, Qt::AlignRight);
            if (channel.sharePercent)
                line(end - 44, top + nameHeight - 1, end, factsFont(), all.facts,
                     QStringLiteral("%1 %").arg(*channel.sharePercent), Qt::AlignRight);
            break;
        }
        case RowKind::recordings:
            line(space::small, top - 1, end, factsFont(), all.facts, tr("Other recordings"));
            break;
        }
        painter.fillRect(QRectF(0, row.y + row.height - 1, width, 1), all.line);
    }
    painter.fillRect(QRectF(0, 0, width, TimelineLayout::rulerHeight), all.panel);
    painter.fillRect(QRectF(0, TimelineLayout::rulerHeight - 1, width, 1), all.line);
    painter.fillRect(QRectF(width - 1, 0, 1, height()), all.line);
}

} // namespace orvane::views
