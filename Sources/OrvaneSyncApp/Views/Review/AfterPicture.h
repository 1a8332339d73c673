#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace orvane::views {

/// Work that may wait until the picture of an opening clip is on the screen, so that the picture appears
/// sooner after the key press. If no clip is opening, it runs in the next turn of the loop. It is done before
/// later keys and clicks are handled, because these are meant for the clip that it shows.
class AfterPicture : public QObject {
  public:
    AfterPicture(std::shared_ptr<VideoEngine> engine, std::function<void()> work, QObject* parent = nullptr);

    /// Runs once, however often this is called before it runs.
    void schedule();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void look();
    void run();

    const std::shared_ptr<VideoEngine> engine_;
    const std::function<void()> work_;
    QTimer timer_;
    bool isScheduled_ = false, isWaiting_ = false;
    platform::Subscription observation_;
};

} // namespace orvane::views
