// What goes to an adapter and what is read of it beside its attributes.
#include "access/diag_test_func.h"
#include "access/driver_params.h"
#include "access/inventory.h"
#include "access/method_wrapper.h"
#include "tests/access/access_session.h"

#include <cstring>

namespace cimple {
namespace {

using W = TVR_MethodWrapper;

constexpr HBA_WWN local{{0x10, 0, 0, 0, 0, 0, 0, 0x0A}};
constexpr char localId[] = "100000000000000a";

class Requests : public Access_Session {
protected:
    void SetUp() override {
        Access_Session::SetUp();
        libraries->adapters.emplace_back().ports.resize(1);
        port().record.PortWWN = local;
        set_up_calls();
    }
    fake::Port& port() { return libraries->adapters[0].ports[0]; }

private:
    void set_up_calls();
};

void Requests::set_up_calls() {
    const auto on = [this](const char* name, auto work) { // of a port
        on_call(name, [work](const auto& words, std::ostream& answer) {
            const HBA_WWN port{
                {0x10, 0, 0, 0, 0, 0, 0, static_cast<uint8>(words.at(0) == "local" ? 10 : 11)}};
            answer << work(port, words);
        });
    };
    const auto text = [](const auto& words, std::size_t i) { // or null
        return words.at(i) == "null" ? nullptr : words.at(i).c_str();
    };
    on("set-dump-directory", [](auto& p, auto&) { return W::tvrcimSetDumpDirectory(p, "/d"); });
    on("get-dump-directory", [](auto& p, auto&) {
        char directory[RM_DUMP_DIRECTORY_SIZE] = "";
        return std::to_string(W::tvrcimGetDumpDirectory(p, directory)) + ' ' + directory;
    });
    on("get-dump-count", [](auto& p, auto&) {
        uint32 count = 0;
        return W::tvrcimGetRetentionCount(p, &count);
    });
    on("set-dump-count",
       [](auto& p, auto& words) { return W::tvrcimSetRetentionCount(p, number(words, 1)); });
    on("delete-dumps", [](auto& p, auto&) { return W::tvrcimDeleteDumpFiles(p); });
    on("dump", [](auto& p, auto& words) { return W::tvrcimDumpDiagnostic(p, number(words, 1)); });
    on("dump-files", [](auto& p, auto&) {
        RM_DUMPFILENAMES names{};
        return W::tvrcimGetDumpFileNames(p, &names);
    });
    on("set-boot-bios",
       [=](auto& p, auto& words) { return W::tvrcimSetBootBiosState(p, text(words, 1)); });
    on("get-boot-bios", [](auto& p, auto&) {
        uint32 state = 7;
        const uint32 result = W::tvrcimGetBootBiosState(p, &state);
        return std::to_string(result) + " state " + std::to_string(state);
    });
    on("reset", [](auto& p, auto&) { return W::tvrcimResetHBA(p); });
    on("set-param", [=](auto& p, auto& words) {
        return W::tvrcimSetDriverParam(localId, p, static_cast<uint8>(number(words, 1)),
                                       static_cast<uint8>(number(words, 2)), text(words, 3),
                                       text(words, 4));
    });
    session.on("boot-code", [this] {
        libraries->adapters[0].attributes[RM_HA_BOOT_CODE_ENABLED] = fake::valueOf(uint32{1});
    });
    session.on("directory-is",
               [this](const auto& words) { libraries->dumpDirectory = words.at(0); });
    on_call("enable", [](const auto& words, std::ostream& answer) {
        answer << W::SetPortEnabled(words.at(0), number(words, 1));
    });
    on_call("get-beacon", [](const auto& words, std::ostream& answer) {
        uint16 out = 77;
        answer << TVR_DiagTestFunc::GetBeaconState(&out, words.at(0)) << " state " << out;
    });
    on_call("set-beacon", [](const auto& words, std::ostream& answer) {
        answer << TVR_DiagTestFunc::SetBeaconState(static_cast<uint16>(number(words, 0)), localId);
    });
}

TVR_SESSIONS(Requests, "requests.txt");

TEST_F(Requests, HaveAPlaceForTheirAnswer) {
    EXPECT_EQ(W::tvrcimGetBootBiosState(local, nullptr), 1u);
    EXPECT_EQ(TVR_DiagTestFunc::GetBeaconState(nullptr, localId), 32968u);
}

TEST_F(Requests, WalkTheVitalProductDataNoFurtherThanTheyReach) {
    port().vpd = {{"PN", "p"}, {"\x82\x82", "name"}, {"ZZZZ", std::string(300, 'v')}};
    const auto walked = [this](auto step) {
        libraries->vpdStep = step;
        std::vector<VPDEntry> entries;
        EXPECT_EQ(readVPD(local, entries), 0u);
        return entries;
    };
    const auto all = walked(nullptr);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_STREQ(all[0].name(), "PART_NUMBER");
    EXPECT_TRUE(all[1].isProductName());
    EXPECT_EQ(all[2].name(), nullptr);
    EXPECT_EQ(all[2].keyword, "ZZ");
    EXPECT_EQ(all[2].value, std::string(255, 'v'));
    for (const int step : {0, -1, 1022, 1024}) {
        EXPECT_EQ(walked([step](char* at, char*) { return at + step; }).size(), 1u) << step;
    }
    EXPECT_EQ(walked([](char* at, char* next) { return next - at > 10 ? at - 7 : next; }).size(),
              3u);
    const auto ended = walked([](char*, char* next) { return *next == '\0' ? nullptr : next; });
    EXPECT_EQ(ended.size(), 3u) << "the last entry comes with the end";
    port().vpd[1].first = std::string(1, '\0');
    EXPECT_EQ(walked(nullptr).size(), 2u) << "without a keyword it is no entry";
    libraries->statuses["LRM_GetVPD"] = {9};
    std::vector<VPDEntry> none;
    EXPECT_EQ(readVPD(local, none), 9u);
    EXPECT_TRUE(none.empty());
}

TEST_F(Requests, BelieveNoWildNumberOfFlashImages) {
    struct Row {
        std::size_t written;
        std::optional<uint32_t> told;
        std::size_t number;
        RM_STATUS status = RM_STATUS_OK;
    };
    for (const Row& row :
         {Row{0, {}, 0}, Row{3, 0, 0}, Row{3, 1, 0}, Row{3, 4, 3}, Row{3, 0xFFFFFFFF, 64},
          Row{99, {}, 64}, Row{1024, {}, 64}, Row{1025, {}, 0, RM_STATUS_ERROR},
          Row{1025, 4, 0, RM_STATUS_ERROR}, Row{1280, {}, 0, RM_STATUS_ERROR}}) {
        RM_LOADENTRY image{};
        image.programLength = 7;
        port().images.assign(row.written, image);
        libraries->toldImages = row.told;
        std::vector<RM_LOADENTRY> images;
        EXPECT_EQ(readFlashImages(local, images), row.status) << row.written;
        ASSERT_EQ(images.size(), row.number) << row.written;
        for (std::size_t i = 0; i < images.size(); ++i) {
            EXPECT_EQ(images[i].programLength, i < row.written ? 7u : 0u);
        }
    }
}

TEST_F(Requests, ReadAsManyDriverParametersAsThereAre) {
    using Outcome = DriverParamOutcome;
    using Number = std::optional<uint32_t>;
    struct Row {
        std::size_t present;
        RM_STATUS tooSmall;
        Number toldNeed;
        Number told;
        Outcome outcome;
        std::size_t number;
    };
    for (const Row& row :
         {Row{0, 7, {}, {}, Outcome::read, 0}, Row{52, 7, {}, {}, Outcome::read, 52},
          Row{60, 7, {}, {}, Outcome::read, 60}, Row{60, 191, {}, {}, Outcome::read, 60},
          Row{60, 7, 70, {}, Outcome::read, 60}, Row{60, 7, 0, {}, Outcome::refusedAgain, 0},
          Row{60, 7, 10, {}, Outcome::refusedAgain, 0},
          Row{60, 191, 0xFFFFFFFF, {}, Outcome::noMemoryForNeed, 0},
          Row{3, 7, {}, 0xFFFFFFFF, Outcome::read, 52}, Row{3, 7, {}, 1, Outcome::read, 1}}) {
        port().params.assign(row.present, {});
        libraries->tooSmall = row.tooSmall;
        libraries->toldNeed = row.toldNeed;
        libraries->toldParams = row.told;
        const DriverParamAnswer answer = readDriverParams(local, DriverParamScope::port);
        EXPECT_EQ(answer.outcome, row.outcome) << row.present << ' ' << row.toldNeed.value_or(1);
        EXPECT_EQ(answer.params.size(), row.number);
    }
}

} // namespace
} // namespace cimple
