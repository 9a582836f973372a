// A provider module whose classes do what a test tells them, through CMPI alone.
//
//     Scripted_Module module;
//     Scripted_Class& thing = module.add("Test_Thing");
//     thing.enumerate = [&](Request& r) { CMReturnInstance(r.result, ...); return CMPI_RC_OK; };
//     options.factories = module.factories();
#ifndef TVR_TESTS_HOST_SCRIPTED_MODULE_H
#define TVR_TESTS_HOST_SCRIPTED_MODULE_H

#include "host/object_manager.h"

#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tvrtest {

// What a call brought along; null or empty where the operation has no such thing.
struct Request {
    const CMPIBroker* broker;
    const CMPIContext* context;
    const CMPIResult* result = nullptr;
    const CMPIObjectPath* path = nullptr;
    const char** properties = nullptr;
    const CMPIInstance* instance = nullptr;
    std::string word{}; // method, role, query: the first text of the call
    const CMPIArgs* in = nullptr;
    CMPIArgs* out = nullptr;
    const CMPISelectExp* filter = nullptr;
    bool edge = false; // first activation, last deactivation
};
using Script = std::function<CMPIrc(Request&)>;

// Operations without a script answer NOT_SUPPORTED, cleanup OK.
struct Scripted_Class {
    std::string name;
    std::string kinds = "IMAN";
    std::function<bool()> make = [] { return true; }; // the factory's success
    Script load, enumerate_names, enumerate, get, create, modify, remove, query, invoke;
    Script associators, associator_names, references, reference_names;
    Script authorize, poll, activate, deactivate, enable, disable;
    Script cleanup = [](Request&) { return CMPI_RC_OK; };
    std::atomic<int> made{0};
    std::atomic<int> cleaned_up{0};
    const CMPIBroker* broker = nullptr;

    CMPIInstanceMI instance_mi{};
    CMPIMethodMI method_mi{};
    CMPIAssociationMI association_mi{};
    CMPIIndicationMI indication_mi{};
};

class Scripted_Module {
public:
    Scripted_Module() { slots().fill(nullptr); }

    Scripted_Class& add(const std::string& name, const std::string& kinds = "IMAN") {
        auto& made = _classes.emplace_back(std::make_unique<Scripted_Class>());
        made->name = name;
        made->kinds = kinds;
        slots().at(_classes.size() - 1) = made.get();
        return *made;
    }

    tvrhost::Factory_Lookup factories() const {
        return [this](const std::string& name) -> tvrhost::Any_Function {
            for (std::size_t i = 0; i < _classes.size(); ++i) {
                const Scripted_Class& each = *_classes[i];
                for (const char letter : each.kinds) {
                    const auto kind = static_cast<tvrhost::Kind>(letter);
                    if (name == each.name + "_Create_" + tvrhost::kind_name(kind) + "MI")
                        return factory(i, kind);
                }
            }
            return nullptr;
        };
    }

private:
    static constexpr std::size_t slot_count = 4;
    static std::array<Scripted_Class*, slot_count>& slots() {
        static std::array<Scripted_Class*, slot_count> classes;
        return classes;
    }

    template <class MI> static Scripted_Class& of(MI* mi) {
        return *static_cast<Scripted_Class*>(mi->hdl);
    }
    static CMPIStatus run(const Script& script, Request request) {
        return {script ? script(request) : CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }
    static std::string text(const char* chars) { return chars == nullptr ? "" : chars; }

    template <class MI> static CMPIStatus cleanup(MI* mi, const CMPIContext* context, CMPIBoolean) {
        ++of(mi).cleaned_up;
        return run(of(mi).cleanup, {of(mi).broker, context});
    }

    static const CMPIInstanceMIFT& table(CMPIInstanceMI*) {
        using MI = CMPIInstanceMI*;
        using C = const CMPIContext*;
        using R = const CMPIResult*;
        using P = const CMPIObjectPath*;
        static const CMPIInstanceMIFT ft = {
            100,
            100,
            "instance",
            cleanup<CMPIInstanceMI>,
            [](MI mi, C c, R r, P p) {
                return run(of(mi).enumerate_names, {of(mi).broker, c, r, p});
            },
            [](MI mi, C c, R r, P p, const char** list) {
                return run(of(mi).enumerate, {of(mi).broker, c, r, p, list});
            },
            [](MI mi, C c, R r, P p, const char** list) {
                return run(of(mi).get, {of(mi).broker, c, r, p, list});
            },
            [](MI mi, C c, R r, P p, const CMPIInstance* i) {
                return run(of(mi).create, {of(mi).broker, c, r, p, nullptr, i});
            },
            [](MI mi, C c, R r, P p, const CMPIInstance* i, const char** list) {
                return run(of(mi).modify, {of(mi).broker, c, r, p, list, i});
            },
            [](MI mi, C c, R r, P p) {
                return run(of(mi).remove, {of(mi).broker, c, r, p});
            },
            [](MI mi, C c, R r, P p, const char* query, const char*) {
                return run(of(mi).query, {of(mi).broker, c, r, p, nullptr, nullptr, text(query)});
            },
            nullptr};
        return ft;
    }

    static const CMPIMethodMIFT& table(CMPIMethodMI*) {
        static const CMPIMethodMIFT ft = {
            100, 100, "method", cleanup<CMPIMethodMI>,
            [](CMPIMethodMI* mi, const CMPIContext* c, const CMPIResult* r, const CMPIObjectPath* p,
               const char* method, const CMPIArgs* in, CMPIArgs* out) {
                return run(of(mi).invoke,
                           {of(mi).broker, c, r, p, nullptr, nullptr, text(method), in, out});
            }};
        return ft;
    }

    static const CMPIAssociationMIFT& table(CMPIAssociationMI*) {
        using MI = CMPIAssociationMI*;
        using C = const CMPIContext*;
        using R = const CMPIResult*;
        using P = const CMPIObjectPath*;
        using T = const char*;
        static const CMPIAssociationMIFT ft = {
            100,
            100,
            "association",
            cleanup<CMPIAssociationMI>,
            [](MI mi, C c, R r, P p, T, T, T role, T, const char** list) {
                return run(of(mi).associators, {of(mi).broker, c, r, p, list, nullptr, text(role)});
            },
            [](MI mi, C c, R r, P p, T, T, T role, T) {
                return run(of(mi).associator_names,
                           {of(mi).broker, c, r, p, nullptr, nullptr, text(role)});
            },
            [](MI mi, C c, R r, P p, T, T role, const char** list) {
                return run(of(mi).references, {of(mi).broker, c, r, p, list, nullptr, text(role)});
            },
            [](MI mi, C c, R r, P p, T, T role) {
                return run(of(mi).reference_names,
                           {of(mi).broker, c, r, p, nullptr, nullptr, text(role)});
            },
            nullptr,
            nullptr};
        return ft;
    }

    static Request filter_request(CMPIIndicationMI* mi, const CMPIContext* c,
                                  const CMPISelectExp* filter, const CMPIObjectPath* path,
                                  bool edge) {
        Request request{of(mi).broker, c, nullptr, path};
        request.filter = filter;
        request.edge = edge;
        return request;
    }

    static const CMPIIndicationMIFT& table(CMPIIndicationMI*) {
        using MI = CMPIIndicationMI*;
        using C = const CMPIContext*;
        using F = const CMPISelectExp*;
        using P = const CMPIObjectPath*;
        using T = const char*;
        static const CMPIIndicationMIFT ft = {
            100,
            100,
            "indication",
            cleanup<CMPIIndicationMI>,
            [](MI mi, C c, F f, T, P p, T) {
                return run(of(mi).authorize, filter_request(mi, c, f, p, false));
            },
            [](MI mi, C c, const CMPIResult*, F f, T, P p) {
                return run(of(mi).poll, filter_request(mi, c, f, p, false));
            },
            [](MI mi, C c, F f, T, P p, CMPIBoolean first) {
                return run(of(mi).activate, filter_request(mi, c, f, p, first != 0));
            },
            [](MI mi, C c, F f, T, P p, CMPIBoolean last) {
                return run(of(mi).deactivate, filter_request(mi, c, f, p, last != 0));
            },
            [](MI mi, C c) {
                return run(of(mi).enable, {of(mi).broker, c});
            },
            [](MI mi, C c) {
                return run(of(mi).disable, {of(mi).broker, c});
            },
            nullptr,
            nullptr,
            nullptr};
        return ft;
    }

    template <std::size_t index, class MI, MI Scripted_Class::*Member>
    static MI* create(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus*) {
        Scripted_Class& made = *slots()[index];
        if (!made.make())
            return nullptr;
        ++made.made;
        made.broker = broker;
        Request request{broker, context};
        if (made.load)
            made.load(request);
        MI& mi = made.*Member;
        mi.hdl = &made;
        mi.ft = &table(&mi);
        return &mi;
    }

    template <std::size_t index> static tvrhost::Any_Function factory_of(tvrhost::Kind kind) {
        const auto any = [](auto* function) {
            return reinterpret_cast<tvrhost::Any_Function>(function);
        };
        switch (kind) {
        case tvrhost::Kind::instance:
            return any(create<index, CMPIInstanceMI, &Scripted_Class::instance_mi>);
        case tvrhost::Kind::method:
            return any(create<index, CMPIMethodMI, &Scripted_Class::method_mi>);
        case tvrhost::Kind::association:
            return any(create<index, CMPIAssociationMI, &Scripted_Class::association_mi>);
        case tvrhost::Kind::indication:
            return any(create<index, CMPIIndicationMI, &Scripted_Class::indication_mi>);
        }
        return nullptr;
    }

    static tvrhost::Any_Function factory(std::size_t index, tvrhost::Kind kind) {
        switch (index) {
        case 0:
            return factory_of<0>(kind);
        case 1:
            return factory_of<1>(kind);
        case 2:
            return factory_of<2>(kind);
        default:
            return factory_of<3>(kind);
        }
    }

    std::vector<std::unique_ptr<Scripted_Class>> _classes;
};

} // namespace tvrtest

#endif
