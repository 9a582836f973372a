#include "tests/sim/simulated_host.h"

#include <vector>

namespace {

/// Memory behind a count word, filled so that every write shows.
class Answer {
public:
    Answer(size_t head, size_t entry, uint32_t room)
        : m_head(head), m_entry(entry), m_bytes(head + entry * (room + 1), 0x5A) {
        std::memcpy(m_bytes.data() + head - sizeof room, &room, sizeof room);
        std::memcpy(m_bytes.data(), &room, sizeof room);
    }

    template <class Record> Record* as() { return reinterpret_cast<Record*>(m_bytes.data()); }
    uint8_t* entries() { return m_bytes.data() + m_head; }

    /// Entries in which something was written.
    size_t written() const {
        size_t last = 0;
        for (size_t i = m_head; i < m_bytes.size(); ++i) {
            if (m_bytes[i] != 0x5A) {
                last = (i - m_head) / m_entry + 1;
            }
        }
        return last;
    }

private:
    size_t m_head;
    size_t m_entry;
    std::vector<uint8_t> m_bytes;
};

class VirtualPortsTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"scenario": {"adapters": [{"ports": [{"virtualPorts": {"entries": [
            {"name": ")" +
               std::string(256, 'n') +
               R"(", "targets": [{"luns": [{"copies": 3}]}], "machines": [
                {"server": "s", "machine": "m1"},
                {"server": "s", "machine": "m2", "memory": 77, "guestOs": "os"}]}, {}]}}]},
            {"ports": [{"portWWN": "1000025456000100", "virtualPorts": {}}, {}]}]}})");
    }

    static constexpr HBA_WWN virtualPort = {{0x20, 1, 2, 0x54, 0x56, 0, 0, 0}};
    static constexpr HBA_WWN emptyPort = {{0x20, 2, 2, 0x54, 0x56, 0, 0, 0}};
};

} // namespace

TEST_F(VirtualPortsTest, ListsTellTheirNeedAndCanLie) {
    const auto ports = [&](uint32_t room) {
        Answer answer(4, sizeof(RM_VPORTENTRY), room);
        const RM_STATUS status = CALL(m_library, LRM_VPList)(firstPort, answer.as<RM_VPORTLIST>());
        return std::vector<size_t>{status, answer.as<RM_VPORTLIST>()->count, answer.written()};
    };
    const auto machines = [&](uint32_t room) {
        Answer answer(4, sizeof(RM_VMENTRY), room);
        const RM_VPORTENTRY entry = {virtualPort, {}, 0, 0};
        const RM_STATUS status =
            CALL(m_library, LRM_GetVMFromVPort)(&entry, answer.as<RM_VMLIST>()->entry);
        return std::vector<size_t>{status, answer.as<RM_VMLIST>()->count, answer.written()};
    };
    const auto targets = [&](uint32_t room) {
        Answer answer(8, sizeof(HBA_FCPSCSIENTRY), room);
        auto* const mapping = answer.as<HBA_FCPTARGETMAPPING>();
        const RM_STATUS status =
            CALL(m_library, LRM_VPListTargets)(firstPort, virtualPort, mapping);
        return std::vector<size_t>{status, mapping->NumberOfEntries, answer.written()};
    };
    using Numbers = std::vector<size_t>;
    EXPECT_EQ(ports(1), (Numbers{7, 2, 0}));
    EXPECT_EQ(ports(2), (Numbers{0, 2, 2}));
    EXPECT_EQ(machines(1), (Numbers{7, 2, 0}));
    EXPECT_EQ(machines(4), (Numbers{0, 2, 2}));
    EXPECT_EQ(targets(2), (Numbers{7, 3, 2}));
    EXPECT_EQ(targets(3), (Numbers{0, 3, 3}));
    changePort(R"({"virtualPorts": {"need": 9, "count": 1024}})");
    EXPECT_EQ(ports(1), (Numbers{7, 9, 0}));
    EXPECT_EQ(ports(2), (Numbers{0, 1024, 2}));
    changePort(R"({"virtualPorts": {"entries": [{"machines": [{}], "machineNeed": 0,
                   "machineCount": 4294967295, "mapping": {"rows": 5}}]}})");
    EXPECT_EQ(machines(0), (Numbers{7, 0, 0}));
    EXPECT_EQ(machines(1), (Numbers{0, 0xFFFFFFFF, 1}));
    EXPECT_EQ(targets(0), (Numbers{0, 5, 0}));
}

TEST_F(VirtualPortsTest, RecordsOfPortsAndMachines) {
    RM_VPORTATTRIBUTES attributes = {};
    auto& describe = CALL(m_library, LRM_VPGetAttributes);
    EXPECT_EQ(describe(firstPort, virtualPort, &attributes), RM_STATUS_ERROR) << "no version";
    attributes.version = RM_VPORT_ATTRIBUTES_VERSION;
    EXPECT_EQ(describe(firstPort, virtualPort, &attributes), RM_STATUS_OK);
    EXPECT_EQ(std::string(attributes.name, 256), std::string(256, 'n'));
    EXPECT_EQ(describe(firstPort, emptyPort, &attributes), RM_STATUS_OK);
    EXPECT_STREQ(attributes.name, "Virtual port 1");
    EXPECT_EQ(describe(firstPort, strangePort, &attributes), RM_STATUS_ILLEGAL_WWN);
    EXPECT_EQ(describe(thirdPort, virtualPort, &attributes), RM_STATUS_ILLEGAL_WWN);
    EXPECT_EQ(describe(firstPort, virtualPort, nullptr), RM_STATUS_ERROR);

    RM_VMENTRY machine = {"s", "m2"};
    RM_VMINFO info;
    auto& tell = CALL(m_library, LRM_GetVMInfo);
    EXPECT_EQ(tell(&machine, &info), RM_STATUS_OK);
    EXPECT_STREQ(info.machineName, "m2");
    EXPECT_STREQ(info.guestOsName, "os");
    EXPECT_EQ(info.memorySize, 77U);
    machine.server[0] = 't';
    EXPECT_EQ(tell(&machine, &info), RM_STATUS_ERROR);
    EXPECT_EQ(tell(&machine, nullptr), RM_STATUS_ERROR);
    EXPECT_EQ(tell(nullptr, &info), RM_STATUS_ERROR);

    const RM_VPORTENTRY strange = {strangePort, {}, 0, 0};
    RM_VMLIST list = {};
    auto& inhabitants = CALL(m_library, LRM_GetVMFromVPort);
    EXPECT_EQ(inhabitants(&strange, list.entry), RM_STATUS_ILLEGAL_WWN);
    EXPECT_EQ(inhabitants(nullptr, list.entry), RM_STATUS_ERROR);
    EXPECT_EQ(inhabitants(&strange, nullptr), RM_STATUS_ERROR);

    HBA_FCPTARGETMAPPING mapping = {};
    EXPECT_EQ(CALL(m_library, LRM_VPListTargets)(firstPort, emptyPort, &mapping), RM_STATUS_OK);
    EXPECT_EQ(CALL(m_library, LRM_VPListTargets)(firstPort, emptyPort, nullptr), RM_STATUS_ERROR);
    EXPECT_EQ(CALL(m_library, LRM_VPList)(firstPort, nullptr), RM_STATUS_ERROR);
    RM_VPORTLIST none = {};
    EXPECT_EQ(CALL(m_library, LRM_VPList)(thirdPort, &none), RM_STATUS_OK);
    changePort(R"({"virtualPorts": null})");
    EXPECT_EQ(CALL(m_library, LRM_VPList)(firstPort, &none), RM_STATUS_VPORT_NOT_SUPPORTED);
    EXPECT_EQ(describe(firstPort, virtualPort, &attributes), RM_STATUS_VPORT_NOT_SUPPORTED);
}
