#pragma once

#include <QObject>

#include <functional>

class QAbstractItemView;
class QLineEdit;

namespace orvane::views {

/// The keys that move from a search field to the list that it searches. Down and Return go to the list's
/// first row. Escape clears the field; if it is empty, Escape moves the keyboard to the list without changing
/// the current row. Beside a clip in view, Return and Escape give the keyboard to that clip instead
/// (`leave`). The list must not be destroyed before the field.
class SearchKeys : public QObject {
  public:
    SearchKeys(QLineEdit& field, QAbstractItemView& list);

    /// The row that Down goes to; row 0 if not set.
    std::function<int()> firstRow;
    /// Called with the row that a search ends at, for a list whose current row is what the keys act on.
    std::function<void(int row)> whenFound;
    /// Called after Return has gone to a row of a list that was searched.
    std::function<void()> whenAccepted;
    /// Gives the keyboard to the clip in view; not set: the list gets it.
    std::function<void()> leave;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// `isLeft`: `leave` applies.
    void goToFound(bool isLeft);
    void giveToList(Qt::FocusReason reason, bool isLeft);

    QLineEdit& field_;
    QAbstractItemView& list_;
};

} // namespace orvane::views
