# Platform/InterfaceVersion.h, in the build folder: a number made from all headers of the platform, by which a program refuses
# a loadable module or a media helper of another build. A build of the same headers gives the same number on every machine; a
# change of one of them makes CMake run again first.
file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/Sources/Platform/*.h)
list(APPEND headers ${PROJECT_SOURCE_DIR}/Sources/Platform/MediaHelper/HelperSocket.cpp)
list(SORT headers)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${headers})
# Other compilers and sanitizers lay out the same types differently.
set(described "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} ${CMAKE_SYSTEM_PROCESSOR} ${ORVANE_SANITIZE}")
foreach(header IN LISTS headers)
    file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${header})
    file(SHA256 ${header} digest)
    string(APPEND described " ${name} ${digest}")
endforeach()
string(SHA256 digest "${described}")
string(SUBSTRING ${digest} 0 16 ORVANE_INTERFACE)
# Written only if it differs, so that an equal one does not cause compilation.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/generated/Platform/InterfaceVersion.h @ONLY CONTENT [[
#pragma once

#include <cstdint>

namespace orvane::platform {

/// The version of the interface between a program and its loadable modules; the same for all that was built together.
inline constexpr std::uint64_t interfaceVersion = 0x@ORVANE_INTERFACE@;
/// What the media helper reports: the version of OrvaneSync, and that of the interface.
inline constexpr const char* helperVersion = "@PROJECT_VERSION@+@ORVANE_INTERFACE@";

} // namespace orvane::platform
]])
target_include_directories(orvane_options INTERFACE ${PROJECT_BINARY_DIR}/generated)
