#include "OrvaneSyncApp/Views/Timeline/TimelineView.h"

#include <utility>

namespace orvane::views {

TimelineView::TimelineView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)) {}

} // namespace orvane::views
