#include "Platform/Log.h"

#include <syslog.h>

namespace orvane::platform {

void logError(std::string_view message) {
    ::syslog(LOG_USER | LOG_ERR, "%.*s", static_cast<int>(message.size()), message.data());
}

} // namespace orvane::platform
