#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>

namespace orvane::views {

/// Takes the files that are dropped on its parent. While they are dragged over it, covers the parent with a
/// frame, and shows what a drop would do. Ignores clicks.
class DropFrame : public QWidget {
  public:
    explicit DropFrame(QWidget* parent);
    /// The text to show while these paths are dragged.
    std::function<QString(const QStringList& paths)> describe;
    std::function<void(const QStringList& paths)> drop;

    bool eventFilter(QObject* watched, QEvent* event) override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void show(const QString& text);

    QString text_;
};

} // namespace orvane::views
