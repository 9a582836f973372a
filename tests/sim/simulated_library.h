// The simulated library as a caller binds it: opened by file, found by name.
#pragma once

#include "access/rm/rm_api.h"
#include "sim/tvrsim.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

class SimulatedLibrary {
public:
    explicit SimulatedLibrary(const std::string& file) : m_handle(dlopen(file.c_str(), RTLD_NOW)) {
        if (m_handle == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    ~SimulatedLibrary() { dlclose(m_handle); }
    SimulatedLibrary(const SimulatedLibrary&) = delete;
    SimulatedLibrary& operator=(const SimulatedLibrary&) = delete;

    template <class Function> Function* find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(m_handle, name));
    }

private:
    void* m_handle;
};

/// Calls an entry point of the library by its declared type.
#define CALL(library, name) (*(library).find<decltype(name)>(#name))
