// The entries of the method MI.
#include "runtime/cmpi_conversion.h"
#include "runtime/cmpi_entry.h"

#include <cmpimacs.h>

namespace cimple {

namespace {

constexpr Status_Answer invoke_answers[] = {
    {INVOKE_METHOD_FAILED, CMPI_RC_ERR_FAILED},
    {INVOKE_METHOD_UNSUPPORTED, CMPI_RC_ERR_NOT_SUPPORTED},
    {INVOKE_METHOD_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
};

Outcome invoke(const CMPI_Adapter& adapter, const CMPIResult* result, const CMPIObjectPath* path,
               const char* method_name, const CMPIArgs* in, CMPIArgs* out) {
    const Meta_Class* meta_class = find_class(adapter, path);
    if (meta_class == nullptr) {
        return {CMPI_RC_ERR_FAILED, "MetaClass not found"};
    }
    const Meta_Feature* feature =
        method_name == nullptr ? nullptr : find_feature(meta_class, method_name, METHODS);
    if (feature == nullptr) {
        return {CMPI_RC_ERR_METHOD_NOT_FOUND, method_name};
    }

    Instance* made = nullptr;
    CMPIrc rc = make_cimple_reference(adapter.broker(), meta_class, path, made);
    const Ref<> reference(made);
    if (rc != CMPI_RC_OK) {
        return {rc, "CIMPLE reference creation failed"};
    }
    made = nullptr;
    rc = make_cimple_method(adapter.broker(), meta_class, &as_method(*feature), path, in, made);
    const Ref<> method(made);
    if (rc != CMPI_RC_OK) {
        return {rc, "CIMPLE make_cimple_method function failed"};
    }

    // A status without an answer of its own, also that of a method which the provider doesn't
    // know, counts as a finished call.
    const int status = adapter.call(OPERATION_INVOKE_METHOD, reference.get(), method.get());
    rc = answer_to(invoke_answers, status);
    if (rc != CMPI_RC_OK) {
        return rc;
    }
    CMPIData returned{};
    rc = make_CMPI_method(adapter.broker(), name_space_of(path), method.get(), out, returned.value,
                          returned.type);
    if (rc != CMPI_RC_OK) {
        return rc;
    }
    CMReturnData(result, &returned.value, returned.type);
    CMReturnDone(result);
    return CMPI_RC_OK;
}

CMPIStatus cleanup(CMPIMethodMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    return clean_up("cleanup", mi, context, terminating);
}

CMPIStatus invokeMethod(CMPIMethodMI* mi, const CMPIContext* context, const CMPIResult* result,
                        const CMPIObjectPath* path, const char* method_name, const CMPIArgs* in,
                        CMPIArgs* out) {
    return in_frame("invokeMethod", mi, context, [&](const CMPI_Adapter& adapter) {
        return invoke(adapter, result, path, method_name, in, out);
    });
}

} // namespace

// Later editions may have members behind these, which a table of this version doesn't reach.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

CMPIMethodMIFT method_table(const char* name) noexcept {
    return {table_version, table_version, name, cleanup, invokeMethod};
}

} // namespace cimple
