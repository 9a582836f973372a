// A method that a class declares and its provider doesn't carry out.
#ifndef TVR_PROVIDERS_UNSUPPORTED_METHOD_H
#define TVR_PROVIDERS_UNSUPPORTED_METHOD_H

#include "runtime/provider.h"

namespace cimple {

// Stands as a static member under the method's name; a call with any arguments touches none of them
// and tells the client that the method isn't supported.
struct Unsupported_Method {
    template <class... Arguments>
    constexpr Invoke_Method_Status operator()(const Arguments&...) const noexcept {
        return INVOKE_METHOD_UNSUPPORTED;
    }
};

} // namespace cimple

#endif
