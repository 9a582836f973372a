// What a declaration of the class model says about values.
#ifndef TVR_HOST_DECLARED_TYPE_H
#define TVR_HOST_DECLARED_TYPE_H

#include "host/cim_value.h"
#include "schema/mof_reader.h"

namespace tvrhost {

inline Cim_Type declared_type(const tvrmof::Typed& declared) noexcept {
    constexpr Cim_Type types[tvrmof::type_count] = {
        Cim_Type::boolean, Cim_Type::uint8,  Cim_Type::sint8,  Cim_Type::uint16,  Cim_Type::sint16,
        Cim_Type::uint32,  Cim_Type::sint32, Cim_Type::uint64, Cim_Type::sint64,  Cim_Type::real32,
        Cim_Type::real64,  Cim_Type::char16, Cim_Type::string, Cim_Type::datetime};
    if (declared.is_reference) {
        return Cim_Type::reference;
    }
    if (declared.is_embedded_instance() || declared.is_embedded_object()) {
        return Cim_Type::instance;
    }
    return types[static_cast<unsigned>(declared.type)];
}

// True if a value of that form may stand there. An embedded instance may also travel as text.
inline bool fits(const tvrmof::Typed& declared, Cim_Type type, bool array) noexcept {
    const Cim_Type wanted = declared_type(declared);
    return array == declared.is_array &&
           (type == wanted || (wanted == Cim_Type::instance && type == Cim_Type::string));
}

// "uint16" or "string[]".
inline std::string type_text(Cim_Type type, bool array) {
    return std::string(type_name(type)) + (array ? "[]" : "");
}

} // namespace tvrhost

#endif
