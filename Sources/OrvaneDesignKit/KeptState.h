#pragma once

#include <QString>
#include <QVariant>

/// The state of the windows that is kept from one run to the next: sizes, positions, folded sections. It is
/// read at the first use, before the loop runs. From then on it is held in memory and written on a thread of
/// its own, in order. Interface thread.
namespace orvane::design::keptState {

QVariant value(const QString& key, const QVariant& otherwise = {});
void set(const QString& key, const QVariant& value);
/// An empty key removes everything.
void remove(const QString& key);
/// Waits until everything is written; called only before the loop runs and after it.
void finish();

} // namespace orvane::design::keptState
