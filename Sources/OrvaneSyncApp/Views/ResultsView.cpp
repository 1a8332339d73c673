#include "OrvaneSyncApp/Views/ResultsView.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QSplitter>
#include <QStackedLayout>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace orvane::views {

using namespace design;

namespace {

constexpr int searchWidth = 260;
constexpr int wildTracksHeight = 150;

struct FilterChoice {
    FilterMode mode;
    const char* title;
};
constexpr std::array<FilterChoice, 3> filters{
    {{FilterMode::all, "All"}, {FilterMode::matched, "Matched"}, {FilterMode::issues, "Issues"}}};

/// Folds with a click on the triangle.
class Table : public QTableView {
  public:
    std::function<bool(const QModelIndex&, const QPoint&)> fold;

  protected:
    void mousePressEvent(QMouseEvent* event) override {
        const QModelIndex index = indexAt(event->pos());
        if (index.isValid() && fold(index, event->pos())) return;
        QTableView::mousePressEvent(event);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        const QModelIndex index = indexAt(event->pos());
        if (index.isValid() && fold(index, event->pos())) return;
        QTableView::mouseDoubleClickEvent(event);
    }
};

constexpr std::string_view clipCommands[] = {"toggleApproved",
                                             "toggleLocked",
                                             "toggleExcludedFromExport",
                                             "toggleExcludedFromMulticam",
                                             "togglePickup",
                                             "confirmAmbiguousMatch",
                                             "resyncClip",
                                             "resetClipToAutoSync"};

} // namespace

ResultsView::ResultsView(Desktop& desktop, QWidget* parent)
    : QWidget(parent), desktop_(desktop), rows_(desktop.controller()), model_(new ResultsModel(rows_, this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(space::medium, space::small, space::medium, space::small);
    column->setSpacing(space::small);

    auto* top = new QHBoxLayout;
    std::vector<QString> titles;
    for (const FilterChoice& one : filters) titles.push_back(tr(one.title));
    filter_ = new SegmentedChoice(tr("Which clips"), titles, [this](int chosen) {
        rows_.setFilter(filters[static_cast<std::size_t>(chosen)].mode);
    });
    top->addWidget(filter_);
    top->addStretch(1);
    search_ = searchField(tr("Search clips"), tr("Name, file or scene"));
    search_->setFixedWidth(searchWidth);
    connect(search_, &QLineEdit::textChanged, this,
            [this](const QString& words) { rows_.setSearch(utf8(words)); });
    top->addWidget(search_);
    column->addLayout(top);
    column->addWidget(doubts_ = new Banner);

    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(makeTable());
    splitter->addWidget(wildSection_ = makeWildTracks());
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({10 * wildTracksHeight, wildTracksHeight});
    column->addWidget(splitter, 1);

    rowsObservation_ = rows_.onChange([this](const ResultsViewModel::Change&) { showCounts(); });
    workObservation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::wildTracks) showWildTracks();
        if (field == ImportField::syncGroups || field == ImportField::smartAudio) showDoubts();
    });
    showCounts();
    showDoubts();
    showWildTracks();
}

ResultsView::~ResultsView() { rowsObservation_ = nullptr; }

QWidget* ResultsView::makeTable() {
    auto* table = new Table;
    table_ = table;
    table->fold = [this](const QModelIndex& index, const QPoint& at) {
        if (index.column() != 0 || model_->row(index.row()).foldable == 0) return false;
        if (!ResultsDelegate::isFold(table_->visualRect(index), at)) return false;
        rows_.toggleFolded(static_cast<std::size_t>(index.row()));
        return true;
    };
    table->setAccessibleName(tr("Clips"));
    table->setModel(model_);
    auto* delegate = new ResultsDelegate(table);
    table->setItemDelegate(delegate);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table->setShowGrid(false);
    table->setMouseTracking(true);
    table->setWordWrap(false);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(delegate->sizeHint({}, {}).height());
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView* header = table->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionsMovable(true);
    header->setStretchLastSection(true);
    constexpr std::array<int, ResultsViewModel::columnCount> widths{190, 230, 110, 70, 260, 230, 130, 90};
    for (std::size_t i = 0; i < widths.size(); ++i) header->resizeSection(static_cast<int>(i), widths[i]);
    // Unsorted at first: the order of the shoot.
    header->setSortIndicator(-1, Qt::AscendingOrder);
    header->setSortIndicatorClearable(true);
    table->setSortingEnabled(true);
    connect(table, &QTableView::customContextMenuRequested, this, [this](const QPoint& at) { showMenu(at); });
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (whenSelectionChanged) whenSelectionChanged();
    });
    empty_ = new EmptyState(Glyph::search, {}, {});
    auto* pages = new QWidget;
    pages_ = new QStackedLayout(pages);
    pages_->addWidget(table);
    pages_->addWidget(empty_);
    return pages;
}

QWidget* ResultsView::makeWildTracks() {
    auto* section = new QWidget;
    auto* rows = new QVBoxLayout(section);
    rows->setContentsMargins(0, space::small, 0, 0);
    rows->addWidget(wildTitle_ = facts({}));
    wild_ = new QListWidget;
    wild_->setAccessibleName(tr("Sound without picture"));
    wild_->setFont(factsFont());
    rows->addWidget(wild_, 1);
    section->setMaximumHeight(wildTracksHeight);
    connect(wild_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        if (isFillingWild_) return;
        JSON arguments = JSON::object();
        arguments.set("id", utf8(item->data(Qt::UserRole).toString()));
        desktop_.run("toggleWildTrackApproved", std::move(arguments));
    });
    return section;
}

void ResultsView::showCounts() {
    const ResultsViewModel::Counts counts = rows_.counts();
    const std::array<std::size_t, 3> numbers{counts.all, counts.matched, counts.issues};
    for (std::size_t i = 0; i < filters.size(); ++i)
        filter_->setText(static_cast<int>(i), tr("%1  %2").arg(tr(filters[i].title)).arg(numbers[i]));
    const bool isEmpty = rows_.rowCount() == 0;
    pages_->setCurrentIndex(isEmpty ? 1 : 0);
    if (!isEmpty) return;
    if (counts.all == 0)
        empty_->setTexts(
            tr("No clips"),
            tr("The folders hold no picture that can be read. Choose others with File > New Scan."));
    else if (rows_.filter() == FilterMode::issues && search_->text().isEmpty())
        empty_->setTexts(tr("Nothing waits for a decision"), tr("Every clip is settled."));
    else
        empty_->setTexts(tr("No clip is found"), tr("Change the search or the filter above."));
}

void ResultsView::showDoubts() {
    const auto doubts = rows_.doubts();
    if (doubts.empty()) return doubts_->clear();
    shownDoubt_ %= doubts.size();
    const ResultsViewModel::Doubt& first = doubts[shownDoubt_];
    QString message = text(first.message);
    if (!first.cure.empty()) message += QStringLiteral("\n→ ") + text(first.cure);
    if (doubts.size() > 1) message = tr("%1 of %2: %3").arg(shownDoubt_ + 1).arg(doubts.size()).arg(message);
    doubts_->show(Signal::doubtful, message, doubts.size() > 1 ? tr("Show Clips, Next") : tr("Show Clips"),
                  [this, clips = first.groupIDs] {
                      filter_->choose(0);
                      rows_.setFilter(FilterMode::all);
                      search_->clear();
                      select(clips);
                      ++shownDoubt_;
                      showDoubts();
                  });
}

void ResultsView::select(const std::vector<UUID>& clips) {
    QItemSelection selection;
    for (const UUID& id : clips) {
        const auto row = rows_.rowOf(id);
        if (!row) continue;
        const QModelIndex index = model_->index(static_cast<int>(*row), 0);
        selection.select(index, model_->index(static_cast<int>(*row), ResultsModel::marksColumn));
        if (selection.size() > 1) continue;
        table_->scrollTo(index, QAbstractItemView::PositionAtCenter);
        table_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate); // arrows go on here
    }
    table_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void ResultsView::showWildTracks() {
    const auto& tracks = desktop_.controller().work().wildTracks();
    isFillingWild_ = true;
    wild_->clear();
    for (const WildTrack& track : tracks) {
        auto* item =
            new QListWidgetItem(tr("%1   %2   %3%4")
                                    .arg(text(track.customName), text(startText(track.audio)),
                                         text(lengthText(track.audio)), text(channelsText(track.audio))),
                                wild_);
        item->setData(Qt::UserRole, text(track.id.text()));
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(track.isApproved ? Qt::Checked : Qt::Unchecked);
        item->setToolTip(
            tr("Ticked recordings go into the document.\n%1").arg(text(track.audio.url.pathText())));
    }
    isFillingWild_ = false;
    wildTitle_->setText(
        tr("Sound without picture: %1. Ticked recordings go into the document.").arg(tracks.size()));
    wildSection_->setVisible(!tracks.empty());
}

std::vector<UUID> ResultsView::selectedClips() const {
    std::vector<int> selected;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) selected.push_back(index.row());
    std::ranges::sort(selected);
    std::vector<UUID> clips;
    for (const int row : selected) clips.push_back(rows_.groupID(static_cast<std::size_t>(row)));
    return clips;
}

void ResultsView::runForSelection(std::string_view command) {
    const std::vector<UUID> clips = selectedClips();
    desktop_.runForClips(command, clips);
    select(clips);
}

void ResultsView::rename(const UUID& clipID) {
    const std::vector<UUID> clips{clipID};
    const SyncGroup* clip = desktop_.controller().work().syncGroups().find(clipID);
    if (clip == nullptr) return;
    bool isGiven = false;
    const QString name = QInputDialog::getText(
        this, tr("Rename clip"), tr("Name in Final Cut Pro; empty: by the naming rules"), QLineEdit::Normal,
        text(clip->manualClipName.value_or("")), &isGiven);
    if (!isGiven) return;
    JSON arguments = JSON::object();
    arguments.set("name", utf8(name));
    desktop_.runForClips("setManualClipName", clips, std::move(arguments));
    select(clips);
}

void ResultsView::showMenu(const QPoint& position) {
    const std::vector<UUID> clips = selectedClips();
    if (clips.empty()) return;
    QMenu menu(this);
    for (const std::string_view id : clipCommands) {
        QAction* action =
            menu.addAction(text(desktop_.command(id).title), this, [this, id] { runForSelection(id); });
        action->setToolTip(text(desktop_.command(id).help));
        action->setEnabled(std::ranges::any_of(clips, [&](const UUID& clip) {
            const SyncGroup* group = desktop_.controller().work().syncGroups().find(clip);
            return group != nullptr && desktop_.isEnabled(id, group);
        }));
    }
    menu.addSeparator();
    menu.addAction(tr("Rename…"), this, [this, clip = clips.front()] { rename(clip); })
        ->setEnabled(clips.size() == 1);
    menu.addSeparator();
    menu.addAction(tr("Review"), this, [this] { Q_EMIT table_->activated(table_->currentIndex()); });
    menu.addAction(text(desktop_.command("clusterLoad").title), this, [this] { openMulticam(); });
    menu.exec(table_->viewport()->mapToGlobal(position));
}

} // namespace orvane::views
