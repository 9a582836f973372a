// The entries of the indication MI. Delivery is not supported yet.
#include "runtime/cmpi_entry.h"

namespace cimple {

namespace {

CMPIStatus indicationCleanup(CMPIIndicationMI* mi, const CMPIContext* context,
                             CMPIBoolean terminating) {
    return clean_up("indicationCleanup", mi, context, terminating);
}

CMPIStatus enableIndications(CMPIIndicationMI*, const CMPIContext*) {
    return refuse("enableIndications", CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus disableIndications(CMPIIndicationMI*, const CMPIContext*) {
    return refuse("disableIndications", CMPI_RC_ERR_NOT_SUPPORTED);
}

// The argument lists of these differ between the editions of the headers: they take whatever theirs
// asks for.
constexpr auto authorizeFilter = [](CMPIIndicationMI*, auto...) {
    return refuse("authorizeFilter", CMPI_RC_ERR_NOT_SUPPORTED);
};
constexpr auto mustPoll = [](CMPIIndicationMI*, auto...) {
    return refuse("mustPoll", CMPI_RC_ERR_NOT_SUPPORTED);
};
constexpr auto activateFilter = [](CMPIIndicationMI*, auto...) {
    return refuse("activateFilter", CMPI_RC_ERR_NOT_SUPPORTED);
};
constexpr auto deactivateFilter = [](CMPIIndicationMI*, auto...) {
    return refuse("deactivateFilter", CMPI_RC_ERR_NOT_SUPPORTED);
};

} // namespace

// Later editions have members behind these, which a table of this version doesn't reach.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

CMPIIndicationMIFT indication_table(const char* name) noexcept {
    return {table_version,     table_version,     name,           indicationCleanup,
            authorizeFilter,   mustPoll,          activateFilter, deactivateFilter,
            enableIndications, disableIndications};
}

} // namespace cimple
