#include "tests/sim/simulated_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <vector>

using testing::StartsWith;

namespace {

/// Each case starts from a host of its own: an adapter with two ports and one with one.
class LibraryTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"clear": true, "resetCounts": true, "scenario": {"adapters": [
            {"name": "Tavrin-A", "driverType": 7, "ports": [
                {"statistics": {"txFrames": {"value": 100, "perRead": 10}, "rxFrames": null,
                                "nosCount": 18446744073709551615}}, {}]},
            {"name": "Tavrin-B", "attributes": {"kernelVersion": null}}]}})");
    }

    /// A value of 64 bits in a statistics buffer, if it is there.
    std::optional<uint64_t> counter(uint16_t id) {
        std::vector<uint64_t> buffer(RM_PORT_STATISTICS_SIZE / sizeof(uint64_t));
        uint32_t size = RM_PORT_STATISTICS_SIZE;
        EXPECT_EQ(CALL(m_library, LRM_GetPortStatistics)(firstPort, buffer.data(), &size), 0U);
        uint16_t length = 0;
        RM_STATUS status = 99;
        const void* const value =
            CALL(m_library, RM_GetAttributeValue)(buffer.data(), id, &length, &status);
        EXPECT_EQ(status == RM_STATUS_OK, value != nullptr);
        EXPECT_EQ(length, value == nullptr ? 0 : sizeof(uint64_t));
        std::optional<uint64_t> number;
        if (value != nullptr) {
            std::memcpy(&number.emplace(), value, sizeof(uint64_t));
        }
        return number;
    }
};

} // namespace

TEST_F(LibraryTest, AdaptersByIndexNameAndHandle) {
    ASSERT_EQ(CALL(m_library, HBA_GetNumberOfAdapters)(), 2U);
    char name[256];
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterName)(2, name), HBA_STATUS_ERROR_ILLEGAL_INDEX);
    EXPECT_EQ(open("Tavrin-C"), HBA_HANDLE_INVALID);
    EXPECT_EQ(CALL(m_library, HBA_OpenAdapter)(nullptr), HBA_HANDLE_INVALID);
    for (int i = 0; i < 0x10010; ++i) {
        const HBA_HANDLE each = open("Tavrin-A");
        ASSERT_TRUE(each >= 1 && each <= 0xFFFF) << each;
        CALL(m_library, HBA_CloseAdapter)(each);
    }

    const HBA_HANDLE handle = open("Tavrin-A");
    ASSERT_NE(handle, HBA_HANDLE_INVALID);
    HBA_ADAPTERATTRIBUTES adapter;
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(handle, &adapter), HBA_STATUS_OK);
    EXPECT_EQ(adapter.NumberOfPorts, 2U);
    HBA_PORTATTRIBUTES port;
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterPortAttributes)(handle, 2, &port),
              HBA_STATUS_ERROR_ILLEGAL_INDEX);
    EXPECT_EQ(CALL(m_library, tvrsim_open_handles)(), 1U);
    CALL(m_library, HBA_CloseAdapter)(handle);
    EXPECT_EQ(CALL(m_library, tvrsim_open_handles)(), 0U);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(handle, &adapter),
              HBA_STATUS_ERROR_INVALID_HANDLE);
}

TEST_F(LibraryTest, AttributeBuffersHaveRoomForAll) {
    using Fetch = RM_STATUS(HBA_WWN, void*, uint32_t*);
    for (const auto& [name, room] : {std::pair("LRM_GetHBAAttributes", RM_HBA_ATTRIBUTES_SIZE),
                                     {"LRM_GetPortAttributes", RM_PORT_ATTRIBUTES_SIZE},
                                     {"LRM_GetPortStatistics", RM_PORT_STATISTICS_SIZE}}) {
        Fetch& fetch = *m_library.find<Fetch>(name);
        std::vector<uint64_t> buffer(room / sizeof(uint64_t));
        uint32_t size = room;
        EXPECT_EQ(fetch(firstPort, buffer.data(), &size), RM_STATUS_OK) << name;
        --size;
        EXPECT_EQ(fetch(firstPort, buffer.data(), &size), RM_STATUS_MORE_DATA) << name;
        EXPECT_EQ(fetch(firstPort, buffer.data(), nullptr), RM_STATUS_ERROR) << name;
        EXPECT_EQ(fetch(strangePort, buffer.data(), &size), RM_STATUS_ILLEGAL_WWN) << name;
    }
}

TEST_F(LibraryTest, AttributesAreFoundById) {
    std::vector<uint64_t> buffer(RM_HBA_ATTRIBUTES_SIZE / sizeof(uint64_t));
    auto& value = CALL(m_library, RM_GetAttributeValue);
    uint16_t length = 9;
    RM_STATUS status = 99;
    EXPECT_EQ(value(buffer.data(), RM_HA_DEVICE_ID, &length, &status), nullptr)
        << "a buffer that nobody filled";
    EXPECT_EQ(status, RM_STATUS_ERROR);
    EXPECT_EQ(length, 0U);

    uint32_t size = RM_HBA_ATTRIBUTES_SIZE;
    ASSERT_EQ(CALL(m_library, LRM_GetHBAAttributes)(thirdPort, buffer.data(), &size), RM_STATUS_OK);
    const void* const address = value(buffer.data(), RM_HA_IEEE_ADDRESS, &length, &status);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(status, RM_STATUS_OK);
    EXPECT_EQ(std::string(static_cast<const char*>(address), length),
              std::string("\x02\x54\x56\0\x01\0", 6));
    EXPECT_EQ(value(buffer.data(), RM_HA_KERNEL_VERSION, &length, &status), nullptr);
    EXPECT_EQ(value(nullptr, RM_HA_DEVICE_ID, nullptr, nullptr), nullptr);
}

TEST_F(LibraryTest, LengthsOfValuesAreToldAsChosen) {
    std::vector<uint64_t> buffer(RM_HBA_ATTRIBUTES_SIZE / sizeof(uint64_t));
    for (const auto& [word, told] :
         {std::pair("exact", 4), {"zero", 0}, {"generous", 8}, {"wild", 65535}}) {
        change(std::string(R"({"adapters": {"Tavrin-B": {"attributeLengths": ")") + word + "\"}}}");
        uint32_t size = RM_HBA_ATTRIBUTES_SIZE;
        EXPECT_EQ(CALL(m_library, LRM_GetHBAAttributes)(thirdPort, buffer.data(), &size), 0U);
        uint16_t length = 9;
        RM_STATUS status = 99;
        const void* const value =
            CALL(m_library, RM_GetAttributeValue)(buffer.data(), RM_HA_SLI_MODE, &length, &status);
        ASSERT_NE(value, nullptr) << word;
        EXPECT_EQ(std::memcmp(value, "\3\0\0", 4), 0) << word;
        EXPECT_EQ(length, told) << word;
    }
}

TEST_F(LibraryTest, StaleDataStayUntilTheyAreRefreshed) {
    const HBA_HANDLE first = open("Tavrin-A");
    const HBA_HANDLE second = open("Tavrin-A");
    // The statuses of the two handles, which are alike for all calls.
    const auto statuses = [&] {
        std::string text;
        for (const HBA_HANDLE handle : {first, second}) {
            HBA_ADAPTERATTRIBUTES adapter;
            HBA_PORTATTRIBUTES port;
            HBA_FCPTARGETMAPPING mapping = {};
            text +=
                std::to_string(CALL(m_library, HBA_GetAdapterAttributes)(handle, &adapter)) +
                std::to_string(CALL(m_library, HBA_GetAdapterPortAttributes)(handle, 0, &port)) +
                std::to_string(CALL(m_library, HBA_GetFcpTargetMapping)(handle, &mapping)) + ' ';
        }
        return text;
    };
    const auto choose = [&](const std::string& staleness) {
        change(R"({"adapters": {"Tavrin-A": {"staleness": ")" + staleness + "\"}}}");
        return statuses();
    };
    auto& refresh = CALL(m_library, HBA_RefreshInformation);
    EXPECT_EQ(statuses(), "000 000 ");
    EXPECT_EQ(choose("everyHandle"), "888 888 ");
    refresh(first);
    EXPECT_EQ(statuses(), "000 888 ");
    EXPECT_EQ(choose("afterChanges"), "888 888 ");
    refresh(second);
    EXPECT_EQ(statuses(), "000 000 ");
    changePort(R"({"state": "linkDown"})");
    EXPECT_EQ(statuses(), "888 888 ");
    refresh(HBA_HANDLE_INVALID);
    EXPECT_EQ(statuses(), "888 888 ");
    EXPECT_EQ(choose("never"), "000 000 ");
}

TEST_F(LibraryTest, CountersMoveUnlessTheAdapterLacksThem) {
    EXPECT_EQ(counter(RM_PS_TX_FRAMES), 100U);
    EXPECT_EQ(counter(RM_PS_TX_FRAMES), 110U);
    EXPECT_EQ(counter(RM_PS_NOS_COUNT), UINT64_MAX);
    EXPECT_EQ(counter(RM_PS_RX_FRAMES), std::nullopt);
}

TEST_F(LibraryTest, BeaconGoesOnAndOffWhereThereIsOne) {
    auto& set = CALL(m_library, LRM_DiagBeacon);
    auto& get = CALL(m_library, LRM_DiagBeaconState);
    uint32_t state = 77;
    EXPECT_EQ(set(firstPort, RM_BEACON_ON), RM_STATUS_OK);
    EXPECT_EQ(get(firstPort, &state), RM_STATUS_OK);
    EXPECT_EQ(state, RM_BEACON_ON);
    EXPECT_EQ(set(firstPort, 9), RM_STATUS_ERROR);

    for (const auto& [word, status, answer, refusal] : {std::tuple("notSupported", 2U, 77U, 2U),
                                                        {"noDiagnostics", 63U, 77U, 63U},
                                                        {"unanswered", 0U, 77U, 2U},
                                                        {"unknown", 0U, 103U, 2U}}) {
        changePort(std::string("{\"beacon\": \"") + word + "\"}");
        state = 77;
        EXPECT_EQ(get(firstPort, &state), status) << word;
        EXPECT_EQ(state, answer) << word;
        EXPECT_EQ(set(firstPort, RM_BEACON_ON), refusal) << word;
    }
}

TEST_F(LibraryTest, ControlChangesAllOrNothing) {
    const auto adapters = [this] { return CALL(m_library, HBA_GetNumberOfAdapters)(); };
    EXPECT_THAT(control("{"), StartsWith("document: parse error"));
    EXPECT_EQ(control(R"({"reset": true})"), "reset: no such field");
    EXPECT_EQ(control(R"({"scenario": {}, "adapters": {"Tavrin-A": {}}})"),
              "adapters.Tavrin-A: no such adapter");
    EXPECT_THAT(control(R"({"entryPoints": {"HBA_GetVersion": {"status": 3}}, "clear": 1})"),
                StartsWith("clear: true or false"));
    EXPECT_EQ(adapters(), 2U);

    change(R"({"adapters": {"Tavrin-B": {"firmwareVersion": "2.83a1"}},
                          "entryPoints": {"HBA_GetNumberOfAdapters": {"status": 9}}})");
    EXPECT_EQ(adapters(), 9U);
    change(R"({"clear": true})");
    HBA_ADAPTERATTRIBUTES attributes;
    const HBA_HANDLE handle = open("Tavrin-B");
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(handle, &attributes), HBA_STATUS_OK);
    EXPECT_STREQ(attributes.FirmwareVersion, "2.83a1");
    change(R"({"scenario": {"adapters": [{}]}})");
    EXPECT_EQ(adapters(), 1U);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(handle, &attributes),
              HBA_STATUS_ERROR_INVALID_HANDLE);

    char small[4] = "";
    EXPECT_EQ(CALL(m_library, tvrsim_control)("{", small, sizeof small), -1);
    EXPECT_STREQ(small, "doc");
}

TEST_F(LibraryTest, RulesReachTheEntryPoints) {
    change(R"({"entryPoints": {
        "LRM_GetDriverType": {"status": 20},
        "HBA_OpenAdapter": {"where": "Tavrin-B", "status": 1},
        "HBA_GetAdapterPortAttributes": {"where": "1000025456000001", "status": 8}}})");
    uint32_t type = 77;
    EXPECT_EQ(CALL(m_library, LRM_GetDriverType)(firstPort, &type), 20U);
    EXPECT_EQ(type, 77U);
    EXPECT_EQ(m_library.find<decltype(LRM_GetDriverType)>("RM_GetDriverType")(firstPort, &type),
              0U);
    EXPECT_EQ(calls("LRM_GetDriverType"), 1);
    EXPECT_EQ(calls("RM_GetDriverType"), 1);
    EXPECT_EQ(calls("LRM_Unknown"), -1);

    EXPECT_EQ(open("Tavrin-B"), HBA_HANDLE_INVALID);
    const HBA_HANDLE handle = open("Tavrin-A");
    HBA_PORTATTRIBUTES port;
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterPortAttributes)(handle, 0, &port), HBA_STATUS_OK);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterPortAttributes)(handle, 1, &port),
              HBA_STATUS_ERROR_STALE_DATA);
    change(R"({"resetCounts": true})");
    EXPECT_EQ(calls("*"), 0);
}
