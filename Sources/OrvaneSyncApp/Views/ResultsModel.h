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

/// The colour and glyph that lists show for a certainty.
design::Signal signal(ClipCertainty certainty);
/// The name of a file, cut to `width` points. The extension is removed first. Then the name is cut in its
/// middle, but not in its beginning, which contains the camera's clip number.
QString elidedFile(const QFontMetrics& metrics, const QString& name, int width);
/// A name with marks of direction, so that its parts keep their order even if one of them is written from
/// right to left.
QString inPartOrder(const QString& name);

/// Provides the rows of the results to a table.
class ResultsModel : public RowsModel<QAbstractTableModel, ResultsViewModel::Row> {
  public:
    /// The rows outlive the model.
    ResultsModel(ResultsViewModel& rows, std::shared_ptr<Thumbnails> thumbnails, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    ResultsViewModel& rows() const { return rows_; }
    /// All rows are made again when they are next painted.
    void forgetRows() { forget(); }
    /// The picture of the row's clip; null while there is none.
    const platform::Picture* thumbnail(int index) const;
    /// The rows that are in view.
    void wantThumbnails(int first, int last);
    /// A column after those of the rows: marks for the decisions about the clip.
    static constexpr int marksColumn = static_cast<int>(ResultsViewModel::columnCount);

  private:
    ResultsViewModel::Row makeRow(std::size_t index) const override;

    ResultsViewModel& rows_;
    const std::shared_ptr<Thumbnails> thumbnails_;
    platform::Subscription decoded_;
    platform::Subscription observation_;
};

/// Paints the fold triangle, the picture and the name of a clip, the signal of its match, and its marks.
class ResultsDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    static constexpr int rowHeight = 44;
    /// If true, some columns are hidden and their texts are shown below those of their neighbours.
    void setCompact(bool isCompact) { isCompact_ = isCompact; }
    /// Whether a click at this place of the cell folds or unfolds.
    static bool isFold(const QRect& cell, const QPoint& at);

  private:
    bool isCompact_ = false;
};

} // namespace orvane::views
