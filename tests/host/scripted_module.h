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
    const CMPIContext* context = nullptr;
    const CMPIResult* result = nullptr;
    const CMPIObjectPath* path = nullptr;
    const char** properties = nullptr;
    const CMPIInstance* instance = nullptr;
    std::vector<std::string> words{}; // classes, roles, method, query, in the order of the call
    const CMPIArgs* in = nullptr;
    CMPIArgs* out = nullptr;
    const CMPISelectExp* filter = nullptr;
    bool edge = false; // the first filter, or the last, or the last cleanup
};
using Script = std::function<CMPIrc(Request&)>;

// Operations without a script answer NOT_SUPPORTED, cleanup OK.
struct Scripted_Class {
    std::string name;
    std::string kinds = "IMA";
    std::function<bool()> make = [] { return true; }; // the factory's success
    Script load, enumerate_names, enumerate, get, create, modify, remove, query, invoke;
    Script associators, associator_names, references, reference_names;
    Script authorize, must_poll, activate, deactivate, enable, disable; // with kind N
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

    Scripted_Class& add(const std::string& name, const std::string& kinds = "IMA") {
        auto& made = _classes.emplace_back(std::make_unique<Scripted_Class>());
        made->name = name;
        made->kinds = kinds;
        slots().at(_classes.size() - 1) = made.get();
        return *made;
    }

    tvrhost::Factory_Lookup factories() const {
        return [this](const std::string& name) -> tvrhost::Any_Function {
            static constexpr std::array made_by = {factory_of<0>, factory_of<1>, factory_of<2>};
            for (std::size_t i = 0; i < _classes.size(); ++i) {
                const Scripted_Class& each = *_classes[i];
                for (const char letter : each.kinds) {
                    const auto kind = static_cast<tvrhost::Kind>(letter);
                    if (name == each.name + "_Create_" + tvrhost::kind_name(kind) + "MI") {
                        return made_by[i](kind);
                    }
                }
            }
            return nullptr;
        };
    }

private:
    static std::array<Scripted_Class*, 3>& slots() {
        static std::array<Scripted_Class*, 3> classes;
        return classes;
    }

    static void take(Request& r, const CMPIContext* context) { r.context = context; }
    static void take(Request& r, const CMPIResult* result) { r.result = result; }
    static void take(Request& r, const CMPIObjectPath* path) { r.path = path; }
    static void take(Request& r, const char** properties) { r.properties = properties; }
    static void take(Request& r, const CMPIInstance* instance) { r.instance = instance; }
    static void take(Request& r, const char* word) { r.words.push_back(word ? word : ""); }
    static void take(Request& r, const CMPIArgs* in) { r.in = in; }
    static void take(Request& r, CMPIArgs* out) { r.out = out; }
    static void take(Request& r, const CMPISelectExp* filter) { r.filter = filter; }
    static void take(Request& r, CMPIBoolean edge) { r.edge = edge != 0; }

    // An entry of a function table: runs a script with what the call brought along.
    template <Script Scripted_Class::*script, class MI, class... Arguments>
    static CMPIStatus on(MI* mi, Arguments... arguments) {
        Scripted_Class& self = *static_cast<Scripted_Class*>(mi->hdl);
        if constexpr (script == &Scripted_Class::cleanup) {
            ++self.cleaned_up;
        }
        Request request{self.broker};
        (take(request, arguments), ...);
        return {self.*script ? (self.*script)(request) : CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }

    using C = Scripted_Class;
    static CMPIInstanceMIFT table(CMPIInstanceMI*) {
        return {100,
                100,
                "instance",
                on<&C::cleanup>,
                on<&C::enumerate_names>,
                on<&C::enumerate>,
                on<&C::get>,
                on<&C::create>,
                on<&C::modify>,
                on<&C::remove>,
                on<&C::query>,
                nullptr};
    }
    static CMPIMethodMIFT table(CMPIMethodMI*) {
        return {100, 100, "method", on<&C::cleanup>, on<&C::invoke>};
    }
    static CMPIAssociationMIFT table(CMPIAssociationMI*) {
        return {100,
                100,
                "association",
                on<&C::cleanup>,
                on<&C::associators>,
                on<&C::associator_names>,
                on<&C::references>,
                on<&C::reference_names>,
                nullptr,
                nullptr};
    }
    static CMPIIndicationMIFT table(CMPIIndicationMI*) {
        return {100,
                100,
                "indication",
                on<&C::cleanup>,
                on<&C::authorize>,
                on<&C::must_poll>,
                on<&C::activate>,
                on<&C::deactivate>,
                on<&C::enable>,
                on<&C::disable>,
                nullptr,
                nullptr,
                nullptr};
    }
    template <std::size_t index, class MI, MI Scripted_Class::*Member>
    static MI* create(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus*) {
        Scripted_Class& made = *slots()[index];
        if (!made.make()) {
            return nullptr;
        }
        ++made.made;
        made.broker = broker;
        Request request{broker, context};
        if (made.load) {
            made.load(request);
        }
        MI& mi = made.*Member;
        static const auto functions = table(&mi);
        mi.hdl = &made;
        mi.ft = &functions;
        return &mi;
    }

    template <std::size_t index> static tvrhost::Any_Function factory_of(tvrhost::Kind kind) {
        const auto any = [](auto* function) {
            return reinterpret_cast<tvrhost::Any_Function>(function);
        };
        if (kind == tvrhost::Kind::instance) {
            return any(create<index, CMPIInstanceMI, &C::instance_mi>);
        }
        if (kind == tvrhost::Kind::method) {
            return any(create<index, CMPIMethodMI, &C::method_mi>);
        }
        if (kind == tvrhost::Kind::indication) {
            return any(create<index, CMPIIndicationMI, &C::indication_mi>);
        }
        return any(create<index, CMPIAssociationMI, &C::association_mi>);
    }

    std::vector<std::unique_ptr<Scripted_Class>> _classes;
};

} // namespace tvrtest

#endif
