#include "tests/access/run_process.h"

int main(int argc, char** argv) {
    cimple::restartWithLibraries(LIBRARIES, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
