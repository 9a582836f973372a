#include "agent/port_refresh.h"

#include "agent/fc_adapters.h"
#include "agent/port_tables.h"
#include "agent/provider_agent.h"
#include "agent/time_limit.h"

namespace cimple {

namespace {

// The first instance whose text `property` contains the port's name; null if there is none.
template <class C, class Text>
C* find_of_port(const Class_Map<C>& map, Text C::*property, const std::string& port_name) {
    for (C* instance : map) {
        if ((instance->*property).value.find(port_name.c_str()) >= 0) {
            return instance;
        }
    }
    return nullptr;
}

void update_status(TVRHBA_FCPort& port, const FCAdapter& adapter, const Port& fc_port) {
    try {
        const FCPortAttributes attributes(adapter, fc_port.getPortIndex());
        const Port_Status status = port_status(attributes.PortState);
        port.OperationalStatus.set(Array<uint16>{status.operational_status});
        port.StatusDescriptions.set(Array<String>{status.description});
    } catch (...) {
        TVR_LOG("Error while retrieving fcPortAttributes");
        throw;
    }
}

struct Counter {
    uint64 FCPortStatistics::*counter;
    Property<uint64> TVRHBA_FCPortStatistics::*property;
    uint64 factor = 1;
    bool may_be_missing = false; // the property then keeps what it had
};
constexpr uint64 bytes_a_word = 4;

constexpr Counter counters[] = {
    {&FCPortStatistics::txFrames, &TVRHBA_FCPortStatistics::PacketsTransmitted},
    {&FCPortStatistics::txWords, &TVRHBA_FCPortStatistics::BytesTransmitted, bytes_a_word},
    {&FCPortStatistics::rxFrames, &TVRHBA_FCPortStatistics::PacketsReceived},
    {&FCPortStatistics::rxWords, &TVRHBA_FCPortStatistics::BytesReceived, bytes_a_word},
    {&FCPortStatistics::lipCount, &TVRHBA_FCPortStatistics::LIPCount},
    {&FCPortStatistics::nosCount, &TVRHBA_FCPortStatistics::NOSCount, 1, true},
    {&FCPortStatistics::errorFrames, &TVRHBA_FCPortStatistics::ErrorFrames},
    {&FCPortStatistics::dumpedFrames, &TVRHBA_FCPortStatistics::DumpedFrames, 1, true},
    {&FCPortStatistics::linkFailures, &TVRHBA_FCPortStatistics::LinkFailures},
    {&FCPortStatistics::lossOfSync, &TVRHBA_FCPortStatistics::LossOfSyncCounter},
    {&FCPortStatistics::lossOfSignal, &TVRHBA_FCPortStatistics::LossOfSignalCounter},
    {&FCPortStatistics::primitiveSeqErrors, &TVRHBA_FCPortStatistics::PrimitiveSeqProtocolErrCount},
    {&FCPortStatistics::invalidTxWords, &TVRHBA_FCPortStatistics::InvalidTransmissionWords},
    {&FCPortStatistics::invalidCRC, &TVRHBA_FCPortStatistics::CRCErrors},
    {&FCPortStatistics::txSequences, &TVRHBA_FCPortStatistics::TxSequences},
    {&FCPortStatistics::rxSequences, &TVRHBA_FCPortStatistics::RxSequences},
    {&FCPortStatistics::exchangesOriginated, &TVRHBA_FCPortStatistics::ExCountOrig},
    {&FCPortStatistics::exchangesResponded, &TVRHBA_FCPortStatistics::ExCountResp},
    {&FCPortStatistics::activeXRIs, &TVRHBA_FCPortStatistics::ActiveXRIs},
    {&FCPortStatistics::activeRPIs, &TVRHBA_FCPortStatistics::ActiveRPIs},
    {&FCPortStatistics::elasticBufferOverruns, &TVRHBA_FCPortStatistics::ElasticBufOverruns},
    {&FCPortStatistics::linkTransitions, &TVRHBA_FCPortStatistics::LinkTransitions},
    {&FCPortStatistics::primitiveSeqTimeouts, &TVRHBA_FCPortStatistics::PrimitiveSeqTimesouts},
    {&FCPortStatistics::arbitrationTimeouts, &TVRHBA_FCPortStatistics::ArbitrationTimeouts},
};

void update_counters(TVRHBA_FCPortStatistics& statistics, Port& port) {
    try {
        const auto& fetched = static_cast<const FCPortStatistics&>(*port.getStatistics());
        for (const Counter& row : counters) {
            const uint64 value = fetched.*row.counter;
            if (!row.may_be_missing || value < FCPortStatistics::notReported) {
                (statistics.*row.property).set(value * row.factor);
            }
        }
        statistics.StatisticTime.set(Datetime::now());
        TVR_LOG("PERF: GetFCPortStats: cleanExit");
    } catch (...) {
        TVR_LOG("Error occurred while retrieving FCPort Statistics...");
        throw;
    }
}

} // namespace

void UpdateFCPortStatus(ProviderAgent& agent) {
    static constinit Time_Limit limit;
    TVR_LOG("PERF: UpdateFCPortStatus: Entry");
    try {
        if (!limit.lets_run()) {
            return;
        }
        for_each_FC_adapter(agent.m_pData.get(), [&](const FCAdapter& adapter) {
            for (const std::unique_ptr<Port>& fc_port : adapter.getPorts()) {
                if (TVRHBA_FCPort* port =
                        find_of_port(agent.maps.m_TVRHBA_FCPort_map, &TVRHBA_FCPort::DeviceID,
                                     fc_port->getPortName())) {
                    update_status(*port, adapter, *fc_port);
                }
            }
            return true;
        });
    } catch (...) {
        TVR_LOG("Error while updating FC Port map");
    }
}

void GetFCPortStats(ProviderAgent& agent) {
    TVR_LOG("PERF: GetFCPortStats: Entry");
    try {
        for_each_FC_adapter(agent.m_pData.get(), [&](const FCAdapter& adapter) {
            for (const std::unique_ptr<Port>& port : adapter.getPorts()) {
                if (TVRHBA_FCPortStatistics* statistics =
                        find_of_port(agent.maps.m_TVRHBA_FCPortStatistics_map,
                                     &TVRHBA_FCPortStatistics::InstanceID, port->getPortName())) {
                    update_counters(*statistics, *port);
                }
            }
            return true;
        });
    } catch (...) {
        TVR_LOG("Error getting FC Port statistics");
    }
}

} // namespace cimple
