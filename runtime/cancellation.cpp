#include "runtime/cancellation.h"

#include <pthread.h>

namespace cimple {

namespace {

constinit thread_local const Cancel_Later* innermost = nullptr;

} // namespace

Cancel_Later::Cancel_Later() noexcept : _outer(innermost) {
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &_before);
    innermost = this;
}

Cancel_Later::~Cancel_Later() {
    innermost = _outer;
    ::pthread_setcancelstate(_before, nullptr);
}

Cancel_Here::Cancel_Here() noexcept : _changed(innermost != nullptr) {
    if (_changed) {
        ::pthread_setcancelstate(innermost->_before, &_before);
    }
}

Cancel_Here::~Cancel_Here() {
    if (_changed) {
        ::pthread_setcancelstate(_before, nullptr);
    }
}

} // namespace cimple
