// What a link event costs the HBA API's thread, and how fast alerts reach a client.
#include "access/rm/hba_api.h"
#include "bench/simulated_host.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* name_space = "root/tavrin";
constexpr const char* alert_class = "TVRHBA_AlertIndication";

void flap(const std::string& port, long times) {
    tvrbench::control(R"({"linkEvents": {"port": ")" + port +
                      R"(", "type": "offline", "alternate": true, "times": )" +
                      std::to_string(times) + "}}");
}

std::string first_port(tvrhost::Object_Manager& manager) {
    return manager.enumerate_instances(name_space, "TVRHBA_FCPort")
        .instances.at(0)["DeviceID"]
        .as_string();
}

#define TVR_SIMULATED(name) reinterpret_cast<decltype(&(name))>(tvrbench::simulated(#name))

// Listens to a port behind those that have registered before, on the library's thread.
class Listener {
public:
    explicit Listener(const std::string& port) {
        HBA_WWN name{};
        for (std::size_t i = 0; i < sizeof name; ++i) {
            name.wwn[i] = static_cast<HBA_UINT8>(std::stoul(port.substr(2 * i, 2), nullptr, 16));
        }
        char adapter[256] = "";
        TVR_SIMULATED(HBA_GetAdapterName)(0, adapter);
        const HBA_HANDLE handle = TVR_SIMULATED(HBA_OpenAdapter)(adapter);
        TVR_SIMULATED(HBA_RegisterForAdapterPortEvents)(hear, this, handle, name, &_handle);
        TVR_SIMULATED(HBA_CloseAdapter)(handle);
    }
    ~Listener() { TVR_SIMULATED(HBA_RemoveCallback)(_handle); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // From the first to the last of so many events, which are awaited.
    double seconds(long events) {
        while (_heard < events) {
            std::this_thread::yield();
        }
        _heard = 0;
        return std::chrono::duration<double>(_last - _first).count();
    }

private:
    static void hear(void* data, HBA_WWN, HBA_UINT32, HBA_UINT32) {
        auto& self = *static_cast<Listener*>(data);
        self._last = Clock::now();
        if (self._heard == 0) {
            self._first = self._last;
        }
        ++self._heard;
    }

    HBA_CALLBACKHANDLE _handle = nullptr;
    std::atomic<long> _heard{0};
    Clock::time_point _first;
    Clock::time_point _last;
};

// The library's thread from one event to the next: by itself (0), and with the module's callback
// (1), whose part is the difference. The worker is busy meanwhile, and loses what it can't take.
void link_event(benchmark::State& state) {
    constexpr long events = 100'000;
    tvrbench::set_host(1);
    const std::unique_ptr<tvrhost::Object_Manager> manager = tvrbench::module_manager();
    const std::string port = first_port(*manager);
    tvrhost::Subscription subscription;
    if (state.range(0) != 0) {
        subscription =
            manager->subscribe(name_space, alert_class, [](const tvrhost::Indication&) {});
    }
    Listener listener(port);
    for ([[maybe_unused]] auto _ : state) {
        flap(port, events);
        state.SetIterationTime(listener.seconds(events) / events);
    }
}
BENCHMARK(link_event)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kNanosecond)
    ->UseManualTime()
    ->Iterations(20);

// From an event to the client, and how many alerts a second reach it when they come at once.
void alert_to_client(benchmark::State& state) {
    tvrbench::set_host(1);
    const std::unique_ptr<tvrhost::Object_Manager> manager = tvrbench::module_manager();
    const std::string port = first_port(*manager);
    std::atomic<long> heard{0};
    const tvrhost::Subscription subscription =
        manager->subscribe(name_space, alert_class, [&](const tvrhost::Indication&) { ++heard; });
    for ([[maybe_unused]] auto _ : state) {
        heard = 0;
        flap(port, state.range(0));
        while (heard < state.range(0)) {
            std::this_thread::yield();
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(alert_to_client)->Arg(1)->Arg(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
