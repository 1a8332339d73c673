#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>

class QSplitter;

namespace orvane::views {

class InspectorView;
class OutlineView;
class PictureView;
class TimelineView;

/// The clip in view: the list of clips at the left, its picture over its timeline, at the right what is known
/// and decided of it.
class ReviewView : public QWidget {
  public:
    /// `leave`: back to the list of results.
    ReviewView(Desktop& desktop, std::function<void()> leave, QWidget* parent = nullptr);

    /// Opens the clip on its clap. One that is not there any more leaves the screen as it is.
    void open(const UUID& groupID);

  private:
    Desktop& desktop_;
    QSplitter* columns_;
    QSplitter* rows_;
    OutlineView* outline_;
    PictureView* picture_;
    TimelineView* timeline_;
    InspectorView* inspector_;
};

} // namespace orvane::views
