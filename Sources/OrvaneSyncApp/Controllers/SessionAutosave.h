#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <functional>
#include <memory>
#include <utility>

namespace orvane {

/// Decides when the open work is saved: once for all its changes of a turn of the run loop, and neither while
/// a session replaces it nor while a project does. Interface thread; held by a shared pointer, as what is
/// posted holds it weakly.
class SessionAutosave : public std::enable_shared_from_this<SessionAutosave> {
  public:
    /// `isChanged`: since the last save.
    using Save = std::function<void(const ImportController&, bool isChanged)>;
    SessionAutosave(std::shared_ptr<platform::MainThread> mainThread, Save save)
        : mainThread_(std::move(mainThread)), save_(std::move(save)) {}

    /// From now on the changes of this work are saved.
    void watch(const std::shared_ptr<ImportController>& controller);
    /// Null before `watch`.
    std::shared_ptr<ImportController> controller() const { return controller_.lock(); }

    void schedule();
    /// What is scheduled is saved now.
    void saveScheduled();
    void save();

    /// While it lives, changes of the work are no edits.
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
    /// False where none was opening.
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
