#pragma once

#include <QString>

#include <functional>

class QObject;

/// A small shooting day to try the program with, made by a tool beside the program.
namespace orvane::views::DemoShoot {

/// Whether the tool is there.
bool isAvailable();
/// Makes it below the application's data folder, or finds it there. `done` gives the folder, or why there is
/// none. Nothing is called once `context` is gone; the tool is then stopped.
void make(QObject* context, std::function<void(const QString& step)> progress,
          std::function<void(const QString& folder, const QString& failure)> done);

} // namespace orvane::views::DemoShoot
