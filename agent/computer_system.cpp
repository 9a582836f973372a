// The computer system on which every logical device hangs: the host's own, or one that the provider
// makes where the host has none.
#include "agent/computer_system.h"

#include "agent/creation.h"
#include "agent/host_name.h"
#include "agent/version.h"
#include "common/tvr_common.h"
#include "runtime/cimom.h"

namespace cimple {

namespace {

constexpr char server_namespace[] = "root/ibmse";

// A clone of the first instance of class C or below that the object manager has in a namespace and
// that `wanted` accepts.
template <class C, class Model, class Wanted>
Ref<C> find_at_object_manager(const char* name_space, Ref<Model> model, const char* passed,
                              Wanted&& wanted) {
    Instance_Enumerator enumerator;
    if (cimom::enum_instances(name_space, model.get(), enumerator) != 0) {
        return {};
    }
    if (passed != nullptr) {
        TVR_LOG("%s", passed);
    }
    for (; enumerator.more(); enumerator.next()) {
        const Ref<Instance> found = enumerator.get();
        if (is_a<C>(found.get()) && wanted(static_cast<const C&>(*found))) {
            return Ref<C>(static_cast<C*>(clone(found.get())));
        }
    }
    return {};
}

// An up-call that fails, whatever the way, has found nothing.
Ref<CIM_ComputerSystem> find_computer_system() try {
    TVR_LOG("up-call to enumerate CIM_ComputerSystem started");
    Ref<IBMSD_ComputerSystem> model(IBMSD_ComputerSystem::create(true));
    TVR_LOG("up-call to enumerate CIM_ComputerSystem created--calling now");
    Ref<CIM_ComputerSystem> system =
        find_at_object_manager<CIM_ComputerSystem>(server_namespace, std::move(model), nullptr,
                                                   [](const CIM_ComputerSystem&) { return true; });
    if (system) {
        system->__name_space = server_namespace;
        TVR_LOG("up-call - found the correct CIM_ComputerSystem to link");
    }
    return system;
} catch (...) {
    return {};
}

Ref<CIM_RegisteredProfile> find_base_server_profile() try {
    TVR_LOG("up-call to enumerate CIM_RegisteredProfile started");
    Ref<CIM_RegisteredProfile> profile = find_at_object_manager<CIM_RegisteredProfile>(
        interop_namespace, Ref<CIM_RegisteredProfile>(CIM_RegisteredProfile::create(true)),
        "up-call to enumerate CIM_RegisteredProfile Passed",
        [](const CIM_RegisteredProfile& found) {
            return !found.RegisteredName.is_null() &&
                   found.RegisteredName.value.equali("Base Server");
        });
    if (profile) {
        TVR_LOG("up-call - found the correct CIM_RegisteredProfile to link");
    }
    return profile;
} catch (...) {
    return {};
}

Ref<CIM_ComputerSystem> make_computer_system(const Host_Facts& host) {
    Ref<CIM_ComputerSystem> system = make<CIM_ComputerSystem>();
    system->CreationClassName.set("CIM_ComputerSystem");
    system->Name.set(host.m_HostName);
    system->ElementName.set(host.m_HostName);
    system->NameFormat.set("Other");
    system->Description.set(host.m_OSName + " with Tavrin CMPI HBA Provider v" + version_text());
    system->EnabledState.set(uint16{0});
    system->RequestedState.set(uint16{12});
    system->EnabledDefault.set(uint16{2});
    system->TransitioningToState.set(uint16{12});
    system->OtherIdentifyingInfo.set(
        Array<String>{host.m_IPAddress, host.m_OSName, host.m_OSVersion});
    system->IdentifyingDescriptions.set(
        Array<String>{"TAVRIN:IP_ADDRESS", "TAVRIN:OS_NAME", "TAVRIN:OS_EXTENDED_INFO"});
    system->Dedicated.set(Array<uint16>{0});
    system->ResetCapability.set(uint16{2});
    system->PowerManagementCapabilities.set(Array<uint16>{0});
    system->OperationalStatus.set(Array<uint16>{2});
    return system;
}

} // namespace

uint32 create_computer_system(Instance_Maps& maps, Host_Facts& host) {
    Ref<CIM_ComputerSystem> system = find_computer_system();
    host.m_pBaseServerProfile = find_base_server_profile();
    if (!system) {
        TVR_LOG("up-call method failed");
        Host_Name found = find_host_name();
        host.m_HostName = std::move(found.name);
        host.m_IPAddress = std::move(found.address);
        TVR_LOG("Generating an tavrin specific m_CIM_ComputerSystem_map[0]");
        system = make_computer_system(host);
        host.m_bOwnComputerSystem = true;
    }
    TVR_LOG("All clear -created tvrhba computer system instance");
    return insert(maps.m_CIM_ComputerSystem_map, std::move(system),
                  "Insert Failed : m_TVRHBA_ComputerSystem_map") != nullptr
               ? 0
               : TVR_FAILURE;
}

} // namespace cimple
