#pragma once

#include <QObject>

#include <functional>

class QAbstractItemView;
class QLineEdit;

namespace orvane::views {

/// The way by keys from a field that searches a list into the list: Down and Return go to its first row,
/// Escape takes the words away and, without any, gives the list the keyboard as it was. Has the lifetime of
/// the field, which is destroyed no later than the list.
class SearchKeys : public QObject {
  public:
    SearchKeys(QLineEdit& field, QAbstractItemView& list);

    /// The row that Down goes to; row 0 where none is given.
    std::function<int()> firstRow;
    /// Whether Escape takes words out of that field and stays in it.
    static bool clears(const QWidget& field);
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void enterList();

    QLineEdit& field_;
    QAbstractItemView& list_;
};

} // namespace orvane::views
