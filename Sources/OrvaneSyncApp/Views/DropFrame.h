#pragma once

#include <QWidget>

namespace orvane::views {

/// Lies over its parent while something hangs over the window: a frame, and what a drop would do. Lets every
/// click through.
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
