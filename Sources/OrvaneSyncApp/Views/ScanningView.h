#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>

class QProgressBar;

namespace orvane::views {

/// What a scan does at this moment, how far it is, and a way to stop it.
class ScanningView : public QWidget {
  public:
    ScanningView(Desktop& desktop, std::function<void()> cancel, QWidget* parent = nullptr);
    /// A scan begins.
    void begin();

  private:
    void showProgress();

    Desktop& desktop_;
    QLabel* phase_;
    QLabel* counts_;
    QProgressBar* bar_;
    std::chrono::nanoseconds began_{};
    platform::Subscription observation_;
};

} // namespace orvane::views
