#pragma once

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/WatchedApplication.h"
#include "Platform/MainThread.h"
#include "Support/LongestWait.h"
#include "Support/TemporaryDirectory.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTest>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

namespace orvane::test {

/// The application is never destroyed, and what a closed window leaves to other threads may use libraries
/// that end with the process.
class WaitForOtherThreads : public testing::EmptyTestEventListener {
    void OnTestProgramEnd(const testing::UnitTest& /*program*/) override {
        QThreadPool::globalInstance()->waitForDone();
        while (platform::SerialQueue::hasAbandonedWork())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
};

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
        testing::UnitTest::GetInstance()->listeners().Append(new WaitForOtherThreads);
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
