#pragma once

#include <QString>

class QWidget;

namespace orvane::views {

/// Asks before something that can't be undone, and waits for the answer. Return and Escape answer `no`.
bool isAgreed(QWidget* parent, const QString& title, const QString& text, const QString& yes,
              const QString& no);

/// Says why something cannot be opened. The message has the keyboard until Return or Escape closes it. Does
/// not wait.
void tell(QWidget* parent, const QString& title, const QString& text);

} // namespace orvane::views
