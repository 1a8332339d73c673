#include "OrvaneSyncApp/Views/ResultsView.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/Views/DoubtBar.h"
#include "OrvaneSyncApp/Views/MatchAgain.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/SearchKeys.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WildTracksView.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedLayout>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cstdint>

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
    int least; ///< of the status, `leastStatusWidth`
};
using Column = ResultsViewModel::Column;
constexpr std::array<ColumnWidth, ResultsViewModel::columnCount> columnWidths{
    {{Column::name, 0, 45, 180},
     {Column::cameraFile, 0, 35, 120},
     {Column::starts, 112, 0, 0},
     {Column::length, 66, 0, 0},
     {Column::match, 0, 28, 0},
     {Column::sound, 0, 25, 150},
     {Column::begins, 116, 0, 0},
     {Column::loudness, 92, 0, 0}}};
constexpr int marksWidth = 96;
constexpr double mostOfName = 0.34, mostOfCompactName = 0.45; ///< of what the columns share
constexpr double reasonWidth = 240; ///< below the status, why it is doubtful: the beginning at least

/// So that the longest of the usual ones is not cut in any language.
int leastStatusWidth() {
    Badge usual(Signal::none, translatedSentence("Matched, off-speed"));
    usual.setFont(factsFont());
    return usual.sizeHint().width() + 2 * space::small;
}

struct FilterChoice {
    FilterMode mode;
    const char* title;
};
constexpr std::array<FilterChoice, 3> filters{
    {{FilterMode::all, "All"}, {FilterMode::matched, "Matched"}, {FilterMode::issues, "Issues"}}};

/// Folds with a click on the triangle, Left and Right; Home and End go to the first and the last row. Keys
/// are of the row, whichever of its cells was clicked.
class Table : public QTableView {
  public:
    std::function<bool(const QModelIndex&, const QPoint&)> fold;
    std::function<void()> resized;
    std::function<void(int row, bool isLeft)> sideways;

  protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override {
        // Rows are selected as a whole: the first cell of the row is no place to go to.
        const bool isToAnEnd = action == MoveHome || action == MoveEnd;
        return QTableView::moveCursor(action, isToAnEnd ? modifiers | Qt::ControlModifier : modifiers)
            .siblingAtColumn(0);
    }
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override {
        QTableView::currentChanged(current, previous);
        // Letters search the column of this cell.
        if (current.column() > 0)
            selectionModel()->setCurrentIndex(current.siblingAtColumn(0), QItemSelectionModel::NoUpdate);
    }
    void keyPressEvent(QKeyEvent* event) override {
        const bool isLeft = event->key() == Qt::Key_Left;
        if ((isLeft || event->key() == Qt::Key_Right) && currentIndex().isValid())
            return sideways(currentIndex().row(), isLeft);
        QTableView::keyPressEvent(event);
    }
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
    /// Of one row, that row: the table of Qt would paint a line of the next one with it.
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override {
        if (!first.isValid() || first.row() != last.row()) return QTableView::dataChanged(first, last, roles);
        const int row = first.row();
        viewport()->update(0, rowViewportPosition(row), viewport()->width(), rowHeight(row));
        if (!QAccessible::isActive()) return;
        QAccessibleTableModelChangeEvent changed(this, QAccessibleTableModelChangeEvent::DataChanged);
        changed.setFirstRow(row);
        changed.setLastRow(row);
        changed.setFirstColumn(first.column());
        changed.setLastColumn(last.column());
        QAccessible::updateAccessibility(&changed);
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
    new SearchKeys(*search_, *table_);
    splitter->addWidget(wildTracks_ = new WildTracksView(desktop));
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({10 * wildTracksHeight, wildTracksHeight});
    column->addWidget(splitter, 1);

    rowsObservation_ = rows_.onChange([this](const ResultsViewModel::Change& change) {
        showCounts();
        if (change.isLayoutChanged) keepSelection(change.areAllNew);
        // Not for each filter: the columns would jump.
        if (change.areAllNew && rows_.filter() == FilterMode::all && search_->text().isEmpty())
            measureColumns();
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
        if (field == ImportField::syncGroups || field == ImportField::smartAudio ||
            field == ImportField::doubts)
            showDoubts();
        if (field == ImportField::doubts && isMeasuredWithReasons_ != hasReasons()) measureColumns();
    });
    showCounts();
    showDoubts();
    measureColumns();
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
    table->sideways = [this](int row, bool isLeft) {
        const auto& at = model_->row(row);
        if (at.foldable > 0 && at.isFolded != isLeft)
            return rows_.toggleFolded(static_cast<std::size_t>(row));
        if (!isLeft || !at.isBelowAnother) return;
        int first = row;
        while (model_->row(first).isBelowAnother) --first;
        table_->setCurrentIndex(model_->index(first, 0));
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
    for (const ColumnWidth& one : columnWidths) {
        shares_[static_cast<std::size_t>(one.column)] = 10 * one.weight;
        if (one.weight == 0) header->resizeSection(static_cast<int>(one.column), one.fixed);
    }
    header->resizeSection(ResultsModel::marksColumn, marksWidth);
    connect(header, &QHeaderView::sectionResized, this, [this] {
        if (isFitting_) return;
        areSharesChosen_ = true;
        for (const ColumnWidth& one : columnWidths)
            if (const int column = static_cast<int>(one.column);
                one.weight > 0 && !table_->isColumnHidden(column))
                shares_[static_cast<std::size_t>(column)] = table_->columnWidth(column);
    });
    // Unsorted at first: the order of the shoot.
    header->setSortIndicator(-1, Qt::AscendingOrder);
    header->setSortIndicatorClearable(true);
    table->setSortingEnabled(true);
    connect(table, &QTableView::customContextMenuRequested, this, [this](const QPoint& at) { showMenu(at); });
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        chosen_ = selectedClips();
        if (!chosen_.empty()) chosenRow_ = rows_.rowOf(chosen_.front()).value_or(0);
        if (whenSelectionChanged) whenSelectionChanged();
    });
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& now) {
                if (now.isValid()) current_ = rows_.groupID(static_cast<std::size_t>(now.row()));
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
    isFitting_ = true;
    table_->setColumnHidden(static_cast<int>(Column::cameraFile), isCompact);
    table_->setColumnHidden(static_cast<int>(Column::length), isCompact);
    table_->setColumnHidden(static_cast<int>(Column::begins), isCompact);
    table_->setColumnHidden(static_cast<int>(Column::loudness), !rows_.isLoudnessKnown());
    int rest = width - table_->columnWidth(ResultsModel::marksColumn);
    std::vector<const ColumnWidth*> sharing;
    for (const ColumnWidth& one : columnWidths) {
        const int column = static_cast<int>(one.column);
        if (table_->isColumnHidden(column)) continue;
        if (one.weight > 0)
            sharing.push_back(&one);
        else
            rest -= table_->columnWidth(column);
    }
    const auto shareOf = [this](const ColumnWidth* one) {
        return shares_[static_cast<std::size_t>(one->column)];
    };
    const auto leastOf = [](const ColumnWidth* one) {
        return one->column == Column::match ? leastStatusWidth() : one->least;
    };
    const auto shared = [&] {
        double sum = 0;
        for (const ColumnWidth* one : sharing) sum += shareOf(one);
        return sum;
    };
    const auto give = [&](const ColumnWidth* one, int points) {
        table_->setColumnWidth(static_cast<int>(one->column), points);
        rest -= points;
    };
    // By their needs, where there is too little for all: the clip's name first, by which it is known, and
    // then it is the longest texts that are cut.
    if (!areSharesChosen_ && shared() > rest) {
        const auto needOf = [&](const ColumnWidth* one) {
            return std::min(shareOf(one), leastOf(one) * 1.0);
        };
        double kept = 0; // for those that follow
        for (const ColumnWidth* one : sharing)
            if (one->column != Column::name) kept += needOf(one);
        const auto name = std::ranges::find(sharing, Column::name, &ColumnWidth::column);
        give(*name, static_cast<int>(std::min(
                        {shareOf(*name), (isCompact ? mostOfCompactName : mostOfName) * rest, rest - kept})));
        sharing.erase(name);
        std::ranges::sort(sharing, {}, shareOf);
        for (auto left = std::ssize(sharing); left > 0; --left) {
            const ColumnWidth* one = sharing[sharing.size() - static_cast<std::size_t>(left)];
            kept -= needOf(one);
            const double equal = std::max(rest / static_cast<double>(left), needOf(one));
            give(one, static_cast<int>(std::min({shareOf(one), equal, rest - kept})));
        }
        sharing.clear();
    }
    // Those whose share is too small get what they need, and the others share what that leaves.
    const auto needy = [&] {
        const double sum = shared();
        return std::ranges::find_if(
            sharing, [&](const ColumnWidth* one) { return rest * shareOf(one) < leastOf(one) * sum; });
    };
    for (auto one = needy(); one != sharing.end(); one = needy()) {
        give(*one, leastOf(*one));
        sharing.erase(one);
    }
    for (; !sharing.empty(); sharing.erase(sharing.begin()))
        give(sharing.front(), static_cast<int>(rest * shareOf(sharing.front()) / shared()));
    isFitting_ = false;
}

void ResultsView::measureColumns() {
    constexpr int sample = 64; // rows: those of one shoot are named alike
    const int rows = model_->rowCount();
    if (areSharesChosen_ || rows == 0) return;
    std::array<double, ResultsViewModel::columnCount> needs{};
    for (int i = 0; i < std::min(rows, sample); ++i) {
        const int row = static_cast<int>(static_cast<std::int64_t>(i) * rows / std::min(rows, sample));
        for (const ColumnWidth& one : columnWidths) {
            if (one.weight == 0) continue;
            const auto column = static_cast<std::size_t>(one.column);
            const QModelIndex cell = model_->index(row, static_cast<int>(one.column));
            needs.at(column) = std::max<double>(needs.at(column), delegate_->sizeHint({}, cell).width());
        }
    }
    isMeasuredWithReasons_ = hasReasons();
    double& status = needs.at(static_cast<std::size_t>(Column::match));
    status = std::max<double>({status, leastStatusWidth() * 1.0, isMeasuredWithReasons_ ? reasonWidth : 0.0});
    shares_ = needs;
    fitColumns();
}

bool ResultsView::hasReasons() const {
    const ImportController& controller = desktop_.controller();
    return controller.work().unmatchedCount() > 0 || !controller.doubts().byGroup.empty();
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

void ResultsView::showDoubts() {
    // They cost a look at all clips: not while another screen is in front.
    if (!isVisible()) return;
    const std::uint64_t revision = rows_.doubtsRevision();
    if (std::exchange(doubtsRevision_, revision) == revision) return;
    std::vector<ResultsViewModel::Doubt> doubts = rows_.doubts();
    const bool areSame = std::ranges::equal(doubts, shownDoubts_, [](const auto& one, const auto& before) {
        return one.message == before.message && one.groupIDs == before.groupIDs;
    });
    if (areSame) return;
    shownDoubts_ = std::move(doubts);
    doubts_->show(shownDoubts_);
    model_->forgetRows();
}

void ResultsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showDoubts();
}

void ResultsView::keepSelection(bool areAllNew) {
    if (areAllNew) chosen_.clear();
    if (chosen_.empty() || rows_.rowCount() == 0) return;
    std::vector<UUID> kept = chosen_;
    std::erase_if(kept, [this](const UUID& id) { return !rows_.rowOf(id); });
    if (kept.empty()) kept = {rows_.groupID(std::min(chosenRow_, rows_.rowCount() - 1))};
    setSelected(kept, QAbstractItemView::EnsureVisible);
}

void ResultsView::select(const std::vector<UUID>& clips) {
    setSelected(clips, QAbstractItemView::PositionAtCenter);
}

void ResultsView::setSelected(const std::vector<UUID>& clips, QAbstractItemView::ScrollHint hint) {
    QItemSelection selection;
    QModelIndex current; // where arrows go on
    for (const UUID& id : clips) {
        const auto row = rows_.rowOf(id);
        if (!row) continue;
        const QModelIndex index = model_->index(static_cast<int>(*row), 0);
        selection.select(index, model_->index(static_cast<int>(*row), ResultsModel::marksColumn));
        if (!current.isValid() || id == current_) current = index;
    }
    if (!current.isValid()) return;
    table_->scrollTo(current, hint);
    table_->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
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

std::optional<ResultsView::Listing> ResultsView::listing() const {
    QStringList title;
    for (const FilterChoice& one : filters)
        if (one.mode == rows_.filter() && one.mode != FilterMode::all) title << tr(one.title);
    if (const QString words = search_->text().simplified(); !words.isEmpty()) title << tr("“%1”").arg(words);
    if (rows_.isSorted()) title << tr("as sorted");
    if (title.isEmpty()) return std::nullopt;
    return Listing{rows_.order(), title.join(QStringLiteral(" · "))};
}

void ResultsView::runForSelection(std::string_view command) {
    const std::vector<UUID> clips = selectedClips();
    if (command == "resyncClip")
        matchAgain(desktop_, this, clips);
    else
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
    QInputDialog question(this);
    question.setWindowTitle(tr("Rename clip"));
    // Without what the naming adds to every name, such as the camera.
    const NamePart part = NamePart::of(desktop_.controller(), *clip);
    const std::string& automatic = part.automatic;
    const QString present = text(part.name.empty() ? automatic : part.name);
    const auto preview = [&](const QString& typed) {
        const SyncGroup* now = desktop_.controller().work().syncGroups().find(clipID);
        if (now == nullptr) return;
        question.setLabelText(tr("Clip name; empty: by the naming rules\nIn Final Cut Pro: %1")
                                  .arg(text(exportedName(desktop_.controller(), *now,
                                                         typed == present ? part.name : utf8(typed)))));
    };
    connect(&question, &QInputDialog::textValueChanged, &question, preview);
    question.setTextValue(present); // which the dialog selects
    preview(present);
    if (auto* field = question.findChild<QLineEdit*>()) field->setPlaceholderText(text(automatic));
    // Left as it is it stays one by the naming rules.
    if (question.exec() != QDialog::Accepted || question.textValue() == present) return;
    JSON arguments = JSON::object();
    arguments.set("name", utf8(question.textValue()));
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

void ResultsView::savePlaces() const {
    design::keptState::set(QStringLiteral("columns"), table_->horizontalHeader()->saveState());
    if (!areSharesChosen_) return;
    QVariantList shares;
    for (const double share : shares_) shares << share;
    design::keptState::set(QStringLiteral("columnShares"), shares);
}

void ResultsView::restorePlaces() {
    isFitting_ = true;
    table_->horizontalHeader()->restoreState(
        design::keptState::value(QStringLiteral("columns")).toByteArray());
    isFitting_ = false;
    const QVariantList shares = design::keptState::value(QStringLiteral("columnShares")).toList();
    areSharesChosen_ = std::cmp_equal(shares.size(), shares_.size());
    if (areSharesChosen_)
        for (const ColumnWidth& one : columnWidths)
            if (const auto column = static_cast<std::size_t>(one.column); one.weight > 0)
                shares_.at(column) = std::max(1.0, shares[static_cast<qsizetype>(column)].toDouble());
}

} // namespace orvane::views
