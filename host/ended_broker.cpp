// The tables of a broker that has ended: every call is a fault, and fails.
#include "host/broker.h"

#include <type_traits>

namespace tvrhost {

namespace {

// The name of a member, for the fault's text.
template <auto Member> constexpr const char* name_of_member = "";

void set_failed(CMPIStatus* rc) noexcept {
    if (rc != nullptr) {
        *rc = {CMPI_RC_ERR_INVALID_HANDLE, nullptr};
    }
}
template <class Other> void set_failed(Other) noexcept {}

// What such a call answers.
template <class Answer> Answer failure() noexcept {
    Answer answer{};
    if constexpr (std::is_same_v<Answer, CMPIStatus>) {
        answer.rc = CMPI_RC_ERR_INVALID_HANDLE;
    } else if constexpr (std::is_same_v<Answer, CMPIData>) {
        answer.state = CMPI_nullValue | CMPI_badValue;
    }
    return answer;
}

void tell(const CMPIBroker* broker, const char* operation) {
    Broker_Side& side = side_of(broker);
    side.books.fault(Fault_Kind::ended_broker, std::string(operation) + " at the broker of " +
                                                   side.owner + side.books.place() +
                                                   " after the last cleanup of that class");
}

template <auto Member, class Answer, class... Arguments>
Answer refuse(const CMPIBroker* broker, Arguments... arguments) {
    tell(broker, name_of_member<Member>);
    (set_failed(arguments), ...);
    return failure<Answer>();
}

template <auto Member, class Table, class Answer, class... Arguments>
void put(Table& table, Answer (*Table::*)(const CMPIBroker*, Arguments...)) {
    table.*Member = refuse<Member, Answer, Arguments...>;
}

CMPIString* refuse_message(const CMPIBroker* broker, const char*, const char*, CMPIStatus* rc,
                           CMPICount, ...) {
    tell(broker, "getMessage");
    set_failed(rc);
    return nullptr;
}

#define TVR_BROKER_MEMBERS(X)                                                                      \
    X(prepareAttachThread)                                                                         \
    X(attachThread)                                                                                \
    X(detachThread)                                                                                \
    X(deliverIndication)                                                                           \
    X(enumerateInstanceNames)                                                                      \
    X(getInstance)                                                                                 \
    X(createInstance)                                                                              \
    X(modifyInstance)                                                                              \
    X(deleteInstance)                                                                              \
    X(execQuery)                                                                                   \
    X(enumerateInstances)                                                                          \
    X(associators)                                                                                 \
    X(associatorNames)                                                                             \
    X(references)                                                                                  \
    X(referenceNames)                                                                              \
    X(invokeMethod)                                                                                \
    X(setProperty)                                                                                 \
    X(getProperty)
#define TVR_MAKERS(X)                                                                              \
    X(newInstance)                                                                                 \
    X(newObjectPath)                                                                               \
    X(newArgs)                                                                                     \
    X(newString)                                                                                   \
    X(newArray)                                                                                    \
    X(newDateTime)                                                                                 \
    X(newDateTimeFromBinary)                                                                       \
    X(newDateTimeFromChars)                                                                        \
    X(newSelectExp)                                                                                \
    X(classPathIsA)                                                                                \
    X(toString)                                                                                    \
    X(isOfType)                                                                                    \
    X(getType)                                                                                     \
    X(logMessage)                                                                                  \
    X(trace)

#define TVR_NAME(member)                                                                           \
    template <> constexpr const char* name_of_member<&CMPIBrokerFT::member> = #member;
TVR_BROKER_MEMBERS(TVR_NAME)
#undef TVR_NAME
#define TVR_NAME(member)                                                                           \
    template <> constexpr const char* name_of_member<&CMPIBrokerEncFT::member> = #member;
TVR_MAKERS(TVR_NAME)
#undef TVR_NAME

CMPIBrokerFT ended_broker() {
    CMPIBrokerFT table{};
    table.brokerVersion = 100;
    table.brokerName = "ended";
#define TVR_PUT(member) put<&CMPIBrokerFT::member>(table, &CMPIBrokerFT::member);
    TVR_BROKER_MEMBERS(TVR_PUT)
#undef TVR_PUT
    return table;
}

CMPIBrokerEncFT ended_makers() {
    CMPIBrokerEncFT table{};
    table.ftVersion = 100;
    table.getMessage = refuse_message;
#define TVR_PUT(member) put<&CMPIBrokerEncFT::member>(table, &CMPIBrokerEncFT::member);
    TVR_MAKERS(TVR_PUT)
#undef TVR_PUT
    return table;
}

} // namespace

void Broker::end() noexcept {
    static const CMPIBrokerFT table = ended_broker();
    static const CMPIBrokerEncFT makers = ended_makers();
    _cmpi.bft = &table;
    _cmpi.eft = &makers;
}

} // namespace tvrhost
