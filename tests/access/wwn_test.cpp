// World wide names and virtual ports as the RM library is asked for them.
#include "access/method_wrapper.h"
#include "tests/access/access_session.h"
#include "tests/runtime/test_clock.h"

#include <cstring>

namespace cimple {
namespace {

using W = TVR_MethodWrapper;

// Names of ports are 10:00:00:00:00:00:00:xx, of nodes 20:00:00:00:00:00:00:xx.
HBA_WWN name_of(uint8 kind, const std::string& last) {
    return {{kind, 0, 0, 0, 0, 0, 0, static_cast<uint8>(std::stoul(last, nullptr, 16))}};
}

class World_Wide_Names : public Access_Session {
protected:
    void SetUp() override {
        Access_Session::SetUp();
        libraries->adapters.resize(2);
        for (const std::size_t i : {0, 1}) {
            libraries->adapters[i].ports.resize(1);
            port(i).record.PortWWN = name_of(0x10, i == 0 ? "0a" : "0b");
            port(i).record.NodeWWN = name_of(0x20, "cd");
        }
        set_up_names();
        set_up_virtual_ports();
    }

private:
    fake::Port& port(std::size_t index) { return libraries->adapters[index].ports[0]; }
    void tell(std::ostream& answer) {
        answer << result.value << (state.is_null() ? "" : " state " + std::to_string(state.value));
    }
    void set_up_names() {
        on_call("capability", [this](const auto&, std::ostream& answer) {
            Property<uint32> capability{0, 1};
            W::GetWWNCapability(local, capability, result);
            answer << result.value
                   << (capability.is_null() ? "" : " word " + std::to_string(capability.value));
        });
        on_call("read", [this](const auto& words, std::ostream& answer) {
            Property<String> wwpn{{}, 1};
            Property<String> wwnn{{}, 1};
            W::ReadWWN(local, number(words, 0), wwpn, wwnn, state, result);
            tell(answer);
            if (!wwpn.is_null()) {
                answer << ' ' << wwpn.value.c_str() << ' ' << wwnn.value.c_str();
            }
        });
        on_call("change", [this](const auto&, std::ostream& answer) {
            W::ChangeWWN(local, name_of(0x10, "31"), name_of(0x20, "32"), 1, state, result);
            tell(answer);
        });
        on_call("restore", [this](const auto& words, std::ostream& answer) {
            W::RestoreWWN(local, number(words, 0), state, result);
            tell(answer);
        });
        session.on("busy", [this](const auto& words) {
            libraries->statuses["LRM_ChangeWWN"].assign(number(words, 0), 97);
        });
        session.on("throws", [this](const auto& words) {
            libraries->entered = [name = words.at(0)](const std::string& entered) {
                if (entered == name) {
                    throw 1;
                }
            };
        });
        session.on("clock", [this] { return clock.time.load(); });
    }
    void set_up_virtual_ports() {
        // Of a port, each as the last bytes of port and node.
        session.on("virtual", [this](const auto& words) {
            auto& entries = port(number(words, 0)).virtualPorts;
            entries.clear();
            for (std::size_t i = 1; i < words.size(); ++i) {
                entries.push_back(
                    {name_of(0x10, words[i]), name_of(0x20, words[i].substr(3)), 7, 0});
            }
        });
        session.on("told", [this](const auto& words) {
            libraries->toldVirtualPorts.reset();
            if (!words.empty()) {
                libraries->toldVirtualPorts = number(words, 0);
            }
        });
        session.on("same-ports", [this] { port(1).record.PortWWN = local; });
        on_call("list", [this](const auto& words, std::ostream& answer) {
            std::vector<RM_VPORTENTRY> list;
            const HBA_WWN name = name_of(0x10, words.at(0));
            answer << W::ListVPorts(name, words.size() > 1 ? nullptr : &list) << ", " << list.size()
                   << " entries";
        });
        on_call("attributes", [this](const auto&, std::ostream& answer) {
            RM_VPORTATTRIBUTES attributes{};
            answer << W::ListVPortAttributes(local, name_of(0, "01"), &attributes);
        });
        on_call("targets", [this](const auto&, std::ostream& answer) {
            answer << W::ListVPortTargets(local, name_of(0x10, "0b"));
        });
        session.on("mapped", [this] {
            libraries->adapters[0].attributes[265] = fake::valueOf(uint32{0x102});
            libraries->machines.resize(2);
            std::memset(&libraries->machines[1], 'x', sizeof(RM_VMENTRY)); // without an end
        });
        on_call("machines", [this](const auto&, std::ostream& answer) {
            std::vector<RM_VMINFO> machines;
            answer << W::ListVMfromVPort(local, {{{1}}, {{2}}, 7, 0}, &machines) << ", "
                   << machines.size() << " machines";
        });
    }

    const HBA_WWN local = name_of(0x10, "0a");
    Test_Clock clock{1'000'000};
    Property<uint16> state{0, 1};
    Property<uint32> result{0, 1};
};

TVR_SESSIONS(World_Wide_Names, "wwn.txt");

} // namespace
} // namespace cimple
