// Where software can be installed from.
#ifndef TVR_AGENT_URI_SCHEMES_H
#define TVR_AGENT_URI_SCHEMES_H

#include "runtime/array.h"

namespace cimple {

// Values of `SupportedURISchemes`: 3 for files, and 4, 5, 6 and 8 behind it on a host with a
// library that transfers the others. Looks for that library, and keeps nothing of it.
Array<uint16> supported_URI_schemes();

} // namespace cimple

#endif
