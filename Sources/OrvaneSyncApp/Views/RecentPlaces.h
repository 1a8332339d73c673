#pragma once

#include <QStringList>

#include <functional>

class QMenu;

/// Folders and projects that were opened last, the newest first.
namespace orvane::views::RecentPlaces {

/// Folders of one scan stand together.
void add(const QStringList& paths);
/// A menu that is filled whenever it opens; `open` gets the paths of one entry.
QMenu* menu(QMenu* parent, std::function<void(const QStringList& paths)> open);

} // namespace orvane::views::RecentPlaces
