#pragma once

#include <QApplication>

namespace orvane::views {

/// An application that runs each event as work of the interface thread, named after the class of its
/// receiver, so that the time of the windows' event handlers is measured (`platform::watchInterfaceWork`).
/// Events handled inside another event count as part of it, but those of a dialog that it opens count
/// separately.
class WatchedApplication final : public QApplication {
  public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override;

  private:
    int level_ = -1; ///< the level of the event loop whose event is being handled; -1: none
};

} // namespace orvane::views
