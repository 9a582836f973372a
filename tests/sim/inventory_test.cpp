#include "tests/sim/simulated_host.h"

#include <gmock/gmock.h>

#include <vector>

using testing::ElementsAre;
using testing::Pair;

namespace {

/// Each case starts from an adapter with one port that has nothing of the inventory.
class InventoryTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"clear": true, "resetCounts": true,
                              "scenario": {"adapters": [{"name": "A"}, {}]}})");
        set_up_session();
    }
    void set_up_session();

    /// The content of a sized call, fetched as its protocol wants it.
    using Fetch = RM_STATUS(HBA_WWN, void*, uint32_t*);
    std::vector<char> content(Fetch& fetch) {
        uint32_t need = 0;
        EXPECT_EQ(fetch(firstPort, nullptr, &need), RM_STATUS_MORE_DATA);
        std::vector<char> small(need, '#');
        uint32_t size = need - 1;
        EXPECT_EQ(fetch(firstPort, small.data(), &size), RM_STATUS_MORE_DATA);
        EXPECT_EQ(size, need);
        EXPECT_EQ(small, std::vector<char>(need, '#')) << "wrote into a small buffer";
        std::vector<char> bytes(need);
        EXPECT_EQ(fetch(firstPort, bytes.data(), &size), RM_STATUS_OK);
        return bytes;
    }

    /// One step of a walk over VPD into buffers of the usual sizes.
    struct Step {
        void* next;
        std::string keyword;
        std::string value;
    };
    Step step(void* cursor) {
        char keyword[4];
        char value[256];
        std::memset(keyword, '#', sizeof keyword);
        std::memset(value, '#', sizeof value);
        void* const next = CALL(m_library, RM_GetNextVpdEntry)(cursor, keyword, sizeof keyword,
                                                               value, sizeof value);
        return {next,
                {keyword, strnlen(keyword, sizeof keyword)},
                {value, strnlen(value, sizeof value)}};
    }

    std::vector<RM_DRIVERPARAM> localParameters() {
        uint32_t count = 100;
        std::vector<RM_DRIVERPARAM> records(count);
        EXPECT_EQ(CALL(m_library, LRM_GetDriverParams)(firstPort, records.data(), &count), 0U);
        records.resize(std::min<size_t>(count, records.size()));
        return records;
    }

    std::vector<std::string> dumpFiles() {
        std::vector<char> bytes(8 + 20 * 256, '#');
        auto* const names = reinterpret_cast<RM_DUMPFILENAMES*>(bytes.data());
        names->count = 20;
        EXPECT_EQ(CALL(m_library, LRM_GetDumpFileNames)(firstPort, names), RM_STATUS_OK);
        std::vector<std::string> files;
        for (uint32_t i = 0; i < names->count; ++i) {
            const char* const name = bytes.data() + 8 + i * 256;
            files.emplace_back(name, strnlen(name, 256));
        }
        return files;
    }
};

void InventoryTest::set_up_session() {
    // What calls for parts of the inventory come to.
    session.on("calls", [this](const auto&, std::ostream& answer) {
        char buffer[8 + 128 * 132];
        const auto tell = [&](const char* what, auto& call, auto... arguments) {
            answer << what << ' ' << call(firstPort, arguments...) << '\n';
        };
        uint32_t size = sizeof buffer;
        tell("GetVPD", CALL(m_library, LRM_GetVPD), buffer, &size);
        size = sizeof buffer;
        tell("GetSffData", CALL(m_library, LRM_GetSffData), buffer, &size);
        size = 0;
        tell("GetDriverParams", CALL(m_library, LRM_GetDriverParams), nullptr, &size);
        tell("GetDriverParamsGlobal", CALL(m_library, LRM_GetDriverParamsGlobal), nullptr, &size);
        tell("SetDriverParam", CALL(m_library, LRM_SetDriverParam), "a=1", 0);
        tell("SetDriverParam global", CALL(m_library, LRM_SetDriverParam), "a=1", 2);
        tell("GetDumpRetentionCount", CALL(m_library, LRM_GetDumpRetentionCount), &size);
        tell("DeleteDumpFiles", CALL(m_library, LRM_DeleteDumpFiles));
        tell("DiagGetLoadListParams", CALL(m_library, LRM_DiagGetLoadListParams), nullptr);
        tell("DiagReadPCIRegistersV2", CALL(m_library, LRM_DiagReadPCIRegistersV2), nullptr);
    });
    session.on("set", [this](const auto& words) {
        return CALL(m_library, LRM_SetDriverParam)(firstPort, words.at(0).c_str(),
                                                   number(words.at(1)));
    });
    session.on("local", [this] { return localParameters().at(0).current; });
    session.on("global", [this] { // one list for all ports
        RM_DRIVERPARAM record = {};
        uint32_t count = 1;
        EXPECT_EQ(CALL(m_library, LRM_GetDriverParamsGlobal)(thirdPort, &record, &count), 0U);
        return record.current;
    });
    session.on("reset", [this] { return CALL(m_library, LRM_ResetHBA)(firstPort, 1); });
    session.on("boot-bios", [this](const auto& words) {
        return CALL(m_library, LRM_SetBootBiosState)(firstPort, number(words.at(0)));
    });
    session.on("enable", [this](const auto& words) {
        uint8_t answer = 77;
        const auto enabled = static_cast<uint8_t>(number(words.at(0)));
        const RM_STATUS status = CALL(m_library, LRM_SetPortEnabled)(firstPort, enabled, &answer);
        return std::to_string(status) + " answer " + std::to_string(answer);
    });
    session.on("attribute", [this](const auto& words) {
        return attribute(static_cast<uint16_t>(number(words.at(0))));
    });
    session.on("generate",
               [this] { return CALL(m_library, LRM_GenerateDump)(HBA_WWN{}, firstPort); });
    session.on("generate-type", [this](const auto& words) {
        return CALL(m_library, LRM_GenerateEfdDump)(firstPort, number(words.at(0)), 0);
    });
    session.on("delete", [this] { return CALL(m_library, LRM_DeleteDumpFiles)(firstPort); });
    session.on("keep", [this](const auto& words) {
        return CALL(m_library, LRM_SetDumpRetentionCount)(firstPort, number(words.at(0)));
    });
    session.on("files", [this] { return testing::PrintToString(dumpFiles()); });
    session.on("files-in-one", [this] {
        RM_DUMPFILENAMES names = {};
        names.count = 1;
        const RM_STATUS status = CALL(m_library, LRM_GetDumpFileNames)(firstPort, &names);
        return std::to_string(status) + " count " + std::to_string(names.count);
    });
    session.on("set-directory", [this](const auto& words) {
        return CALL(m_library, LRM_SetDumpDirectory)(firstPort, words.at(0).c_str());
    });
    session.on("get-directory", [this] { // without a terminator where there is no room
        char directory[4] = "###";
        EXPECT_EQ(CALL(m_library, LRM_GetDumpDirectoryA)(firstPort, directory, 4), RM_STATUS_OK);
        return std::string(directory, 4);
    });
}

TVR_SESSIONS(InventoryTest, "inventory.txt");

} // namespace

TEST_F(InventoryTest, VpdIsWalkedToItsEnd) {
    const std::string full(256, 'v');
    changePort(R"({"vpd": {"entries": [{"keyword": "product", "value": "A board"},
                   {"keyword": "SN", "value": ""}, {"keyword": {"bytes": "FF00"}, "value": {"bytes":
                   "41FF"}}, {"keyword": "WIDE", "value": ")" +
               full + "\"}]}}");
    std::vector<char> buffer = content(CALL(m_library, LRM_GetVPD));
    EXPECT_LE(buffer.size(), RM_VPD_SIZE);
    std::vector<std::pair<std::string, std::string>> entries;
    void* cursor = buffer.data();
    for (Step each = step(cursor); each.next != nullptr; each = step(cursor)) {
        cursor = each.next;
        ASSERT_TRUE(cursor > buffer.data() && cursor < buffer.data() + buffer.size());
        entries.emplace_back(each.keyword, each.value);
    }
    EXPECT_THAT(entries, ElementsAre(Pair("\x82\x82", "A board"), Pair("SN", ""),
                                     Pair("\xFF", "A\xFF"), Pair("WIDE", full)));
    EXPECT_EQ(step(cursor).keyword, "####") << "the end copies nothing";
    EXPECT_EQ(step(nullptr).next, nullptr);
    change(R"({"entryPoints": {"RM_GetNextVpdEntry": {"status": 1}}})");
    EXPECT_EQ(step(buffer.data()).next, nullptr);
}

TEST_F(InventoryTest, VpdCanBeHostile) {
    changePort(R"({"vpd": {"entries": [{"keyword": "SN", "value": "1"}, {"keyword": "PN",
                   "value": "2"}], "walk": "endless"}})");
    std::vector<char> buffer = content(CALL(m_library, LRM_GetVPD));
    void* cursor = buffer.data();
    for (int i = 0; i < 1001; ++i) {
        const Step each = step(cursor);
        ASSERT_TRUE(each.next >= buffer.data() && each.next < buffer.data() + buffer.size());
        EXPECT_EQ(each.keyword, i % 2 == 0 ? "SN" : "PN");
        cursor = each.next;
    }
    changePort(R"({"vpd": {"walk": "outside"}})");
    buffer = content(CALL(m_library, LRM_GetVPD));
    cursor = step(step(buffer.data()).next).next;
    ASSERT_NE(cursor, nullptr);
    EXPECT_FALSE(cursor >= buffer.data() && cursor < buffer.data() + buffer.size());
    cursor = step(cursor).next;
    EXPECT_EQ(step(cursor).next, nullptr) << "who follows it comes to an end";

    changePort(R"({"vpd": {"walk": "endsWithLast"}})");
    buffer = content(CALL(m_library, LRM_GetVPD));
    const Step last = step(step(buffer.data()).next);
    EXPECT_EQ(last.next, nullptr);
    EXPECT_EQ(last.keyword + last.value, "PN2");

    changePort(R"({"vpd": {"walk": "ends", "bytes": "DE AD"}})");
    buffer = content(CALL(m_library, LRM_GetVPD));
    EXPECT_EQ(step(buffer.data()).next, nullptr);
}

TEST_F(InventoryTest, TransceiverRecord) {
    RM_SFFDATA data;
    const auto fetch = [&](const char* transceiver) {
        changePort(std::string("{\"transceiver\": ") + transceiver + "}");
        const std::vector<char> bytes = content(CALL(m_library, LRM_GetSffData));
        ASSERT_EQ(bytes.size(), sizeof data);
        std::memcpy(&data, bytes.data(), sizeof data);
    };
    fetch(R"({"wavelength": 1310, "rxPower": 0.25, "vendorName": "123456789012345678"})");
    EXPECT_EQ(std::string(data.vendorName, 18), "123456789012345678") << "no terminator";
    fetch(R"({"vcc": 1})");
    EXPECT_EQ(data.rxPower, 0.25F) << "fields that are not named stay";
    fetch(R"({"bytes": "AA BB", "identifier": 9})");
    EXPECT_EQ(data.raw[1], 0xBB);
    EXPECT_EQ(data.identifier, 9);
    EXPECT_EQ(data.wavelength, 0) << "bytes stand for the whole record";
}

TEST_F(InventoryTest, LoadListsTellTheirImagesAndOneMore) {
    auto& read = CALL(m_library, LRM_DiagGetLoadListParams);
    RM_LOADLIST list;
    const auto fetch = [&](const char* flash) {
        changePort(std::string("{\"flash\": ") + flash + "}");
        std::memset(&list, 0xEE, sizeof list);
        EXPECT_EQ(read(firstPort, &list), RM_STATUS_OK);
        return list.count;
    };
    EXPECT_EQ(fetch(R"({"images": [{"programId": [5, 6], "description": "123456789012345678901234"},
                                   {"copies": 98, "version": "2.00a1"}]})"),
              100U);
    EXPECT_EQ(list.entry[0].programId[1], 6U);
    EXPECT_EQ(std::string(list.entry[0].description, 24), "123456789012345678901234");
    EXPECT_STREQ(list.entry[98].version, "2.00a1");
    EXPECT_EQ(list.entry[99].next, 0xEEEEEEEEU) << "only what is there is written";
    EXPECT_EQ(fetch(R"({"images": [{"bytes": "01"}], "count": 4294967295})"), 0xFFFFFFFFU);
    EXPECT_EQ(list.entry[0].next, 1U);
    EXPECT_EQ(fetch(R"({"count": null})"), 2U);
    EXPECT_EQ(read(firstPort, nullptr), RM_STATUS_ERROR);
}

TEST_F(InventoryTest, DriverParametersTellTheirNeed) {
    changePort(R"({"driverParameters": {"entries": [{"name": "first", "low": 1, "high": 9,
        "default": 5, "current": 6, "exportFlag": 2, "dynamic": 3, "help": "Help"},
        {"name": "more-", "copies": 59}]}})");
    for (const char* status : {"7", "191"}) {
        changePort(std::string("{\"driverParameters\": {\"tooSmallStatus\": ") + status + "}}");
        std::vector<RM_DRIVERPARAM> records(61);
        std::memset(records.data(), 0xEE, records.size() * sizeof records[0]);
        const std::vector<RM_DRIVERPARAM> untouched = records;
        auto& get = CALL(m_library, LRM_GetDriverParams);
        uint32_t count = 52;
        EXPECT_EQ(get(firstPort, records.data(), &count), static_cast<uint32_t>(atoi(status)));
        EXPECT_EQ(count, 60U);
        EXPECT_EQ(std::memcmp(&records[0], &untouched[0], 61 * sizeof records[0]), 0);
        EXPECT_EQ(get(firstPort, records.data(), &count), RM_STATUS_OK);
        EXPECT_EQ(count, 60U);
        EXPECT_EQ(std::memcmp(&records[60], &untouched[60], sizeof records[0]), 0);
        EXPECT_STREQ(records[59].name, "more-58");
        EXPECT_EQ(records[0].current, 6U);
        EXPECT_STREQ(records[0].help, "Help");
    }
    // Counts that lie.
    changePort(R"({"driverParameters": {"need": 4294967295, "count": 7}})");
    uint32_t count = 59;
    RM_DRIVERPARAM records[60];
    EXPECT_EQ(CALL(m_library, LRM_GetDriverParams)(firstPort, records, &count), 191U);
    EXPECT_EQ(count, 0xFFFFFFFFU);
    EXPECT_EQ(localParameters().size(), 7U);
}
