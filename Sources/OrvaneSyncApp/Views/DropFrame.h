#pragma once

#include <QWidget>

namespace orvane::views {

/// Covers its parent while something is dragged over the window: shows a frame, and what a drop would do.
/// Ignores clicks.
class DropFrame : public QWidget {
  public:
    explicit DropFrame(QWidget* parent);
    void show(const QString& text);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString text_;
};

} // namespace orvane::views
