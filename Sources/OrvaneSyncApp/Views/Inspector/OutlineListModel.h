#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"
#include "OrvaneSyncApp/Views/RowsModel.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

namespace orvane::views {

/// Provides the rows of the outline to Qt.
class OutlineListModel : public RowsModel<QAbstractListModel, OutlineModel::Row> {
  public:
    OutlineListModel(OutlineModel& rows, QObject* parent);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    OutlineModel::Row makeRow(std::size_t index) const override { return rows_.row(index); }

    OutlineModel& rows_;
    platform::Subscription observation_;
};

/// Paints two lines for each clip: its name, then its camera file with the marks.
class OutlineDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Whether the point is on the fold triangle of a take in that rectangle.
    static bool isFold(const QRect& row, const QPoint& at);
};

} // namespace orvane::views
