// The entries of the association MI. Traversal is not supported yet.
#include "runtime/cmpi_entry.h"

namespace cimple {

namespace {

CMPIStatus cleanup(CMPIAssociationMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    return clean_up("cleanup", mi, context, terminating);
}

CMPIStatus associators(CMPIAssociationMI*, const CMPIContext*, const CMPIResult*,
                       const CMPIObjectPath*, const char*, const char*, const char*, const char*,
                       const char**) {
    return refuse("associators", CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus associatorNames(CMPIAssociationMI*, const CMPIContext*, const CMPIResult*,
                           const CMPIObjectPath*, const char*, const char*, const char*,
                           const char*) {
    return refuse("associatorNames", CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus references(CMPIAssociationMI*, const CMPIContext*, const CMPIResult*,
                      const CMPIObjectPath*, const char*, const char*, const char**) {
    return refuse("references", CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus referenceNames(CMPIAssociationMI*, const CMPIContext*, const CMPIResult*,
                          const CMPIObjectPath*, const char*, const char*) {
    return refuse("referenceNames", CMPI_RC_ERR_NOT_SUPPORTED);
}

} // namespace

// Later editions have members behind these, which a table of this version doesn't reach.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

CMPIAssociationMIFT association_table(const char* name) noexcept {
    return {table_version, table_version,   name,       cleanup,
            associators,   associatorNames, references, referenceNames};
}

} // namespace cimple
