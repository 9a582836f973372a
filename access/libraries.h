// The adapter management libraries, opened by name at run time. All of them are optional: without
// one, the entry points that it would give answer their failure values (see access/entry_points.h).
#ifndef TVR_ACCESS_LIBRARIES_H
#define TVR_ACCESS_LIBRARIES_H

#include "runtime/type.h"

#include <array>
#include <atomic>

namespace cimple {

enum Library : uint32 {
    HBAAPI_LIBRARY = 0, // libHBAAPI.so
    LRMAPI_LIBRARY = 1, // liblrmapi.so
    RMAPI_LIBRARY = 2,  // librmapi.so, in place of the former
};
constexpr std::size_t libraryCount = 3;

// Handles of the open libraries; null for one that isn't open.
extern std::array<std::atomic<void*>, libraryCount> libraryHandles;

// 1 when the last load tried the library and failed. rmApiMissing stays 0 when it was not tried.
extern std::atomic<uint32> hbaApiMissing;
extern std::atomic<uint32> lrmApiMissing;
extern std::atomic<uint32> rmApiMissing;

// Opens "lib<name>.so" for one slot, with its symbols visible to all, unless the slot is in use.
// 1 when the slot is usable, else 0.
uint32 loadDynamicLibrary(uint32 index, const char* name);

// Opens the HBA API library and the RM library, which exists under two names. 1 when librmapi.so
// came in place of liblrmapi.so, else 0. Whatever an earlier load or a closed library left behind
// is forgotten first.
//
// Loading and unloading are one thread's business, while no other is in an entry point.
uint32 loadManagementLibraries();

// Closes what is open, in order of the slots. No entry point keeps a pointer into a closed library;
// all of them fail until the next load. Answers 0.
uint32 unloadManagementLibraries();

} // namespace cimple

#endif
