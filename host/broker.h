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
    std::function<bool(Indication)> deliver; // false if nobody wants it
    std::string owner; // the class that the broker was given to; empty if to none
};

inline Broker_Side& side_of(const CMPIBroker* broker) noexcept {
    return *static_cast<Broker_Side*>(const_cast<void*>(static_cast<const void*>(broker->hdl)));
}

// A broker as a module sees it. Once it has ended every call of it is a fault; the object must live
// as long as somebody might call.
class Broker {
public:
    explicit Broker(Broker_Side side);
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;

    const CMPIBroker* cmpi() const noexcept { return &_cmpi; }
    void end() noexcept;

private:
    Broker_Side _side;
    CMPIBroker _cmpi;
};

} // namespace tvrhost

#endif
