// A fixture that puts the simulated library into a known state and calls it.
#pragma once

#include "tests/common/session.h"
#include "tests/sim/simulated_library.h"

#include <gtest/gtest.h>

#include <cstring>

constexpr HBA_WWN firstPort = {{0x10, 0, 2, 0x54, 0x56, 0, 0, 0}};
constexpr HBA_WWN secondPort = {{0x10, 0, 2, 0x54, 0x56, 0, 0, 1}};
constexpr HBA_WWN thirdPort = {{0x10, 0, 2, 0x54, 0x56, 0, 1, 0}};
constexpr HBA_WWN strangePort = {{0x10, 0, 2, 0x54, 0x56, 9, 9, 9}};

class SimulatedHost : public testing::Test {
protected:
    SimulatedHost() {
        session.on("change", [this] { change(session.rest()); });
        session.on("port", [this] { changePort(session.rest()); });
    }
    void TearDown() override { control(R"({"clear": true})"); }

    /// The message of a control request, empty when it was taken.
    std::string control(const std::string& request) { return control(request.c_str()); }
    std::string control(const char* request) {
        char message[256] = "";
        const int result = CALL(m_library, tvrsim_control)(request, message, sizeof message);
        EXPECT_EQ(result, *message == '\0' ? 0 : -1);
        return message;
    }

    /// A request that is taken.
    void change(const std::string& request) { EXPECT_EQ(control(request), "") << request; }

    /// Changes fields of the first port.
    void changePort(const std::string& fields) {
        change(R"({"ports": {"1000025456000000": )" + fields + "}}");
    }

    static uint32_t number(const std::string& word) {
        return static_cast<uint32_t>(std::stoul(word));
    }

    int64_t calls(const char* name) { return CALL(m_library, tvrsim_calls)(name); }

    HBA_HANDLE open(std::string name) { return CALL(m_library, HBA_OpenAdapter)(name.data()); }

    /// A 32-bit attribute of the first port's adapter or port.
    uint32_t attribute(uint16_t id) {
        alignas(8) char buffer[RM_HBA_ATTRIBUTES_SIZE];
        uint32_t size = sizeof buffer;
        auto& fetch = id < RM_PA_TOPOLOGY ? CALL(m_library, LRM_GetHBAAttributes)
                                          : CALL(m_library, LRM_GetPortAttributes);
        EXPECT_EQ(fetch(firstPort, buffer, &size), RM_STATUS_OK);
        uint16_t length = 0;
        RM_STATUS status = 99;
        const void* const bytes =
            CALL(m_library, RM_GetAttributeValue)(buffer, id, &length, &status);
        uint32_t value = 0;
        EXPECT_EQ(length, sizeof value) << id;
        if (length == sizeof value) {
            std::memcpy(&value, bytes, sizeof value);
        }
        return value;
    }

    const SimulatedLibrary m_library{TVRSIM_DIRECTORY "/liblrmapi.so"};
    Text_Session session;
};
