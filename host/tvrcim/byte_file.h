// A file's content as an argument, such as a firmware image.
#ifndef TVR_HOST_TVRCIM_BYTE_FILE_H
#define TVR_HOST_TVRCIM_BYTE_FILE_H

#include "host/cim_value.h"

#include <string>

namespace tvrcim {

// The bytes of a regular file as an array of uint8. Throws Value_Error for one that cannot be read
// or has more than 8 MiB.
tvrhost::Cim_Value read_bytes(const std::string& file);

} // namespace tvrcim

#endif
