#include "OrvaneSyncApp/Views/WildTracksView.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/Views/FilePlayer.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

enum Column { playColumn, nameColumn, fileColumn, startsColumn, lengthColumn, channelsColumn, approveColumn };
constexpr int wildTrackRole = Qt::UserRole;
constexpr int playWidth = 44;
constexpr int startsWidth = 112, lengthWidth = 70, channelsWidth = 80, approveWidth = 150;

} // namespace

WildTracksView::WildTracksView(Desktop& desktop, QWidget* parent) : QWidget(parent), desktop_(desktop) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, space::small, 0, 0);
    rows->addWidget(title_ = facts({}));
    list_ = new QTreeWidget;
    list_->setObjectName(QStringLiteral("wildTracks"));
    list_->setAccessibleName(tr("Sound without picture"));
    list_->setHeaderLabels({QString(), tr("Wild track name"), tr("Recording"), tr("Starts"), tr("Length"),
                            tr("Channels"), tr("Approve for export")});
    list_->setRootIsDecorated(false);
    list_->setProperty("columns", true);
    list_->setUniformRowHeights(true);
    list_->setTextElideMode(Qt::ElideMiddle);                  // the ends of recordings' names matter
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers); // only the name can be edited
    QHeaderView* header = list_->header();
    header->setStretchLastSection(false);
    header->setFont(factsFont());
    header->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    header->setSectionResizeMode(fileColumn, QHeaderView::Stretch);
    for (const int column : {lengthColumn, channelsColumn})
        list_->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    for (const auto& [column, width] :
         {std::pair(playColumn, playWidth), std::pair(startsColumn, startsWidth),
          std::pair(lengthColumn, lengthWidth), std::pair(channelsColumn, channelsWidth),
          std::pair(approveColumn, approveWidth)})
        header->resizeSection(column, width);
    rows->addWidget(list_, 1);
    connect(list_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* row, int column) {
        if (!isFilling_) changed(*row, column);
    });
    connect(list_, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* row, int column) {
        if (column == playColumn) play(*row);
    });
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* row, int column) {
        if (column == nameColumn) list_->editItem(row, nameColumn);
    });
    list_->installEventFilter(this);
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::wildTracks) fill();
    });
    fill();
}

bool WildTracksView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list_ && event->type() == QEvent::FocusIn && list_->selectedItems().isEmpty() &&
        static_cast<const QFocusEvent*>(event)->reason() != Qt::MouseFocusReason)
        list_->setCurrentItem(list_->topLevelItem(0), nameColumn);
    const bool isAsked = event->type() == QEvent::ShortcutOverride;
    if (watched != list_ || (!isAsked && event->type() != QEvent::KeyPress))
        return QWidget::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    const bool isControl = key->modifiers().testFlag(Qt::ControlModifier);
    const bool isOfClips = isControl && (isReturn || key->key() == Qt::Key_L || key->key() == Qt::Key_R);
    if (isAsked) {
        // These keys change the recording chosen here, or nothing; they must not change a clip of the list
        // above.
        if (!isOfClips && key->key() != Qt::Key_F2) return false;
        event->accept();
        return true;
    }
    QTreeWidgetItem* row = list_->currentItem();
    if (row == nullptr) return false;
    if (key->key() == Qt::Key_F2)
        list_->editItem(row, nameColumn);
    else if (isControl && isReturn)
        row->setCheckState(approveColumn,
                           row->checkState(approveColumn) == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    else if (key->key() == Qt::Key_Space && list_->currentColumn() != approveColumn)
        play(*row);
    else
        return isOfClips;
    return true;
}

void WildTracksView::fill() {
    const auto& tracks = desktop_.controller().work().wildTracks();
    const QString current =
        list_->currentItem() ? list_->currentItem()->data(0, wildTrackRole).toString() : QString();
    const int column = std::max(list_->currentColumn(), 0), scrolled = list_->verticalScrollBar()->value();
    isFilling_ = true;
    list_->clear();
    std::size_t approved = 0;
    for (const WildTrack& track : tracks) {
        auto* row =
            new QTreeWidgetItem(list_, {QString(), text(track.customName),
                                        text(desktop_.controller().work().fileNames().of(track.audio)),
                                        text(startText(track.audio)), text(lengthText(track.audio)),
                                        track.audio.channelCount ? QString::number(*track.audio.channelCount)
                                                                 : QStringLiteral("-"),
                                        QString()});
        row->setData(0, wildTrackRole, text(track.id.text()));
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable |
                      Qt::ItemIsEditable);
        row->setCheckState(approveColumn, track.isApproved ? Qt::Checked : Qt::Unchecked);
        row->setFont(startsColumn, timecodeFont());
        row->setTextAlignment(lengthColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setTextAlignment(channelsColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setToolTip(playColumn, tr("Play or pause (Space)"));
        row->setToolTip(nameColumn, tr("Double click or F2 names the recording"));
        row->setToolTip(fileColumn, text(track.audio.url.pathText()));
        row->setToolTip(approveColumn, tr("Ticked recordings go into the document (Ctrl+Return)."));
        row->setData(playColumn, Qt::AccessibleTextRole, tr("Play or pause (Space)"));
        if (text(track.id.text()) == current) list_->setCurrentItem(row, column);
        if (track.isApproved) ++approved;
    }
    isFilling_ = false;
    list_->doItemsLayout();
    list_->verticalScrollBar()->setValue(scrolled);
    title_->setText(
        tr("Sound without picture: %1, %2 approved for the document").arg(tracks.size()).arg(approved) +
        QStringLiteral("  ·  ") + tr("Space plays, Ctrl+Return approves, F2 names a recording"));
    setVisible(!tracks.empty());
    showPlaying();
}

int WildTracksView::heightOfRows(int most) const {
    const QMargins around = layout()->contentsMargins();
    return around.top() + title_->heightForWidth(width()) + layout()->spacing() +
           list_->header()->sizeHint().height() +
           std::min(most, list_->topLevelItemCount()) * std::max(0, list_->sizeHintForRow(0)) +
           2 * list_->frameWidth() + around.bottom();
}

void WildTracksView::changed(const QTreeWidgetItem& row, int column) {
    JSON arguments = JSON::object();
    arguments.set("id", utf8(row.data(0, wildTrackRole).toString()));
    // The command fills the list again, which must not happen during the list's own notice of the change.
    if (column == approveColumn)
        QMetaObject::invokeMethod(
            this, [this, arguments] { desktop_.run("toggleWildTrackApproved", arguments); },
            Qt::QueuedConnection);
    if (column != nameColumn) return;
    arguments.set("to", utf8(row.text(nameColumn).trimmed()));
    QMetaObject::invokeMethod(
        this, [this, arguments] { desktop_.run("renameWildTrack", arguments); }, Qt::QueuedConnection);
}

void WildTracksView::play(const QTreeWidgetItem& row) {
    const auto id = UUID::fromText(utf8(row.data(0, wildTrackRole).toString()));
    const auto& tracks = desktop_.controller().work().wildTracks();
    const auto found = std::ranges::find(tracks, id, &WildTrack::id);
    if (found == tracks.end()) return;
    if (!player_) {
        player_ = makeFilePlayer(desktop_);
        if (!player_) return;
        playing_ = player_->onChange([this] { showPlaying(); });
    }
    player_->togglePlayback(found->audio);
}

void WildTracksView::hideEvent(QHideEvent* event) {
    if (player_ && !event->spontaneous()) player_->stop(); // a minimized window continues to play
    QWidget::hideEvent(event);
}

void WildTracksView::showPlaying() {
    const auto& tracks = desktop_.controller().work().wildTracks();
    for (int i = 0; i < list_->topLevelItemCount(); ++i) {
        const bool plays = player_ && player_->isPlaying() && static_cast<std::size_t>(i) < tracks.size() &&
                           player_->currentAssetID() == tracks[static_cast<std::size_t>(i)].audio.id;
        isFilling_ = true;
        list_->topLevelItem(i)->setIcon(playColumn, icon(plays ? Glyph::pause : Glyph::play));
        isFilling_ = false;
    }
}

} // namespace orvane::views
