#include "OrvaneDesignKit/KeptState.h"

#include "Platform/InterfaceThread.h"

#include <QSettings>
#include <QThreadPool>

#include <functional>

namespace orvane::design::keptState {

namespace {

struct Kept {
    QVariantMap values;
    QThreadPool writing; ///< one thread, so that the order is kept

    Kept() {
        platform::assertMayBlock("reading the places of the windows");
        writing.setMaxThreadCount(1);
        const QSettings stored;
        for (const QString& key : stored.allKeys()) values.insert(key, stored.value(key));
    }
    void write(std::function<void(QSettings&)> change) {
        writing.start([change = std::move(change)] {
            QSettings stored;
            change(stored);
        });
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
