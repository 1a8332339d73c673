#include "OrvaneSyncApp/Views/WatchedApplication.h"

#include "Platform/InterfaceThread.h"

#include <QThread>

#include <utility>

namespace orvane::views {

bool WatchedApplication::notify(QObject* receiver, QEvent* event) {
    QThread* const own = QThread::currentThread();
    if (own != thread() || own->loopLevel() == level_) return QApplication::notify(receiver, event);
    struct Restore {
        int& level;
        int before;
        ~Restore() { level = before; }
    } const restore{level_, std::exchange(level_, own->loopLevel())};
    const char* const name = receiver->metaObject()->className();
    bool isHandled = false;
    platform::runAsInterfaceWork([&] {
        platform::nameInterfaceWork(name);
        isHandled = QApplication::notify(receiver, event);
    });
    return isHandled;
}

} // namespace orvane::views
