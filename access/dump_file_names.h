// The names of dump files as a library lists them.
#ifndef TVR_ACCESS_DUMP_FILE_NAMES_H
#define TVR_ACCESS_DUMP_FILE_NAMES_H

#include "access/counted_list.h"

namespace cimple {

struct DumpFileName {
    char text[sizeof(RM_DUMPFILENAMES::name[0])];
};
using DumpFileNames = CountedList<DumpFileName, offsetof(RM_DUMPFILENAMES, name)>;

constexpr uint32_t usualDumpFiles = 4;
constexpr uint32_t maxDumpFiles = 65536; // more are not asked for

} // namespace cimple

#endif
