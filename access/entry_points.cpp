#include "access/entry_points.h"

#include "access/libraries.h"

#include <dlfcn.h>

namespace cimple::rm {

// NOLINTBEGIN(bugprone-macro-parentheses): the argument is the name that is defined
#define TVR_DEFINE_ENTRY_POINT(family, name, failure)                                              \
    constinit EntryPoint<decltype(::name)> name{Family::family, #name, failure};
TVR_ENTRY_POINTS(TVR_DEFINE_ENTRY_POINT)
#undef TVR_DEFINE_ENTRY_POINT

namespace {

#define TVR_ADDRESS_ENTRY_POINT(family, name, failure) &name,
constinit thread_local const std::atomic<bool>* callsEnd = nullptr;

constexpr Symbol* entryPoints[] = {TVR_ENTRY_POINTS(TVR_ADDRESS_ENTRY_POINT)};
#undef TVR_ADDRESS_ENTRY_POINT
// NOLINTEND(bugprone-macro-parentheses)

void* inLibrary(Library library, const char* name) noexcept {
    void* handle = libraryHandles[library];
    return handle == nullptr ? nullptr : dlsym(handle, name);
}

void* amongGlobals(const char* name) noexcept {
    return dlsym(RTLD_DEFAULT, name);
}

} // namespace

CallsUntil::CallsUntil(const std::atomic<bool>& stop) noexcept {
    callsEnd = &stop;
}

CallsUntil::~CallsUntil() {
    callsEnd = nullptr;
}

bool callsAreStopped() noexcept {
    return callsEnd != nullptr && *callsEnd;
}

void* Symbol::find() noexcept {
    if (callsAreStopped() && this != &HBA_OpenAdapter && this != &HBA_CloseAdapter) {
        return nullptr;
    }
    void* address = m_address.load(std::memory_order_acquire);
    if (address == nullptr) {
        address = lookUp();
        m_address.store(address, std::memory_order_release);
    }
    return address;
}

void* Symbol::lookUp() const noexcept {
    if (m_family == Family::H && hbaApiMissing == 0) {
        return inLibrary(HBAAPI_LIBRARY, m_name);
    }
    if (lrmApiMissing == 0) {
        return m_family == Family::H ? amongGlobals(m_name) : inLibrary(LRMAPI_LIBRARY, m_name);
    }
    // rmApiMissing leaves no handle to look into.
    void* address = inLibrary(RMAPI_LIBRARY, m_name);
    if (address == nullptr && m_family == Family::L) {
        address = inLibrary(RMAPI_LIBRARY, m_name + 1); // LRM_x stands there as RM_x
    }
    return address;
}

void findEntryPoints() noexcept {
    for (Symbol* entryPoint : entryPoints) {
        entryPoint->find();
    }
}

void resetEntryPoints() noexcept {
    for (Symbol* entryPoint : entryPoints) {
        entryPoint->reset();
    }
}

} // namespace cimple::rm
