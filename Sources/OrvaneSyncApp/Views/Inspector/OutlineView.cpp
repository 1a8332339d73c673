#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/ElidedLabel.h"
#include "OrvaneSyncApp/Views/ClipMenu.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineListModel.h"
#include "OrvaneSyncApp/Views/SearchKeys.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QMenu>
#include <QMouseEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int narrowestOutline = 180;

/// A click opens a row, and the keys stay those of the clip in view: only Tab, or Down in the search field,
/// gives the list the keyboard. Then Return opens a row, and an arrow key that moves to a clip opens it as
/// well, so that the marked row is always the clip that the keys change; Left and Right fold a take, as a
/// click on its triangle does. Space plays.
class OutlineList : public QListView {
  public:
    std::function<void(int row)> open, fold;
    std::function<bool(int row)> isOpen; ///< whether the row's clip is in view
    std::function<void()> play;
    std::function<void()> leave;                             ///< gives the keyboard to the clip in view
    std::function<void(int row, const QPoint& at)> showMenu; ///< `at`: on the screen

  protected:
    /// A right click leaves the clip in view where it is.
    void contextMenuEvent(QContextMenuEvent* event) override {
        const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
        const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
        if (!index.isValid()) return;
        const QPoint at =
            isByKey ? viewport()->mapToGlobal(visualRect(index).bottomLeft()) : event->globalPos();
        showMenu(index.row(), at);
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) return;
        leave(); // first, because another screen may open
        const QModelIndex index = indexAt(event->pos());
        if (!index.isValid()) return;
        const bool isTake = static_cast<const OutlineListModel*>(model())->row(index.row()).isTake;
        if (isTake && OutlineDelegate::isFold(visualRect(index), event->pos())) return fold(index.row());
        setCurrentIndex(index);
        open(index.row());
    }
    void keyPressEvent(QKeyEvent* event) override {
        const QModelIndex index = currentIndex();
        if (!index.isValid()) return QListView::keyPressEvent(event);
        const auto& row = static_cast<const OutlineListModel*>(model())->row(index.row());
        const int key = event->key();
        if (key == Qt::Key_Space && isOpen(index.row())) return play();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) return open(index.row());
        const bool isFolding = key == (row.isFolded ? Qt::Key_Right : Qt::Key_Left);
        if (row.isTake && isFolding) return fold(index.row());
        QListView::keyPressEvent(event);
        if (currentIndex() == index) return;
        // The row of an unfolded take is skipped; the next row is a clip.
        const auto* rows = static_cast<const OutlineListModel*>(model());
        const bool isUp = currentIndex().row() < index.row();
        const auto isTitle = [&](int at) { return rows->row(at).isTake && !rows->row(at).isFolded; };
        const int next = currentIndex().row() + (isUp && currentIndex().row() > 0 ? -1 : 1);
        if (isTitle(currentIndex().row()) && next < model()->rowCount())
            setCurrentIndex(model()->index(next, 0));
        if (!rows->row(currentIndex().row()).isTake) open(currentIndex().row());
    }
};

} // namespace

OutlineView::OutlineView(Desktop& desktop, Choose choose, std::function<void()> leave, QWidget* parent)
    : QWidget(parent), rows_(desktop.controller()), choose_(std::move(choose)),
      model_(new OutlineListModel(rows_, this)) {
    setObjectName(QStringLiteral("outline"));
    setMinimumWidth(narrowestOutline);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(space::small, space::small, space::tight, 0);
    column->setSpacing(space::small);
    QPushButton* back = button(tr("‹  Results"), Weight::quiet);
    back->setAccessibleName(tr("Back to the Results"));
    back->setToolTip(tr("Back to the list of all clips"));
    connect(back, &QPushButton::clicked, this, [leave = std::move(leave)] { leave(); });
    column->addWidget(back);
    column->addWidget(search_ = searchField(tr("Search clips in the list"), tr("Name or file")));
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& words) {
        rows_.setSearch(utf8(words));
        noteNeighbours();
    });
    column->addWidget(only_ = makeOnly());
    column->addWidget(counts_ = facts({}));
    auto* list = new OutlineList;
    list_ = list;
    list->setAccessibleName(tr("Clips"));
    list->setFocusPolicy(Qt::TabFocus);
    list->setModel(model_);
    list->setItemDelegate(new OutlineDelegate(list));
    list->setUniformItemSizes(true);
    list->setMouseTracking(true);
    list->setFrameShape(QFrame::NoFrame);
    list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->open = [this](int row) { open(row); };
    list->isOpen = [this](int row) {
        return selected_ && !isTakeSelected_ && rows_.groupID(static_cast<std::size_t>(row)) == selected_;
    };
    list->play = [&desktop] { desktop.players().handleKeyAction(KeyAction::playPause); };
    list->leave = [this] {
        if (takeKeyboard) takeKeyboard();
    };
    list->fold = [this](int row) { rows_.toggleFolded(static_cast<std::size_t>(row)); };
    list->showMenu = [this, &desktop](int row, const QPoint& at) {
        QMenu menu(this);
        ClipMenu(desktop, this).fill(menu, rows_.clipsOf(static_cast<std::size_t>(row)));
        menu.exec(at);
    };
    column->addWidget(list, 1);
    auto* keys = new SearchKeys(*search_, *list);
    keys->firstRow = [this] {
        // The search is for a clip; the row of its take would open all of its cameras.
        int row = 0;
        while (row + 1 < model_->rowCount() && model_->row(row).isTake && !model_->row(row).isFolded) ++row;
        return row;
    };
    keys->leave = list->leave;
    // Otherwise the keys would act on a clip that is no longer listed.
    keys->whenFound = [this](int row) { open(row); };
    observation_ = rows_.onChange([this](const ResultsViewModel::Change& change) {
        showCounts();
        // A list that was laid out again has lost its marked row.
        if (change.isLayoutChanged && selected_)
            isTakeSelected_ ? void(selectTake(*selected_)) : markRow(rows_.rowOf(*selected_));
        if (change.isLayoutChanged && whenListChanged) whenListChanged();
    });
    showCounts();
}

QWidget* OutlineView::makeOnly() {
    auto* made = new QWidget;
    auto* row = new QHBoxLayout(made);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::tight);
    row->addWidget(onlyTitle_ = new ElidedLabel(Qt::ElideRight), 1);
    QPushButton* all = button(tr("Show All"), Weight::quiet);
    all->setToolTip(tr("Lists all clips again, in the order of the shoot"));
    connect(all, &QPushButton::clicked, this, [this] { showAll(); });
    row->addWidget(all);
    made->hide();
    return made;
}

bool OutlineView::isPart() const {
    const OutlineModel::Counts counts = rows_.counts();
    return counts.shown < counts.all;
}

void OutlineView::showAll() {
    search_->clear();
    showOnly(std::nullopt, {});
    if (whenAllWanted) whenAllWanted();
}

void OutlineView::showOnly(const std::optional<std::vector<UUID>>& clips, const QString& title) {
    onlyTitle_->setText(title);
    onlyTitle_->setToolTip(tr("As in the list that the clip was opened from: %1").arg(title));
    only_->setVisible(clips.has_value());
    rows_.showOnly(clips);
    noteNeighbours();
}

OutlineView::~OutlineView() { observation_ = nullptr; }

void OutlineView::select(const UUID& groupID) {
    selected_ = groupID;
    isTakeSelected_ = false;
    if (!rows_.rowOf(groupID)) search_->clear(); // an earlier search that does not find this clip
    markRow(rows_.rowOf(groupID));
    noteNeighbours();
}

void OutlineView::noteNeighbours() {
    if (!selected_) return;
    before_ = rows_.neighbour(*selected_, -1);
    after_ = rows_.neighbour(*selected_, 1);
}

std::optional<UUID> OutlineView::neighbour(const UUID& of, int step) const {
    if (of == selected_ && (step == 1 || step == -1))
        if (const auto& kept = step > 0 ? after_ : before_; kept && rows_.placeInList(*kept)) return kept;
    return rows_.neighbour(of, step);
}

QString OutlineView::selectTake(const UUID& groupID) {
    selected_ = groupID;
    isTakeSelected_ = true;
    const auto row = rows_.takeRowOf(groupID);
    markRow(row);
    return row ? text(rows_.row(*row).label) : QString();
}

void OutlineView::markRow(const std::optional<std::size_t>& row) {
    const QModelIndex index = row ? model_->index(static_cast<int>(*row)) : QModelIndex();
    list_->setCurrentIndex(index);
    if (!index.isValid()) return;
    // Scrolls so that the next and the previous rows are in view, too.
    constexpr int neighbours = 2;
    for (const int other : {index.row() + neighbours, index.row() - neighbours, index.row()})
        list_->scrollTo(model_->index(std::clamp(other, 0, model_->rowCount() - 1)));
}

void OutlineView::open(int row) {
    const auto at = static_cast<std::size_t>(row);
    if (const auto clip = rows_.groupID(at)) {
        selected_ = clip;
        isTakeSelected_ = false;
        choose_(*clip);
    } else if (openTake) {
        openTake(rows_.clipsOf(at));
    }
}

void OutlineView::showCounts() { counts_->setText(translatedSentence(rows_.counts().text())); }

bool OutlineView::event(QEvent* event) {
    // The settings for clip names may have changed in another window.
    if (event->type() == QEvent::WindowActivate) rows_.followNaming();
    const bool isDone = QWidget::event(event);
    // If the list becomes lower, the clip in view stays in the list's view.
    if (event->type() == QEvent::Resize && list_->currentIndex().isValid())
        list_->scrollTo(list_->currentIndex());
    return isDone;
}

} // namespace orvane::views
