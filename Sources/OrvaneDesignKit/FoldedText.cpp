#include "OrvaneDesignKit/FoldedText.h"

#include <QResizeEvent>

namespace orvane::design {

FoldedText::FoldedText(int mostLines, QWidget* parent)
    : QLabel(parent), mostLines_(mostLines), more_(button({}, Weight::quiet)) {
    setWordWrap(true);
    setAlignment(Qt::AlignTop | Qt::AlignLeft);
    more_->hide();
    connect(more_, &QPushButton::clicked, this, [this] {
        isWhole_ = !isWhole_;
        fold();
    });
}

void FoldedText::show(const QString& text) {
    if (this->text() == text) return;
    isWhole_ = false;
    setText(text);
    fold();
}

void FoldedText::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    if (event->oldSize().width() != width()) fold();
}

void FoldedText::fold() {
    const int limit = mostLines_ * fontMetrics().lineSpacing();
    const bool isLong = heightForWidth(width()) >= limit + fontMetrics().lineSpacing();
    setMaximumHeight(isLong && !isWhole_ ? limit : QWIDGETSIZE_MAX);
    more_->setText(isWhole_ ? tr("Less") : tr("More"));
    more_->setVisible(isLong);
}

} // namespace orvane::design
