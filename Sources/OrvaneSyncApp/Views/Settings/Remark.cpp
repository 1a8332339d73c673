#include "OrvaneSyncApp/Views/Settings/Remark.h"

#include <QHBoxLayout>
#include <QPainter>

namespace orvane::views {

using namespace design;

namespace {
constexpr int markSide = 16;
}

class Remark::Mark : public QWidget {
  public:
    Mark() { setFixedSize(markSide, markSide); }
    Signal signal = Signal::none;

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        draw(painter, glyph(signal), QRectF(rect()), colour(signal));
    }
};

Remark::Remark(QWidget* parent) : QWidget(parent), mark_(new Mark), text_(facts({})) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::tight);
    row->addWidget(mark_, 0, Qt::AlignTop);
    row->addWidget(text_, 1);
    setVisible(false);
}

void Remark::show(Signal signal, const QString& text) {
    mark_->signal = signal;
    mark_->setVisible(signal != Signal::none);
    mark_->update();
    text_->setText(text);
    setAccessibleName(text);
    setVisible(!text.isEmpty());
}

} // namespace orvane::views
