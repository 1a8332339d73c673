# The common options of all our targets: warnings are errors, and floating point is computed as the source says (no
# contraction to fused operations, so that results do not depend on the machine).
add_library(orvane_options INTERFACE)
target_include_directories(orvane_options INTERFACE ${PROJECT_SOURCE_DIR}/Sources)
target_compile_options(orvane_options INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wconversion
    -Wno-sign-conversion -Werror -ffp-contract=off -fno-omit-frame-pointer)
# Locals that hide locals: this finds the same in a single source and in several compiled as one.
target_compile_options(orvane_options INTERFACE "$<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>")
target_compile_definitions(orvane_options INTERFACE ORVANE_VERSION="${PROJECT_VERSION}")
# GCC 12 wrongly reports overlapping copies where texts are joined (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(orvane_options INTERFACE -Wno-restrict)
endif()
# A program that reads untrusted files is hardened: tables of addresses are read-only once it runs, its address differs each
# time, and a copy beyond a buffer's end stops it.
include(CheckPIESupported)
check_pie_supported()
target_link_options(orvane_options INTERFACE -Wl,-z,relro -Wl,-z,now)
target_compile_options(orvane_options INTERFACE
    "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
# The standard library's own algorithms use what it marks as deprecated.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(orvane_options INTERFACE -Wno-deprecated-declarations)
endif()
# Several sources compiled as one: the first build of everything takes a third of the time. The compiler treats a source as a
# header there, and its names share the scope of the others.
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

# orvane_add_folders(<pattern>): adds each folder of that pattern that has a CMakeLists.txt. Their order does not matter:
# links are resolved when all targets are known, and Scripts/check-includes.py finds a circle of modules.
function(orvane_add_folders pattern)
    file(GLOB lists CONFIGURE_DEPENDS ${pattern}/CMakeLists.txt)
    foreach(list IN LISTS lists)
        get_filename_component(folder ${list} DIRECTORY)
        add_subdirectory(${folder})
    endforeach()
endfunction()

# orvane_layer_module(<target> [PUBLIC <targets>...] [PRIVATE <libraries>...])
# One folder, one static library with every .cpp of the folder and of its subfolders that have no CMakeLists.txt of their
# own. PUBLIC names the modules whose headers it may include, PRIVATE the libraries that it uses.
function(orvane_layer_module target)
    cmake_parse_arguments(ARG "" "" "PUBLIC;PRIVATE" ${ARGN})
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/Sources ${CMAKE_CURRENT_SOURCE_DIR})
    set_property(GLOBAL PROPERTY orvane_module_of_${folder} ${target}) # for its tests
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
# One folder below Sources/Platform, one library that the program loads at its first use (Platform/Modules.h). It is built
# with the platform and installed where the program searches for it. A header of the folder has the library's file name.
function(orvane_loadable_module target)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    set(names)
    foreach(source IN LISTS sources)
        file(STRINGS ${source} found REGEX "fileName = \"lib${target}\\.so\"")
        list(APPEND names ${found})
    endforeach()
    if(NOT names)
        message(FATAL_ERROR "no header of ${CMAKE_CURRENT_SOURCE_DIR} has fileName = \"lib${target}.so\"")
    endif()
    add_library(${target} MODULE ${sources})
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${target} PRIVATE orvane_options ${ARGN})
    add_dependencies(orvane_platform ${target})
    set_property(GLOBAL APPEND PROPERTY orvane_loadable_modules lib${target}.so)
    install(TARGETS ${target} LIBRARY DESTINATION lib)
endfunction()
