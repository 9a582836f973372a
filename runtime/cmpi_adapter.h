// Between an object manager and a class provider: the static block and the factory body of a class,
// and the adapter that turns CMPI calls into calls of the provider's dispatcher.
#ifndef TVR_RUNTIME_CMPI_ADAPTER_H
#define TVR_RUNTIME_CMPI_ADAPTER_H

#include "runtime/cmpi_filters.h"
#include "runtime/provider.h"
#include "runtime/thread.h"

#include <cmpidt.h>
#include <cmpift.h>

#include <atomic>

namespace cimple {

class CMPI_Adapter;

// What an object manager holds of one class: function tables and MIs of the four kinds. Each MI's
// `hdl` is the block.
struct CMPI_Static_Content {
    static constexpr std::size_t name_size = 256;

    uint32 magic;                       // tells a live adapter from an ended one in a dump
    std::atomic<CMPI_Adapter*> adapter; // null while there is none

    CMPIInstanceMIFT instance_ft;
    CMPIMethodMIFT method_ft;
    CMPIIndicationMIFT indication_ft;
    CMPIAssociationMIFT association_ft;

    CMPIInstanceMI instance_mi;
    CMPIMethodMI method_mi;
    CMPIAssociationMI association_mi;
    CMPIIndicationMI indication_mi;

    // The names that the tables point to: the kind's word followed by the provider's name.
    char instance_name[name_size];
    char method_name[name_size];
    char indication_name[name_size];
    char association_name[name_size];
};

// The block of one class provider, shared by all MI kinds of the class. The factories own it: a
// zero-initialised static variable, which outlives any adapter. Its size doesn't depend on the
// edition of the CMPI headers.
struct CMPI_Static_Data : CMPI_Static_Content {
    static constexpr std::size_t reserved_size = 2048;
    static_assert(sizeof(CMPI_Static_Content) < reserved_size);

    unsigned char reserved[reserved_size - sizeof(CMPI_Static_Content)];
};
static_assert(sizeof(CMPI_Static_Data) == CMPI_Static_Data::reserved_size);

// Body of every exported factory. The first call makes the adapter and with it the provider, and
// loads it; each further call, of any kind, adds one to the load count, and each needs a `cleanup`
// of its own. `kind` is 'I' instance, 'M' method, 'A' association or 'N' indication; `mi_out` gets
// the MI of that kind, and stays as it is for any other letter. `provider_name` goes into the names
// of the tables. Returns 0; or -1, with nothing made and `mi_out` as it was, if the provider's
// constructor or `load` throws or memory runs out. Factory and cleanup calls of one class are
// serialised by the object manager.
int cimple_cmpi_adapter(CMPI_Static_Data& static_data, const Registration* registration,
                        const CMPIBroker* broker, const CMPIContext* context,
                        const char* provider_name, char kind, void*& mi_out) noexcept;

// Serves all MI kinds of one class; lives from the first factory call to the cleanup that matches
// the last. Requests may come on several threads: the mutex is held across each provider operation,
// so a provider sees one at a time; two classes run in parallel.
//
// No exception reaches the object manager: one that a provider lets pass unwinds the entry (context
// popped, mutex free, instances dropped) and is answered with CMPI_RC_ERR_FAILED.
class CMPI_Adapter : public Provider_Handle {
public:
    // Makes the provider, fills the block and loads the provider, whose load status isn't looked
    // at. Throws what the provider throws, with the block showing no adapter.
    CMPI_Adapter(CMPI_Static_Data& static_data, const Registration* registration,
                 const CMPIBroker* broker, const CMPIContext* context, const char* provider_name);
    ~CMPI_Adapter();

    // The adapter that an MI of the class belongs to; null once it has ended.
    template <class MI> static CMPI_Adapter* of(const MI* mi) noexcept {
        return static_cast<const CMPI_Static_Data*>(mi->hdl)->adapter.load();
    }

    // The broker of the first factory call.
    const CMPIBroker* broker() const noexcept { return _broker; }
    const Meta_Class* meta_class() const noexcept { return _meta_class; }
    // Recursive, so that a call that comes in again on the same thread goes through.
    Mutex& mutex() noexcept { return _mutex; }

    // Who wants the class's indications.
    CMPI_Filters& filters() noexcept { return _filters; }
    // Whether the provider has been told to send indications; under the mutex.
    bool indications_enabled = false;

    // Outstanding MIs.
    uint64 load_count() const noexcept { return _load_count; }
    void add_load() noexcept { ++_load_count; }

    // Takes one MI away; with the last the provider is unloaded and the adapter ends. While unload
    // is not allowed and the object manager isn't terminating nothing happens and the answer is
    // CMPI_RC_DO_NOT_UNLOAD.
    CMPIrc cleanup(bool terminating);
    void set_allow_unload(bool allow) noexcept { _allow_unload = allow; }

private:
    void fill(CMPI_Static_Data& static_data, const char* provider_name) noexcept;
    void withdraw() noexcept;

    CMPI_Static_Data& _static_data;
    const CMPIBroker* _broker;
    std::atomic<uint64> _load_count{1};
    std::atomic<bool> _allow_unload{true};
    const Meta_Class* _meta_class = nullptr;
    Mutex _mutex{true};
    CMPI_Filters _filters;
};

} // namespace cimple

#endif
