// The world wide names of a port: which can be changed, what they are, new ones and older ones.

#include "access/method_wrapper.h"

#include "access/counted_list.h"
#include "access/entry_points.h"
#include "access/library_failure.h"
#include "common/logger.h"
#include "runtime/cancellation.h"
#include "runtime/clock.h"

#include <cstdio>
#include <span>

namespace cimple {

namespace {

constexpr uint32 invalidNewName = libraryFailure(RM_STATUS_ILLEGAL_WWN);

// Of a library that is busy.
constexpr int mostRetries = 300;
constexpr uint64 retryPause = 1'000'000; // microseconds

// Which new name a virtual port has, as the state of a change.
enum DuplicateWWN : uint16 {
    NO_DUPLICATE = 0,
    DUPLICATE_VPORT_WWPN = 1,
    DUPLICATE_VPORT_WWNN = 2,
};

bool isEqual(const HBA_WWN& a, const HBA_WWN& b) noexcept {
    return std::memcmp(a.wwn, b.wwn, sizeof a.wwn) == 0;
}

std::string toColonText(const HBA_WWN& name) {
    char text[TVR_MethodWrapper::hbaNameTextSize];
    const HBA_UINT8* b = name.wwn;
    snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3],
             b[4], b[5], b[6], b[7]);
    return text;
}

// ---- the lines of a state that the library tells

struct StateLines {
    uint32 state;
    const char* first;
    const char* second; // null: none
    const char* third;  // null: none
};

constexpr char untilPowerCycle[] =
    "Volatile names will be active until system power-down or HBA power-cycle";
constexpr char changeNeedsReboot[] = "Reboot required to activate the new setting";
constexpr char changeNeedsReset[] = "Reset required to activate the new setting";
constexpr char isRestored[] = "WWNs restored successfully";

constexpr StateLines readVolatile[] = {
    {RM_WWN_STATE_ACTIVE, "Volatile WWNs are active", nullptr, nullptr},
    {RM_WWN_STATE_NONE, "Volatile WWNs DO NOT EXIST on this adapter", nullptr, nullptr},
};
constexpr StateLines readCurrent[] = {
    {RM_WWN_STATE_CURRENT_VOLATILE, "Current WWNs: Volatile", nullptr, nullptr},
    {RM_WWN_STATE_CURRENT_NON_VOLATILE, "Current WWNs: Non-Volatile", nullptr, nullptr},
};
constexpr StateLines readConfigured[] = {
    {RM_WWN_STATE_NONE, "Configured WWNs DO NOT EXIST", nullptr, nullptr},
    {RM_WWN_STATE_VOLATILE_AFTER_REBOOT,
     "Configured WWNs: Volatile (Activation required: warm reboot)", nullptr, nullptr},
    {RM_WWN_STATE_VOLATILE_AFTER_RESET,
     "Configured WWNs: Volatile (Activation required: adapter restart)", nullptr, nullptr},
    {RM_WWN_STATE_NON_VOLATILE_AFTER_REBOOT,
     "Configured WWNs: Non-Volatile (Activation required: warm reboot)", nullptr, nullptr},
    {RM_WWN_STATE_NON_VOLATILE_AFTER_RESET,
     "Configured WWNs: Non-Volatile (Activation required: adapter restart)", nullptr, nullptr},
};
constexpr StateLines changed[] = {
    {RM_WWN_STATE_VOLATILE_AFTER_REBOOT, changeNeedsReboot, untilPowerCycle, nullptr},
    {RM_WWN_STATE_NON_VOLATILE_AFTER_REBOOT, changeNeedsReboot, nullptr, nullptr},
    {RM_WWN_STATE_VOLATILE_AFTER_RESET, changeNeedsReset, untilPowerCycle, nullptr},
    {RM_WWN_STATE_NON_VOLATILE_AFTER_RESET, changeNeedsReset, nullptr, nullptr},
};
constexpr StateLines restored[] = {
    {RM_WWN_STATE_ACTIVE, "WWNs already active. No Restore needed", nullptr, nullptr},
    {RM_WWN_STATE_VOLATILE_AFTER_REBOOT, isRestored, changeNeedsReboot, untilPowerCycle},
    {RM_WWN_STATE_NON_VOLATILE_AFTER_REBOOT, isRestored, changeNeedsReboot, nullptr},
    {RM_WWN_STATE_VOLATILE_AFTER_RESET, isRestored, "Reset the HBA to activate the new setting",
     untilPowerCycle},
    {RM_WWN_STATE_NON_VOLATILE_AFTER_RESET, isRestored,
     "Please reset the HBA to activate the new setting", nullptr},
};

// Tells the log of a state and hands it on, if it is one of these.
void tellState(uint32 state, std::span<const StateLines> lines, Property<uint16>& output) {
    for (const StateLines& each : lines) {
        if (each.state != state) {
            continue;
        }
        for (const char* line : {each.first, each.second, each.third}) {
            if (line != nullptr) {
                TVR_LOG("%s", line);
            }
        }
        output.set(state);
        return;
    }
}

// Calls the library until it isn't busy any more, or has been asked often enough. An exception out
// of it ends that with the line `failure` and the status at hand.
template <class Call>
RM_STATUS callWhileBusy(Call call, const char* firstRetry, const char* failure) {
    RM_STATUS status = RM_STATUS_ERROR;
    try {
        status = call();
        for (int retry = 0; status == RM_STATUS_WWN_BUSY && retry < mostRetries; ++retry) {
            if (retry == 0) {
                TVR_LOG("%s", firstRetry);
            }
            status = call();
            Clock::get().sleep(retryPause);
        }
    } catch (...) {
        pass_cancellation();
        TVR_LOG("%s", failure);
    }
    return status;
}

// ---- names that virtual ports have

// Longer lists than this are taken for no answer.
constexpr uint32 mostVPortsSearched = 1023;

DuplicateWWN isDuplicateInVPorts(const HBA_WWN& port, const HBA_WWN& newWwpn,
                                 const HBA_WWN& newWwnn) {
    VPortList list;
    if (!list.makeRoom(1, mostVPortsSearched)) {
        return NO_DUPLICATE;
    }
    RM_STATUS status = rm::LRM_VPList(port, list.as<RM_VPORTLIST>());
    if (status == RM_STATUS_MORE_DATA) {
        if (!list.makeRoom(list.count(), mostVPortsSearched)) {
            return NO_DUPLICATE;
        }
        status = rm::LRM_VPList(port, list.as<RM_VPORTLIST>());
    }
    if (status != RM_STATUS_OK || list.count() > mostVPortsSearched) {
        return NO_DUPLICATE;
    }
    for (const RM_VPORTENTRY& entry : list.read()) {
        if (isEqual(entry.wwpn, newWwpn)) {
            return DUPLICATE_VPORT_WWPN;
        }
        if (isEqual(entry.wwnn, newWwnn)) {
            return DUPLICATE_VPORT_WWNN;
        }
    }
    return NO_DUPLICATE;
}

// The last match among the virtual ports of all ports of the host.
DuplicateWWN findDuplicate(const HBA_WWN& newWwpn, const HBA_WWN& newWwnn) {
    DuplicateWWN found = NO_DUPLICATE;
    std::vector<HBA_WWN> searched;
    const uint32 count =
        std::min(rm::RM_GetNumberOfLocalAdapters(), TVR_MethodWrapper::maxVirtualPorts);
    for (uint32 index = 0; index < count; ++index) {
        RM_LOCALHBAARGUMENT argument{};
        argument.adapterIndex = index;
        argument.adapterCount = count;
        RM_LOCALHBAINFO info{};
        if (rm::RM_GetLocalHBAInfo(&argument, &info) != RM_STATUS_OK ||
            TVR_MethodWrapper::isDuplicateEntryInWWPNList(info.port, searched) != 0) {
            continue;
        }
        if (const DuplicateWWN match = isDuplicateInVPorts(info.port, newWwpn, newWwnn);
            match != NO_DUPLICATE) {
            found = match;
        }
    }
    return found;
}

bool isValidNewName(const HBA_WWN& name, const char* what) {
    if (rm::RM_ValidateWwn(&name) != RM_STATUS_ILLEGAL_WWN) {
        return true;
    }
    TVR_LOG("The supplied 'New %s' is not valid", what);
    return false;
}

} // namespace

void TVR_MethodWrapper::GetWWNCapability(const HBA_WWN& port, Property<uint32>& capability,
                                         Property<uint32>& result) {
    result.set(0);
    uint32_t word = 1;
    const RM_STATUS status = rm::LRM_GetWWNCapability(port, &word);
    if (status != RM_STATUS_OK) {
        if (status == RM_STATUS_WWN_NOT_AVAILABLE) {
            TVR_LOG("WWN Management is not available on this HBA");
        }
        TVR_LOG("GetWWNCapability: RM_ReadWWNCapability call failed with error: %d", status);
        result.set(libraryFailure(status));
        return;
    }
    capability.set(word);
    if ((word & RM_WWN_READ_ONLY) != 0) {
        TVR_LOG("Read Only mode: World Wide Name Management is not supported in this mode");
    }
    TVR_LOG((word & RM_WWN_CAN_CHANGE_NON_VOLATILE) != 0 ? "Can change Non-Volatile WWNs"
                                                         : "Cannot change Non-Volatile WWNs");
    TVR_LOG((word & RM_WWN_CAN_CHANGE_VOLATILE) != 0 ? "Can change Volatile WWNs"
                                                     : "Cannot change Volatile WWNs");
    if ((word & RM_WWN_NEEDS_REBOOT) != 0) {
        TVR_LOG("Activation requirement: Reboot");
    }
    if ((word & RM_WWN_NEEDS_RESET) != 0) {
        TVR_LOG("Activation requirement: Reset HBA");
    }
}

void TVR_MethodWrapper::ReadWWN(const HBA_WWN& port, uint32 bank, Property<String>& wwpn,
                                Property<String>& wwnn, Property<uint16>& state,
                                Property<uint32>& result) {
    result.set(0);
    state.set(0);
    HBA_WWN portName{};
    HBA_WWN nodeName{};
    uint32_t told = 0;
    const RM_STATUS status = rm::LRM_ReadWWN(port, bank, &portName, &nodeName, &told);
    if (status != RM_STATUS_OK) {
        if (status == RM_STATUS_WWN_NOT_AVAILABLE) {
            TVR_LOG("WWN Management is NOT AVAILABLE on this adapter");
        } else if (status == RM_STATUS_WWN_BANK_NOT_SUPPORTED && bank == RM_WWN_VOLATILE) {
            TVR_LOG("Volatile WWNs are NOT SUPPORTED on this adapter");
        } else {
            TVR_LOG("ReadWWN: RM_ReadWWN call failed with error: %d", status);
        }
        result.set(libraryFailure(status));
        return;
    }
    switch (bank) {
    case RM_WWN_VOLATILE:
        tellState(told, readVolatile, state);
        break;
    case RM_WWN_NON_VOLATILE:
        TVR_LOG("Non-Volatile WWNs read successfully");
        break;
    case RM_WWN_FACTORY_DEFAULT:
        TVR_LOG("Factory Default WWNs read successfully");
        break;
    case RM_WWN_CURRENT:
        tellState(told, readCurrent, state);
        break;
    case RM_WWN_CONFIGURED:
        tellState(told, readConfigured, state);
        if (told == RM_WWN_STATE_NONE) {
            return;
        }
        break;
    default:
        break;
    }
    const std::string portText = toColonText(portName);
    const std::string nodeText = toColonText(nodeName);
    TVR_LOG("WWPN: %s", portText.c_str());
    TVR_LOG("WWNN: %s", nodeText.c_str());
    wwpn.set(portText);
    wwnn.set(nodeText);
}

void TVR_MethodWrapper::ChangeWWN(const HBA_WWN& port, const HBA_WWN& newWwpn,
                                  const HBA_WWN& newWwnn, uint32 bank, Property<uint16>& state,
                                  Property<uint32>& result) {
    result.set(0);
    if (!isValidNewName(newWwpn, "WWPN") || !isValidNewName(newWwnn, "WWNN")) {
        result.set(invalidNewName);
        return;
    }
    if (const DuplicateWWN duplicate = findDuplicate(newWwpn, newWwnn); duplicate != NO_DUPLICATE) {
        TVR_LOG(duplicate == DUPLICATE_VPORT_WWPN
                    ? "ChangeWWN: Duplication of vport WWPN detected."
                    : "ChangeWWN: Duplication of vport WWNN detected.");
        state.set(duplicate);
        result.set(wwnInUse);
        return;
    }
    TVR_LOG("ChangeWWN operation initiated");
    uint32_t told = 0;
    const RM_STATUS status =
        callWhileBusy([&] { return rm::LRM_ChangeWWN(port, newWwpn, newWwnn, bank, &told); },
                      "Validating new WWNs...", "Error in RM_ChangeWWN");
    if (status == RM_STATUS_OK) {
        TVR_LOG("New WWNs written successfully");
        tellState(told, changed, state);
        return;
    }
    if (status == RM_STATUS_WWN_NOT_AVAILABLE) {
        TVR_LOG("WWN Management is not available on this HBA");
    } else if (status == RM_STATUS_WWN_BANK_NOT_SUPPORTED) {
        TVR_LOG("WWN NOT SUPPORTED");
    }
    TVR_LOG("ChanngeWWN: RM_ChangeWWN call failed with error: %d", status);
    result.set(libraryFailure(status));
}

void TVR_MethodWrapper::RestoreWWN(const HBA_WWN& port, uint32 bank, Property<uint16>& state,
                                   Property<uint32>& result) {
    result.set(0);
    TVR_LOG("RestoreWWN operation initiated.");
    uint32_t told = 0;
    const RM_STATUS status = callWhileBusy([&] { return rm::LRM_RestoreWWN(port, bank, &told); },
                                           "Restoring WWNs...", "Error in RestoreWWN");
    if (status != RM_STATUS_OK) {
        result.set(libraryFailure(status));
        return;
    }
    tellState(told, restored, state);
}

} // namespace cimple
