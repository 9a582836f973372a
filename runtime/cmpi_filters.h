// The namespaces whose clients have asked for the indications of a class.
#ifndef TVR_RUNTIME_CMPI_FILTERS_H
#define TVR_RUNTIME_CMPI_FILTERS_H

#include "runtime/thread.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimple {

// Has a mutex of its own, which a delivery holds to its end: once `remove` has returned, nothing
// goes to that namespace any more. The adapter's mutex would not do, for whoever stops a provider
// holds it while the provider waits for its last delivery. Recursive, since an object manager may
// change filters in the middle of a delivery.
class CMPI_Filters {
public:
    void add(const char* name_space);
    // Takes one filter away; a namespace that has none stays without.
    void remove(const char* name_space);

    // Calls `deliver` with each namespace once, in the order in which they came.
    template <class Deliver> void for_each(Deliver deliver) {
        const Lock lock(_mutex);
        // By index: a delivery may change the filters.
        for (std::size_t i = 0; i < _filters.size(); ++i) {
            const std::string name_space = _filters[i].name_space;
            deliver(name_space.c_str());
        }
    }

private:
    // A namespace, and how many active filters it has.
    struct Entry {
        std::string name_space;
        uint32 count;
    };
    std::vector<Entry>::iterator find(std::string_view name_space);

    std::vector<Entry> _filters;
    Mutex _mutex{true};
};

} // namespace cimple

#endif
