#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>

namespace orvane::views {

/// The clips of the work, the cameras of a take under one parent, and the way back to the results.
class OutlineView : public QWidget {
  public:
    using Choose = std::function<void(const UUID& groupID)>;
    /// `choose`: the user wants to see that clip.
    OutlineView(Desktop& desktop, Choose choose, std::function<void()> leave, QWidget* parent = nullptr);

    /// Marks the clip without `choose`.
    void select(const UUID& groupID);

  private:
    Desktop& desktop_;
    const Choose choose_;
    const std::function<void()> leave_;
};

} // namespace orvane::views
