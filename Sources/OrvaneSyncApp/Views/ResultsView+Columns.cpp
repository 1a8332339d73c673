#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include "OrvaneDesignKit/KeptState.h"
#include <QHeaderView>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace orvane::views {

using namespace design;

namespace {

constexpr int compactBelow = 1050; ///< width of the table, in points

// In points. `fixed`: the width of a column whose texts have about the same length. The other columns share
// the rest by `weight`.
struct ColumnWidth {
    ResultsViewModel::Column column;
    int fixed;
    int weight;
    int least; ///< for the status, `leastStatusWidth` is used
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
constexpr double mostOfName = 0.34, mostOfCompactName = 0.45; ///< of the width that the columns share
constexpr double reasonWidth = 240; ///< for the beginning of the reason below the status

/// Wide enough for the longest of the usual statuses in every language.
int leastStatusWidth() {
    Badge usual(Signal::none, translatedSentence("Matched, off-speed"));
    usual.setFont(factsFont());
    return usual.sizeHint().width() + 2 * space::small;
}

int leastOf(const ColumnWidth& one) { return one.column == Column::match ? leastStatusWidth() : one.least; }

/// A column without a fixed width.
struct SharingColumn {
    Column column;
    double share; ///< in points: what its texts need, or the width that the user gave it
    int least;
    int points = 0; ///< the width that it gets
};

double sumOfShares(std::span<const SharingColumn> sharing) {
    double sum = 0;
    for (const SharingColumn& one : sharing) sum += one.share;
    return sum;
}

/// If there is too little room for all: the clip's name comes first, because it identifies the clip; of the
/// others, the longest texts are cut. `mostOfRest`: the largest part of `rest` for the name. Changes the
/// order of `sharing`.
void fitByNeeds(std::span<SharingColumn> sharing, int rest, double mostOfRest) {
    const auto needOf = [](const SharingColumn& one) { return std::min(one.share, one.least * 1.0); };
    double kept = 0; // width that is reserved for the columns that follow
    for (const SharingColumn& one : sharing)
        if (one.column != Column::name) kept += needOf(one);
    std::ranges::sort(sharing, {}, [](const SharingColumn& one) {
        return std::pair(one.column != Column::name, one.share);
    });
    SharingColumn& name = sharing.front();
    const auto others = sharing.subspan(1);
    name.points = static_cast<int>(std::min({name.share, mostOfRest * rest, rest - kept}));
    rest -= name.points;
    auto left = std::ssize(others);
    for (SharingColumn& one : others) {
        kept -= needOf(one);
        const double equal = std::max(rest / static_cast<double>(left--), needOf(one));
        one.points = static_cast<int>(std::min({one.share, equal, rest - kept}));
        rest -= one.points;
    }
    name.points += std::max(rest, 0); // the width that the others do not need
}

/// Columns whose share is below their minimum get that minimum; the others share the rest. Changes the order
/// of `sharing`.
void fitByShares(std::span<SharingColumn> sharing, int rest) {
    const auto give = [&](auto one, int points) {
        one->points = points;
        rest -= points;
        std::rotate(one, one + 1, sharing.end());
        sharing = sharing.first(sharing.size() - 1);
    };
    const auto nextTooNarrow = [&] {
        const double sum = sumOfShares(sharing);
        return std::ranges::find_if(
            sharing, [&](const SharingColumn& one) { return rest * one.share < one.least * sum; });
    };
    for (auto one = nextTooNarrow(); one != sharing.end(); one = nextTooNarrow()) give(one, one->least);
    while (!sharing.empty())
        give(sharing.begin(), static_cast<int>(rest * sharing.front().share / sumOfShares(sharing)));
}

} // namespace

void ResultsView::prepareColumns() {
    QHeaderView* header = table_->horizontalHeader();
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
}

int ResultsView::showColumnsThatFit(int width) {
    const bool isCompact = width < compactBelow;
    delegate_->setCompact(isCompact);
    for (const Column column : {Column::cameraFile, Column::length, Column::begins})
        table_->setColumnHidden(static_cast<int>(column), isCompact);
    isFittedWithLoudness_ = rows_.isLoudnessKnown();
    const auto isShown = [&](const ColumnWidth& one) {
        return one.column == Column::loudness ? isFittedWithLoudness_
                                              : !table_->isColumnHidden(static_cast<int>(one.column));
    };
    int least = table_->columnWidth(ResultsModel::marksColumn);
    for (const ColumnWidth& one : columnWidths)
        if (isShown(one)) least += one.weight > 0 ? leastOf(one) : one.fixed;
    // Loudness is hidden first: the review shows it as well, and the name needs the room.
    table_->setColumnHidden(static_cast<int>(Column::loudness), !isFittedWithLoudness_ || least > width);
    int rest = width - table_->columnWidth(ResultsModel::marksColumn);
    for (const ColumnWidth& one : columnWidths)
        if (const int column = static_cast<int>(one.column);
            one.weight == 0 && !table_->isColumnHidden(column))
            rest -= table_->columnWidth(column);
    return rest;
}

void ResultsView::fitColumns() {
    const int width = table_->viewport()->width();
    isFitting_ = true;
    const int rest = showColumnsThatFit(width);
    std::vector<SharingColumn> sharing;
    for (const ColumnWidth& one : columnWidths)
        if (one.weight > 0 && !table_->isColumnHidden(static_cast<int>(one.column)))
            sharing.push_back({one.column, shares_[static_cast<std::size_t>(one.column)], leastOf(one)});
    if (areSharesChosen_ || sumOfShares(sharing) <= rest)
        fitByShares(sharing, rest);
    else
        fitByNeeds(sharing, rest, width < compactBelow ? mostOfCompactName : mostOfName);
    for (const SharingColumn& one : sharing) table_->setColumnWidth(static_cast<int>(one.column), one.points);
    isFitting_ = false;
}

void ResultsView::measureColumns() {
    constexpr int sample = 64; // number of rows measured: the names of one shoot are similar
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

void ResultsView::savePlaces() {
    saveListing();
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
