// Why the module shows fewer ports than the adapter libraries report.
#ifndef TVR_HOST_TVRCIM_ADAPTER_CHECK_H
#define TVR_HOST_TVRCIM_ADAPTER_CHECK_H

#include "host/tvrcim/session.h"

#include <set>
#include <string>
#include <vector>

namespace tvrcim {

// An adapter that is not shown, or a port that is missing on one that is.
struct Left_Out {
    std::string what;
    std::string why;
    bool is_port = false;
    bool is_meant = false; // the module leaves such adapters to others
    bool has_ports = true; // its ports' names could be read, and none of them is shown
};

struct Adapter_Check {
    unsigned reported = 0;
    std::vector<Left_Out> left_out;

    // True if something is left out that ought to be shown.
    bool has_failures() const;
    // One line: how many are left out of how many, and why.
    std::string text() const;
};

// Asks the adapter libraries, as the module does, for every adapter and port, and goes after those
// that are not among the WWPNs shown. To be called while the module is loaded, which has made the
// libraries ready.
//
// What it finds is the state now: a library that answers again is told as such.
//
// Throws Cim_Error if a library is missing without which there are no adapters.
Adapter_Check check_adapters(std::set<std::string> shown);

// For those who found nothing: throws Cim_Error if there are adapters, and the module shows no
// port.
void explain_no_ports(Session& session);

// Tells on standard error what of the host is left out, behind what was printed. Throws Cim_Error
// if that is a failure.
void tell_left_out(Session& session, const std::set<std::string>& shown);

} // namespace tvrcim

#endif
