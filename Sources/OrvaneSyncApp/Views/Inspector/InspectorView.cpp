#include "OrvaneSyncApp/Views/Inspector/InspectorView.h"

#include <utility>

namespace orvane::views {

InspectorView::InspectorView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)) {}

} // namespace orvane::views
