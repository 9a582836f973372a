// What ends a command: one line for standard error, and the exit status.
#ifndef TVR_HOST_TVRCIM_ERRORS_H
#define TVR_HOST_TVRCIM_ERRORS_H

#include <stdexcept>
#include <string>

namespace tvrcim {

enum Exit_Status { success = 0, cim_error = 1, usage_error = 2 };

// What was typed is wrong.
class Usage_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What was typed is right, and the answer is an error.
class Cim_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace tvrcim

#endif
