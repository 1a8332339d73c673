#pragma once

#include <QSocketNotifier>
#include <QStringList>

#include <functional>
#include <memory>

namespace orvane::views {

/// One window for each user and each folder of settings. The first program that starts listens; a later one
/// hands over what it was started with, and ends. Programs of other users are not heard. Interface thread.
class SingleInstance {
  public:
    /// `name`: whose programs belong together.
    explicit SingleInstance(QString name = ownName());

    /// Whether another program took the words; then this one has nothing more to do. Waits half a second at
    /// most, before there is a window.
    bool handOver(const QStringList& words);
    /// Takes what later programs hand over. False where nobody can reach it.
    bool listen(std::function<void(const QStringList& words)> taken);

    /// By the folder of the settings, which two programs must not both keep.
    static QString ownName();

  private:
    const QString name_;
    std::unique_ptr<QSocketNotifier> callers_; ///< of the socket that they reach
};

} // namespace orvane::views
