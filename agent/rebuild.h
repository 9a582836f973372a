// One rebuild of the adapter maps.
//
// Each graph of instances has a source file and a header of its own. Its creator takes the maps,
// and of what else a rebuild works on what it makes the instances from; it knows nothing of the
// agent. A new graph is called in its turn in rebuild.cpp, and a group in clear_maps.cpp empties
// its maps; creation.h has what creators share.
#ifndef TVR_AGENT_REBUILD_H
#define TVR_AGENT_REBUILD_H

#include "agent/host_facts.h"
#include "agent/instance_maps.h"
#include "common/config_file.h"
#include "model/data.h"

namespace cimple {

// What a rebuild works on, for as long as it runs.
struct Rebuild {
    Instance_Maps& maps;
    Host_Facts& host;
    const Data* data; // null: there is nothing to rebuild from
    const TvrConfigFile& config;
    const TVR_FileLogger& file_log;
};

// Empties the adapter maps and makes their instances anew, from the host down to the ports. 0, or
// TVR_FAILURE for a rebuild that ended early: the maps keep what was made up to there. On the
// refresh thread, under m_ProviderDataMutex.
uint32 updateAdapterMaps(const Rebuild& rebuild);

} // namespace cimple

#endif
