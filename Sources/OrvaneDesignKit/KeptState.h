#pragma once

#include <QString>
#include <QVariant>

/// What the windows keep from one run to the next: sizes, places, what is folded. It is read at the first
/// use, before the loop runs; from then on it is held in memory and written on a thread of its own, in order.
/// Interface thread.
namespace orvane::design::keptState {

QVariant value(const QString& key, const QVariant& otherwise = {});
void set(const QString& key, const QVariant& value);
/// An empty key: all.
void remove(const QString& key);
/// Waits until all is written; before the loop runs and after it.
void finish();

} // namespace orvane::design::keptState
