#pragma once

#include <functional>

class QWidget;

namespace orvane::views {

class StartView;
class WorkBanner;
class WorkBar;
class WorkOpening;
class WorkScreens;

/// The parts of the window that its menus use. They outlive the menus.
struct MenuParts {
    WorkScreens& screens;
    WorkOpening& opening;
    WorkBanner& banner;
    WorkBar& work;
    StartView& start;
    QWidget& sessions;                  ///< can be hidden
    std::function<void()> takeKeyboard; ///< gives it to the screen in front
};

} // namespace orvane::views
