#include "sim/entry_points.h"
#include "tests/sim/simulated_library.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

TEST(Exports, EveryEntryPointIsThereAndCounted) {
    const SimulatedLibrary library(TVRSIM_DIRECTORY "/libtvrsim.so");
    auto& calls = CALL(library, tvrsim_calls);
#define PLAIN(name) #name,
#define BOTH(name, parameters, arguments) "LRM_" #name, "RM_" #name,
    for (const char* name : {TVRSIM_HBA_ENTRY_POINTS(PLAIN) TVRSIM_RM_ENTRY_POINTS(PLAIN)
                                 TVRSIM_LRM_ENTRY_POINTS(BOTH) "LRM_InitLib"}) {
        EXPECT_NE(library.find<void()>(name), nullptr) << name;
        EXPECT_GE(calls(name), 0) << name;
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

// In processes of their own, since the library reads its scenario once.
TEST(Process, AnUnusableScenarioIsOneLineAndNoAdapters) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto load = [](const char* scenario) {
        setenv("TVRSIM_SCENARIO", scenario, 1);
        const SimulatedLibrary library(TVRSIM_DIRECTORY "/liblrmapi.so");
        const int32_t init = CALL(library, LRM_InitLib)();
        std::fprintf(stderr, "init %d adapters %u\n", init,
                     CALL(library, HBA_GetNumberOfAdapters)());
        std::exit(0);
    };
    const auto done = testing::ExitedWithCode(0);
    EXPECT_EXIT(load(""), done, "^init 0 adapters 4\n$");
    EXPECT_EXIT(load(SCENARIO_SCHEMA), done,
                "^tvrsim: scenario .*: .*: no such field\ninit 1 adapters 0\n$");
    EXPECT_EXIT(load("/nonexistent/scenario.json"), done,
                "^tvrsim: scenario /nonexistent/scenario.json: the file cannot be read\n"
                "init 1 adapters 0\n$");
}
