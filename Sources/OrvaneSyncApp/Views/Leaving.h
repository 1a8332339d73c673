#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "Platform/FileStep.h"

#include <QPointer>
#include <QTimer>

#include <functional>

class QMessageBox;

namespace orvane::views {

/// The end of the program: once all is on the disk. Where the disk refuses something, or nothing that is
/// written gets any further for 10 s, the window comes back and asks. What is tried again meanwhile and
/// succeeds ends the program without an answer.
class Leaving {
  public:
    /// `end` ends the program. All outlive it.
    Leaving(Desktop& desktop, QWidget& window, std::function<void()> end);
    void begin();

  private:
    void ask(const QString& stalled);
    void saveElsewhere();

    Desktop& desktop_;
    QWidget& window_;
    const std::function<void()> end_;
    QTimer look_;
    platform::StalledWrites writes_;
    QPointer<QMessageBox> box_;
    bool isAsked_ = false; ///< the end, and nobody has decided to go on working
    platform::Subscription observation_;
};

/// What a session's writing failed at, in the words of who can cure it: "the disk with /home/x/… is full".
QString whyNotSaved(const std::string& failure);

/// Of the session that was left with changes that are on no disk, how many clips had some; forgets it. 0: of
/// none.
int takeLeftUnsaved(const UUID& session);

} // namespace orvane::views
