#pragma once

#include <QString>

class QWidget;

namespace orvane::views {

/// Asks before what can't be taken back. Return and Escape answer `no`; waits for the answer.
bool isAgreed(QWidget* parent, const QString& title, const QString& text, const QString& yes,
              const QString& no);

} // namespace orvane::views
