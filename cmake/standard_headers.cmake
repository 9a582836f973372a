# The standard headers are the greater part of what most sources make the compiler read. They are read
# once, for a library that has nothing else, and what came of it is taken over by every target of the
# same options. -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds without, and shows whether each source
# includes what it uses.
set(TVR_STANDARD_HEADERS
    <algorithm> <array> <atomic> <cstdio> <cstdlib> <cstring> <memory> <optional> <stdexcept> <string>
    <string_view> <utility> <vector>)

# A carrier of precompiled headers, these and more. Those who share them may have definitions beside its
# own, but lack none, and are compiled position-independent in the same way.
function(tvr_precompile name)
    file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_precompile_headers(${name} PRIVATE ${TVR_STANDARD_HEADERS} ${ARGN})
endfunction()

tvr_precompile(tvr_standard_headers)
tvr_precompile(tvr_tool_headers <functional> <iostream> <map> <mutex> <set> <span> <sstream> <variant>)

# What stands beside the module is built with debug information for stack traces alone, which takes a
# third less time; a debug build has all of it.
set(TVR_TOOL_OPTIONS $<$<CONFIG:RelWithDebInfo>:-g1>)
target_compile_options(tvr_tool_headers PRIVATE ${TVR_TOOL_OPTIONS})

# With precompiled headers g++ 12 loses count of the bytes behind std::string, and warns of sums of
# texts that are in order.
function(tvr_share_headers_of carrier)
    foreach(target ${ARGN})
        target_precompile_headers(${target} REUSE_FROM ${carrier})
        if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
        endif()
    endforeach()
endfunction()

# For the libraries of the module.
function(tvr_share_headers)
    tvr_share_headers_of(tvr_standard_headers ${ARGN})
endfunction()

# For the generator, the object manager, the command line and the simulator. A program's sources are
# compiled as a library's, which they may be.
function(tvr_tool)
    foreach(target ${ARGN})
        target_compile_options(${target} PRIVATE ${TVR_TOOL_OPTIONS})
        get_target_property(type ${target} TYPE)
        if(type STREQUAL EXECUTABLE)
            target_compile_options(${target} PRIVATE -fPIC)
        endif()
    endforeach()
    tvr_share_headers_of(tvr_tool_headers ${ARGN})
endfunction()
