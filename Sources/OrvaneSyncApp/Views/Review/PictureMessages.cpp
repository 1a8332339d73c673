#include "OrvaneSyncApp/Views/Review/PictureMessages.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QChildEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

PictureMessages::PictureMessages(int places, QWidget* parent) : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (int i = 0; i < places; ++i) {
        auto* place = new QWidget;
        auto* own = new QVBoxLayout(place);
        own->setContentsMargins(0, 0, 0, 0);
        place->installEventFilter(this);
        place->hide();
        row->addWidget(place, 1);
        places_.push_back(place);
    }
    row->addWidget(counter_ = new QFrame);
    counter_->setProperty("banner", true);
    auto* inside = new QVBoxLayout(counter_);
    inside->setContentsMargins(0, 0, space::tight, 0);
    inside->addWidget(next_ = button({}, Weight::quiet));
    next_->setFocusPolicy(Qt::TabFocus); // after a click, the keys still control the review
    next_->setToolTip(tr("Shows the next message"));
    connect(next_, &QPushButton::clicked, this, [this] { showNext(); });
    counter_->hide();
}

QBoxLayout* PictureMessages::place(int index) const {
    return static_cast<QBoxLayout*>(places_.at(static_cast<std::size_t>(index))->layout());
}

bool PictureMessages::eventFilter(QObject* watched, QEvent* event) {
    const auto place = std::ranges::find(places_, watched);
    switch (event->type()) {
    case QEvent::ChildAdded:
        if (place != places_.end()) static_cast<QChildEvent*>(event)->child()->installEventFilter(this);
        break;
    case QEvent::ChildRemoved:
        if (place == places_.end()) break;
        static_cast<QChildEvent*>(event)->child()->removeEventFilter(this);
        note(*place, false);
        break;
    case QEvent::ShowToParent:
    case QEvent::HideToParent: // also while the place of the message is hidden
        if (place == places_.end())
            note(static_cast<QWidget*>(watched)->parentWidget(), event->type() == QEvent::ShowToParent);
        break;
    default:
        break;
    }
    return false;
}

void PictureMessages::note(QWidget* place, bool isFilled) {
    const auto before = std::ranges::find(filled_, place);
    if (isFilled == (before != filled_.end())) return;
    if (isFilled)
        filled_.push_back(place);
    else
        filled_.erase(before);
    shown_ = filled_.empty() ? nullptr : filled_.back();
    arrange();
}

void PictureMessages::showNext() {
    const auto at = std::ranges::find(filled_, shown_);
    shown_ = at == filled_.end() || at == filled_.begin() ? filled_.back() : *(at - 1);
    arrange();
}

void PictureMessages::arrange() {
    for (QWidget* place : places_) place->setVisible(place == shown_);
    counter_->setVisible(filled_.size() > 1);
    const auto number = filled_.end() - std::ranges::find(filled_, shown_);
    next_->setText(tr("%1 of %2").arg(number).arg(filled_.size()));
    if (filled_.empty() && whenHeightChanged) whenHeightChanged(0);
}

void PictureMessages::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (whenHeightChanged) whenHeightChanged(filled_.empty() ? 0 : height());
}

} // namespace orvane::views
