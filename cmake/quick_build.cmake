# What makes a build from nothing quick. Most sources are small, and the greater part of their
# compilation is what they include.

# Stack traces need lines and names of functions; types and variables, for a debugger, take a quarter of
# the time.
option(TVR_LINES_ONLY "debug information for stack traces alone" OFF)
if(TVR_LINES_ONLY)
    add_compile_options($<$<CONFIG:RelWithDebInfo>:-g1>)
endif()

option(TVR_UNITY "compile the sources of a library a few at a time" ON)

# The standard headers are read once, for a library that has nothing else, and what came of it is taken
# over by all of the same options. -DTVR_UNITY=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON compiles each
# source by itself, and shows whether it includes what it uses; `./dev lint` does.
set(TVR_STANDARD_HEADERS
    <algorithm> <array> <atomic> <cstdio> <cstdlib> <cstring> <functional> <map> <memory> <mutex>
    <optional> <set> <span> <sstream> <stdexcept> <string> <string_view> <utility> <variant> <vector>)

# A carrier of precompiled headers, these and more. Those who share them may have definitions beside its
# own, but lack none, and are compiled position-independent in the same way.
function(tvr_precompile name)
    file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_precompile_headers(${name} PRIVATE ${TVR_STANDARD_HEADERS} ${ARGN})
endfunction()

tvr_precompile(tvr_standard_headers)

# tvr_quick(TARGET [TOGETHER N]): shares those headers, and compiles N sources at a time. A name of one
# source's own must then be no other's of its library. A program's sources are compiled like a library's,
# which they may be. With precompiled headers g++ 12 loses count of the bytes behind std::string, and
# warns of sums of texts that are in order.
function(tvr_quick target)
    cmake_parse_arguments(arg "" "TOGETHER" "" ${ARGN})
    target_precompile_headers(${target} REUSE_FROM tvr_standard_headers)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
        target_compile_options(${target} PRIVATE -fPIC)
    endif()
    if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
    endif()
    if(TVR_UNITY AND arg_TOGETHER)
        set_target_properties(${target} PROPERTIES
            UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${arg_TOGETHER})
    endif()
endfunction()
