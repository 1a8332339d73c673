#include "OrvaneDesignKit/FoldedText.h"

#include <QResizeEvent>
#include <QTextLayout>

#include <utility>

namespace orvane::design {

namespace {

/// The first lines of the text at that width, and whether these are not all.
std::pair<QString, bool> firstLines(QString text, const QFont& font, int width, int most) {
    text.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
    QTextLayout layout(text, font);
    layout.beginLayout();
    QString shown;
    for (int number = 1;; ++number) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) return {shown, false};
        line.setLineWidth(width);
        const QString own = text.mid(line.textStart(), line.textLength()).trimmed();
        if (number > 1) shown += QLatin1Char('\n');
        if (number < most || line.textStart() + line.textLength() >= text.size()) {
            shown += own;
            continue;
        }
        return {shown + QFontMetrics(font).elidedText(own + QStringLiteral(" …"), Qt::ElideRight, width),
                true};
    }
}

} // namespace

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
    if (whole_ == text) return;
    isWhole_ = false;
    whole_ = text;
    fold();
}

void FoldedText::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    if (event->oldSize().width() != width()) fold();
}

void FoldedText::fold() {
    const auto [first, isLong] = firstLines(whole_, font(), width() - 1, mostLines_);
    setText(isLong && !isWhole_ ? first : whole_);
    more_->setText(isWhole_ ? tr("Less") : tr("More"));
    more_->setVisible(isLong);
}

} // namespace orvane::design
