# The standard headers are the greater part of what most sources make the compiler read. They are read
# once, for a library that has nothing else, and what came of it is taken over by every target of the
# same options. -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds without, and shows whether each source
# includes what it uses.
set(TVR_STANDARD_HEADERS
    <algorithm> <array> <atomic> <charconv> <chrono> <condition_variable> <cstdint> <cstdio> <cstdlib>
    <cstring> <fstream> <functional> <iostream> <map> <memory> <mutex> <optional> <set>
    <span> <sstream> <stdexcept> <string> <string_view> <thread> <type_traits> <unordered_map> <utility>
    <variant> <vector>)

# A carrier of precompiled headers. Those who share them may have definitions beside its own, but lack
# none, and are compiled position-independent in the same way.
function(tvr_precompile name)
    file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_precompile_headers(${name} PRIVATE ${TVR_STANDARD_HEADERS} ${ARGN})
endfunction()

tvr_precompile(tvr_standard_headers)

# For libraries of the product. With precompiled headers g++ 12 loses count of the bytes behind
# std::string, and warns of sums of texts that are in order.
function(tvr_share_headers)
    foreach(target ${ARGN})
        target_precompile_headers(${target} REUSE_FROM tvr_standard_headers)
        if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
        endif()
    endforeach()
endfunction()
