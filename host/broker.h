// The broker side of the object manager: what a module reaches through `CMPIBroker`.
#ifndef TVR_HOST_BROKER_H
#define TVR_HOST_BROKER_H

#include "host/objects.h"

#include <functional>

namespace tvrhost {

// The broker's handle points here.
struct Broker_Side {
    Books& books;
    Object_Manager& manager;
    const Options& options;
    std::function<void(Indication)> deliver;
};

inline Broker_Side& side_of(const CMPIBroker* broker) noexcept {
    return *static_cast<Broker_Side*>(const_cast<void*>(static_cast<const void*>(broker->hdl)));
}

// A broker on those tables; `side` must outlive it.
CMPIBroker make_broker(Broker_Side& side) noexcept;

} // namespace tvrhost

#endif
