#include "OrvaneSyncApp/Views/ResultsView.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/DoubtBar.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/SearchKeys.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WildTracksView.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QHeaderView>
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
#include <set>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

/// Where the clip that was last selected in each session is stored.
QString lastClipsKey() { return QStringLiteral("list/lastClips"); }

constexpr int searchWidth = 260;
constexpr int shareOfWildTracks = 5;                   ///< at most a fifth of the height goes to them
constexpr int leastWildTracks = 3, mostWildTracks = 5; ///< rows in view, if there are as many
constexpr int scrollRest = 60;                         ///< milliseconds
constexpr platform::PictureSize thumbnailLimit{128, 72};

struct FilterChoice {
    ResultsViewModel::Filter mode;
    const char* title;
};
using Column = ResultsViewModel::Column;
using ListFilter = ResultsViewModel::Filter;
constexpr std::array<FilterChoice, 4> filters{{{ListFilter::all, "All"},
                                               {ListFilter::matched, "Matched"},
                                               {ListFilter::issues, "Issues"},
                                               {ListFilter::doubtful, "Doubtful"}}};

/// The table of clips. A click on the triangle, Left and Right fold a take; Home and End go to the first and
/// last row. Keys act on the row, whichever cell was clicked.
class Table : public QTableView {
  public:
    std::function<bool(const QModelIndex&, const QPoint&)> fold;
    std::function<void()> resized;
    std::function<void(int row, bool isLeft)> sideways;
    std::function<void()> escape;

  protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override {
        // Rows are selected as a whole, so Home and End go to the first and last row, not to cells of this
        // row.
        const bool isToAnEnd = action == MoveHome || action == MoveEnd;
        return QTableView::moveCursor(action, isToAnEnd ? modifiers | Qt::ControlModifier : modifiers)
            .siblingAtColumn(0);
    }
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override {
        QTableView::currentChanged(current, previous);
        // Keeps the first column current, because typed letters search the column of the current cell.
        if (current.column() > 0)
            selectionModel()->setCurrentIndex(current.siblingAtColumn(0), QItemSelectionModel::NoUpdate);
    }
    void keyPressEvent(QKeyEvent* event) override {
        const bool isLeft = event->key() == Qt::Key_Left;
        if ((isLeft || event->key() == Qt::Key_Right) && currentIndex().isValid())
            return sideways(currentIndex().row(), isLeft);
        if (event->key() == Qt::Key_Escape && escape) return escape();
        QTableView::keyPressEvent(event);
    }
    void mousePressEvent(QMouseEvent* event) override {
        const QModelIndex index = indexAt(event->pos());
        if (index.isValid() && fold(index, event->pos())) return;
        QTableView::mousePressEvent(event);
    }
    /// A row that is current and in view stays in view, also when a text above the table is unfolded.
    void resizeEvent(QResizeEvent* event) override {
        const QRect row = visualRect(currentIndex());
        const bool isInView = row.isValid() && row.top() >= 0 && row.bottom() < event->oldSize().height();
        QTableView::resizeEvent(event);
        resized();
        if (isInView) scrollTo(currentIndex());
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        const QModelIndex index = indexAt(event->pos());
        if (index.isValid() && fold(index, event->pos())) return;
        QTableView::mouseDoubleClickEvent(event);
    }
    /// Repaints one changed row only; the base class would also paint a line of the next row.
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

} // namespace

ResultsView::ResultsView(Desktop& desktop, ScreenHost host)
    : WorkScreen(desktop, std::move(host)), rows_(desktop.controller()),
      model_(new ResultsModel(rows_, Thumbnails::create(desktop.mainThread(), thumbnailLimit), this)),
      scrolled_(new QTimer(this)) {
    ofClips_.whenDone = [this](const std::vector<UUID>& clips) { select(clips); };
    scrolled_->setSingleShot(true);
    scrolled_->setInterval(scrollRest);
    connect(scrolled_, &QTimer::timeout, this, [this] { wantThumbnails(); });
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(space::medium, space::small, space::medium, space::small);
    column->setSpacing(space::small);

    auto* top = new QHBoxLayout;
    filter_ = new SegmentedChoice(tr("Which clips"), filterTitles(), [this](int chosen) {
        rows_.setFilter(filters[static_cast<std::size_t>(chosen)].mode);
        if (selectedClips().empty()) table_->selectRow(0); // so that Return opens it
    });
    // A click leaves the keyboard with the list.
    for (auto* one : filter_->findChildren<QPushButton*>()) one->setFocusPolicy(Qt::TabFocus);
    top->addWidget(filter_);
    top->addStretch(1);
    top->addWidget(found_ = facts({}));
    found_->setWordWrap(false);
    search_ = searchField(tr("Search clips"), tr("Name, file or scene"));
    search_->setFixedWidth(searchWidth);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& words) {
        rows_.setSearch(utf8(words));
        if (!words.trimmed().isEmpty()) table_->selectRow(0); // which Return opens
    });
    top->addWidget(search_);
    column->addLayout(top);
    column->addWidget(doubts_ = new DoubtBar(desktop));
    doubts_->whenClipsWanted = [this](const std::vector<UUID>& clips) { showClips(clips); };
    doubts_->whenFocusLost = [this] { table_->setFocus(Qt::OtherFocusReason); };
    doubts_->whenCured = [this] { showDoubts(); };

    lists_ = new QSplitter(Qt::Vertical);
    lists_->setChildrenCollapsible(false);
    lists_->addWidget(makeTable());
    auto* keys = new SearchKeys(*search_, *table_);
    keys->whenAccepted = [this] { Q_EMIT table_->activated(table_->currentIndex()); };
    lists_->addWidget(wildTracks_ = new WildTracksView(desktop));
    wildTracks_->selectedClips = [this] { return selectedClips(); };
    lists_->setStretchFactor(0, 1);
    connect(lists_, &QSplitter::splitterMoved, this, [this] { isBorderChosen_ = true; });
    column->addWidget(lists_, 1);

    rowsObservation_ = rows_.onChange([this](const ResultsViewModel::Change& change) {
        showCounts();
        if (change.isLayoutChanged) keepSelection(change.areAllNew);
        // Not for each filter, because the columns would move.
        if (change.areAllNew && rows_.filter() == ListFilter::all && search_->text().isEmpty())
            measureColumns();
        if (isFittedWithLoudness_ != rows_.isLoudnessKnown()) fitColumns();
        scrolled_->start();
    });
    workObservation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::wildTracks) fitWildTracks();
        if (field == ImportField::syncGroups || field == ImportField::smartAudio ||
            field == ImportField::doubts)
            showDoubts();
        if (field == ImportField::doubts && isMeasuredWithReasons_ != hasReasons()) measureColumns();
    });
    showCounts();
    showDoubts();
    measureColumns();
    restorePlaces();
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
    table->escape = [this] { search_->clear(); };
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
    prepareColumns();
    // At first not sorted: in the order of the shoot.
    header->setSortIndicator(-1, Qt::AscendingOrder);
    header->setSortIndicatorClearable(true);
    table->setSortingEnabled(true);
    connect(table, &QTableView::customContextMenuRequested, this, [this](const QPoint& at) { showMenu(at); });
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        chosen_ = selectedClips();
        if (!chosen_.empty()) {
            chosenFiles_.clear();
            for (const UUID& id : chosen_)
                if (const SyncGroup* clip = desktop_.controller().work().syncGroups().find(id))
                    chosenFiles_.insert(clip->video.url.path);
            chosenRow_ = rows_.rowOf(chosen_.front()).value_or(0);
            remember(chosen_.front());
        }
        noteClips();
    });
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& now) {
                desktop_.controller().endUndoStep();
                if (now.isValid()) current_ = rows_.groupID(static_cast<std::size_t>(now.row()));
            });
    // The review takes keys only after the key press that opens a clip has ended, because Return has another
    // meaning there.
    connect(
        table, &QTableView::activated, this,
        [this] {
            if (const auto clips = selectedClips(); !clips.empty()) host_.openReview(clips.front());
        },
        Qt::QueuedConnection);
    empty_ = new EmptyState(Glyph::search, {}, {});
    empty_->add(showAll_ = button(tr("Show All Clips")));
    connect(showAll_, &QPushButton::clicked, this, [this] {
        const std::vector<UUID> clips = chosen_; // the next line changes the selection
        showAll();
        select(clips);
        table_->setFocus();
    });
    empty_->add(folders_ = button(tr("Choose Folders…"), Glyph::folder));
    connect(folders_, &QPushButton::clicked, this, [this] {
        if (desktop_.whenFoldersWanted) desktop_.whenFoldersWanted();
    });
    auto* pages = new QWidget;
    pages_ = new QStackedLayout(pages);
    pages_->addWidget(table);
    pages_->addWidget(empty_);
    return pages;
}

void ResultsView::wantThumbnails() {
    if (!table_->isVisible()) return;
    const int first = table_->rowAt(0);
    const int last = table_->rowAt(table_->viewport()->height() - 1);
    if (first >= 0) model_->wantThumbnails(first, last < 0 ? model_->rowCount() - 1 : last);
}

void ResultsView::showCounts() {
    const ResultsViewModel::Counts counts = rows_.counts();
    const std::array<std::size_t, filters.size()> numbers{counts.all, counts.matched, counts.issues,
                                                          counts.doubtful};
    for (std::size_t i = 0; i < filters.size(); ++i)
        filter_->setText(static_cast<int>(i), tr("%1  %2").arg(tr(filters[i].title)).arg(numbers[i]));
    const OpenWork& work = desktop_.controller().work();
    filter_->setHint(
        1, tr("%1 with sound and %2 MOS, which need none").arg(work.syncClipCount()).arg(work.mosCount()));
    found_->setText(search_->text().trimmed().isEmpty() ? QString()
                                                        : tr("%1 found").arg(rows_.order().size()));
    const bool isEmpty = rows_.rowCount() == 0;
    pages_->setCurrentIndex(isEmpty ? 1 : 0);
    if (!isEmpty) return;
    showAll_->setVisible(counts.all > 0);
    folders_->setVisible(counts.all == 0);
    if (counts.all == 0)
        empty_->setTexts(tr("No clips"), tr("The folders hold no picture that can be read."));
    else if (rows_.filter() == ListFilter::doubtful && search_->text().isEmpty())
        empty_->setTexts(tr("No match is in doubt"), tr("What waits for a decision is under Issues."));
    else if (rows_.filter() == ListFilter::issues && search_->text().isEmpty())
        empty_->setTexts(tr("Nothing waits for a decision"), tr("Every clip is settled."));
    else
        empty_->setTexts(tr("No clip is found"), tr("Change the search or the filter above."));
}

void ResultsView::showDoubts() {
    // Doubts are not derived while another screen is in front, because this goes through all clips.
    if (!isVisible()) return;
    const std::uint64_t revision = rows_.doubtsRevision();
    if (std::exchange(doubtsRevision_, revision) == revision) return;
    std::vector<ResultsViewModel::Doubt> doubts = rows_.doubts();
    const bool areSame = std::ranges::equal(doubts, shownDoubts_, [](const auto& one, const auto& before) {
        return one.message == before.message && one.cure.text == before.cure.text &&
               one.groupIDs == before.groupIDs;
    });
    if (areSame) return;
    shownDoubts_ = std::move(doubts);
    doubts_->show(shownDoubts_);
    model_->forgetRows();
}

void ResultsView::fitWildTracks() {
    if (isBorderChosen_) return;
    int rows = mostWildTracks;
    while (rows > leastWildTracks && wildTracks_->heightOfRows(rows) > height() / shareOfWildTracks) --rows;
    const int needed = wildTracks_->heightOfRows(rows);
    lists_->setSizes({std::max(0, lists_->height() - lists_->handleWidth() - needed), needed});
}

QString ResultsView::hint() const { return tr("Double click or Return opens a clip"); }

void ResultsView::entered() {
    if (selectedClips().empty()) table_->selectRow(0); // Return then opens it
}

void ResultsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showDoubts();
}

void ResultsView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitWildTracks();
}

void ResultsView::keepSelection(bool areAllNew) {
    if (areAllNew) {
        chosen_.clear();
        for (const SyncGroup& clip : desktop_.controller().work().syncGroups())
            if (chosenFiles_.contains(clip.video.url.path)) chosen_.push_back(clip.id);
    }
    if (chosen_.empty() || rows_.rowCount() == 0) return;
    std::vector<UUID> kept = chosen_;
    std::erase_if(kept, [this](const UUID& id) { return !rows_.rowOf(id); });
    if (kept.empty()) kept = {rows_.groupID(std::min(chosenRow_, rows_.rowCount() - 1))};
    setSelected(kept, QAbstractItemView::EnsureVisible);
}

void ResultsView::select(const std::vector<UUID>& clips) {
    setSelected(clips, QAbstractItemView::PositionAtCenter);
    if (clips.empty() ||
        std::ranges::any_of(clips, [this](const UUID& id) { return rows_.rowOf(id).has_value(); }))
        return;
    const OpenWork& work = desktop_.controller().work();
    const SyncGroup* clip = work.syncGroups().find(clips.front());
    if (clip == nullptr) return;
    chosen_ = clips; // "Show All Clips" selects them
    const bool isOfFilter = rows_.filter() != ListFilter::all && search_->text().isEmpty();
    const QString name = text(work.displayNames().at(clip->id));
    showToast(window(),
              isOfFilter ? tr("“%1” is not under “%2” now: %3.")
                               .arg(name, tr(filters.at(static_cast<std::size_t>(filter_->chosen())).title),
                                    translatedSentence(clip->matchStatus.label()))
                         : tr("“%1” is not in this list. Change the search or the filter above.").arg(name));
}

void ResultsView::showClips(const std::vector<UUID>& clips) {
    showAll();
    select(clips);
    table_->setFocus(Qt::OtherFocusReason); // the next keys are for the clips, not for the button pressed
}

void ResultsView::showAll() {
    filter_->choose(0);
    rows_.setFilter(ListFilter::all);
    search_->clear();
}

void ResultsView::setSelected(const std::vector<UUID>& clips, QAbstractItemView::ScrollHint hint) {
    std::vector<int> selected;
    QModelIndex current; // the row from which the arrow keys continue
    for (const UUID& id : clips) {
        const auto row = rows_.rowOf(id);
        if (!row) continue;
        selected.push_back(static_cast<int>(*row));
        if (!current.isValid() || id == current_) current = model_->index(selected.back(), 0);
    }
    if (!current.isValid()) return;
    std::ranges::sort(selected);
    // One range for adjacent rows: each later question about the selection looks at all ranges.
    QItemSelection selection;
    for (auto first = selected.begin(); first != selected.end();) {
        const auto last = std::ranges::adjacent_find(first, selected.end(),
                                                     [](int row, int next) { return next > row + 1; });
        const int bottom = last == selected.end() ? selected.back() : *last;
        selection.select(model_->index(*first, 0), model_->index(bottom, ResultsModel::marksColumn));
        first = last == selected.end() ? last : last + 1;
    }
    table_->scrollTo(current, hint);
    table_->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    table_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

std::vector<UUID> ResultsView::selectedClips() const {
    // By ranges: `selectedRows` looks for each row through all ranges.
    std::set<int> selected;
    for (const QItemSelectionRange& range : table_->selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row) selected.insert(row);
    std::vector<UUID> clips;
    for (const int row : selected) clips.push_back(rows_.groupID(static_cast<std::size_t>(row)));
    return clips;
}

std::optional<ResultsView::Listing> ResultsView::listing() const {
    QStringList title;
    for (const FilterChoice& one : filters)
        if (one.mode == rows_.filter() && one.mode != ListFilter::all) title << tr(one.title);
    if (const QString words = search_->text().simplified(); !words.isEmpty()) title << tr("“%1”").arg(words);
    if (rows_.isSorted()) title << tr("as sorted");
    if (title.isEmpty()) return std::nullopt;
    return Listing{rows_.order(), title.join(QStringLiteral(" · "))};
}

void ResultsView::showMenu(const QPoint& position) {
    const std::vector<UUID> clips = selectedClips();
    if (clips.empty()) return;
    QMenu menu(this);
    ofClips_.fill(menu, clips);
    menu.addSeparator();
    menu.addAction(tr("Review"), this, [this] { Q_EMIT table_->activated(table_->currentIndex()); });
    menu.addAction(translated(desktop_.command("clusterLoad").title), this, [this, clips] {
        host_.openMulticam(MulticamViewModel::camerasFor(desktop_.controller().work(), clips));
    });
    menu.exec(table_->viewport()->mapToGlobal(position));
}

std::vector<QString> ResultsView::filterTitles() {
    std::vector<QString> titles;
    for (const FilterChoice& one : filters) titles.push_back(tr(one.title));
    return titles;
}

void ResultsView::showFilter(int choice) {
    filter_->choose(choice);
    rows_.setFilter(filters.at(static_cast<std::size_t>(choice)).mode);
    if (selectedClips().empty()) table_->selectRow(0); // so that Return opens it
    table_->setFocus();
}

void ResultsView::remember(const UUID& clip) {
    const auto& session = desktop_.sessions().currentSessionId();
    if (!session) return;
    if (const auto known = lastOf_.find(*session); known != lastOf_.end() && known->second == clip) return;
    lastOf_.insert_or_assign(*session, clip);
    // A list of pairs (session, clip) for the sessions that were used last, newest first.
    constexpr qsizetype most = 100;
    QStringList all = keptState::value(lastClipsKey()).toStringList();
    const QString own = text(session->text());
    for (qsizetype i = 0; i + 1 < all.size(); i += 2)
        if (all[i] == own) all.remove(i, 2);
    all.prepend(text(clip.text()));
    all.prepend(own);
    keptState::set(lastClipsKey(), all.mid(0, most * 2));
}

void ResultsView::saveListing(const std::optional<UUID>& clip) {
    const auto& session = desktop_.sessions().currentSessionId();
    if (!session) return; // the listing of the session that was open last is kept
    const auto keep = [](const char* key, const QVariant& value) {
        keptState::set(QLatin1String("list/") + key, value);
    };
    keep("session", text(session->text()));
    const auto shown = clip || chosen_.empty() ? clip : std::optional(chosen_.front());
    if (shown) remember(*shown);
    keep("clip", shown ? text(shown->text()) : QString());
    keep("filter", filter_->chosen());
}

void ResultsView::restoreListing() {
    search_->clear(); // a search from before hides clips that the user expects to see
    const auto& session = desktop_.sessions().currentSessionId();
    if (!session) return;
    const auto last = lastOf_.find(*session);
    std::optional<UUID> clip = last != lastOf_.end() ? std::optional(last->second) : std::nullopt;
    std::optional<UUID> ofEarlierRun;
    const QStringList all = keptState::value(lastClipsKey()).toStringList();
    for (qsizetype i = 0; i + 1 < all.size() && !clip; i += 2)
        if (all[i] == text(session->text())) ofEarlierRun = UUID::fromText(utf8(all[i + 1]));
    const auto kept = [](const char* key) { return keptState::value(QLatin1String("list/") + key); };
    if (!clip && kept("session").toString() == text(session->text())) {
        const auto filter = std::clamp<std::size_t>(kept("filter").toUInt(), 0, filters.size() - 1);
        filter_->choose(static_cast<int>(filter));
        rows_.setFilter(filters.at(filter).mode);
        clip = UUID::fromText(utf8(kept("clip").toString()));
    }
    if (!clip) clip = ofEarlierRun;
    if (!clip) return;
    select(std::vector{*clip});
}

} // namespace orvane::views
