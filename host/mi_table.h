// Loads and cleans up the MIs of the classes, each class with a broker of its own, and keeps a
// class from being cleaned up while a request is in it. No lock is held across a call into the
// module.
#ifndef TVR_HOST_MI_TABLE_H
#define TVR_HOST_MI_TABLE_H

#include "host/broker.h"

#include <array>
#include <condition_variable>
#include <map>
#include <thread>
#include <utility>

namespace tvrhost {

// A factory found by name, or the exported names of a file.
class Module {
public:
    // Throws Start_Error.
    explicit Module(const Options& options);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // Under either exported name of the kind; null if there is none.
    Any_Function factory(const std::string& class_name, Kind kind) const;

private:
    Any_Function find(const std::string& name) const;

    void* _handle = nullptr;
    Factory_Lookup _lookup;
};

class Mi_Table {
    struct Class_State;

public:
    // `side` is what the broker of each class is made from.
    Mi_Table(const Module& module, const Broker_Side& side);
    ~Mi_Table();

    // A request's stay in a class. `mi` is null, with code and message set, if it cannot be served.
    class Entry {
    public:
        Entry(int code, std::string text) : rc(code), message(std::move(text)) {}
        Entry(Mi_Table& table, Class_State& state, void* found)
            : mi(found), _table(&table), _state(&state) {}
        Entry(Entry&& other) noexcept
            : mi(other.mi), rc(other.rc), message(std::move(other.message)),
              _table(std::exchange(other._table, nullptr)), _state(other._state) {}
        ~Entry();

        void* mi = nullptr;
        int rc = 0;
        std::string message;

    private:
        Mi_Table* _table = nullptr;
        Class_State* _state = nullptr;
    };

    bool serves(const std::string& class_name, Kind kind);
    Entry enter(const std::string& class_name, Kind kind);
    int unload(const std::string& class_name, bool terminating);
    void shutdown();

private:
    enum class Phase { idle, loading, cleaning };

    // A request that an up-call makes doesn't wait longer than this for a class that is being
    // loaded, the end of the object manager not longer for requests in flight.
    static constexpr std::chrono::seconds patience{10};

    struct Class_State {
        std::string name;
        std::array<Any_Function, 4> factories{}; // by kind
        std::array<void*, 4> mis{};
        std::vector<Kind> load_order;
        std::unique_ptr<Broker> broker; // from the first factory call to the last cleanup
        Phase phase = Phase::idle;
        std::thread::id loader; // while loading
        std::size_t in_flight = 0;
    };

    static std::size_t index(Kind kind) noexcept;
    Class_State& state_of(const std::string& class_name); // with the lock held
    void end_broker(Class_State& state);
    bool clean_up(Class_State& state, bool terminating, std::unique_lock<std::mutex>& lock,
                  int& rc);
    void* create(Class_State& state, Kind kind);
    CMPIStatus clean_up_mi(Class_State& state, Kind kind, void* mi, bool terminating);
    Named_Values context_entries() const;

    const Module& _module;
    const Broker_Side& _side;
    Books& _books;
    const Options& _options;

    std::mutex _mutex; // guards all below
    std::condition_variable _changed;
    std::map<std::string, std::unique_ptr<Class_State>> _classes;
    std::vector<Class_State*> _load_order; // of classes that have MIs
    std::vector<std::unique_ptr<Broker>> _ended_brokers;
    bool _closed = false;
};

} // namespace tvrhost

#endif
