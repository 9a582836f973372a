// The head of the list of registrations. The records are constant data, each linked to the one
// before it, so that the list is there before any code of the module runs.
#include "module/registrations.h"

const cimple::Registration* cimple_module() {
    return &cimple::last_registration;
}
