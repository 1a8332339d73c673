#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

class QProgressBar;

namespace orvane::views {

/// The progress of a scan: its phase, how far it is, the current file, and a button that stops it.
class ScanningView : public QWidget {
  public:
    explicit ScanningView(Desktop& desktop, QWidget* parent = nullptr);
    /// To be called when a scan begins.
    void begin();

  private:
    void showProgress();

    Desktop& desktop_;
    QLabel* phase_;
    QLabel* counts_;
    QLabel* file_;
    QProgressBar* bar_;
    std::chrono::nanoseconds began_{};
    platform::Subscription observation_;
};

} // namespace orvane::views
