#pragma once

namespace orvane::platform::terminal {

/// Whether the descriptor (1 standard output, 2 standard error) is a terminal.
bool isTerminal(int descriptor);
/// Columns of the terminal; 80 if it does not report them.
int width(int descriptor);

} // namespace orvane::platform::terminal
