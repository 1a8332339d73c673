#pragma once

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/WatchedApplication.h"
#include "Support/LongestWait.h"
#include "Support/TemporaryDirectory.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTest>

#include <functional>

namespace orvane::test {

/// One application for all tests of the desktop program, without a screen.
inline QApplication& application() {
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static QApplication* const made = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        // Nothing of the user's is read or changed.
        static const TemporaryDirectory homes;
        for (const char* home : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            qputenv(home, QByteArray::fromStdString(homes.path(home)));
        QStandardPaths::setTestModeEnabled(true);
        auto* one = new views::WatchedApplication(count, arguments);
        QCoreApplication::setOrganizationName(QStringLiteral("OrvaneSyncTests"));
        design::applyTheme(*one);
        return one;
    }();
    return *made;
}

/// Runs the event loop until the condition is true; false after `longestWait`.
inline bool waitUntil(const std::function<bool()>& holds) {
    return QTest::qWaitFor(holds, static_cast<int>(longestWait.count()));
}

} // namespace orvane::test
