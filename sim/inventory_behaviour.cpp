// What the RM library tells about the parts of an adapter.
#include "sim/host.h"

#include "sim/attribute_buffer.h"
#include "sim/rm_behaviour.h"
#include "sim/vpd.h"

#include <cstring>

namespace tvrsim::behaviour {

namespace {

/// Answers a call for an array of driver parameters, whose count word is its capacity.
RM_STATUS answerParameters(const std::optional<DriverParams>& parameters, RM_DRIVERPARAM* out,
                           uint32_t* count) {
    if (!parameters) {
        return RM_STATUS_NOT_SUPPORTED;
    }
    if (count == nullptr) {
        return RM_STATUS_ERROR;
    }
    const uint32_t room = *count;
    const auto present = static_cast<uint32_t>(parameters->entries.size());
    if (room < present || (out == nullptr && present > 0)) {
        *count = parameters->need.value_or(present);
        return parameters->tooSmallStatus;
    }
    for (uint32_t i = 0; i < present; ++i) {
        std::memcpy(out + i, &parameters->entries[i].record, sizeof *out);
    }
    *count = parameters->count.value_or(present);
    return RM_STATUS_OK;
}

} // namespace

RM_STATUS GetVPD(HBA_WWN port, void* buffer, uint32_t* size) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        const auto& vpd = found.inventory.vpd;
        return vpd ? answerSized(packVpd(*vpd), buffer, size) : RM_STATUS_NOT_SUPPORTED;
    });
}

RM_STATUS GetSffData(HBA_WWN port, void* buffer, uint32_t* size) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        const auto& data = found.inventory.transceiver;
        return data ? answerSized({reinterpret_cast<const char*>(&*data), sizeof *data}, buffer,
                                  size)
                    : RM_STATUS_NOT_SUPPORTED;
    });
}

RM_STATUS DiagGetLoadListParams(HBA_WWN port, RM_LOADLIST* list) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        const auto& flash = found.inventory.flash;
        if (!flash) {
            return RM_STATUS_NOT_SUPPORTED;
        }
        if (list == nullptr) {
            return RM_STATUS_ERROR;
        }
        list->count = flash->count.value_or(static_cast<uint32_t>(flash->images.size() + 1));
        std::copy(flash->images.begin(), flash->images.end(), list->entry);
        return RM_STATUS_OK;
    });
}

RM_STATUS DiagReadPCIRegistersV2(HBA_WWN port, RM_PCIREGISTERS* registers) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        if (!found.inventory.pciRegisters) {
            return RM_STATUS_NOT_SUPPORTED;
        }
        if (registers == nullptr) {
            return RM_STATUS_ERROR;
        }
        *registers = *found.inventory.pciRegisters;
        return RM_STATUS_OK;
    });
}

RM_STATUS GetDriverParams(HBA_WWN port, RM_DRIVERPARAM* params, uint32_t* count) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        return answerParameters(found.inventory.driverParameters, params, count);
    });
}

RM_STATUS GetDriverParamsGlobal(HBA_WWN port, RM_DRIVERPARAM* params, uint32_t* count) {
    Host& host = Host::instance();
    return host.withPort(port, [&](Adapter&, Port&) {
        return answerParameters(host.globalDriverParameters(), params, count);
    });
}

} // namespace tvrsim::behaviour
