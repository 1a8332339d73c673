#pragma once

#include "OrvaneSyncCLI/Context.h"

namespace orvane::cli {

/// `lockit mapping ...`: lists and changes the targets of LockitNetwork's fields.
void lockitMapping(Context& context, const Arguments& arguments);

} // namespace orvane::cli
