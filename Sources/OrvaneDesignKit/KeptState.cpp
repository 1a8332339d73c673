#include "OrvaneDesignKit/KeptState.h"

#include "Platform/InterfaceThread.h"

#include <QSettings>
#include <QThreadPool>

#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace orvane::design::keptState {

namespace {

struct Kept {
    using Change = std::function<void(QSettings&)>;

    QVariantMap values;
    std::mutex mutex;
    std::vector<Change> unwritten; ///< guarded by `mutex`; not empty: a write of all of them is to begin
    QThreadPool writing;           ///< one thread, so that the order stays

    Kept() {
        platform::assertMayBlock("reading the places of the windows");
        writing.setMaxThreadCount(1);
        const QSettings stored;
        for (const QString& key : stored.allKeys()) values.insert(key, stored.value(key));
    }
    /// What comes before a write begins is in it: each waits for the disk, and a window that closes keeps a
    /// dozen values.
    void write(Change change) {
        {
            const std::lock_guard lock(mutex);
            unwritten.push_back(std::move(change));
            if (unwritten.size() > 1) return;
        }
        writing.start([this] { writeAll(); });
    }
    void writeAll() {
        std::vector<Change> changes;
        {
            const std::lock_guard lock(mutex);
            changes.swap(unwritten);
        }
        QSettings stored;
        for (const Change& change : changes) change(stored);
    }
};

Kept& kept() {
    static Kept one;
    return one;
}

} // namespace

QVariant value(const QString& key, const QVariant& otherwise) { return kept().values.value(key, otherwise); }

void set(const QString& key, const QVariant& value) {
    kept().values.insert(key, value);
    kept().write([key, value](QSettings& stored) { stored.setValue(key, value); });
}

void remove(const QString& key) {
    if (key.isEmpty())
        kept().values.clear();
    else
        kept().values.remove(key);
    kept().write([key](QSettings& stored) { stored.remove(key); });
}

void finish() {
    if (kept().writing.activeThreadCount() > 0) platform::assertMayBlock("writing the places of the windows");
    kept().writing.waitForDone();
}

} // namespace orvane::design::keptState
