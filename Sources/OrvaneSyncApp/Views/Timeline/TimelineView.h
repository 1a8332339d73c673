#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace orvane::views {

/// The timeline of the clip in view, and the gestures on it.
class TimelineView : public QWidget {
  public:
    TimelineView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

  private:
    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
};

} // namespace orvane::views
