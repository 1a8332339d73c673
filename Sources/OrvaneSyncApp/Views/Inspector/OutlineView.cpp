#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"

#include <utility>

namespace orvane::views {

OutlineView::OutlineView(Desktop& desktop, Choose choose, std::function<void()> leave, QWidget* parent)
    : QWidget(parent), desktop_(desktop), choose_(std::move(choose)), leave_(std::move(leave)) {}

void OutlineView::select(const UUID& /*groupID*/) {}

} // namespace orvane::views
