#pragma once

#include "OrvaneDesignKit/Theme.h"

#include <QLabel>
#include <QPainter>

namespace orvane::design {

/// One line, with an ellipsis if it has too little room. It takes the width that it is given, and has the
/// colour of facts if that property is set.
class ElidedLabel : public QLabel {
  public:
    explicit ElidedLabel(Qt::TextElideMode where) : where_(where) {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(property("facts").toBool() ? colours().facts : colours().text);
        painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft,
                         fontMetrics().elidedText(text(), where_, width()));
    }

  private:
    const Qt::TextElideMode where_;
};

} // namespace orvane::design
