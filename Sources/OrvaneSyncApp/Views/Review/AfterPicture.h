#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace orvane::views {

/// Work that may wait until the picture of a clip that is being opened is on the screen, so that nothing
/// stands between a key and the picture that it asks for. Without a clip under way it runs in the next turn
/// of the loop. Keys and clicks that come before it find it done: they are meant for the clip that it shows.
class AfterPicture : public QObject {
  public:
    AfterPicture(std::shared_ptr<VideoEngine> engine, std::function<void()> work, QObject* parent = nullptr);

    /// Once, however often it is asked for before it runs.
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
