#include "tests/agent/agent_session.h"

#include "runtime/provider.h"

#include <cstring>

namespace cimple {

namespace {

using Words = Text_Session::Words;

std::string full(const std::string& class_name) {
    if (class_name == "ComputerSystem") {
        return "CIM_" + class_name;
    }
    return (class_name.starts_with("TVRHBA_") ? "" : "TVRHBA_") + class_name;
}

const Registration* provider_of(const std::string& class_name) {
    for (const Registration* at = cimple_module(); at != nullptr; at = at->next) {
        if (at->meta_class->name == class_name) {
            return at;
        }
    }
    ADD_FAILURE() << "no class " << class_name;
    return cimple_module();
}

// Integers from their least significant byte.
void append_text(Array_Base& array, Type type, const std::string& text) {
    if (type == STRING) {
        const String string(text.c_str());
        array.append_elements(&string, 1);
    } else {
        const uint64 number = text == "true" ? 1 : std::strtoull(text.c_str(), nullptr, 0);
        array.append_elements(&number, 1);
    }
}

void set_text(Instance* instance, const Meta_Property& property, const std::string& text) {
    const Type type = static_cast<Type>(property.type);
    Array_Base elements(traits_of(type));
    if (!property.is_array()) {
        append_text(elements, type, text);
        void* at = field(instance, property.offset);
        if (type == STRING) {
            *static_cast<String*>(at) = *static_cast<const String*>(elements.data());
        } else {
            std::memcpy(at, elements.data(), elements.traits().size);
        }
    } else {
        std::istringstream items(text.substr(1, text.size() - 2));
        for (std::string item; std::getline(items, item, ',');) {
            append_text(elements, type, item);
        }
        *static_cast<Array_Base*>(field(instance, property.offset)) = elements;
    }
}

void show(const Instance* instance, std::ostream& answer) {
    for (const auto& [name, text] : describe(instance)) {
        answer << (name.empty() ? "in" : name) << " = " << text << '\n';
    }
}

template <class C> Class_Map<C>& map_in(ProviderAgent& agent) {
    return agent.maps.*map_of<C>;
}

struct Map_Calls {
    std::size_t (*size)(ProviderAgent& agent);
    const Instance* (*at)(ProviderAgent& agent, std::size_t number);
    void (*clear)(ProviderAgent& agent);
    void (*insert)(ProviderAgent& agent, const Instance* instance);
};
template <class... C> std::map<std::string, Map_Calls> map_calls() {
    return {{C::static_meta_class.name,
             {[](ProviderAgent& agent) { return map_in<C>(agent).size(); },
              [](ProviderAgent& agent, std::size_t number) -> const Instance* {
                  return map_in<C>(agent).get(number);
              },
              [](ProviderAgent& agent) { map_in<C>(agent).clear(); },
              [](ProviderAgent& agent, const Instance* instance) {
                  map_in<C>(agent).insert(clone_of(static_cast<const C*>(instance)));
              }}}...};
}
const std::map<std::string, Map_Calls>& maps() {
    static const auto calls =
        map_calls<CIM_ComputerSystem, TVRHBA_AffectedJobElement, TVRHBA_BootBIOSService,
                  TVRHBA_ConcreteJob, TVRHBA_DiagnosticCompletionRecord,
                  TVRHBA_DiagnosticServiceRecord, TVRHBA_DriverParameterAffectsFCPort,
                  TVRHBA_DriverParams, TVRHBA_DriverServiceElementSettingData, TVRHBA_DumpData,
                  TVRHBA_DumpService, TVRHBA_FCDriverServiceAffectsDriver,
                  TVRHBA_FCHBADriverParamService, TVRHBA_FCHBAWWNService, TVRHBA_FCPort,
                  TVRHBA_FCPortStatistics, TVRHBA_OwningJobElement, TVRHBA_PortController,
                  TVRHBA_RegisteredProfile, TVRHBA_SoftwareInstallationService>();
    return calls;
}

} // namespace

With_Session::With_Session() {
    session.rename(directory.path(), "$DIR");
    session.on("load", [this] { load(); });
    session.on("unload", [this] { unload(); });
    session.on("refresh", [this] { refresh(); });
    session.on("clock", [this](const Words& words) {
        clock.time += static_cast<uint64>(static_cast<sint64>(std::stold(words.at(0)) * 1'000'000));
    });
    session.on("status", [this](const Words& words) {
        auto& statuses = libraries.statuses[words.at(0)];
        statuses.clear();
        for (std::size_t i = 1; i < words.size(); ++i) {
            statuses.push_back(number(words[i]));
        }
    });
    session.on("list", [this](const Words& words, std::ostream& answer) {
        for (const Ref<Instance>& instance : all(words.at(0))._instances) {
            auto texts = describe(instance.get());
            for (std::size_t i = 1; i < words.size(); ++i) {
                answer << (i == 1 ? "" : " | ")
                       << (texts.contains(words[i]) ? texts[words[i]] : "-");
            }
            answer << '\n';
        }
    });
    session.on("show", [this](const Words& words, std::ostream& answer) {
        show(all(words.at(0))._instances.at(number(words.at(1))).get(), answer);
    });
    session.on("stored", [this](const Words& words, std::ostream& answer) {
        show(maps().at(full(words.at(0))).at(*agent, number(words.at(1))), answer);
    });
    // A number for each word.
    const auto on_each = [this](const char* name, auto count) {
        session.on(name, [count](const Words& words, std::ostream& answer) {
            for (const std::string& word : words) {
                answer << (&word == words.data() ? "" : " ") << count(word);
            }
            answer << '\n';
        });
    };
    on_each("count", [this](const std::string& class_name) { return all(class_name).size(); });
    on_each("maps", [this](const std::string& class_name) {
        return maps().at(full(class_name)).size(*agent);
    });
    on_each("log", [this](const std::string& text) { return logged(text); });
    session.on("let", [this](const Words& words) {
        const Collected found = all(words.at(1));
        Ref<Instance> copy(clone(found._instances.at(std::stoul(words.at(2))).get()));
        set(copy.get(), words, 3);
        _named[words[0]] = std::move(copy);
    });
    session.on("put", [this](const Words& words) {
        maps().at(class_of(named(words.at(0)))->name).insert(*agent, named(words[0]));
    });
    session.on("drop", [this](const Words& words) {
        for (const std::string& class_name : words) {
            maps().at(full(class_name)).clear(*agent);
        }
    });
    session.on("adapters", [this](const Words& words) {
        libraries.adapters.clear();
        for (const std::string& word : words) {
            const std::size_t x = word.find('x');
            libraries.adapters.push_back(
                adapter(number(word), x == word.npos ? 1 : number(word.substr(x + 1))));
        }
    });
    session.on("state", [this](const Words& words) {
        first_port(number(words.at(0))).attributes[RM_PA_PHYSICAL_STATE] =
            fake::valueOf(number(words.at(1)));
    });
    session.on("statistic", [this](const Words& words) {
        first_port(number(words.at(0))).statistics[static_cast<uint16>(number(words.at(1)))] =
            fake::valueOf(uint64{std::stoull(words.at(2))});
    });
    session.on("trace", [this](const Words& words, std::ostream& answer) {
        for (const LogCapture::Line& line : log.lines()) {
            for (const std::string& file : words) {
                if (line.file.find(file) != line.file.npos) {
                    answer << line.text << '\n';
                }
            }
        }
        log.take();
    });
    session.on("take", [this] { log.take(); });
    session.on("call", [this](const Words& words, std::ostream& answer) { call(words, answer); });
    session.on("modify",
               [this](const Words& words, std::ostream& answer) { modify(words, answer); });
}

uint32 With_Session::number(const std::string& word) {
    return static_cast<uint32>(std::stoul(word));
}

Collected With_Session::all(const std::string& class_name) {
    if (class_name == "ComputerSystem") { // which no provider serves
        return enumerated<CIM_ComputerSystem>();
    }
    Collected found;
    const Provider_Handle provider(provider_of(full(class_name)));
    const auto collect = [](Instance* instance, int, void* collected) {
        if (instance != nullptr) {
            static_cast<Collected*>(collected)->_instances.emplace_back(instance);
        }
        return true;
    };
    EXPECT_EQ(provider.enum_instances(nullptr, collect, &found), ENUM_INSTANCES_OK);
    return found;
}

Instance* With_Session::named(const std::string& name) {
    if (name == "null") {
        return nullptr;
    }
    Ref<Instance>& instance = _named[name];
    if (!instance) {
        instance = all(name)._instances.at(0);
    }
    return instance.get();
}

void With_Session::set(Instance* instance, const Words& words, std::size_t first) {
    for (std::size_t i = first; i < words.size(); ++i) {
        const std::size_t equals = words[i].find('=');
        const std::string name = words[i].substr(0, equals);
        const std::string text = words[i].substr(equals + 1);
        const Meta_Feature* feature =
            find_feature(instance->__meta_class, name.c_str(), PROPERTIES_AND_REFERENCES);
        if (feature == nullptr) {
            ADD_FAILURE() << words[i];
        } else if (feature->has(FLAG_REFERENCE)) {
            Instance*& reference = reference_field(instance, as_reference(*feature));
            unref(reference);
            ref(reference = named(text));
        } else {
            null_flag(instance, as_property(*feature)) = text == "null";
            if (text != "null") {
                set_text(instance, as_property(*feature), text);
            }
        }
    }
}

void With_Session::begin_work() {
    wait_for_end();
    log.take();
    libraries.requests.clear();
    libraries.calls.clear();
}

void With_Session::tell_work(std::ostream& answer) {
    wait_for_end();
    for (const std::string& request : std::exchange(libraries.requests, {})) {
        answer << "> " << request << '\n';
    }
    for (const LogCapture::Line& line : log.lines()) {
        if (line.file.find("_Provider.cpp") != line.file.npos ||
            line.file.find("image_file.cpp") != line.file.npos ||
            line.text.ends_with("::str2HBAName failed")) {
            answer << "| " << line.text << '\n';
        }
    }
    if (calls("HBA_GetNumberOfAdapters") != 0) {
        answer << "rebuild\n";
    }
}

void With_Session::call(const Words& words, std::ostream& answer) {
    const Instance* self = named(words.at(0));
    const Meta_Method& method =
        as_method(*find_feature(class_of(self), words.at(1).c_str(), METHODS));
    const Ref<Instance> call(create(&method, true));
    set(call.get(), words, 2);
    begin_work();
    const Provider_Handle provider(provider_of(class_of(self)->name));
    const int status = provider.call(OPERATION_INVOKE_METHOD, self, call.get());
    auto texts = describe(call.get());
    answer << (status == INVOKE_METHOD_OK ? texts["return_value"]
                                          : "status " + std::to_string(status));
    for (const Meta_Feature* feature : method) {
        if (feature->has(FLAG_OUT) && texts.contains(feature->name) &&
            std::string(feature->name) != "return_value") {
            answer << ' ' << feature->name << '=' << texts[feature->name];
        }
    }
    answer << '\n';
    tell_work(answer);
}

void With_Session::modify(const Words& words, std::ostream& answer) {
    Instance* instance = named(words.at(0));
    set(instance, words, 1);
    std::vector<std::string> names;
    std::vector<const char*> wanted;
    names.reserve(words.size());
    for (const std::string& word : words) {
        if (&word != words.data() && !word.ends_with("=null")) {
            wanted.push_back(names.emplace_back(word.substr(0, word.find('='))).c_str());
        }
    }
    wanted.push_back(nullptr);
    const Ref<Instance> model(clone(instance));
    filter_properties(model.get(), wanted.data(), true);
    begin_work();
    const Provider_Handle provider(provider_of(class_of(instance)->name));
    answer << provider.call(OPERATION_MODIFY_INSTANCE, model.get(), instance) << '\n';
    tell_work(answer);
}

} // namespace cimple
