#include "runtime/cmpi_adapter.h"

#include "runtime/cmpi_conversion.h"
#include "runtime/cmpi_entry.h"
#include "runtime/log.h"

#include <cstdio>
#include <memory>

namespace cimple {

namespace {

constexpr uint32 live_magic = 0x5DE2B131;
constexpr uint32 ended_magic = 0xDDDDDDDD;

struct Rc_Name {
    int rc;
    const char* name;
};

// By number: not every edition of the headers names them all.
constexpr Rc_Name rc_names[] = {
    {0, "CMPI_RC_OK"},
    {2, "CMPI_RC_ERR_ACCESS_DENIED"},
    {3, "CMPI_RC_ERR_INVALID_NAMESPACE"},
    {4, "CMPI_RC_ERR_INVALID_PARAMETER"},
    {5, "CMPI_RC_ERR_INVALID_CLASS"},
    {6, "CMPI_RC_ERR_NOT_FOUND"},
    {7, "CMPI_RC_ERR_NOT_SUPPORTED"},
    {8, "CMPI_RC_ERR_CLASS_HAS_CHILDREN"},
    {9, "CMPI_RC_ERR_CLASS_HAS_INSTANCES"},
    {10, "CMPI_RC_ERR_INVALID_SUPERCLASS"},
    {11, "CMPI_RC_ERR_ALREADY_EXISTS"},
    {12, "CMPI_RC_ERR_NO_SUCH_PROPERTY"},
    {13, "CMPI_RC_ERR_TYPE_MISMATCH"},
    {14, "CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED"},
    {15, "CMPI_RC_ERR_INVALID_QUERY"},
    {16, "CMPI_RC_ERR_METHOD_NOT_AVAILABLE"},
    {17, "CMPI_RC_ERR_METHOD_NOT_FOUND"},
    {50, "CMPI_RC_DO_NOT_UNLOAD"},
    {51, "CMPI_RC_NEVER_UNLOAD"},
    {60, "CMPI_RC_ERR_INVALID_HANDLE"},
    {61, "CMPI_RC_ERR_INVALID_DATA_TYPE"},
    {100, "CMPI_RC_ERROR_SYSTEM"},
    {200, "CMPI_RC_ERROR"},
};

const char* rc_name(int rc) noexcept {
    for (const Rc_Name& entry : rc_names) {
        if (entry.rc == rc) {
            return entry.name;
        }
    }
    return "CMPI_RC_ERR_FAILED";
}

void set_name(char (&name)[CMPI_Static_Content::name_size], const char* kind,
              const char* provider_name) noexcept {
    std::snprintf(name, sizeof(name), "%s%s", kind, provider_name);
}

// Makes an MI of a kind point to its block and table, and gives its address.
template <class MI, class Table>
void* set_mi(CMPI_Static_Data& static_data, MI& mi, Table& table) noexcept {
    mi.hdl = &static_data;
    mi.ft = &table;
    return &mi;
}

} // namespace

// Entries

Trace::Trace(const char* function, Call_Site where) noexcept : _function(function), _where(where) {
    log(LL_DBG, _where.file, _where.line, "enter: %s()", _function);
}

Trace::~Trace() {
    if (_outcome.detail == nullptr) {
        log(LL_DBG, _where.file, _where.line, "return: %s(): %s", _function,
            rc_name(_outcome.logged));
    } else {
        log(LL_DBG, _where.file, _where.line, "return: %s(): %s: %s", _function,
            rc_name(_outcome.logged), _outcome.detail);
    }
}

void log_exception(const char* function, const char* what) noexcept {
    TVR_RUNTIME_LOG(LL_ERR, "exception: %s(): %s", function, what);
}

const Meta_Class* find_class(const CMPI_Adapter& adapter, const CMPIObjectPath* path) {
    return find_meta_class(adapter.get_repository(), class_name_of(path));
}

Made make_model(const CMPI_Adapter& adapter, const Meta_Class* meta_class,
                const CMPIObjectPath* path) {
    Instance* model = nullptr;
    const CMPIrc rc = make_cimple_reference(adapter.broker(), meta_class, path, model);
    return {Ref<>(model), rc};
}

// Life of the adapter

CMPI_Adapter::CMPI_Adapter(CMPI_Static_Data& static_data, const Registration* registration,
                           const CMPIBroker* broker, const CMPIContext* context,
                           const char* provider_name)
    : Provider_Handle(registration), _static_data(static_data), _broker(broker) {
    Trace trace("CMPI_Adapter");
    CMPI_Context_Scope scope(broker, context);
    fill(static_data, provider_name);
    try {
        call(OPERATION_LOAD);
        _meta_class = get_meta_class();
    } catch (...) {
        withdraw();
        throw;
    }
    trace.set(CMPI_RC_OK);
}

CMPI_Adapter::~CMPI_Adapter() {
    withdraw();
    TVR_RUNTIME_LOG(LL_DBG, "%s()", "~CMPI_Adapter");
}

void CMPI_Adapter::fill(CMPI_Static_Data& static_data, const char* provider_name) noexcept {
    set_name(static_data.instance_name, "instance", provider_name);
    set_name(static_data.method_name, "method", provider_name);
    set_name(static_data.indication_name, "indication", provider_name);
    set_name(static_data.association_name, "association", provider_name);
    static_data.instance_ft = instance_table(static_data.instance_name);
    static_data.method_ft = method_table(static_data.method_name);
    static_data.indication_ft = indication_table(static_data.indication_name);
    static_data.association_ft = association_table(static_data.association_name);
    static_data.magic = live_magic;
    static_data.adapter = this;
}

void CMPI_Adapter::withdraw() noexcept {
    _static_data.magic = ended_magic;
    _static_data.adapter = nullptr;
}

CMPIrc CMPI_Adapter::cleanup(bool terminating) {
    if (!terminating && !_allow_unload) {
        TVR_RUNTIME_LOG(LL_DBG, "cleanup do not unload");
        return CMPI_RC_DO_NOT_UNLOAD;
    }
    if (--_load_count != 0) {
        TVR_RUNTIME_LOG(LL_DBG, "cleanup decrement");
        return CMPI_RC_OK;
    }
    const std::unique_ptr<CMPI_Adapter> last(this); // ends also if unload throws
    call(OPERATION_UNLOAD);
    TVR_RUNTIME_LOG(LL_DBG, "cleanup unload");
    return CMPI_RC_OK;
}

int cimple_cmpi_adapter(CMPI_Static_Data& static_data, const Registration* registration,
                        const CMPIBroker* broker, const CMPIContext* context,
                        const char* provider_name, char kind, void*& mi_out) noexcept {
    const Cancel_Later until_made;
    if (CMPI_Adapter* adapter = static_data.adapter) {
        adapter->add_load();
    } else {
        try {
            // The block holds it from here on; the last cleanup ends it.
            auto made = std::make_unique<CMPI_Adapter>(static_data, registration, broker, context,
                                                       provider_name);
            static_cast<void>(made.release());
        } catch (const std::exception& error) {
            log_exception("cimple_cmpi_adapter", error.what());
            return -1;
        } catch (...) {
            log_exception("cimple_cmpi_adapter", "unknown");
            return -1;
        }
    }
    switch (kind) {
    case 'I':
        mi_out = set_mi(static_data, static_data.instance_mi, static_data.instance_ft);
        break;
    case 'M':
        mi_out = set_mi(static_data, static_data.method_mi, static_data.method_ft);
        break;
    case 'A':
        mi_out = set_mi(static_data, static_data.association_mi, static_data.association_ft);
        break;
    case 'N':
        mi_out = set_mi(static_data, static_data.indication_mi, static_data.indication_ft);
        break;
    default:
        break;
    }
    return 0;
}

} // namespace cimple
