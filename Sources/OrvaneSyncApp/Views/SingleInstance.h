#pragma once

#include <QSocketNotifier>
#include <QStringList>

#include <functional>
#include <memory>

namespace orvane::views {

/// Ensures one window for each user and each folder of settings. The program that starts first listens; a
/// later one sends it its arguments and ends. Connections from programs of other users are ignored. Interface
/// thread.
class SingleInstance {
  public:
    /// `name`: programs with the same name belong together.
    explicit SingleInstance(QString name = ownName());

    /// Sends the arguments to another program. True if it accepted them; then this program has nothing more
    /// to do. Waits for at most half a second; called before there is a window.
    bool sendToFirst(const QStringList& arguments);
    /// Receives what later programs send. False if they cannot reach this program.
    bool listen(std::function<void(const QStringList& arguments)> whenReceived);

    /// Derived from the folder of the settings, which two programs must not both use.
    static QString ownName();

  private:
    const QString name_;
    std::unique_ptr<QSocketNotifier> callers_; ///< of the socket that later programs connect to
};

} // namespace orvane::views
