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

/// The long work that goes on beside the screen in front: what it does, how far it is, how long still, and a
/// way to cancel it. Shown once it has gone on for `shownAfter`, so that short work does not flicker.
class WorkBar : public QWidget {
  public:
    explicit WorkBar(Desktop& desktop, std::chrono::milliseconds shownAfter = std::chrono::milliseconds(400));

    /// Runs a command of the table that takes long and no arguments, and shows it until it ends. Why it could
    /// not run goes to `whenRefused` of the desktop; one that is cancelled calls nothing.
    void run(std::string_view command, const QString& title, std::function<void()> done = {});
    std::function<void()> whenChanged; ///< something that `run` began has ended

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
