#pragma once

#include <QWidget>

namespace orvane::views {

/// All controls of the kit beside each other, for judging and mending them.
QWidget* makeGallery();

} // namespace orvane::views
