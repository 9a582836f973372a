// Alerts when the link of a port goes up or down.
//
// The HBA API calls a callback on a thread of its own, which queues the event and wakes a worker.
// The worker makes an alert of each event, from the port's instance, and hands it to the handler
// that the runtime has given for as long as alerts are enabled.
//
// Lock order, outermost first: m_AlertSwitchMutex, m_AdapterMapsReadyMutex,
// m_IndicationProviderMutex, m_AdapterDataReadyMutex. The mutexes of the signal and of the queue
// are leaves, and never held together. Enabling holds m_IndicationProviderMutex while it waits for
// adapter data; no worker gets as far as the maps then, for its first step takes that mutex.
#ifndef TVR_PROVIDERS_TVRHBA_ALERTINDICATION_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_ALERTINDICATION_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/link_event_queue.h"
#include "schema/classes.h"

#include <memory>

namespace cimple {

class TVRHBA_AlertIndication_Provider : public Agent_Provider<TVRHBA_AlertIndication> {
public:
    // Ends alerts that are still enabled.
    Unload_Status unload();

    // An indication class has no instances.
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Registers for the link events of all ports that there are now, and starts the worker. After a
    // failure what was registered stays, until alerts are disabled.
    Enable_Indications_Status
    enable_indications(std::unique_ptr<Enable_Indications_Handler> handler);
    // Ends the registrations and waits for the worker, longest for the delivery that it is in.
    // Events that are queued by then are dropped.
    Disable_Indications_Status disable_indications();

private:
    static constexpr uint32 failure = 0x8001;

    // Each answers 0 or `failure`.
    uint32 setHBACallbacks(bool enable);
    uint32 register_callbacks(ProviderAgent& agent);
    static uint32 remove_callbacks(ProviderAgent& agent);
    uint32 generateIndication(ProviderAgent& agent, const Link_Event& event);
    static uint32 cleanUp(TVRHBA_AlertIndication_Provider* provider);

    static void hbaThreadProc(void* provider, HBA_WWN port, HBA_UINT32 type,
                              HBA_UINT32 fabric_port_id) noexcept;
    static void* providerThreadProc(void* provider);
    // Whether alerts are enabled; with m_IndicationProviderMutex free.
    bool has_handler();

    // Null while alerts are disabled.
    std::unique_ptr<Enable_Indications_Handler> _indication_handler;

    struct Shared;
    static Shared& shared();
};

} // namespace cimple

#endif
