#include "providers/TVRHBA_AlertIndication_Provider.h"

#include "access/entry_points.h"
#include "agent/creation.h"
#include "agent/fc_adapters.h"
#include "agent/locks.h"
#include "common/tvr_common.h"
#include "runtime/until_closed.h"

#include <string>

namespace cimple {

namespace {

constexpr uint16 severity_major = 5;
constexpr uint16 communications_alert = 2;
constexpr uint16 element_is_path = 2;
constexpr uint16 element_is_unknown = 0;
constexpr uint16 trend_unknown = 0;

constexpr const char* waiting_for_lock = "Waiting for m_IndicationProviderMutex lock...";
constexpr const char* lock_acquired = "m_IndicationProviderMutex lock acquired";
constexpr const char* lock_released = "m_IndicationProviderMutex lock released";
constexpr const char* refused =
    "Error: Failed to deliver indication as the indication handler is 0 or cleanUp signalled !";

struct Link_Text {
    uint32 type;
    const char* name;   // of the event
    const char* status; // that the link has now
    uint16 cause;
    const char* cause_description;
};
constexpr Link_Text link_texts[] = {
    {HBA_EVENT_PORT_OFFLINE, "Port Offline (LINK_DOWN)", "LINK_DOWN", 30, "Link Down"},
    {HBA_EVENT_PORT_ONLINE, "Port Online (LINK_UP)", "LINK_UP", 1, "Link Up"},
};
constexpr Link_Text unknown_link_text{0, "Unknown", "unknown", 0, "Unknown"};

const Link_Text& link_text(uint32 type) {
    for (const Link_Text& text : link_texts) {
        if (text.type == type) {
            return text;
        }
    }
    return unknown_link_text;
}

// The key of that port in its map. Null without memory, or without a computer system.
Ref<TVRHBA_FCPort> port_key(const Instance_Maps& maps, const std::string& device_id) {
    if (maps.m_CIM_ComputerSystem_map.empty()) {
        return {};
    }
    Ref<TVRHBA_FCPort> key = try_make<TVRHBA_FCPort>();
    if (key) {
        const CIM_ComputerSystem& system = maps.computer_system();
        key->SystemCreationClassName.set(system.CreationClassName.value);
        key->SystemName.set(system.Name.value);
        key->CreationClassName.set("TVRHBA_FCPort");
        key->DeviceID.set(device_id.c_str());
    }
    return key;
}

// An alert of that element, or where there is no path for it, of any port. All else is NULL; null
// without memory.
Ref<TVRHBA_AlertIndication> try_make_alert(const TVRHBA_FCPort& element) {
    try {
        Ref<TVRHBA_AlertIndication> alert(TVRHBA_AlertIndication::create(false));
        set_null_flags(alert.get(), true, true, 1);
        alert->__name_space = implementation_namespace;
        String path;
        const bool has_path = instance_to_model_path(&element, path) == 0;
        alert->AlertingManagedElement.set(has_path ? path : String("TVRHBA_FCPort"));
        alert->AlertingElementFormat.set(has_path ? element_is_path : element_is_unknown);
        return alert;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

// Fills in what is told of the event.
void describe_event(TVRHBA_AlertIndication& alert, const Link_Text& text, const std::string& wwn,
                    uint32 number, const CIM_ComputerSystem& system) {
    const String number_text(std::to_string(number).c_str());
    const Datetime now = Datetime::now();
    alert.IndicationIdentifier.set(number_text);
    alert.CorrelatedIndications.set(Array<String>());
    alert.IndicationTime.set(now);
    alert.PerceivedSeverity.set(severity_major);
    alert.Description.set(("Port WWN " + wwn + " status changed to " + text.status + ".").c_str());
    alert.AlertType.set(communications_alert);
    alert.ProbableCause.set(text.cause);
    alert.ProbableCauseDescription.set(text.cause_description);
    alert.Trending.set(trend_unknown);
    alert.EventID.set(number_text);
    alert.EventTime.set(now);
    alert.SystemCreationClassName.set(system.CreationClassName.value);
    alert.SystemName.set(system.Name.value);
    alert.ProviderName.set("TVRHBA_AlertIndication_Provider");
}

// Registers for the events of one port. False, with a line in the log where the library refuses.
bool register_port(std::vector<HBA_CALLBACKHANDLE>& handles, HBA_PORT_EVENT_CALLBACK callback,
                   void* argument, std::string adapter_name, int adapter_index,
                   const std::string& port_name) {
    // A registration whose handle had no room would stay for ever.
    handles.reserve(handles.size() + 1);
    const HBA_HANDLE adapter = rm::HBA_OpenAdapter(adapter_name.data());
    if (adapter == HBA_HANDLE_INVALID) {
        TVR_LOG("Failed to Open Adapter, Skipping registration for Indication notification");
        return false;
    }
    HBA_WWN port{};
    HBA_CALLBACKHANDLE handle = nullptr;
    HBA_STATUS status = HBA_STATUS_ERROR;
    const bool has_name = text2HBAName(port.wwn, port_name) == 1;
    if (has_name) {
        status = rm::HBA_RegisterForAdapterPortEvents(callback, argument, adapter, port, &handle);
    }
    rm::HBA_CloseAdapter(adapter);
    if (!has_name) {
        return false;
    }
    if (status != HBA_STATUS_OK) {
        TVR_LOG("Failed to register the Indication notification");
        return false;
    }
    TVR_LOG("Registered for link events, adapter %d . reg_status=%d", adapter_index,
            static_cast<int>(status));
    handles.push_back(handle);
    return true;
}

} // namespace

// What lives as long as the module does.
struct TVRHBA_AlertIndication_Provider::Shared {
    // Held while alerts are switched on or off, so that one follows the other.
    Mutex m_AlertSwitchMutex;
    // The handler and the count of alerts; held through a delivery.
    Mutex m_IndicationProviderMutex;
    Link_Event_Queue m_IndicationQueue;
    TVRHBA_AlertIndication_Provider* enabled = nullptr; // under m_AlertSwitchMutex
    // Calls of cleanUp that run. From the first one on nothing is delivered: deliveries without end
    // would keep m_IndicationProviderMutex from whoever wants to stop them.
    std::atomic<int> stops{0};

    class Stop {
    public:
        Stop() { ++shared().stops; }
        ~Stop() { --shared().stops; }
        Stop(const Stop&) = delete;
        Stop& operator=(const Stop&) = delete;
    };

    // No worker outlives the module, also where nobody has disabled alerts.
    ~Shared() {
        if (enabled != nullptr) {
            cleanUp(enabled);
        }
    }
};

TVRHBA_AlertIndication_Provider::Shared& TVRHBA_AlertIndication_Provider::shared() {
    static Until_Closed<Shared> instance;
    return instance.get();
}

Unload_Status TVRHBA_AlertIndication_Provider::unload() {
    const uint32 status = cleanUp(this);
    unload_agent();
    return status == 0 ? UNLOAD_OK : UNLOAD_FAILED;
}

Enum_Instances_Status
TVRHBA_AlertIndication_Provider::enum_instances(const Class*, const Enum_Instances_Handler&) {
    return ENUM_INSTANCES_OK;
}

// ---- switching on and off

Enable_Indications_Status TVRHBA_AlertIndication_Provider::enable_indications(
    std::unique_ptr<Enable_Indications_Handler> handler) {
    TVR_LOG("TVRHBA_AlertIndication_Provider::enable_indications()");
    ProviderAgent* agent = ProviderAgent::instance();
    if (agent == nullptr || handler == nullptr) {
        return ENABLE_INDICATIONS_FAILED;
    }
    const Lock in_turn(shared().m_AlertSwitchMutex);
    const Lock lock(shared().m_IndicationProviderMutex);
    if (_indication_handler) {
        if (handler != _indication_handler) {
            return ENABLE_INDICATIONS_FAILED;
        }
        static_cast<void>(handler.release()); // it is ours already
        return ENABLE_INDICATIONS_OK;
    }
    _indication_handler = std::move(handler);
    agent->indications.m_bIndicationCleanUp = false;
    shared().m_IndicationQueue.clear();
    if (const int error = Thread::create_joinable(agent->indications.m_IndicationThread,
                                                  providerThreadProc, this)) {
        TVR_LOG("Could not create the thread for indications (%d)", error);
        _indication_handler.reset();
        return ENABLE_INDICATIONS_FAILED;
    }
    shared().enabled = this;
    agent->BuildCimpleInfo();
    return setHBACallbacks(true) == 0 ? ENABLE_INDICATIONS_OK : ENABLE_INDICATIONS_FAILED;
}

Disable_Indications_Status TVRHBA_AlertIndication_Provider::disable_indications() {
    TVR_LOG("TVRHBA_AlertIndication_Provider::disable_indications()");
    return cleanUp(this) == 0 ? DISABLE_INDICATIONS_OK : DISABLE_INDICATIONS_FAILED;
}

bool TVRHBA_AlertIndication_Provider::has_handler() {
    const Lock lock(shared().m_IndicationProviderMutex);
    return _indication_handler != nullptr;
}

// The worker may need m_IndicationProviderMutex to end, so that it is free while that is waited
// for.
uint32 TVRHBA_AlertIndication_Provider::cleanUp(TVRHBA_AlertIndication_Provider* provider) {
    if (ProviderAgent::isInherited()) {
        return 0; // worker and registrations are the parent's
    }
    const Shared::Stop stop;
    TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp()");
    ProviderAgent* agent = ProviderAgent::instance();
    if (agent == nullptr || !provider->has_handler()) {
        TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp() Nothing to cleanUp, Exiting...");
        return 0;
    }
    const Lock in_turn(shared().m_AlertSwitchMutex);
    std::unique_lock lock(shared().m_IndicationProviderMutex);
    if (!provider->_indication_handler) { // another one has ended it meanwhile
        TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp() Nothing to cleanUp at this moment, "
                "Exiting...");
        return 0;
    }
    const uint32 status = provider->setHBACallbacks(false);
    Indication_State& state = agent->indications;
    {
        const Lock signal(state.m_IndicationSignalMutex);
        state.m_bIndicationCleanUp = true;
        state.m_IndicationSignalCond.signal();
    }
    TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp():: Worker thread signalled for "
            "cancellation.");
    lock.unlock();
    TVR_LOG("Waiting for Worker thread termination...");
    void* result = nullptr;
    Thread::join(state.m_IndicationThread, result);
    TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp():: Worker thread terminated successfully");
    lock.lock();
    provider->_indication_handler->handle(nullptr);
    provider->_indication_handler.reset();
    shared().enabled = nullptr;
    TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp():: _indication_handler deleted.");
    TVR_LOG("TVRHBA_AlertIndication_Provider::cleanUp() finished");
    return status;
}

uint32 TVRHBA_AlertIndication_Provider::setHBACallbacks(bool enable) {
    TVR_LOG("Entered TVRHBA_AlertIndication_Provider::setHBACallbacks(%s)",
            enable ? "true" : "false");
    ProviderAgent& agent = *ProviderAgent::instance();
    if (!enable) {
        return remove_callbacks(agent);
    }
    try {
        return register_callbacks(agent);
    } catch (...) {
        TVR_LOG("Error while registering the provider for indication");
        return failure;
    }
}

uint32 TVRHBA_AlertIndication_Provider::register_callbacks(ProviderAgent& agent) {
    const Adapter_Data_Reader reader(agent);
    const Data* data = agent.m_pData.get();
    if (data == nullptr || data->getAdapterCount() == 0 || !data->isBuilt()) {
        return failure;
    }
    bool all_registered = true;
    int index = 0; // among the FC adapters
    for_each_FC_adapter(data, [&](const FCAdapter& adapter) {
        for (const std::unique_ptr<Port>& port : adapter.getPorts()) {
            all_registered = all_registered &&
                             register_port(agent.indications.m_callbackHandles, hbaThreadProc, this,
                                           adapter.getAdapterName(), index, port->getPortName());
        }
        ++index;
        return all_registered;
    });
    return all_registered ? 0 : failure;
}

uint32 TVRHBA_AlertIndication_Provider::remove_callbacks(ProviderAgent& agent) {
    std::vector<HBA_CALLBACKHANDLE>& handles = agent.indications.m_callbackHandles;
    TVR_LOG("m_callbackHandles.size() is now %d ", static_cast<int>(handles.size()));
    while (!handles.empty()) {
        if (rm::HBA_RemoveCallback(handles.back()) != HBA_STATUS_OK) {
            TVR_LOG("Failed to un-register the Indication notification");
            return failure;
        }
        handles.pop_back();
        TVR_LOG("m_callbackHandles.size() is now %d (should reach 0)",
                static_cast<int>(handles.size()));
    }
    return 0;
}

// ---- from an event to an alert

// On the HBA API's thread. After the agent's end a library that has kept a registration finds
// nobody to wake.
void TVRHBA_AlertIndication_Provider::hbaThreadProc(void*, HBA_WWN port, HBA_UINT32 type,
                                                    HBA_UINT32 fabric_port_id) noexcept {
    TVR_LOG("TVRHBA_AlertIndication_Provider::hbaThreadProc");
    const Link_Text& text = link_text(type);
    TVR_LOG("For link event, type= 0x%x fabricPortID= 0x%d, eventType std::string is %s .", type,
            fabric_port_id, text.name);
    if (&text == &unknown_link_text) {
        TVR_LOG("Could not generate the indication as the event type is not supported");
        return;
    }
    ProviderAgent* agent = ProviderAgent::instance();
    if (agent == nullptr) {
        return;
    }
    shared().m_IndicationQueue.push({port, type, fabric_port_id});
    const Lock signal(agent->indications.m_IndicationSignalMutex);
    TVR_LOG("sending the signal for thread to indicate");
    agent->indications.m_IndicationSignalCond.signal();
}

void* TVRHBA_AlertIndication_Provider::providerThreadProc(void* argument) {
    TVR_LOG("TVRHBA_AlertIndication_Provider::providerThreadProc()");
    auto* const provider = static_cast<TVRHBA_AlertIndication_Provider*>(argument);
    ProviderAgent* const agent = ProviderAgent::instance();
    if (provider == nullptr || agent == nullptr) {
        TVR_LOG("Error in converting the pointer to TVRHBA_AlertIndication_Provider");
        return nullptr;
    }
    Indication_State& state = agent->indications;
    Link_Event_Queue& queue = shared().m_IndicationQueue;
    while (provider->has_handler()) {
        TVR_LOG("waiting for signal to occur");
        {
            const Lock signal(state.m_IndicationSignalMutex);
            while (!state.m_bIndicationCleanUp && queue.empty()) {
                state.m_IndicationSignalCond.wait(state.m_IndicationSignalMutex);
            }
        }
        const std::optional<Link_Event_Queue::Popped> popped = queue.pop();
        if (!popped) {
            TVR_LOG("TVRHBA_AlertIndication_Provider::providerThreadProc() Received signal from "
                    "cleanup()");
            break;
        }
        if (popped->lost != 0) {
            TVR_LOG("Link events came faster than they could be indicated, %u are lost",
                    popped->lost);
        }
        TVR_LOG("Popped from Queue: IndicationType 0x%x", popped->event.type);
        try {
            provider->generateIndication(*agent, popped->event);
        } catch (...) {
            TVR_LOG("Exception in generateIndication, the link event is lost");
        }
    }
    TVR_LOG("TVRHBA_AlertIndication_Provider::providerThreadProc() finished");
    return nullptr;
}

uint32 TVRHBA_AlertIndication_Provider::generateIndication(ProviderAgent& agent,
                                                           const Link_Event& event) {
    TVR_LOG("TVRHBA_AlertIndication_Provider::generateIndication");
    TVR_LOG("%s", waiting_for_lock);
    {
        const Lock lock(shared().m_IndicationProviderMutex);
        TVR_LOG("%s", lock_acquired);
        if (!_indication_handler) {
            TVR_LOG("Indication Handler is not passed properly");
            return failure;
        }
    }
    TVR_LOG("%s", lock_released);

    const Stoppable_Maps_Reader reader(agent, agent.indications.m_bIndicationCleanUp);
    if (!reader) {
        TVR_LOG("%s", refused);
        return failure;
    }
    TVR_LOG("Getting the Alerting Element");
    const std::string wwn = wwnToText(event.port.wwn);
    const Ref<TVRHBA_FCPort> key = port_key(agent.maps, wwn);
    if (!key) {
        TVR_LOG("Could not create FCPort instance");
        return failure;
    }
    const TVRHBA_FCPort* port = agent.maps.m_TVRHBA_FCPort_map.lookup(key.get());
    if (port == nullptr) {
        TVR_LOG("Could not find the required FCPort");
        return failure;
    }
    TVR_LOG("Creating the TVRHBA AlertIndication");
    Ref<TVRHBA_AlertIndication> alert = try_make_alert(*port);
    if (!alert) {
        TVR_LOG("Could not create the required AlertIndication instance");
        return failure;
    }
    uint32 number = 0;
    {
        const Lock lock(shared().m_IndicationProviderMutex);
        number = agent.indications.m_IndicationCount++;
    }
    describe_event(*alert, link_text(event.type), wwn, number, agent.maps.computer_system());
    TVR_LOG("Indication %u WWN = %s", number, wwn.c_str());
    TVR_LOG("%s", alert->Description.value.c_str());

    TVR_LOG("%s", waiting_for_lock);
    {
        const Lock lock(shared().m_IndicationProviderMutex);
        TVR_LOG("%s", lock_acquired);
        if (!_indication_handler || agent.indications.m_bIndicationCleanUp || shared().stops != 0) {
            TVR_LOG("%s", refused);
        } else {
            TVR_LOG("Calling Indication handler to deliver Indication to the specified client");
            _indication_handler->handle(alert.release());
            TVR_LOG("Indication Delivered to the specified client");
        }
    }
    TVR_LOG("%s", lock_released);
    return 0;
}

} // namespace cimple
