#pragma once

#include <QApplication>

namespace orvane::views {

/// An application that runs each event as work of the interface thread, by the class of its receiver, so that
/// what the handlers of windows do is watched (`platform::watchInterfaceWork`). What an event brings about
/// before it returns belongs to it; the events of a dialog that it opens count by themselves.
class WatchedApplication final : public QApplication {
  public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override;

  private:
    int level_ = -1; ///< of the loop whose event is under way; -1: none is
};

} // namespace orvane::views
