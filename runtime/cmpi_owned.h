// An object that the object manager has made, released at the end of its owner, whichever the way
// out.
#ifndef TVR_RUNTIME_CMPI_OWNED_H
#define TVR_RUNTIME_CMPI_OWNED_H

#include <cmpimacs.h>

#include <memory>

namespace cimple {

struct CMPI_Release {
    template <class Object> void operator()(Object* object) const { CMRelease(object); }
};

template <class Object> using CMPI_Owned = std::unique_ptr<Object, CMPI_Release>;

} // namespace cimple

#endif
