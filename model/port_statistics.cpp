#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "common/logger.h"
#include "model/port.h"

#include <stdexcept>

namespace cimple {

namespace {

struct Counter {
    uint16 attribute;
    uint64 FCPortStatistics::*field;
};

constexpr Counter counters[] = {
    {RM_PS_SECONDS_SINCE_RESET, &FCPortStatistics::secondsSinceReset},
    {RM_PS_TX_FRAMES, &FCPortStatistics::txFrames},
    {RM_PS_RX_FRAMES, &FCPortStatistics::rxFrames},
    {RM_PS_TX_WORDS, &FCPortStatistics::txWords},
    {RM_PS_RX_WORDS, &FCPortStatistics::rxWords},
    {RM_PS_LIP_COUNT, &FCPortStatistics::lipCount},
    {RM_PS_NOS_COUNT, &FCPortStatistics::nosCount},
    {RM_PS_ERROR_FRAMES, &FCPortStatistics::errorFrames},
    {RM_PS_DUMPED_FRAMES, &FCPortStatistics::dumpedFrames},
    {RM_PS_LINK_FAILURES, &FCPortStatistics::linkFailures},
    {RM_PS_LOSS_OF_SYNC, &FCPortStatistics::lossOfSync},
    {RM_PS_LOSS_OF_SIGNAL, &FCPortStatistics::lossOfSignal},
    {RM_PS_PRIMITIVE_SEQ_ERRORS, &FCPortStatistics::primitiveSeqErrors},
    {RM_PS_INVALID_TX_WORDS, &FCPortStatistics::invalidTxWords},
    {RM_PS_INVALID_CRC, &FCPortStatistics::invalidCRC},
    {RM_PS_EXCHANGES_ORIGINATED, &FCPortStatistics::exchangesOriginated},
    {RM_PS_EXCHANGES_RESPONDED, &FCPortStatistics::exchangesResponded},
    {RM_PS_TX_SEQUENCES, &FCPortStatistics::txSequences},
    {RM_PS_RX_SEQUENCES, &FCPortStatistics::rxSequences},
    {RM_PS_LINK_TRANSITIONS, &FCPortStatistics::linkTransitions},
    {RM_PS_ACTIVE_RPIS, &FCPortStatistics::activeRPIs},
    {RM_PS_ACTIVE_XRIS, &FCPortStatistics::activeXRIs},
    {RM_PS_PRIMITIVE_SEQ_TIMEOUTS, &FCPortStatistics::primitiveSeqTimeouts},
    {RM_PS_ELASTIC_BUFFER_OVERRUNS, &FCPortStatistics::elasticBufferOverruns},
    {RM_PS_ARBITRATION_TIMEOUTS, &FCPortStatistics::arbitrationTimeouts},
};

// What the library tells for a counter that the adapter does not have.
constexpr uint64 noCounter = UINT64_MAX;

} // namespace

FCPortStatistics::FCPortStatistics(const std::string& portName) {
    HBA_WWN wwn;
    if (TVR_MethodWrapper::string2HBAName(wwn, portName) == 0) {
        throw std::runtime_error("not a port name");
    }
    AttributeBuffer buffer(RM_PORT_STATISTICS_SIZE);
    const RM_STATUS status = rm::LRM_GetPortStatistics(wwn, buffer.data(), &buffer.size);
    if (status != RM_STATUS_OK) {
        TVR_LOG("ERROR: RM_GetPortStatistics call failed (%d)", status);
        throw std::runtime_error("LRM_GetPortStatistics failed");
    }
    for (const Counter& counter : counters) {
        const std::optional<uint64> value = getAttributeCounter(buffer, counter.attribute);
        if (value && *value != noCounter) {
            this->*counter.field = *value;
        }
    }
}

} // namespace cimple
