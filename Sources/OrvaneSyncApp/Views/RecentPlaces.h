#pragma once

#include <QStringList>

#include <functional>

class QMenu;

/// Folders and projects that were opened recently, the newest first.
namespace orvane::views::RecentPlaces {

/// The folders of one scan are one entry.
void add(const QStringList& paths);
/// A menu that is filled each time it opens; `open` gets the paths of the chosen entry.
QMenu* menu(QMenu* parent, std::function<void(const QStringList& paths)> open);

} // namespace orvane::views::RecentPlaces
