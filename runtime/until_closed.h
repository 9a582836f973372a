// Static objects that end when the module is closed, and are left alone when the process ends.
//
// A process may end at any time with other threads still in the module: requests that wait, a
// refresh, a library's callbacks. What they use must last until the last of them is gone, and
// nobody can wait for that. `dlclose` comes when no thread is in the module any more, and then
// nothing of it may stay.
#ifndef TVR_RUNTIME_UNTIL_CLOSED_H
#define TVR_RUNTIME_UNTIL_CLOSED_H

namespace cimple {

// True for the destructors of static objects that run because the module is closed; false for those
// that run because the process ends.
bool module_is_closing() noexcept;

// Storage for such an object.
template <class T> class Until_Closed {
public:
    Until_Closed() : _object() {}
    template <class Argument> explicit Until_Closed(const Argument& argument) : _object(argument) {}
    Until_Closed(const Until_Closed&) = delete;
    Until_Closed& operator=(const Until_Closed&) = delete;
    ~Until_Closed() {
        if (module_is_closing()) {
            _object.~T();
        }
    }

    T& get() noexcept { return _object; }

private:
    union {
        T _object;
    };
};

} // namespace cimple

#endif
