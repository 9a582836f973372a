// The agent over fake adapter libraries, with a clock, paths and a host name of the test's own.
#pragma once

#include "agent/host_name.h"
#include "agent/provider_calls.h"
#include "common/settings.h"
#include "tests/access/fake_fc.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"
#include "tests/runtime/test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace cimple {

// All properties of an instance that aren't NULL, by name, as text; arrays as "{a, b}", references
// as the path of their target. The namespace stands under "".
std::map<std::string, std::string> describe(const Instance* instance);

// What an enumeration delivered.
class Collected {
public:
    Enum_Instances_Handler handler();
    std::size_t size() const { return _instances.size(); }
    const Instance* operator[](std::size_t i) const { return _instances[i].get(); }
    // One property of every instance.
    std::vector<std::string> texts(const std::string& property) const;

    std::vector<Ref<Instance>> _instances;
};

template <class C> Collected enumerated() {
    Collected collected;
    enumerate<C>(collected.handler());
    return collected;
}

template <class C> Collected enumerated_SAN() {
    Collected collected;
    enumerate_SAN<C>(collected.handler());
    return collected;
}

// Calls a function when a certain line is logged, on the thread that logs it. The function must not
// log.
class Log_Hook final : public TVR_LoggerInterface {
public:
    Log_Hook(std::string text, std::function<void()> call)
        : _text(std::move(text)), _call(std::move(call)) {
        CLogger::getInstance().addLogger(this);
    }
    ~Log_Hook() override { CLogger::getInstance().removeLogger(this); }
    void Log(uint32, const char*, uint32, const char* text) override {
        if (text == _text) {
            _call();
        }
    }

private:
    std::string _text;
    std::function<void()> _call;
};

// A thread comes to the gate and stays until it is opened.
class Gate {
public:
    void pass() {
        std::unique_lock lock(_mutex);
        _reached = true;
        _changed.notify_all();
        _changed.wait(lock, [this] { return _open; });
    }
    void wait_until_reached() {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return _reached; });
    }
    void open() {
        const std::lock_guard lock(_mutex);
        _open = true;
        _changed.notify_all();
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _reached = false;
    bool _open = false;
};

class With_Host : public testing::Test {
protected:
    With_Host();
    ~With_Host() override;

    // Makes the fake libraries the ones that the next agent opens.
    void open_libraries();
    // An adapter with ports of which all values are set; `number` is part of most.
    static fake::Adapter adapter(uint32 number, uint32 ports = 1);

    fake::Libraries& libraries;
    TempDir directory; // with "etc" and "proc" below
    Test_Clock clock{_start += 24 * 3'600'000'000};

private:
    // A day later for each test, behind the time limits that another has left in the process.
    static inline uint64 _start = 1'000'000'000'000'000;
    Settings _settings_before;
    static fake::Libraries& find_libraries();
};

// With an agent that a provider has loaded.
class With_Agent : public With_Host {
protected:
    With_Agent();
    ~With_Agent() override;

    void load();
    void unload();
    // Enumerates to the end of a refresh.
    void refresh();
    void wait_for_end();
    // Holds a refresh at the gate, in an entry point.
    void stop_at(Gate& gate, const std::string& entry_point = "HBA_GetNumberOfAdapters");
    int calls(const char* entry_point);
    std::size_t logged(const std::string& text);
    // The log's lines that are among `lines`, in the order in which they came, up to the last one.
    std::vector<std::string> sequence(const std::vector<std::string>& lines);

    ProviderAgent* agent = nullptr;
    LogCapture log;

private:
    bool _loaded = false;
};

// The fake host name is "host.example" at 192.0.2.7; tests may change it.
extern bool host_has_name;
extern bool host_is_resolved;

} // namespace cimple
