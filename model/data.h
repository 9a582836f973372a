// The adapter data: everything that the libraries tell of the host's adapters, as a plain tree that
// mirrors the hardware. `Data` owns adapters, an adapter its ports, a port its targets.
#ifndef TVR_MODEL_DATA_H
#define TVR_MODEL_DATA_H

#include "model/adapter.h"
#include "model/port.h"
#include "runtime/type.h"

#include <memory>
#include <vector>

namespace cimple {

// Root of the tree. It is rebuilt whole, so nobody keeps a pointer into it over a rebuild.
// Threads: none of its own; the agent's locks order readers and rebuilds.
class Data {
public:
    // Bounds of what a library is believed: a count above is taken for this many.
    static constexpr uint32 maxAdapters = 4096;

    Data();
    ~Data();
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    // Discovers the adapters anew. Failures end within: an adapter that can't be read is left out,
    // likewise a port of an adapter.
    void buildAdapterData();
    // Discovers the targets of all ports anew. A port whose mapping can't be read has none then.
    void buildSANData();
    // Empties the tree.
    void freeAllData();

    const std::vector<std::unique_ptr<Adapter>>& getAdapters() const noexcept { return m_adapters; }
    // All ports of all adapters, in order of discovery.
    const std::vector<Port*>& getPorts() const noexcept { return m_ports; }
    // At least one adapter is there.
    bool isBuilt() const noexcept { return m_built; }
    // Number of adapters that the library reported, less those left out.
    uint32 getAdapterCount() const noexcept { return m_adapterCount; }

private:
    bool addAdapter(uint32 index);

    std::vector<std::unique_ptr<Adapter>> m_adapters;
    std::vector<Port*> m_ports;
    bool m_built = false;
    uint32 m_adapterCount = 0;
};

} // namespace cimple

#endif
