#pragma once

#include "OrvaneDesignKit/Controls.h"

#include <QWidget>

namespace orvane::views {

/// A sentence beside the control that it is about, after the glyph of its signal. Hidden without a text.
class Remark : public QWidget {
  public:
    explicit Remark(QWidget* parent = nullptr);
    void show(design::Signal signal, const QString& text);
    QString text() const { return text_->text(); }

  private:
    class Mark;
    Mark* mark_;
    QLabel* text_;
};

} // namespace orvane::views
