#pragma once

#include "OrvaneSyncCLI/Context.h"

namespace orvane::cli {

/// `lockit mapping ...`: lists and changes where the fields of LockitNetwork go.
void lockitMapping(Context& context, const Arguments& arguments);

} // namespace orvane::cli
