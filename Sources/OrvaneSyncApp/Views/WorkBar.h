#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <chrono>
#include <functional>
#include <list>
#include <string_view>

class QProgressBar;
class QTimer;
class QToolButton;

namespace orvane::views {

/// Shows the long work that runs beside the screen in front: what it does, how far it is, how long it will
/// still take, and a button that cancels it. Shown only after it has run for `shownAfter`, so that short work
/// does not flicker.
class WorkBar : public QWidget {
  public:
    explicit WorkBar(Desktop& desktop, std::chrono::milliseconds shownAfter = std::chrono::milliseconds(400));

    /// Runs a long command, and shows it until it ends. If it cannot run, the reason is passed to the
    /// desktop's `whenRefused`. If it is cancelled, nothing is called.
    void run(std::string_view command, const QString& title, std::function<void()> done = {},
             JSON arguments = {});
    std::function<void()> whenChanged; ///< called when work that `run` began has ended

  private:
    struct Running {
        QString title;
        platform::Task task;
    };
    void follow();
    void showWork();
    void cancel();
    bool isAnalysing() const;

    Desktop& desktop_;
    QLabel* text_;
    QProgressBar* bar_;
    QToolButton* cancel_;
    QTimer* delay_;
    std::list<Running> running_; ///< in the order in which they began
    std::chrono::nanoseconds analysisBegan_{};
    bool wasAnalysing_ = false;
    bool isShown_ = false;
    platform::Subscription observation_;
};

} // namespace orvane::views
