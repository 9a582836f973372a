#include "tests/access/run_process.h"

int main(int argc, char** argv) {
    cimple::restartWithLibraries(TVR_SIMULATOR, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
