#include "OrvaneSyncApp/Views/Review/PictureView.h"

#include <utility>

namespace orvane::views {

PictureView::PictureView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)) {}

} // namespace orvane::views
