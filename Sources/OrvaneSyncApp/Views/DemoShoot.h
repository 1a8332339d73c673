#pragma once

#include <QString>

#include <functional>

class QObject;

/// A small shooting day to try the program with, made by a separate program in the same folder.
namespace orvane::views::DemoShoot {

/// Searches for that program on another thread, and calls `then` if it exists.
void whenAvailable(QObject* context, std::function<void()> then);
/// Makes the shooting day in the application's data folder, if it is not there yet. `done` gets the folder,
/// or why there is none. If `context` is destroyed, nothing is called and the program is stopped.
void make(QObject* context, std::function<void(const QString& step)> progress,
          std::function<void(const QString& folder, const QString& failure)> done);
/// Stops the program that `make` started for `context`; `done` then gets two empty texts.
void cancel(QObject* context);

} // namespace orvane::views::DemoShoot
