#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "Platform/FileStep.h"

#include <QPointer>
#include <QTimer>

#include <chrono>
#include <functional>

class QMessageBox;

namespace orvane::views {

/// Ends the program when everything is saved. If a write fails, or if no write makes progress for 10 s, the
/// window is shown again and asks the user what to do. If a later attempt to save succeeds before the answer,
/// the program ends without one.
class Leaving {
  public:
    /// `end` ends the program. `desktop` and `window` must outlive this object.
    /// `checkInterval`: the time between two of the ten checks for a write without progress.
    Leaving(Desktop& desktop, QWidget& window, std::function<void()> end,
            std::chrono::milliseconds checkInterval = std::chrono::seconds(1));
    void begin();

  private:
    void closeBox();
    void ask(const QString& stalled);
    void saveElsewhere();

    Desktop& desktop_;
    QWidget& window_;
    const std::function<void()> end_;
    QTimer look_;
    platform::StalledWrites writes_;
    QPointer<QMessageBox> box_;
    bool isAsked_ = false; ///< the user asked for the end, and has not cancelled it
    platform::Subscription observation_;
};

/// The reason why a session could not be written, in words that help the user: "the disk with /home/x/… is
/// full".
QString whyNotSaved(const std::string& failure);

/// The number of the session's clips whose changes were not saved when the program was quit; 0: none, or the
/// session was saved since. Forgets the number.
int takeLeftUnsaved(const SessionInfo& session);

} // namespace orvane::views
