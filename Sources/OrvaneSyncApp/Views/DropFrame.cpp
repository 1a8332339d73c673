#include "OrvaneSyncApp/Views/DropFrame.h"

#include "OrvaneDesignKit/Theme.h"

#include <QPainter>

namespace orvane::views {

using namespace design;

DropFrame::DropFrame(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void DropFrame::show(const QString& text) {
    text_ = text;
    setAccessibleName(text);
    setGeometry(parentWidget()->rect());
    raise();
    setVisible(true);
    update();
}

void DropFrame::paintEvent(QPaintEvent*) {
    constexpr int border = 3;
    QPainter painter(this);
    const QRect inner = rect().adjusted(space::small, space::small, -space::small, -space::small);
    painter.setPen(QPen(colours().selected, border));
    painter.drawRect(inner);
    QRect words = painter.fontMetrics().boundingRect(inner, Qt::AlignCenter | Qt::TextWordWrap, text_);
    words.adjust(-space::medium, -space::small, space::medium, space::small);
    painter.fillRect(words, colours().raised);
    painter.setPen(colours().text);
    painter.drawText(words, Qt::AlignCenter | Qt::TextWordWrap, text_);
}

} // namespace orvane::views
