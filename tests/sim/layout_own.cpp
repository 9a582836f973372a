#include "tests/sim/layout.h"

#include "sim/vendor_table.h"

#define SIZE(type) layout["sizeof " #type] = sizeof(type);
#define FIELD(type, member) layout[#type "." #member] = offsetof(type, member);

Layout ownLayout() {
    using tvrsim::VendorTable;
    using tvrsim::VendorTableV2;
    Layout layout;
#include "tests/sim/layout_list.inc"
    layout["table"] = sizeof(VendorTable);
    layout["tableV2"] = sizeof(VendorTableV2);
    // The second table has a base: its addresses are taken from an object.
    VendorTableV2 table = {};
    const auto place = [&table](const auto& member) {
        return static_cast<size_t>(reinterpret_cast<const char*>(&member) -
                                   reinterpret_cast<const char*>(&table));
    };
    layout["GetAdapterPortAttributes"] = place(table.getAdapterPortAttributes);
    layout["RefreshInformation"] = place(table.refreshInformation);
    layout["GetFcpTargetMapping"] = place(table.getFcpTargetMapping);
    layout["ScsiInquiry"] = place(table.sendScsiInquiry);
    layout["ReadCapacity"] = place(table.sendReadCapacity);
    layout["RemoveCallback"] = place(table.removeCallback);
    layout["RegisterForAdapterPortEvents"] = place(table.registerForAdapterPortEvents);
    layout["SendRLS"] = place(table.sendRls);
    return layout;
}
