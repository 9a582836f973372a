// Reading, changing and restoring the world wide names of a port.
#include "sim/world_wide_names.h"

#include "sim/host.h"
#include "sim/part_reader.h"
#include "sim/restart.h"
#include "sim/rm_behaviour.h"
#include "sim/scenario_names.h"

#include <algorithm>
#include <utility>

namespace tvrsim {

namespace {

bool isSameName(const HBA_WWN& a, const HBA_WWN& b) {
    return std::equal(std::begin(a.wwn), std::end(a.wwn), std::begin(b.wwn));
}

NamePair currentNames(const Port& port) {
    return {port.hba.PortWWN, port.hba.NodeWWN};
}

uint32_t capabilityOf(const NameManagement& names) {
    constexpr uint32_t usual = RM_WWN_CAN_CHANGE_NON_VOLATILE | RM_WWN_CAN_CHANGE_VOLATILE;
    const uint32_t need =
        names.activation == NameActivation::reboot ? RM_WWN_NEEDS_REBOOT : RM_WWN_NEEDS_RESET;
    return names.capability.value_or(usual | need);
}

bool canChange(const NameManagement& names, uint32_t bank) {
    const uint32_t capability = capabilityOf(names);
    return (bank == RM_WWN_VOLATILE && (capability & RM_WWN_CAN_CHANGE_VOLATILE) != 0) ||
           (bank == RM_WWN_NON_VOLATILE && (capability & RM_WWN_CAN_CHANGE_NON_VOLATILE) != 0);
}

uint32_t waitingState(const NameManagement& names, uint32_t bank) {
    if (names.activation == NameActivation::reboot) {
        return bank == RM_WWN_VOLATILE ? RM_WWN_STATE_VOLATILE_AFTER_REBOOT
                                       : RM_WWN_STATE_NON_VOLATILE_AFTER_REBOOT;
    }
    return bank == RM_WWN_VOLATILE ? RM_WWN_STATE_VOLATILE_AFTER_RESET
                                   : RM_WWN_STATE_NON_VOLATILE_AFTER_RESET;
}

/// Gives up names that wait; volatile ones that never took effect are gone.
void stopWaiting(NameManagement& names, const Port& port) {
    if (names.waitingBank == RM_WWN_VOLATILE) {
        names.volatileNames.reset();
        if (names.isVolatileCurrent) {
            names.volatileNames = currentNames(port);
        }
    }
    names.waitingBank.reset();
}

/// Writes names into a bank, where they wait for what makes them current. Answers their state.
uint32_t write(NameManagement& names, const Port& port, uint32_t bank, const NamePair& pair) {
    stopWaiting(names, port);
    (bank == RM_WWN_VOLATILE ? names.volatileNames : names.nonVolatile) = pair;
    names.waitingBank = bank;
    return waitingState(names, bank);
}

void makeCurrent(Adapter& adapter, Port& port, const NamePair& pair) {
    if (currentNames(port) == pair) {
        return;
    }
    const HBA_WWN former = std::exchange(port.hba.NodeWWN, pair.node);
    port.hba.PortWWN = pair.port;
    // The adapter is called as its ports are.
    if (isSameName(adapter.hba.NodeWWN, former) &&
        std::none_of(adapter.ports.begin(), adapter.ports.end(),
                     [&](const Port& each) { return isSameName(each.hba.NodeWWN, former); })) {
        adapter.hba.NodeWWN = pair.node;
    }
    adapter.hasChanged = true;
}

/// Calls work(port, names) for a port with name management, whose banks then hold names.
template <class Work> RM_STATUS withNames(const HBA_WWN& port, Work work) {
    return Host::instance().withPort(port, [&](Adapter&, Port& found) -> RM_STATUS {
        if (!found.names) {
            return RM_STATUS_WWN_NOT_AVAILABLE;
        }
        NameManagement& names = *found.names;
        for (auto* const bank : {&names.factoryDefault, &names.nonVolatile}) {
            if (!*bank) {
                *bank = currentNames(found);
            }
        }
        return work(found, names);
    });
}

bool isReadOnly(const NameManagement& names) {
    return (capabilityOf(names) & RM_WWN_READ_ONLY) != 0;
}

/// Whether a change is to be called again; counts down the calls that are.
bool isBusy(NameManagement& names) {
    return names.busyTimes > 0 && names.busyTimes-- > 0;
}

/// The names of a bank and their state; no names with state 9. Nothing for a bank that is none.
struct BankContent {
    NamePair pair;
    uint32_t state = RM_WWN_STATE_NONE;
};
std::optional<BankContent> contentOf(const Port& port, const NameManagement& names, uint32_t bank) {
    const uint32_t current =
        names.isVolatileCurrent ? RM_WWN_STATE_CURRENT_VOLATILE : RM_WWN_STATE_CURRENT_NON_VOLATILE;
    switch (bank) {
    case RM_WWN_VOLATILE:
        if (!canChange(names, bank)) {
            return std::nullopt;
        }
        if (!names.volatileNames) {
            return BankContent{};
        }
        return BankContent{*names.volatileNames, names.waitingBank == RM_WWN_VOLATILE
                                                     ? waitingState(names, bank)
                                                     : RM_WWN_STATE_ACTIVE};
    case RM_WWN_NON_VOLATILE:
        return BankContent{*names.nonVolatile, current};
    case RM_WWN_FACTORY_DEFAULT:
        return BankContent{*names.factoryDefault, current};
    case RM_WWN_CURRENT:
        return BankContent{currentNames(port), current};
    case RM_WWN_CONFIGURED:
        if (!names.waitingBank) {
            return BankContent{};
        }
        return BankContent{*names.waitingBank == RM_WWN_VOLATILE ? *names.volatileNames
                                                                 : *names.nonVolatile,
                           waitingState(names, *names.waitingBank)};
    default:
        return std::nullopt;
    }
}

NameManagement usualNameManagement() {
    return {};
}

} // namespace

bool operator==(const NamePair& a, const NamePair& b) {
    return isSameName(a.port, b.port) && isSameName(a.node, b.node);
}

void readNameManagement(ObjectReader& port, std::optional<NameManagement>& names) {
    readPart(port, "wwnManagement", names, usualNameManagement,
             [](ObjectReader& reader, NameManagement& read) {
                 reader.oneOf("activation", read.activation, nameActivationWords);
                 if (const Json* word = reader.find("capability")) {
                     read.capability.reset();
                     if (!word->is_null()) {
                         read.capability =
                             readMask(*word, reader.pathOf("capability"), nameCapabilityWords);
                     }
                 }
                 reader.number("busyTimes", read.busyTimes);
                 if (const Json* factory = reader.find("factoryDefault")) {
                     ObjectReader pair(*factory, reader.pathOf("factoryDefault"));
                     read.factoryDefault.emplace();
                     pair.wwn("portWWN", read.factoryDefault->port);
                     pair.wwn("nodeWWN", read.factoryDefault->node);
                     pair.finish();
                 }
             });
    if (names && (port.find("portWWN") != nullptr || port.find("nodeWWN") != nullptr)) {
        names->nonVolatile.reset();
        names->volatileNames.reset();
        names->waitingBank.reset();
        names->isVolatileCurrent = false;
    }
}

void activateNames(Adapter& adapter, Port& port, Restart how) {
    if (!port.names) {
        return;
    }
    NameManagement& names = *port.names;
    if (how == Restart::powerCycle && names.volatileNames) {
        names.volatileNames.reset();
        if (names.waitingBank == RM_WWN_VOLATILE) {
            names.waitingBank.reset();
        }
        if (names.isVolatileCurrent) {
            names.waitingBank = RM_WWN_NON_VOLATILE;
        }
    }
    if (!names.waitingBank ||
        (how == Restart::reset && names.activation == NameActivation::reboot)) {
        return;
    }
    names.isVolatileCurrent = *names.waitingBank == RM_WWN_VOLATILE;
    names.waitingBank.reset();
    makeCurrent(adapter, port, names.isVolatileCurrent ? *names.volatileNames : *names.nonVolatile);
    if (!names.isVolatileCurrent) {
        names.volatileNames.reset();
    }
}

namespace behaviour {

RM_STATUS GetWWNCapability(HBA_WWN port, uint32_t* capability) {
    return withNames(port, [=](Port&, NameManagement& names) {
        if (capability == nullptr) {
            return RM_STATUS_ERROR;
        }
        *capability = capabilityOf(names);
        return RM_STATUS_OK;
    });
}

RM_STATUS ReadWWN(HBA_WWN port, uint32_t bank, HBA_WWN* wwpn, HBA_WWN* wwnn, uint32_t* state) {
    return withNames(port, [=](Port& found, NameManagement& names) {
        if (wwpn == nullptr || wwnn == nullptr || state == nullptr) {
            return RM_STATUS_ERROR;
        }
        const auto content = contentOf(found, names, bank);
        if (!content) {
            return RM_STATUS_WWN_BANK_NOT_SUPPORTED;
        }
        *wwpn = content->pair.port;
        *wwnn = content->pair.node;
        *state = content->state;
        return RM_STATUS_OK;
    });
}

RM_STATUS ChangeWWN(HBA_WWN port, HBA_WWN wwpn, HBA_WWN wwnn, uint32_t bank, uint32_t* state) {
    return withNames(port, [=](const Port& found, NameManagement& names) {
        if (state == nullptr) {
            return RM_STATUS_ERROR;
        }
        if (isReadOnly(names)) {
            return RM_STATUS_WWN_NOT_AVAILABLE;
        }
        if (!canChange(names, bank)) {
            return RM_STATUS_WWN_BANK_NOT_SUPPORTED;
        }
        if (!isValidName(wwpn) || !isValidName(wwnn)) {
            return RM_STATUS_ILLEGAL_WWN;
        }
        if (isBusy(names)) {
            return RM_STATUS_WWN_BUSY;
        }
        *state = write(names, found, bank, {wwpn, wwnn});
        return RM_STATUS_OK;
    });
}

// The banks that names are restored from have numbers of their own: 0 is the factory's.
RM_STATUS RestoreWWN(HBA_WWN port, uint32_t bank, uint32_t* state) {
    constexpr uint32_t factoryDefault = 0;
    constexpr uint32_t nonVolatile = 1;
    return withNames(port, [=](const Port& found, NameManagement& names) {
        if (state == nullptr) {
            return RM_STATUS_ERROR;
        }
        if (isReadOnly(names)) {
            return RM_STATUS_WWN_NOT_AVAILABLE;
        }
        // Where non-volatile names are fixed, the factory's come back as volatile ones.
        const uint32_t into = bank == nonVolatile || canChange(names, RM_WWN_NON_VOLATILE)
                                  ? RM_WWN_NON_VOLATILE
                                  : RM_WWN_VOLATILE;
        if (bank > nonVolatile || (bank == factoryDefault && !canChange(names, into))) {
            return RM_STATUS_WWN_BANK_NOT_SUPPORTED;
        }
        if (isBusy(names)) {
            return RM_STATUS_WWN_BUSY;
        }
        const NamePair pair = bank == nonVolatile ? *names.nonVolatile : *names.factoryDefault;
        if (currentNames(found) == pair) {
            stopWaiting(names, found);
            if (into == RM_WWN_NON_VOLATILE) {
                names.nonVolatile = pair;
            }
            *state = RM_WWN_STATE_ACTIVE;
        } else {
            *state = write(names, found, into, pair);
        }
        return RM_STATUS_OK;
    });
}

} // namespace behaviour

} // namespace tvrsim
