#include "tests/sim/simulated_host.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <vector>

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
        set_up_session();
    }
    void set_up_session();

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

    std::map<std::string, HBA_HANDLE> m_handles{{"none", HBA_HANDLE_INVALID}};
};

void LibraryTest::set_up_session() {
    session.on("control", [this] { return control(session.rest()); });
    session.on("adapters", [this] { return CALL(m_library, HBA_GetNumberOfAdapters)(); });
    session.on("name", [this](const auto& words) {
        char name[256] = "none";
        const HBA_STATUS status = CALL(m_library, HBA_GetAdapterName)(number(words.at(0)), name);
        return std::to_string(status) + ' ' + name;
    });
    session.on("open", [this](const auto& words) { // an adapter, as a handle of that name
        const HBA_HANDLE handle = m_handles[words.at(1)] = open(words.at(0));
        return handle == HBA_HANDLE_INVALID ? "none" : "a handle";
    });
    session.on("opened", [this] { return CALL(m_library, tvrsim_open_handles)(); });
    session.on("close", [this](const auto& words) {
        CALL(m_library, HBA_CloseAdapter)(m_handles.at(words.at(0)));
    });
    session.on("refresh", [this](const auto& words) {
        CALL(m_library, HBA_RefreshInformation)(m_handles.at(words.at(0)));
    });
    // The statuses of calls with handles: for attributes, a port's attributes, and a mapping.
    session.on("ask", [this](const auto& words, std::ostream& answer) {
        for (std::size_t i = 1; i < words.size(); ++i) {
            const HBA_HANDLE handle = m_handles.at(words[i]);
            HBA_ADAPTERATTRIBUTES adapter;
            HBA_PORTATTRIBUTES port;
            HBA_FCPTARGETMAPPING mapping = {};
            const HBA_STATUS status = CALL(m_library, HBA_GetAdapterAttributes)(handle, &adapter);
            answer << status << ' '
                   << CALL(m_library, HBA_GetAdapterPortAttributes)(handle, number(words[0]), &port)
                   << ' ' << CALL(m_library, HBA_GetFcpTargetMapping)(handle, &mapping);
            if (status == HBA_STATUS_OK) {
                answer << ", " << adapter.NumberOfPorts << " ports, " << adapter.FirmwareVersion;
            }
            answer << '\n';
        }
    });
    session.on("counter", [this](const auto& words) {
        const auto value = counter(static_cast<uint16_t>(number(words.at(0))));
        return value ? std::to_string(*value) : "none";
    });
    session.on("beacon", [this](const auto& words) {
        return CALL(m_library, LRM_DiagBeacon)(firstPort, number(words.at(0)));
    });
    // Status and answer, which is 77 where nothing was written.
    const auto on_value = [this](const char* name, auto& call) {
        session.on(name, [&call] {
            uint32_t value = 77;
            const RM_STATUS status = call(firstPort, &value);
            return std::to_string(status) + ' ' + std::to_string(value);
        });
    };
    on_value("beacon-state", CALL(m_library, LRM_DiagBeaconState));
    on_value("LRM-driver-type", CALL(m_library, LRM_GetDriverType));
    on_value("RM-driver-type", *m_library.find<decltype(LRM_GetDriverType)>("RM_GetDriverType"));
    session.on("calls", [this](const auto& words) { return calls(words.at(0).c_str()); });
}

TVR_SESSIONS(LibraryTest, "library.txt");

} // namespace

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

TEST_F(LibraryTest, HandlesStayWithinSixteenBitsAndMessagesWithinTheirRoom) {
    for (int i = 0; i < 0x10010; ++i) {
        const HBA_HANDLE each = open("Tavrin-A");
        ASSERT_TRUE(each >= 1 && each <= 0xFFFF) << each;
        CALL(m_library, HBA_CloseAdapter)(each);
    }
    EXPECT_EQ(CALL(m_library, HBA_OpenAdapter)(nullptr), HBA_HANDLE_INVALID);
    EXPECT_TRUE(control("{").starts_with("document: parse error"));
    char small[4] = "";
    EXPECT_EQ(CALL(m_library, tvrsim_control)("{", small, sizeof small), -1);
    EXPECT_STREQ(small, "doc");
}
