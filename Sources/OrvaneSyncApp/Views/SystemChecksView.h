#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Controllers/SystemChecks.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <vector>

class QGridLayout;

namespace orvane::views {

/// The state of each thing that the program needs, one line each; checked in the background.
class SystemChecksView : public QWidget {
  public:
    explicit SystemChecksView(Desktop& desktop, QWidget* parent = nullptr);

    /// Starts the checks, or repeats them.
    void look();
    /// Copies the list as text. Enabled while there is one.
    QPushButton* copyButton() { return copy_; }
    /// Repeats the checks. Disabled while they run.
    QPushButton* againButton() { return again_; }

  private:
    void show(std::vector<SystemCheck> found);

    Desktop& desktop_;
    QGridLayout* rows_;
    QPushButton* copy_;
    QPushButton* again_;
    QLabel* looking_;
    std::vector<SystemCheck> checks_;
};

} // namespace orvane::views
