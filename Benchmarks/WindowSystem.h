#pragma once

#include "OrvaneDesignKit/Theme.h"

#include <QApplication>

#include <array>

namespace orvane::bench {

/// The one application of all rows of the windows, without a screen: the existing one, or a plain one.
inline QApplication& windowSystem() {
    if (qApp != nullptr) return *qApp;
    static int count = 1;
    static std::array<char, 6> name{"bench"};
    static std::array<char*, 2> arguments{name.data(), nullptr};
    static QApplication* const made = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        auto* one = new QApplication(count, arguments.data());
        design::applyTheme(*one);
        return one;
    }();
    return *made;
}

} // namespace orvane::bench
