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

private:
    void SetUp() override { set_up_session(); }
    void set_up_session();
};

void TargetsTest::set_up_session() {
    session.on("load", [this] { load(session.rest()); });
    session.on("faults",
               [this] { change(R"({"adapters": {"A": {"mapping": )" + session.rest() + "}}}"); });
    // With room for so many rows: the status, the count, and the number of the last row's unit.
    session.on("map", [this](const auto& words, std::ostream& answer) {
        const auto room = number(words.at(0));
        answer << map(room) << ", ";
        answer << m_count << " rows, the last of unit " << row(room - 1).FcpId.FcpLun << '\n';
    });
    session.on("map-port", [this](const auto&, std::ostream& answer) { // for one row
        HBA_FCPTARGETMAPPING one = {1, {}};
        answer << CALL(m_library, LRM_GetFcpTargetMapping)(firstPort, &one) << ", ";
        answer << one.NumberOfEntries << " rows\n";
    });
    // Status, response and sense data, up to what wasn't written.
    const auto tell = [](const Answer& sent, std::ostream& answer) {
        answer << sent.status;
        for (const std::string* bytes : {&sent.response, &sent.sense}) {
            const std::size_t end = bytes->find_last_not_of('\xEE') + 1;
            answer << " | ";
            for (std::size_t i = 0; i < std::min<std::size_t>(end, 24); ++i) {
                const auto byte = static_cast<unsigned char>((*bytes)[i]);
                answer << "0123456789ABCDEF"[byte >> 4] << "0123456789ABCDEF"[byte & 15];
            }
            answer << " (" << end << ')';
        }
        answer << '\n';
    };
    session.on("inquire", [=, this](const auto& words, std::ostream& answer) {
        tell(inquire(static_cast<HBA_UINT8>(std::stoul(words.at(0))),
                     static_cast<HBA_UINT32>(std::stoul(words.at(1), nullptr, 16)), firstTarget,
                     words.size() > 2 ? std::stoul(words[2]) : 0),
             answer);
    });
    session.on("capacity", [=, this](const auto& words, std::ostream& answer) {
        tell(readCapacity(firstTarget, words.empty() ? 0 : std::stoul(words[0])), answer);
    });
}

TVR_SESSIONS(TargetsTest, "targets.txt");

} // namespace

TEST_F(TargetsTest, AnswersAreCutToTheBuffer) {
    load(R"([{"name": "A", "ports": [{"targets": [{"luns": [{}]}]}]}])");
    std::string small(6, '#');
    EXPECT_EQ(CALL(m_library, HBA_SendScsiInquiry)(m_adapter, firstTarget, 0, 0, 0, small.data(), 5,
                                                   nullptr, 0),
              HBA_STATUS_OK);
    EXPECT_EQ(small[5], '#');
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
