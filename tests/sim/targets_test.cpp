#include "tests/sim/simulated_host.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr HBA_WWN firstTarget = {{0x50, 2, 0x54, 0x56, 0x90, 0, 0, 0}};

class TargetsTest : public SimulatedHost {
protected:
    void load(const std::string& adapters) {
        change(R"({"clear": true, "scenario": {"adapters": )" + adapters + "}}");
        m_adapter = open("A");
    }

    /// A mapping call with room for some rows; the count word and the rows are left behind.
    HBA_STATUS map(HBA_UINT32 room) {
        m_bytes.assign(offsetof(HBA_FCPTARGETMAPPING, entry) + room * sizeof(HBA_FCPSCSIENTRY), 0);
        auto* const mapping = reinterpret_cast<HBA_FCPTARGETMAPPING*>(m_bytes.data());
        mapping->NumberOfEntries = room;
        const HBA_STATUS status = CALL(m_library, HBA_GetFcpTargetMapping)(m_adapter, mapping);
        m_count = mapping->NumberOfEntries;
        return status;
    }

    HBA_FCPSCSIENTRY row(size_t index) const {
        HBA_FCPSCSIENTRY entry;
        std::memcpy(&entry,
                    m_bytes.data() + offsetof(HBA_FCPTARGETMAPPING, entry) + index * sizeof entry,
                    sizeof entry);
        return entry;
    }

    struct Answer {
        HBA_STATUS status;
        std::string response; ///< 255 bytes, 0xEE where nothing was written
        std::string sense;    ///< 128 bytes
    };
    template <class Command> Answer send(Command command) {
        Answer answer = {0, std::string(255, '\xEE'), std::string(128, '\xEE')};
        answer.status = command(answer.response.data(), answer.sense.data());
        return answer;
    }
    Answer inquire(HBA_UINT8 evpd, HBA_UINT32 page, const HBA_WWN& target = firstTarget,
                   HBA_UINT64 lun = 0) {
        return send([&](char* response, char* sense) {
            return CALL(m_library, HBA_SendScsiInquiry)(m_adapter, target, lun, evpd, page,
                                                        response, 255, sense, 128);
        });
    }
    Answer readCapacity(const HBA_WWN& target = firstTarget, HBA_UINT64 lun = 0) {
        return send([&](char* response, char* sense) {
            return CALL(m_library, HBA_SendReadCapacity)(m_adapter, target, lun, response, 255,
                                                         sense, 128);
        });
    }

    HBA_HANDLE m_adapter = HBA_HANDLE_INVALID;
    std::vector<char> m_bytes;
    HBA_UINT32 m_count = 0;
};

} // namespace

TEST_F(TargetsTest, MappingsMisbehaveAsTold) {
    load(R"([{"name": "A", "ports": [{"targets": [{"luns": [{"copies": 3}]}]}]}])");
    const auto faults = [&](const std::string& mapping) {
        change(R"({"adapters": {"A": {"mapping": )" + mapping + "}}}");
    };
    EXPECT_EQ(map(2), HBA_STATUS_ERROR_MORE_DATA);
    EXPECT_EQ(m_count, 3U);
    faults(R"({"staleTimes": 2, "moreDataTimes": 1})");
    EXPECT_EQ(map(5), HBA_STATUS_ERROR_STALE_DATA);
    EXPECT_EQ(m_count, 5U);
    EXPECT_EQ(map(5), HBA_STATUS_ERROR_STALE_DATA);
    EXPECT_EQ(map(5), HBA_STATUS_ERROR_MORE_DATA);
    EXPECT_EQ(m_count, 6U) << "it has grown";
    EXPECT_EQ(map(5), HBA_STATUS_OK);
    EXPECT_EQ(m_count, 3U);
    for (const char* need : {"0", "1", "4294967295"}) {
        faults(std::string("{\"moreDataTimes\": 1, \"need\": ") + need + "}");
        EXPECT_EQ(map(5), HBA_STATUS_ERROR_MORE_DATA);
        EXPECT_EQ(std::to_string(m_count), need);
        EXPECT_EQ(map(2), HBA_STATUS_ERROR_MORE_DATA);
        EXPECT_EQ(std::to_string(m_count), need) << "also where the room is really too small";
    }
    faults(R"({"rows": 4000000000})");
    EXPECT_EQ(map(3), HBA_STATUS_OK);
    EXPECT_EQ(m_count, 4000000000U);
    EXPECT_EQ(row(2).FcpId.FcpLun, 2U);

    // The calls of the two libraries have faults of their own.
    auto& mapOfPort = CALL(m_library, LRM_GetFcpTargetMapping);
    HBA_FCPTARGETMAPPING one = {1, {}};
    EXPECT_EQ(mapOfPort(firstPort, &one), RM_STATUS_MORE_DATA);
    EXPECT_EQ(one.NumberOfEntries, 3U);
    changePort(R"({"mapping": {"staleTimes": 1}})");
    EXPECT_EQ(map(3), HBA_STATUS_OK);
    one.NumberOfEntries = 1;
    EXPECT_EQ(mapOfPort(firstPort, &one), HBA_STATUS_ERROR_STALE_DATA);
    EXPECT_EQ(mapOfPort(firstPort, &one), RM_STATUS_MORE_DATA);
    faults("null");
    EXPECT_EQ(map(3), HBA_STATUS_OK);
    EXPECT_EQ(m_count, 3U);
}

TEST_F(TargetsTest, CommandsFailSoOftenAndAnswerAnyBytes) {
    load(R"([{"name": "A", "ports": [{"targets": [{"luns": [{
        "serialNumber": "SN", "identifiers": [
            {"type": "t10", "text": "AB", "association": "device", "protocol": 5},
            {"type": 15, "codeSet": 3, "bytes": "01020304", "length": 255}],
        "raw": {"0x80": "0080FFFF 41", "0x83": null, "0xB0": "", "readCapacity": "0102"},
        "failures": {"inquiry": {"times": 2, "sense": "70 00 02"}, "0x80": {"times": 1},
                     "0xB0": {"status": 2, "times": 1}, "readCapacity": {"status": 10}}},
        {"identifier": "6002545600000001"}]}]}]}])");
    for (int i = 0; i < 2; ++i) {
        const Answer failed = inquire(0, 0);
        EXPECT_EQ(failed.status, HBA_STATUS_SCSI_CHECK_CONDITION);
        EXPECT_EQ(failed.sense.substr(0, 4), std::string("\x70\0\x02\xEE", 4));
        EXPECT_EQ(failed.response, std::string(255, '\xEE'));
    }
    EXPECT_EQ(inquire(0, 0, firstTarget, 1).status, HBA_STATUS_OK) << "each unit for itself";
    EXPECT_EQ(inquire(0, 0).status, HBA_STATUS_OK);
    EXPECT_EQ(inquire(1, 0x80).sense.at(2), 6) << "unit attention";
    EXPECT_EQ(inquire(1, 0x80).response.substr(0, 6), std::string("\0\x80\xFF\xFF"
                                                                  "A\xEE",
                                                                  6));
    EXPECT_EQ(inquire(1, 0x83).sense.at(12), 0x24);
    EXPECT_EQ(inquire(0, 0x80).sense.at(12), 0x24) << "a page of the standard data";
    EXPECT_EQ(inquire(0, 0, firstTarget, 9).sense.at(2), 5) << "no such unit";
    EXPECT_EQ(inquire(1, 0xB0).status, HBA_STATUS_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(inquire(1, 0xB0).response, std::string(255, '\xEE')) << "an answer without bytes";
    EXPECT_EQ(inquire(1, 0).response.substr(0, 8), std::string("\0\0\0\x03\0\x80\xB0\xEE", 8));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(readCapacity().status, HBA_STATUS_ERROR_BUSY) << "without times: always";
    }
    changePort(R"({"targets": [{"luns": [{"identifiers": [
        {"type": "t10", "text": "AB", "association": "device", "protocol": 5},
        {"type": 15, "codeSet": 3, "bytes": "01020304", "length": 255}],
        "raw": {"readCapacity": "0102"}}]}]})");
    EXPECT_EQ(inquire(1, 0x83).response.substr(0, 18),
              std::string("\0\x83\0\x0E\x52\x21\0\x02"
                          "AB\x03\x0F\0\xFF\x01\x02\x03\x04",
                          18));
    EXPECT_EQ(readCapacity().response.substr(0, 3), "\x01\x02\xEE");

    // An identifier and a serial number that go on beyond the response.
    changePort(R"({"targets": [{"luns": [{"type": "tape", "blocks": 3, "blockSize": 2,
        "identifier": ")" +
               std::string(510, 'A') + R"(", "serialNumber": ")" + std::string(1000, 's') +
               "\"}]}]}");
    EXPECT_EQ(inquire(1, 0x83).response.substr(4),
              "\x01\x03" + std::string("\0\xFF", 2) + std::string(247, '\xAA'));
    EXPECT_EQ(inquire(1, 0x80).response.substr(2), std::string("\x03\xE8") + std::string(251, 's'));
    EXPECT_EQ(readCapacity().response.substr(0, 9), std::string("\0\0\0\x02\0\0\0\x02\xEE", 9))
        << "a tape with blocks";
    changePort(R"({"targets": [{"luns": [{"blocks": 18446744073709551615}, {"type": "tape"}]}]})");
    EXPECT_EQ(readCapacity().response.substr(0, 4), "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(readCapacity(firstTarget, 1).sense.at(12), 0x20);
    std::string small(6, '#');
    EXPECT_EQ(CALL(m_library, HBA_SendScsiInquiry)(m_adapter, firstTarget, 0, 0, 0, small.data(), 5,
                                                   nullptr, 0),
              HBA_STATUS_OK);
    EXPECT_EQ(small[5], '#') << "an answer is cut to the buffer";
}

// Commands that count their failures meet tables that are replaced under them.
TEST_F(TargetsTest, CommandsSurviveChangesOfTheTargets) {
    const std::string targets = R"({"targets": [{"luns": [{"copies": 50,
        "failures": {"inquiry": {"times": 3}}}]}]})";
    load(R"([{"name": "A", "ports": [)" + targets + "]}]");
    std::atomic<bool> stop = false;
    std::atomic<int> strange = 0;
    {
        std::vector<std::jthread> callers;
        for (HBA_UINT64 caller = 0; caller < 3; ++caller) {
            callers.emplace_back([&, caller] {
                char response[255];
                char sense[128];
                for (HBA_UINT64 lun = caller; !stop; lun = (lun + 1) % 50) {
                    const HBA_STATUS status = CALL(m_library, HBA_SendScsiInquiry)(
                        m_adapter, firstTarget, lun, 0, 0, response, sizeof response, sense,
                        sizeof sense);
                    strange += status != HBA_STATUS_OK && status != HBA_STATUS_SCSI_CHECK_CONDITION;
                }
            });
        }
        for (int i = 0; i < 50; ++i) {
            changePort(targets);
        }
        stop = true;
    }
    EXPECT_EQ(strange, 0);
}
