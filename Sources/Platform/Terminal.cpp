#include "Platform/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace orvane::platform::terminal {

bool isTerminal(int descriptor) { return ::isatty(descriptor) == 1; }

int width(int descriptor) {
    constexpr int usualWidth = 80;
    struct winsize size {};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usualWidth;
    return size.ws_col;
}

} // namespace orvane::platform::terminal
