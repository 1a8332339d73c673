#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace orvane::views {

/// What is known of the clip in view, and where it is changed.
class InspectorView : public QWidget {
  public:
    InspectorView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

  private:
    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
};

} // namespace orvane::views
