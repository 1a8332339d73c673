#pragma once

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/ViewModels/Results/Thumbnails.h"
#include "OrvaneSyncApp/Views/RowsModel.h"

#include <QAbstractTableModel>
#include <QStyledItemDelegate>

#include <cstddef>
#include <memory>

namespace orvane::views {

/// In which colour and with which glyph a list shows it.
design::Signal signal(ResultsViewModel::Certainty certainty);
/// The name of a file in that many points: cut in the middle, but never within its beginning, by which
/// cameras count their clips, and without its extension before anything else.
QString elidedFile(const QFontMetrics& metrics, const QString& name, int width);
/// A name with marks that keep its parts in their order where one of them is written from right to left.
QString inPartOrder(const QString& name);

/// The rows of the results for a table.
class ResultsModel : public RowsModel<QAbstractTableModel, ResultsViewModel::Row> {
  public:
    /// The rows outlive it.
    ResultsModel(ResultsViewModel& rows, std::shared_ptr<Thumbnails> thumbnails, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    ResultsViewModel& rows() const { return rows_; }
    /// All are made again when they are next painted.
    void forgetRows() { forget(); }
    /// Of the row's clip; null while there is none.
    const platform::Picture* thumbnail(int index) const;
    /// Which pictures are in view.
    void wantThumbnails(int first, int last);
    /// Behind those of the rows: what was decided of the clip.
    static constexpr int marksColumn = static_cast<int>(ResultsViewModel::columnCount);

  private:
    ResultsViewModel::Row makeRow(std::size_t index) const override;

    ResultsViewModel& rows_;
    const std::shared_ptr<Thumbnails> thumbnails_;
    platform::Subscription decoded_;
    platform::Subscription observation_;
};

/// Paints the fold, the picture and the name of a clip, the signal of its match and its marks.
class ResultsDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    static constexpr int rowHeight = 44;
    /// Where there is no room for them beside each other, a cell holds its neighbour's text below its own.
    void setCompact(bool isCompact) { isCompact_ = isCompact; }
    /// Whether a click at this place of the cell folds or unfolds.
    static bool isFold(const QRect& cell, const QPoint& at);

  private:
    bool isCompact_ = false;
};

} // namespace orvane::views
