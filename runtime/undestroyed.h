// Storage for a static object whose destructor never runs, so that it serves until the module's
// last instruction. What it owns must be given back by other means.
#ifndef TVR_RUNTIME_UNDESTROYED_H
#define TVR_RUNTIME_UNDESTROYED_H

namespace cimple {

template <class T> union Undestroyed {
    T object;

    constexpr Undestroyed() noexcept : object() {}
    Undestroyed(const Undestroyed&) = delete;
    Undestroyed& operator=(const Undestroyed&) = delete;
    ~Undestroyed() {}
};

} // namespace cimple

#endif
