#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"
#include "OrvaneSyncApp/Views/RowsModel.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

namespace orvane::views {

/// The rows of the outline for Qt.
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

/// Two lines a clip: its name with the marks, and its camera file.
class OutlineDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Whether the point is on the triangle of a take in that rectangle.
    static bool isFold(const QRect& row, const QPoint& at);
};

} // namespace orvane::views
