#pragma once

namespace orvane::platform::terminal {

/// Whether the descriptor (1 standard output, 2 standard error) is a terminal.
bool isTerminal(int descriptor);
/// Columns of the terminal; 80 where it does not tell.
int width(int descriptor);

} // namespace orvane::platform::terminal
