#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <functional>
#include <memory>
#include <utility>

namespace orvane {

/// Decides when the open work is saved: once for all its changes in one turn of the run loop, and not while a
/// session or a project replaces it. Interface thread; held by a shared pointer, because posted calls hold a
/// weak one.
class SessionAutosave : public std::enable_shared_from_this<SessionAutosave> {
  public:
    /// `isChanged`: whether the work has changed since the last save.
    using Save = std::function<void(const ImportController&, bool isChanged)>;
    SessionAutosave(std::shared_ptr<platform::MainThread> mainThread, Save save)
        : mainThread_(std::move(mainThread)), save_(std::move(save)) {}

    /// Saves the changes of this work from this call on.
    void watch(const std::shared_ptr<ImportController>& controller);
    /// Null before `watch`.
    std::shared_ptr<ImportController> controller() const { return controller_.lock(); }

    void schedule();
    /// Saves at once if a save is scheduled.
    void saveScheduled();
    void save();

    /// While an object of this type exists, changes of the work are no edits.
    class Restoring {
      public:
        explicit Restoring(SessionAutosave& owner) : owner_(owner) { owner_.isRestoring_ = true; }
        ~Restoring() { owner_.isRestoring_ = false; }
        Restoring(const Restoring&) = delete;
        Restoring& operator=(const Restoring&) = delete;

      private:
        SessionAutosave& owner_;
    };
    /// The clips shown do not belong to the session.
    void projectBegins() { isProjectOpening_ = true; }
    /// False if no project was opening.
    bool projectEnds() { return std::exchange(isProjectOpening_, false); }

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    const Save save_;
    std::weak_ptr<ImportController> controller_;
    platform::Subscription observation_;
    bool isRestoring_ = false;
    bool isProjectOpening_ = false;
    bool isScheduled_ = false;
};

} // namespace orvane
