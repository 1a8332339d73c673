#include "Platform/Secret.h"

#include <cstddef>
#include <cstring>
#include <sys/prctl.h>

namespace orvane::platform {

namespace {

/// The libraries' buffers hold copies of a secret as well, and freed memory is not cleared: so this stays in
/// force until the process ends. Not in sanitized builds: their leak search reads the process.
void closeMemoryToOthers() {
#ifndef ORVANE_SANITIZED
    ::prctl(PR_SET_DUMPABLE, 0);
#endif
}

} // namespace

Secret::Secret(std::string text) : text_(std::move(text)) {
    if (!text_.empty()) closeMemoryToOthers();
}

/// Takes the same time wherever two texts of one length differ, so that the time does not reveal the place.
bool Secret::operator==(const Secret& other) const {
    if (text_.size() != other.text_.size()) return false;
    unsigned difference = 0;
    for (std::size_t i = 0; i < text_.size(); ++i)
        difference |= static_cast<unsigned char>(text_[i]) ^ static_cast<unsigned char>(other.text_[i]);
    return difference == 0;
}

void Secret::wipe(std::string& text) {
    ::explicit_bzero(text.data(), text.capacity());
    text.clear();
}

} // namespace orvane::platform
