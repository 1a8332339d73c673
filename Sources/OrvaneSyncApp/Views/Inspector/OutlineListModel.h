#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

#include <unordered_map>

namespace orvane::views {

/// The rows of the outline for Qt; rows that were asked for are kept until they change.
class OutlineListModel : public QAbstractListModel {
  public:
    OutlineListModel(OutlineModel& rows, QObject* parent);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    const OutlineModel::Row& row(int index) const;

  private:
    void follow(const ResultsViewModel::Change& change);

    OutlineModel& rows_;
    mutable std::unordered_map<int, OutlineModel::Row> shown_;
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
