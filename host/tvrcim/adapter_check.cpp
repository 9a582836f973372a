#include "host/tvrcim/adapter_check.h"

#include "access/rm/rm_api.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/output.h"

#include <dlfcn.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>

namespace tvrcim {

namespace {

constexpr unsigned most_adapters = 4096; // as many as the module looks at
constexpr unsigned most_ports = 256;     // of an adapter
constexpr std::size_t most_reasons = 4;  // that are told

// A library for as long as the object lives, opened as the module opens it.
class Library {
public:
    explicit Library(const char* file) : _handle(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}
    ~Library() {
        if (_handle != nullptr) {
            dlclose(_handle);
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // Leaves a function alone that was found before.
    template <class Function> void find(Function*& function, const char* name) const {
        if (_handle != nullptr && function == nullptr) {
            function = reinterpret_cast<Function*>(dlsym(_handle, name));
        }
    }

private:
    void* _handle;
};

// What is asked here, from the first library that has it.
class Entry_Points {
public:
    Entry_Points() {
        for (const Library* library : {&_hba_api, &_lrm_api, &_rm_api}) {
            library->find(number_of_adapters, "HBA_GetNumberOfAdapters");
            library->find(adapter_name, "HBA_GetAdapterName");
            library->find(open, "HBA_OpenAdapter");
            library->find(close, "HBA_CloseAdapter");
            library->find(adapter_attributes, "HBA_GetAdapterAttributes");
            library->find(port_attributes, "HBA_GetAdapterPortAttributes");
            library->find(refresh, "HBA_RefreshInformation");
        }
        for (const Library* library : {&_lrm_api, &_rm_api}) {
            library->find(rm_attribute, "RM_GetAttributeValue");
            for (const char* name : {"LRM_GetHBAAttributes", "RM_GetHBAAttributes"}) {
                library->find(rm_adapter, name);
            }
            for (const char* name : {"LRM_GetPortAttributes", "RM_GetPortAttributes"}) {
                library->find(rm_port, name);
            }
        }
    }

    bool has_adapters() const {
        return number_of_adapters != nullptr && adapter_name != nullptr && open != nullptr &&
               close != nullptr && adapter_attributes != nullptr && port_attributes != nullptr;
    }

    decltype(HBA_GetNumberOfAdapters)* number_of_adapters = nullptr;
    decltype(HBA_GetAdapterName)* adapter_name = nullptr;
    decltype(HBA_OpenAdapter)* open = nullptr;
    decltype(HBA_CloseAdapter)* close = nullptr;
    decltype(HBA_GetAdapterAttributes)* adapter_attributes = nullptr;
    decltype(HBA_GetAdapterPortAttributes)* port_attributes = nullptr;
    decltype(HBA_RefreshInformation)* refresh = nullptr;
    decltype(RM_GetAttributeValue)* rm_attribute = nullptr;
    decltype(LRM_GetHBAAttributes)* rm_adapter = nullptr;
    decltype(LRM_GetPortAttributes)* rm_port = nullptr;

private:
    Library _hba_api{"libHBAAPI.so"};
    Library _lrm_api{"liblrmapi.so"};
    Library _rm_api{"librmapi.so"};
};

std::string answers(const char* call, unsigned status) {
    constexpr const char* words[] = {"",           "error",        "not supported",
                                     "bad handle", "bad argument", "bad WWN",
                                     "bad index",  "more data",    "stale data"};
    std::string text = std::string(call) + " answers status " + std::to_string(status);
    if (std::strncmp(call, "HBA_", 4) == 0 && status > 0 && status < std::size(words)) {
        text += std::string(" (") + words[status] + ")";
    }
    return text;
}

std::string wwn_text(const HBA_WWN& name) {
    std::string text;
    for (const unsigned char byte : name.wwn) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        text += digits;
    }
    return text;
}

// One adapter, asked step by step as the module does.
class Inspection {
public:
    // What is found of the ports shown is taken away from them.
    Inspection(const Entry_Points& api, std::set<std::string>& shown, std::vector<Left_Out>& found)
        : _api(api), _shown(shown), _found(found) {}

    void inspect(unsigned index) {
        std::array<char, 512> name{}; // 256 bytes are asked for
        const HBA_STATUS status = _api.adapter_name(index, name.data());
        name.back() = '\0';
        _name = status == HBA_STATUS_OK ? name.data() : "adapter " + std::to_string(index);
        if (status != HBA_STATUS_OK) {
            return leave_out_unread(answers("HBA_GetAdapterName", status));
        }
        if (_name.starts_with("Tavrin-O") || _name.starts_with("Tavrin-N")) {
            return leave_out(converged, true);
        }
        const HBA_HANDLE handle = _api.open(name.data());
        if (handle == 0) {
            return leave_out_unread("HBA_OpenAdapter fails");
        }
        inspect_open(handle);
        _api.close(handle);
    }

private:
    // Nobody knows which ports these are.
    void leave_out_unread(std::string why) {
        leave_out(std::move(why));
        _found.back().has_ports = false;
    }

    static constexpr char converged[] = "a converged adapter, which other software manages";

    void leave_out(std::string why, bool is_meant = false) {
        _found.push_back({_name, std::move(why), false, is_meant});
    }

    // An answer that the library has outdated is asked for once more.
    template <class Record, class Ask>
    HBA_STATUS ask(HBA_HANDLE handle, Record& record, Ask ask_once) {
        record = {};
        HBA_STATUS status = ask_once(record);
        if (status == HBA_STATUS_ERROR_STALE_DATA && _api.refresh != nullptr) {
            _api.refresh(handle);
            record = {};
            status = ask_once(record);
        }
        return status;
    }

    HBA_STATUS read_port(HBA_HANDLE handle, unsigned port, HBA_PORTATTRIBUTES& record) {
        return ask(handle, record, [&](HBA_PORTATTRIBUTES& out) {
            return _api.port_attributes(handle, port, &out);
        });
    }

    void inspect_open(HBA_HANDLE handle) {
        HBA_ADAPTERATTRIBUTES adapter;
        HBA_STATUS status = ask(handle, adapter, [&](HBA_ADAPTERATTRIBUTES& out) {
            return _api.adapter_attributes(handle, &out);
        });
        if (status != HBA_STATUS_OK) {
            return leave_out_unread(answers("HBA_GetAdapterAttributes", status));
        }
        std::optional<HBA_WWN> first;
        for (unsigned i = 0; i < std::min(adapter.NumberOfPorts, most_ports); ++i) {
            HBA_PORTATTRIBUTES port;
            status = read_port(handle, i, port);
            const std::string what = "port " + std::to_string(i) + " of " + _name;
            if (status != HBA_STATUS_OK) {
                if (i == 0) {
                    return leave_out_unread(answers("HBA_GetAdapterPortAttributes", status));
                }
                _found.push_back({what, answers("HBA_GetAdapterPortAttributes", status), true});
                continue;
            }
            if (i == 0) {
                first = port.PortWWN;
            }
            if (_shown.erase(wwn_text(port.PortWWN)) == 0 &&
                !inspect_missing(adapter, *first, port.PortWWN, what)) {
                return;
            }
        }
    }

    // False if the whole adapter is left out.
    bool inspect_missing(const HBA_ADAPTERATTRIBUTES& adapter, const HBA_WWN& first,
                         const HBA_WWN& port, const std::string& what) {
        if (_api.rm_adapter == nullptr || _api.rm_port == nullptr) {
            leave_out("the RM library has no LRM_GetHBAAttributes or LRM_GetPortAttributes");
            return false;
        }
        std::array<unsigned char, RM_HBA_ATTRIBUTES_SIZE + room> buffer{};
        std::uint32_t size = RM_HBA_ATTRIBUTES_SIZE;
        if (const RM_STATUS status = _api.rm_adapter(first, buffer.data(), &size);
            status != RM_STATUS_OK) {
            const std::string maker(adapter.Manufacturer,
                                    strnlen(adapter.Manufacturer, sizeof adapter.Manufacturer));
            const bool is_foreign = strcasestr(maker.c_str(), "Tavrin") == nullptr;
            leave_out(is_foreign ? "made by \"" + maker + "\", which the RM library doesn't know"
                                 : answers("LRM_GetHBAAttributes", status),
                      is_foreign);
            return false;
        }
        if (is_converged(buffer.data())) {
            leave_out(converged, true);
            return false;
        }
        size = RM_PORT_ATTRIBUTES_SIZE;
        const RM_STATUS status = _api.rm_port(port, buffer.data(), &size);
        _found.push_back({what,
                          status != RM_STATUS_OK
                              ? answers("LRM_GetPortAttributes", status)
                              : "it can be read now; --device-log may tell why the module couldn't",
                          true});
        return true;
    }

    bool is_converged(void* attributes) const {
        std::uint16_t length = sizeof(std::uint32_t);
        RM_STATUS status = RM_STATUS_OK;
        void* const value =
            _api.rm_attribute == nullptr
                ? nullptr
                : _api.rm_attribute(attributes, RM_HA_FUNCTION_TYPE, &length, &status);
        std::uint32_t type = 0;
        if (value != nullptr) {
            std::memcpy(&type, value, sizeof type); // whatever length the library tells
        }
        return type >= 1 && type <= 3;
    }

    static constexpr std::size_t room = 1024; // for a library that writes more than it was allowed

    const Entry_Points& _api;
    std::set<std::string>& _shown;
    std::vector<Left_Out>& _found;
    std::string _name;
};

std::string counted(std::size_t number, const char* what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

} // namespace

bool Adapter_Check::has_failures() const {
    return std::any_of(left_out.begin(), left_out.end(),
                       [](const Left_Out& each) { return !each.is_meant; });
}

std::string Adapter_Check::text() const {
    const auto ports = static_cast<std::size_t>(std::count_if(
        left_out.begin(), left_out.end(), [](const Left_Out& each) { return each.is_port; }));
    const std::size_t adapters = left_out.size() - ports;
    std::string text = "of " + counted(reported, "adapter") + " ";
    if (adapters != 0) {
        text += std::to_string(adapters) + (adapters == 1 ? " is" : " are") + " left out";
    }
    if (ports != 0) {
        text += (adapters == 0 ? "" : ", and ") + counted(ports, "port") +
                (ports == 1 ? " is" : " are") + (adapters == 0 ? " left out" : "");
    }

    struct Reason {
        const Left_Out* first;
        std::size_t others = 0;
    };
    std::vector<Reason> reasons;
    for (const Left_Out& each : left_out) {
        const auto known = std::find_if(reasons.begin(), reasons.end(), [&](const Reason& reason) {
            return reason.first->why == each.why;
        });
        if (known == reasons.end()) {
            reasons.push_back({&each});
        } else {
            ++known->others;
        }
    }
    for (std::size_t i = 0; i < std::min(reasons.size(), most_reasons); ++i) {
        const auto& [first, others] = reasons[i];
        text += (i == 0 ? ": " : "; ") + first->what +
                (others == 0 ? "" : " and " + std::to_string(others) + " more") + ": " + first->why;
    }
    return printable(reasons.size() > most_reasons ? text + "; and so on" : text);
}

Adapter_Check check_adapters(std::set<std::string> shown) {
    const Entry_Points api;
    if (!api.has_adapters()) {
        throw Cim_Error("this machine has no HBA API library (libHBAAPI.so), without which no "
                        "adapter is found; --sim shows simulated adapters");
    }
    Adapter_Check check;
    check.reported = api.number_of_adapters();
    for (unsigned i = 0; i < std::min(check.reported, most_adapters); ++i) {
        Inspection(api, shown, check.left_out).inspect(i);
    }
    // Ports that are shown and were not met belong to adapters that don't answer any more.
    for (std::size_t unmet = shown.size(); unmet > 0; --unmet) {
        const auto silent = std::find_if(check.left_out.begin(), check.left_out.end(),
                                         [](const Left_Out& each) { return !each.has_ports; });
        if (silent != check.left_out.end()) {
            check.left_out.erase(silent);
        }
    }
    return check;
}

void explain_no_ports(Session& session) {
    constexpr char port_class[] = "TVRHBA_FCPort";
    if (!session.manager.serves(port_class, tvrhost::Kind::instance)) {
        return;
    }
    const tvrhost::Answer answer = session.manager.enumerate_instance_names(
        session.name_space_of(session.find_class(port_class)), port_class);
    if (!answer.paths.empty()) {
        return;
    }
    if (const Adapter_Check check = check_adapters({}); check.has_failures()) {
        throw Cim_Error(check.text());
    }
}

void tell_left_out(Session& session, const std::set<std::string>& shown) {
    session.out << std::flush;
    const Adapter_Check check = check_adapters(shown);
    if (check.has_failures()) {
        throw Cim_Error(check.text());
    }
    if (check.reported == 0) {
        std::cerr << "tvrcim: the adapter libraries report no adapter" << std::endl;
    } else if (!check.left_out.empty()) {
        std::cerr << "tvrcim: " << check.text() << std::endl;
    }
}

} // namespace tvrcim
