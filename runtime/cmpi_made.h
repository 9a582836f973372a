// What was made on the way of instances to the object manager, and when it may go.
#ifndef TVR_RUNTIME_CMPI_MADE_H
#define TVR_RUNTIME_CMPI_MADE_H

#include "runtime/string.h"

#include <cmpidt.h>
#include <cmpift.h>

#include <array>
#include <vector>

namespace cimple {

// The CMPI objects of one delivery after the other. An object manager may keep what a setter is
// given as the pointer that it is, and read it only when the object that it went into is handed
// over. So nothing that was put into a path, an instance or an array is released before that object
// has been handed over and released itself: all that was made for one delivery stays until
// `release`, which lets containers go before what is in them, so that memory stays flat over an
// enumeration.
//
// Lives within one scope of the object manager and is used on its thread. The objects are this
// one's to release, nobody else's.
class CMPI_Made {
public:
    explicit CMPI_Made(const CMPIBroker* broker) noexcept : _broker(broker) {}
    ~CMPI_Made();
    CMPI_Made(const CMPI_Made&) = delete;
    CMPI_Made& operator=(const CMPI_Made&) = delete;

    // Takes over an object that was made before all that is going to be put into it.
    template <class Object> void keep(Object* object) { _objects.push_back(handle_of(object)); }
    // The same for an instance that was made of `path`, which is to outlive it.
    void keep(CMPIInstance* instance, const CMPIObjectPath* path);

    // The CMPI form of a text; null if the object manager makes none. Texts that come again and
    // again, as host and class names do in an enumeration, share one object from delivery to
    // delivery.
    CMPIString* string(const String& text);

    // Ends a delivery: what it was about has been handed over.
    void release() noexcept;

private:
    struct Handle {
        void* object;
        void (*release)(void* object);
    };
    template <class Object> static Handle handle_of(Object* object) noexcept {
        return {object, [](void* made) {
                    auto* const typed = static_cast<Object*>(made);
                    typed->ft->release(typed);
                }};
    }

    struct Text {
        String text;
        CMPIString* string = nullptr;
    };
    static constexpr std::size_t text_count = 256;

    const CMPIBroker* _broker;
    std::vector<Handle> _objects;        // containers before what is in them
    std::array<Text, text_count> _texts; // each text has one place, by a hash
};

// One delivery.
class CMPI_Delivery_Scope {
public:
    explicit CMPI_Delivery_Scope(CMPI_Made& made) noexcept : _made(made) {}
    ~CMPI_Delivery_Scope() { _made.release(); }
    CMPI_Delivery_Scope(const CMPI_Delivery_Scope&) = delete;
    CMPI_Delivery_Scope& operator=(const CMPI_Delivery_Scope&) = delete;

private:
    CMPI_Made& _made;
};

} // namespace cimple

#endif
