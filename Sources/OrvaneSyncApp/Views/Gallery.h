#pragma once

#include <QWidget>

namespace orvane::views {

/// All controls of the kit beside each other, to check and correct them.
QWidget* makeGallery();

} // namespace orvane::views
