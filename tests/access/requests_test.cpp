// What goes to an adapter and what is read of it beside its attributes.
#include "access/diag_test_func.h"
#include "access/driver_params.h"
#include "access/inventory.h"
#include "access/method_wrapper.h"
#include "tests/access/fake_fixture.h"

#include <gmock/gmock.h>

#include <cstring>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using W = TVR_MethodWrapper;

constexpr HBA_WWN local{{0x10, 0, 0, 0, 0, 0, 0, 0x0A}};
constexpr HBA_WWN foreign{{0x10, 0, 0, 0, 0, 0, 0, 0x0B}};
constexpr char localId[] = "100000000000000a";

class Requests : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        *libraries = {};
        libraries->adapters.emplace_back().ports.resize(1);
        port().record.PortWWN = local;
    }
    ~Requests() override { *libraries = {}; }

    fake::Port& port() { return libraries->adapters[0].ports[0]; }
    std::vector<std::string> requests() { return std::exchange(libraries->requests, {}); }
    void answer(const std::string& entryPoint, RM_STATUS status) {
        libraries->statuses[entryPoint] = {status};
    }
};

TEST_F(Requests, GoToLocalPortsAndTellOfFailures) {
    char directory[RM_DUMP_DIRECTORY_SIZE];
    uint32 count = 0;
    RM_DUMPFILENAMES names{};
    struct Row {
        std::function<uint32(const HBA_WWN&)> call;
        const char* request;
        const char* failure; // in the log after status 9
        bool tellsStatus = true;
    };
    const Row rows[] = {
        {[](auto& p) { return W::tvrcimSetDumpDirectory(p, "/d"); }, "LRM_SetDumpDirectory /d",
         "ERROR: tvrcimSetDumpDirectory: RM_SetDumpDirectory call failed with error code : 9 \n",
         false},
        {[&](auto& p) { return W::tvrcimGetDumpDirectory(p, directory); },
         "LRM_GetDumpDirectoryA 256",
         "Failed to get the Dump directory, returned with error code 9"},
        {[&](auto& p) { return W::tvrcimGetRetentionCount(p, &count); },
         "LRM_GetDumpRetentionCount",
         "Failed to get the retention count, returned with error code 9"},
        {[](auto& p) { return W::tvrcimSetRetentionCount(p, 20); }, "LRM_SetDumpRetentionCount 20",
         "Failed to set the retention count, exited with error code 9"},
        {[](auto& p) { return W::tvrcimDeleteDumpFiles(p); }, "LRM_DeleteDumpFiles",
         "Failed to delete the Dump files, exited with error code 9"},
        {[](auto& p) { return W::tvrcimDumpDiagnostic(p, 0xFFFFFFFF); }, "LRM_GenerateDump 0 16",
         "Failed to generate the dump file, exited with error code 9"},
        {[](auto& p) { return W::tvrcimDumpDiagnostic(p, 3); }, "LRM_GenerateEfdDump 3 0",
         "Failed to generate the dump file, exited with error code 9"},
        {[&](auto& p) { return W::tvrcimGetDumpFileNames(p, &names); }, "LRM_GetDumpFileNames 0",
         "Exit the Get Dump filenames method"},
        {[](auto& p) { return W::tvrcimSetBootBiosState(p, "E"); }, "LRM_SetBootBiosState 1",
         "CtrlWord is  E", false},
        {[](auto& p) { return W::tvrcimSetBootBiosState(p, "d"); }, "LRM_SetBootBiosState 0",
         "CtrlWord is  d", false},
        {[](auto& p) { return W::tvrcimResetHBA(p); }, "LRM_ResetHBA 1",
         "TVR_MethodWrapper::tvrcimReset"},
        {[](auto& p) { return W::tvrcimSetDriverParam(localId, p, 1, 0, "a", "2"); },
         "LRM_SetDriverParam a=2 2", "RM_SetDriverParam fails with status : 9", false},
    };
    for (const Row& row : rows) {
        const std::string request = row.request;
        log.take();
        EXPECT_EQ(row.call(foreign), 1u) << request;
        EXPECT_EQ(log.take().back(), "INVALID wwpn") << request;
        EXPECT_THAT(requests(), IsEmpty());
        EXPECT_EQ(row.call(local), 0u) << request;
        EXPECT_THAT(requests(), ElementsAre(request));
        answer(request.substr(0, request.find(' ')), 9);
        log.take();
        EXPECT_EQ(row.call(local), 9u) << request;
        const auto lines = log.take();
        EXPECT_THAT(lines, Contains(row.failure)) << request;
        EXPECT_THAT(lines, Contains("Status: <9>:text of 9").Times(row.tellsStatus)) << request;
        requests();
    }
}

TEST_F(Requests, AreRefusedForBadArguments) {
    for (const uint32 count : {0u, 21u, 0xFFFFFFFFu}) {
        EXPECT_EQ(W::tvrcimSetRetentionCount(local, count), 1u);
        EXPECT_EQ(log.take().back(), "ERROR: RetentionCount value must be in-between 1 and 20");
    }
    EXPECT_EQ(W::tvrcimSetRetentionCount(foreign, 0), 1u);
    EXPECT_EQ(log.take().back(), "INVALID wwpn");
    EXPECT_EQ(W::tvrcimSetBootBiosState(local, "x"), 1u);
    EXPECT_EQ(W::tvrcimSetBootBiosState(local, nullptr), 1u);
    EXPECT_EQ(log.take().back(), "Null Pointer Assignment to argument CtrlWord");
    const auto set = [](uint8 cw1, uint8 cw2, const char* name, const char* value) {
        return W::tvrcimSetDriverParam(localId, local, cw1, cw2, name, value);
    };
    EXPECT_EQ(set(2, 0, "a", "1"), 1u);
    EXPECT_EQ(set(0, 2, "a", "1"), 1u);
    EXPECT_EQ(set(0, 0, nullptr, "1"), 1u);
    EXPECT_EQ(set(0, 0, "a", nullptr), 1u);
    EXPECT_EQ(set(0, 0, "a", std::string(254, '1').c_str()), 1u);
    EXPECT_THAT(requests(), IsEmpty());
    EXPECT_EQ(set(0, 1, "a", std::string(253, '1').c_str()), 0u);
    EXPECT_EQ(set(1, 1, "a", ""), 0u);
    EXPECT_EQ(set(0, 0, "a", "1"), 0u);
    EXPECT_THAT(requests(), ElementsAre("LRM_SetDriverParam a=" + std::string(253, '1') + " 1",
                                        "LRM_SetDriverParam a= 3", "LRM_SetDriverParam a=1 0"));
}

TEST_F(Requests, TextsOfTheLibraryEndWithTheirBuffer) {
    char directory[RM_DUMP_DIRECTORY_SIZE];
    libraries->dumpDirectory = std::string(300, 'd');
    EXPECT_EQ(W::tvrcimGetDumpDirectory(local, directory), 0u);
    EXPECT_EQ(directory, std::string(255, 'd'));
}

TEST_F(Requests, ReadTheBootBiosState) {
    uint32 state = 7;
    EXPECT_EQ(W::tvrcimGetBootBiosState(local, nullptr), 1u);
    EXPECT_EQ(W::tvrcimGetBootBiosState(local, &state), 0u);
    EXPECT_EQ(state, 0u) << "without the attribute";
    libraries->adapters[0].attributes[RM_HA_BOOT_CODE_ENABLED] = {std::string("\1\0\0\0", 4)};
    EXPECT_EQ(W::tvrcimGetBootBiosState(local, &state), 0u);
    EXPECT_EQ(state, 1u);
    EXPECT_EQ(log.take().back(), "********* biosState Value: 1");
    answer("LRM_GetHBAAttributes", 9);
    EXPECT_EQ(W::tvrcimGetBootBiosState(local, &state), 1u);
}

TEST_F(Requests, EnablePorts) {
    EXPECT_EQ(W::SetPortEnabled("10", 1), 1u);
    EXPECT_EQ(log.take().back(), "str2HBAName failed");
    EXPECT_EQ(W::SetPortEnabled("100000000000000B", 0x101), 0u) << "it may not be local";
    EXPECT_THAT(requests(), ElementsAre("LRM_SetPortEnabled 1"));
    EXPECT_THAT(log.take(), Not(Contains("Please reset the HBA to activate the new setting\n")));
    libraries->number = 5;
    for (const auto& [status, line] :
         std::map<uint32, const char*>{{0, "Please reset the HBA to activate the new setting\n"},
                                       {221, "Please disable Boot Code and try again.\n"},
                                       {9, "RM_SetPortEnabled() Failed.\n"}}) {
        answer("LRM_SetPortEnabled", status);
        EXPECT_EQ(W::SetPortEnabled(localId, 0), status);
        EXPECT_THAT(log.take(), Contains(line));
    }
}

TEST_F(Requests, ReadAndSetTheBeacon) {
    constexpr uint16 before = 77;
    struct Row {
        RM_STATUS status;
        std::optional<uint32_t> state;
        uint16 out;
    };
    for (const Row& row : {Row{2, 3, 4}, Row{63, 3, 4}, Row{1, 3, 0}, Row{0, 1, before},
                           Row{0, 2, 3}, Row{0, 3, 2}, Row{0, 9, before}, Row{0, {}, before}}) {
        answer("LRM_DiagBeaconState", row.status);
        libraries->number = row.state;
        uint16 out = before;
        EXPECT_EQ(TVR_DiagTestFunc::GetBeaconState(&out, localId), 0u);
        EXPECT_EQ(out, row.out) << row.status << ' ' << row.state.value_or(0);
    }
    uint16 out = before;
    EXPECT_EQ(TVR_DiagTestFunc::GetBeaconState(nullptr, localId), 32968u);
    EXPECT_EQ(TVR_DiagTestFunc::GetBeaconState(&out, "1000"), 32968u);
    EXPECT_EQ(TVR_DiagTestFunc::SetBeaconState(2, localId), 0u);
    EXPECT_EQ(TVR_DiagTestFunc::SetBeaconState(3, localId), 0u);
    for (const uint16 state : std::initializer_list<uint16>{0, 1, 4}) {
        EXPECT_EQ(TVR_DiagTestFunc::SetBeaconState(state, localId), 32968u);
    }
    EXPECT_THAT(requests(), ElementsAre("LRM_DiagBeacon 3", "LRM_DiagBeacon 2"));
    answer("LRM_DiagBeacon", 9);
    EXPECT_EQ(TVR_DiagTestFunc::SetBeaconState(2, localId), 9u);
    EXPECT_EQ(log.take().back(), "Failed to set the beacon state to 3");
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
    answer("LRM_GetVPD", 9);
    std::vector<VPDEntry> none;
    EXPECT_EQ(readVPD(local, none), 9u);
    EXPECT_THAT(none, IsEmpty());
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
