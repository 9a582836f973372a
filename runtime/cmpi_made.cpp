#include "runtime/cmpi_made.h"

#include <cmpimacs.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace cimple {

namespace {

// A quick hash: length, beginning and end tell most texts apart.
std::size_t hash_of(const String& text) noexcept {
    uint64 words[2] = {0, 0};
    const std::size_t width = text.size() < sizeof(uint64) ? text.size() : sizeof(uint64);
    std::memcpy(&words[0], text.c_str(), width);
    std::memcpy(&words[1], text.c_str() + text.size() - width, width);
    const uint64 mixed = (words[0] * 31 + words[1] + text.size()) * 0x9E3779B97F4A7C15u;
    return mixed >> 32;
}

} // namespace

CMPI_Made::~CMPI_Made() {
    release();
    for (const Text& entry : _texts) {
        if (entry.string != nullptr) {
            CMRelease(entry.string);
        }
    }
}

void CMPI_Made::keep(CMPIInstance* instance, const CMPIObjectPath* path) {
    const auto place = std::find_if(_objects.begin(), _objects.end(),
                                    [&](const Handle& each) { return each.object == path; });
    _objects.insert(place, handle_of(instance));
}

CMPIString* CMPI_Made::string(const String& text) {
    Text& entry = _texts[hash_of(text) % text_count];
    if (entry.string != nullptr) {
        if (entry.text == text) {
            return entry.string;
        }
        keep(entry.string); // it may be in what is to be delivered
        entry.string = nullptr;
    }
    CMPIStatus status{CMPI_RC_OK, nullptr};
    entry.string = CMNewString(_broker, text.c_str(), &status);
    entry.text = text;
    return entry.string;
}

void CMPI_Made::release() noexcept {
    for (const Handle& each : _objects) {
        each.release(each.object);
    }
    _objects.clear();
}

} // namespace cimple
