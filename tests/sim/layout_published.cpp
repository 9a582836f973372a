#include "tests/sim/layout.h"

#ifdef HAVE_HBAAPI_H

#include <ctime>

#include <hbaapi.h>
#include <vendorhbaapi.h>

#define SIZE(type) layout["sizeof " #type] = sizeof(type);
#define FIELD(type, member) layout[#type "." #member] = offsetof(type, member);
#define ENTRY(name) layout[#name] = offsetof(HBA_ENTRYPOINTSV2, name##Handler);

Layout publishedLayout() {
    Layout layout;
#include "tests/sim/layout_list.inc"
    layout["table"] = sizeof(HBA_ENTRYPOINTS);
    layout["tableV2"] = sizeof(HBA_ENTRYPOINTSV2);
    ENTRY(GetAdapterPortAttributes)
    ENTRY(RefreshInformation)
    ENTRY(GetFcpTargetMapping)
    ENTRY(ScsiInquiry)
    ENTRY(ReadCapacity)
    ENTRY(RemoveCallback)
    ENTRY(RegisterForAdapterPortEvents)
    ENTRY(SendRLS)
    return layout;
}

#else

Layout publishedLayout() {
    return {};
}

#endif
