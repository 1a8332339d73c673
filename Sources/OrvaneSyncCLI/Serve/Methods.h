#pragma once

#include "OrvaneSyncCLI/Serve/RPCMethod.h"

#include <vector>

namespace orvane::cli::rpc {

/// The methods of each group of the contract, and all of them.
std::vector<Method> workMethods();
std::vector<Method> editMethods();
std::vector<Method> audioMethods();
std::vector<Method> reportMethods();
std::vector<Method> fileMethods();
std::vector<Method> sessionMethods();
std::vector<Method> settingMethods();
std::vector<Method> allMethods();

} // namespace orvane::cli::rpc
