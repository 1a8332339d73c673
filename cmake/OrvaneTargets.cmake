# What every target of ours shares: warnings are errors, and floating point does what the source says
# (no contraction to fused operations, so that results do not depend on the machine).
add_library(orvane_options INTERFACE)
target_include_directories(orvane_options INTERFACE ${PROJECT_SOURCE_DIR}/Sources)
target_compile_options(orvane_options INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wconversion
    -Wno-sign-conversion -Werror -ffp-contract=off -fno-omit-frame-pointer)
# Locals that hide locals: the same is found in a source alone and in several that are compiled as one.
target_compile_options(orvane_options INTERFACE "$<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>")
target_compile_definitions(orvane_options INTERFACE ORVANE_VERSION="${PROJECT_VERSION}")
# GCC 12 sees overlapping copies where texts are joined (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(orvane_options INTERFACE -Wno-restrict)
endif()
# What reads files of strangers is hard to take over: tables of addresses are read-only once the program runs, it lies at
# another place each time, and a copy past an end ends it.
include(CheckPIESupported)
check_pie_supported()
target_link_options(orvane_options INTERFACE -Wl,-z,relro -Wl,-z,now)
target_compile_options(orvane_options INTERFACE
    "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
# The standard library's own algorithms use what it calls outdated.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(orvane_options INTERFACE -Wno-deprecated-declarations)
endif()
# Several sources compiled as one: the first build of everything takes a third of the time. A source seems a header there,
# and its names stand beside those of its neighbours.
if(CMAKE_UNITY_BUILD)
    set(ORVANE_UNITY_BATCH 8 CACHE STRING "How many sources are compiled as one; 0: all of a target")
    set(CMAKE_UNITY_BUILD_BATCH_SIZE ${ORVANE_UNITY_BATCH})
    target_compile_options(orvane_options INTERFACE "$<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>")
endif()
if(ORVANE_SANITIZE)
    target_compile_options(orvane_options INTERFACE -fsanitize=${ORVANE_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(orvane_options INTERFACE -fsanitize=${ORVANE_SANITIZE})
    target_compile_definitions(orvane_options INTERFACE ORVANE_SANITIZED)
endif()
if(ORVANE_FUZZ_COVERAGE)
    target_compile_options(orvane_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# orvane_layer_module(<target> [PUBLIC <targets>...] [PRIVATE <libraries>...])
# One folder, one static library, holding every .cpp of the folder and of its subfolders that have no
# CMakeLists.txt of their own. PUBLIC names the modules whose headers it may include, PRIVATE the libraries it stands on.
function(orvane_layer_module target)
    cmake_parse_arguments(ARG "" "" "PUBLIC;PRIVATE" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.cpp *.h)
    file(GLOB_RECURSE nested */CMakeLists.txt)
    foreach(list IN LISTS nested)
        get_filename_component(folder ${list} DIRECTORY)
        list(FILTER sources EXCLUDE REGEX "^${folder}/")
    endforeach()
    if(NOT sources)
        add_library(${target} INTERFACE) # nothing to build yet
        target_link_libraries(${target} INTERFACE orvane_options ${ARG_PUBLIC})
        return()
    endif()
    add_library(${target} STATIC ${sources})
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
    target_link_libraries(${target} PUBLIC orvane_options ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()

# orvane_loadable_module(<target> <libraries>...)
# One folder below Sources/Platform, one library that the program loads when something first needs it (Platform/Modules.h).
# It is built with the platform and installed where the program looks for it.
function(orvane_loadable_module target)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    add_library(${target} MODULE ${sources})
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${target} PRIVATE orvane_options ${ARGN})
    add_dependencies(orvane_platform ${target})
    install(TARGETS ${target} LIBRARY DESTINATION lib)
endfunction()
