#include "OrvaneSyncApp/Views/ResultsView.h"

#include "OrvaneSyncApp/Views/DoubtBar.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WildTracksView.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedLayout>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace orvane::views {

using namespace design;

namespace {

constexpr int searchWidth = 260;
constexpr int wildTracksHeight = 170;
constexpr int scrollRest = 60;     ///< milliseconds
constexpr int compactBelow = 1050; ///< points of width for the table
constexpr platform::PictureSize thumbnailLimit{128, 72};

// Of columns whose contents have one length, in points; the others share the rest by their weights.
struct ColumnWidth {
    ResultsViewModel::Column column;
    int fixed;
    int weight;
    int least;
};
using Column = ResultsViewModel::Column;
constexpr std::array<ColumnWidth, ResultsViewModel::columnCount> columnWidths{
    {{Column::name, 0, 40, 180},
     {Column::cameraFile, 0, 35, 120},
     {Column::starts, 112, 0, 0},
     {Column::length, 66, 0, 0},
     {Column::match, 0, 32, 110},
     {Column::sound, 0, 26, 104},
     {Column::begins, 116, 0, 0},
     {Column::loudness, 92, 0, 0}}};
constexpr int marksWidth = 76;

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
    std::function<void()> resized;

  protected:
    void mousePressEvent(QMouseEvent* event) override {
        const QModelIndex index = indexAt(event->pos());
        if (index.isValid() && fold(index, event->pos())) return;
        QTableView::mousePressEvent(event);
    }
    void resizeEvent(QResizeEvent* event) override {
        QTableView::resizeEvent(event);
        resized();
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
    : QWidget(parent), desktop_(desktop), rows_(desktop.controller()),
      model_(new ResultsModel(rows_, Thumbnails::create(desktop.mainThread(), thumbnailLimit), this)),
      scrolled_(new QTimer(this)) {
    scrolled_->setSingleShot(true);
    scrolled_->setInterval(scrollRest);
    connect(scrolled_, &QTimer::timeout, this, [this] { wantThumbnails(); });
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
    column->addWidget(doubts_ = new DoubtBar(desktop));
    doubts_->whenClipsWanted = [this](const std::vector<UUID>& clips) {
        filter_->choose(0);
        rows_.setFilter(FilterMode::all);
        search_->clear();
        select(clips);
    };
    doubts_->whenScanWanted = [this] {
        if (whenScanWanted) whenScanWanted();
    };
    doubts_->whenCured = [this] { showDoubts(); };

    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(makeTable());
    splitter->addWidget(wildTracks_ = new WildTracksView(desktop));
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({10 * wildTracksHeight, wildTracksHeight});
    column->addWidget(splitter, 1);

    rowsObservation_ = rows_.onChange([this](const ResultsViewModel::Change&) {
        showCounts();
        if (!table_->isColumnHidden(static_cast<int>(Column::loudness)) != rows_.isLoudnessKnown())
            fitColumns();
        scrolled_->start();
    });
    workObservation_ = desktop_.controller().onChange([this, splitter](ImportField field) {
        // The clips have what the recordings leave over; where somebody moved the border it stays.
        if (field == ImportField::wildTracks) {
            const int needed = std::min(wildTracksHeight, wildTracks_->neededHeight());
            if (std::exchange(wildTracksNeed_, needed) != needed)
                splitter->setSizes({10 * wildTracksHeight, needed});
        }
        if (field == ImportField::syncGroups || field == ImportField::smartAudio) showDoubts();
    });
    showCounts();
    showDoubts();
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
    table->setItemDelegate(delegate_ = new ResultsDelegate(table));
    table->resized = [this] {
        fitColumns();
        scrolled_->start();
    };
    connect(table->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { scrolled_->start(); });
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
    table->verticalHeader()->setDefaultSectionSize(ResultsDelegate::rowHeight);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView* header = table->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionsMovable(true);
    header->setMinimumSectionSize(40);
    header->setFont(factsFont());
    for (const ColumnWidth& one : columnWidths)
        header->resizeSection(static_cast<int>(one.column), std::max(one.fixed, 10 * one.weight));
    header->resizeSection(ResultsModel::marksColumn, marksWidth);
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

void ResultsView::fitColumns() {
    const int width = table_->viewport()->width();
    const bool isCompact = width < compactBelow;
    delegate_->setCompact(isCompact);
    const bool hasOtherColumns =
        table_->isColumnHidden(static_cast<int>(Column::cameraFile)) != isCompact ||
        table_->isColumnHidden(static_cast<int>(Column::loudness)) == rows_.isLoudnessKnown();
    table_->setColumnHidden(static_cast<int>(Column::cameraFile), isCompact);
    table_->setColumnHidden(static_cast<int>(Column::length), isCompact);
    table_->setColumnHidden(static_cast<int>(Column::begins), isCompact);
    table_->setColumnHidden(static_cast<int>(Column::loudness), !rows_.isLoudnessKnown());
    // Those that share the rest keep their proportions, also where somebody has changed them.
    if (hasOtherColumns) {
        for (const ColumnWidth& one : columnWidths)
            if (one.weight > 0) table_->setColumnWidth(static_cast<int>(one.column), 10 * one.weight);
    }
    int rest = width - table_->columnWidth(ResultsModel::marksColumn);
    int shared = 0;
    for (const ColumnWidth& one : columnWidths) {
        const int column = static_cast<int>(one.column);
        if (table_->isColumnHidden(column)) continue;
        if (one.weight == 0)
            rest -= table_->columnWidth(column);
        else
            shared += table_->columnWidth(column);
    }
    if (shared == 0) return;
    int left = rest;
    int last = 0;
    for (const ColumnWidth& one : columnWidths) {
        const int column = static_cast<int>(one.column);
        if (one.weight == 0 || table_->isColumnHidden(column)) continue;
        const int fitted = std::max(one.least, rest * table_->columnWidth(column) / shared);
        table_->setColumnWidth(column, fitted);
        left -= fitted;
        last = column;
    }
    // What rounding leaves over.
    if (left > 0) table_->setColumnWidth(last, table_->columnWidth(last) + left);
}

void ResultsView::wantThumbnails() {
    if (!table_->isVisible()) return;
    const int first = table_->rowAt(0);
    const int last = table_->rowAt(table_->viewport()->height() - 1);
    if (first >= 0) model_->wantThumbnails(first, last < 0 ? model_->rowCount() - 1 : last);
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

void ResultsView::showDoubts() { doubts_->show(rows_.doubts()); }

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

void ResultsView::analyseSelection() {
    JSON arguments = JSON::object();
    arguments.set("forceOverwriteManualTracks", false);
    const std::vector<UUID> clips = selectedClips();
    desktop_.runForClips("runSmartAudioForGroup", clips, std::move(arguments));
    select(clips);
}

void ResultsView::addRecordings(QMenu& menu, const UUID& clip) {
    const auto candidates = rows_.candidates(clip);
    if (candidates.empty()) return;
    menu.addAction(tr("Recording of this clip"))->setEnabled(false); // a heading
    for (const ResultsViewModel::Candidate& one : candidates) {
        QAction* action =
            menu.addAction(translatedSentence(one.text), this, [this, clip, match = one.matchID] {
                JSON arguments = JSON::object();
                arguments.set("matchID", match.text());
                desktop_.runForClips("chooseRecording", {clip}, std::move(arguments));
                select({clip});
            });
        action->setCheckable(true);
        action->setChecked(one.isFirst);
    }
    menu.addSeparator();
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
    menu.setToolTipsVisible(true);
    if (clips.size() == 1) addRecordings(menu, clips.front());
    for (const std::string_view id : clipCommands) {
        QAction* action =
            menu.addAction(translated(desktop_.command(id).title), this, [this, id] { runForSelection(id); });
        action->setToolTip(translated(desktop_.command(id).help));
        action->setEnabled(std::ranges::any_of(clips, [&](const UUID& clip) {
            const SyncGroup* group = desktop_.controller().work().syncGroups().find(clip);
            return group != nullptr && desktop_.isEnabled(id, group);
        }));
    }
    menu.addAction(icon(Glyph::waveform), tr("Analyse Sound"), this, [this] { analyseSelection(); });
    menu.addSeparator();
    menu.addAction(tr("Rename…"), this, [this, clip = clips.front()] { rename(clip); })
        ->setEnabled(clips.size() == 1);
    menu.addSeparator();
    menu.addAction(tr("Review"), this, [this] { Q_EMIT table_->activated(table_->currentIndex()); });
    menu.addAction(translated(desktop_.command("clusterLoad").title), this, [this] { openMulticam(); });
    menu.exec(table_->viewport()->mapToGlobal(position));
}

} // namespace orvane::views
