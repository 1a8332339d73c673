#pragma once

#include <QObject>

#include <functional>

class QAbstractItemView;
class QLineEdit;

namespace orvane::views {

/// The keys that move from a search field to the list that it searches. Down and Return go to the list's
/// first row. Escape clears the field; if it is empty, Escape moves the keyboard to the list without changing
/// the current row. In the review, Escape also returns the keyboard to the clip in view. The list must not be
/// destroyed before the field.
class SearchKeys : public QObject {
  public:
    SearchKeys(QLineEdit& field, QAbstractItemView& list);

    /// The row that Down goes to; row 0 if not set.
    std::function<int()> firstRow;
    /// Called with the row that a search ends at, for a list whose current row is what the keys act on.
    std::function<void(int row)> whenFound;
    /// Called after Return has gone to a row of a list that was searched.
    std::function<void()> whenAccepted;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void enterList();

    QLineEdit& field_;
    QAbstractItemView& list_;
};

} // namespace orvane::views
