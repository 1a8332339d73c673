#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace orvane::views {

/// The picture of the clip in view with its timecodes, meters and transport.
class PictureView : public QWidget {
  public:
    PictureView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

  private:
    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
};

} // namespace orvane::views
