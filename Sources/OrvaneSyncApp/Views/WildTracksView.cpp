#include "OrvaneSyncApp/Views/WildTracksView.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/Views/FilePlayer.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
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
    list_->headerItem()->setTextAlignment(lengthColumn, Qt::AlignRight | Qt::AlignVCenter);
    // Not at the right, where the box of the next column begins.
    list_->headerItem()->setTextAlignment(channelsColumn, Qt::AlignCenter);
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
        if (column == nameColumn)
            list_->editItem(row, nameColumn);
        else if (column != playColumn && column != approveColumn)
            play(*row);
    });
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(list_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) { showMenu(at); });
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
        toggleApproved(*row);
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
        row->setTextAlignment(channelsColumn, Qt::AlignCenter);
        row->setToolTip(playColumn, tr("Play or pause (Space)"));
        row->setToolTip(nameColumn, tr("Double click or F2 names the recording"));
        row->setToolTip(fileColumn, text(track.audio.url.pathText()));
        row->setToolTip(approveColumn, tr("Ticked recordings go into the document (Ctrl+Return)."));
        row->setData(playColumn, Qt::AccessibleTextRole, tr("Play or pause (Space)"));
        if (text(track.id.text()) == current) list_->setCurrentItem(row, column);
    }
    isFilling_ = false;
    list_->doItemsLayout();
    list_->verticalScrollBar()->setValue(scrolled);
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

void WildTracksView::toggleApproved(QTreeWidgetItem& row) {
    row.setCheckState(approveColumn,
                      row.checkState(approveColumn) == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

void WildTracksView::showMenu(const QPoint& at) {
    QTreeWidgetItem* row = list_->itemAt(at);
    const WildTrack* track = row == nullptr ? nullptr : trackOf(*row);
    if (track == nullptr) return;
    list_->setCurrentItem(row, std::max(list_->currentColumn(), 0));
    // The list may be filled again while the menu is open, so the entries use the current row.
    const auto add = [&](QMenu& menu, const QString& title, void (*act)(WildTracksView&, QTreeWidgetItem&)) {
        return menu.addAction(title, this, [this, act] {
            if (QTreeWidgetItem* now = list_->currentItem()) act(*this, *now);
        });
    };
    auto* menu = new QMenu(list_);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const bool plays = player_ && player_->isPlaying() && player_->currentAssetID() == track->audio.id;
    add(*menu, plays ? tr("Pause") : tr("Play"),
        [](WildTracksView& view, QTreeWidgetItem& one) { view.play(one); });
    const std::vector<UUID> clips = selectedClips ? selectedClips() : std::vector<UUID>();
    const SyncGroup* clip =
        clips.size() == 1 ? desktop_.controller().work().syncGroups().find(clips.front()) : nullptr;
    QAction* attaching = menu->addAction(
        clip == nullptr
            ? tr("Attach to the Selected Clip")
            : tr("Attach to “%1”").arg(text(desktop_.controller().work().fileNames().of(clip->video))),
        this, [this, track = *track, clips] { attach(track, clips.front()); });
    attaching->setEnabled(clip != nullptr && desktop_.isEnabled("attachAudioToGroup", clip));
    menu->addSeparator();
    add(*menu, tr("Rename…"),
        [](WildTracksView& view, QTreeWidgetItem& one) { view.list_->editItem(&one, nameColumn); });
    QAction* approve = add(*menu, tr("Approve for export"),
                           [](WildTracksView& view, QTreeWidgetItem& one) { view.toggleApproved(one); });
    approve->setCheckable(true);
    approve->setChecked(track->isApproved);
    menu->popup(list_->viewport()->mapToGlobal(at));
}

void WildTracksView::attach(const WildTrack& track, const UUID& clip) {
    JSON arguments = JSON::object();
    arguments.set("groupID", clip.text());
    arguments.set("audio", track.audio.id.text());
    desktop_.run("attachAudioToGroup", std::move(arguments), [this](const JSON&) {
        showToast(window(), tr("The recording is attached. Undo takes it back."));
    });
}

const WildTrack* WildTracksView::trackOf(const QTreeWidgetItem& row) const {
    const auto id = UUID::fromText(utf8(row.data(0, wildTrackRole).toString()));
    const auto& tracks = desktop_.controller().work().wildTracks();
    const auto found = std::ranges::find(tracks, id, &WildTrack::id);
    return found == tracks.end() ? nullptr : &*found;
}

void WildTracksView::play(const QTreeWidgetItem& row) {
    const WildTrack* found = trackOf(row);
    if (found == nullptr) return;
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
    showTitle();
}

void WildTracksView::showTitle() {
    const auto& tracks = desktop_.controller().work().wildTracks();
    const auto approved = std::ranges::count_if(tracks, &WildTrack::isApproved);
    const QString place = player_ ? placeText(*player_) : QString();
    const auto loaded = std::ranges::find_if(tracks, [&](const WildTrack& track) {
        return player_ && player_->currentAssetID() == track.audio.id;
    });
    title_->setText(
        tr("Sound without picture: %1, %2 approved for the document").arg(tracks.size()).arg(approved) +
        QStringLiteral("  ·  ") +
        (place.isEmpty() || loaded == tracks.end()
             ? tr("Space plays, Ctrl+Return approves, F2 names a recording")
             : QStringLiteral("%1  %2").arg(text(desktop_.controller().work().fileNames().of(loaded->audio)),
                                            place)));
}

} // namespace orvane::views
