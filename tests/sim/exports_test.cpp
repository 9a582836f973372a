#include "tests/sim/simulated_library.h"

#include <gtest/gtest.h>

namespace {

// Every entry point that the system calls.
constexpr const char* called[] = {
    "HBA_GetNumberOfAdapters",
    "HBA_GetAdapterName",
    "HBA_OpenAdapter",
    "HBA_CloseAdapter",
    "HBA_GetAdapterAttributes",
    "HBA_GetAdapterPortAttributes",
    "HBA_GetFcpTargetMapping",
    "HBA_RefreshInformation",
    "HBA_SendScsiInquiry",
    "HBA_SendReadCapacity",
    "HBA_RegisterForAdapterPortEvents",
    "HBA_RemoveCallback",
    "RM_GetAttributeValue",
    "RM_GetNextVpdEntry",
    "RM_GetNumberOfLocalAdapters",
    "RM_GetLocalHBAInfo",
    "RM_ImportHBAFileA",
    "RM_IsLocalHBA",
    "RM_StatusString",
    "RM_ValidateWwn",
    "RM_VerifyFirmwareA",
    "LRM_InitLib",
    "LRM_GetHBAAttributes",
    "LRM_GetPortAttributes",
    "LRM_GetPortStatistics",
    "LRM_GetDriverType",
    "LRM_GetVPD",
    "LRM_GetSffData",
    "LRM_GetFcpTargetMapping",
    "LRM_ChangeWWN",
    "LRM_GetWWNCapability",
    "LRM_ReadWWN",
    "LRM_RestoreWWN",
    "LRM_GetDriverParams",
    "LRM_GetDriverParamsGlobal",
    "LRM_SetDriverParam",
    "LRM_DownloadFirmware",
    "LRM_ResetHBA",
    "LRM_SetBootBiosState",
    "LRM_SetPortEnabled",
    "LRM_GenerateDump",
    "LRM_GenerateEfdDump",
    "LRM_GetDumpDirectoryA",
    "LRM_SetDumpDirectory",
    "LRM_GetDumpRetentionCount",
    "LRM_SetDumpRetentionCount",
    "LRM_GetDumpFileNames",
    "LRM_DeleteDumpFiles",
    "LRM_DiagBeacon",
    "LRM_DiagBeaconState",
    "LRM_DiagCancelDiagnostic",
    "LRM_DiagEchoTestV2",
    "LRM_DiagGetLoadListParams",
    "LRM_DiagGetResults",
    "LRM_DiagLoopBackTestV3",
    "LRM_DiagPciLoopBackTestV2",
    "LRM_DiagReadPCIRegistersV2",
    "LRM_DiagRunPOST",
    "LRM_VPGetAttributes",
    "LRM_VPList",
    "LRM_VPListTargets",
    "LRM_GetVMFromVPort",
    "LRM_GetVMInfo",
};

} // namespace

TEST(Exports, EveryCalledEntryPointIsThereAndCounted) {
    const SimulatedLibrary library(TVRSIM_DIRECTORY "/libtvrsim.so");
    auto& calls = CALL(library, tvrsim_calls);
    for (const std::string name : called) {
        EXPECT_NE(library.find<void()>(name.c_str()), nullptr) << name;
        EXPECT_GE(calls(name.c_str()), 0) << name;
        if (name.starts_with("LRM_")) {
            const std::string shortForm = name.substr(1);
            EXPECT_NE(library.find<void()>(shortForm.c_str()), nullptr) << shortForm;
            EXPECT_GE(calls(shortForm.c_str()), 0) << shortForm;
        }
    }
}

TEST(Exports, FileNamesAreOneLibraryThatStaysMapped) {
    int32_t (*init)(void) = nullptr;
    {
        const SimulatedLibrary hba(TVRSIM_DIRECTORY "/libHBAAPI.so");
        const SimulatedLibrary lrm(TVRSIM_DIRECTORY "/liblrmapi.so");
        init = lrm.find<int32_t(void)>("LRM_InitLib");
        EXPECT_EQ(hba.find<int32_t(void)>("LRM_InitLib"), init);
    }
    void* const again = dlopen(TVRSIM_DIRECTORY "/libtvrsim.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(init(), 0);
    dlclose(again);
}

TEST(Exports, FixturesGoWhenTheyAreClosed) {
    for (const auto& [file, adapters] :
         {std::pair{TVRSIM_DIRECTORY "/libtvrsim_fixture_11.so", 11U},
          std::pair{TVRSIM_DIRECTORY "/libtvrsim_fixture_22.so", 22U}}) {
        {
            const SimulatedLibrary fixture(file);
            EXPECT_EQ(CALL(fixture, HBA_GetNumberOfAdapters)(), adapters);
            EXPECT_EQ(CALL(fixture, LRM_InitLib)(), 0);
            EXPECT_EQ(fixture.find<void()>("HBA_OpenAdapter"), nullptr);
        }
        EXPECT_EQ(dlopen(file, RTLD_NOW | RTLD_NOLOAD), nullptr) << file;
    }
}
