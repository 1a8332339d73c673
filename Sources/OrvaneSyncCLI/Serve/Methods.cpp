#include "OrvaneSyncCLI/Serve/Methods.h"

#include <algorithm>
#include <iterator>

namespace orvane::cli::rpc {

std::vector<Method> allMethods() {
    std::vector<Method> methods;
    for (auto* group : {&workMethods, &editMethods, &audioMethods, &reportMethods, &fileMethods,
                        &sessionMethods, &settingMethods})
        std::ranges::move((*group)(), std::back_inserter(methods));
    return methods;
}

} // namespace orvane::cli::rpc
