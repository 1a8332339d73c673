#pragma once

#include <QString>

class QWidget;

namespace orvane::views {

/// Asks before what can't be taken back. Return and Escape answer `no`; waits for the answer.
bool isAgreed(QWidget* parent, const QString& title, const QString& text, const QString& yes,
              const QString& no);

/// Says why something does not open; takes the keyboard until it is closed, by Return or Escape. Does not
/// wait.
void tell(QWidget* parent, const QString& title, const QString& text);

} // namespace orvane::views
