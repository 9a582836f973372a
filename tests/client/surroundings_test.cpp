// Hosts that lack libraries or have other ones, seen from a process of their own.
#include "tests/access/run_process.h"
#include "tests/client/client.h"
#include "json/json.h"
#include <unistd.h>

namespace client {
namespace {

using cimple::runProcess;

class Surroundings : public testing::Test {
protected:
    // What `tvrcim` prints with the libraries of that directory.
    std::string tvrcim(const std::string& libraries, const std::string& arguments) const {
        return runProcess(command(libraries, arguments));
    }
    std::string command(const std::string& libraries, const std::string& arguments) const {
        return "LD_LIBRARY_PATH=" + libraries + " TAVRIN_FC_PREFIX=" + directory.path() + " " +
               TVR_TVRCIM " --module " TVR_MODULE " " + arguments;
    }

    cimple::TempDir directory;
};

TEST_F(Surroundings, WithoutLibrariesTheClassesThatNeedNoneAnswer) {
    const std::string none = TVR_SIMULATOR "/none";
    const auto profiles =
        tvrjson::Json::parse(tvrcim(none, "-o json enum TVRHBA_RegisteredProfile"));
    EXPECT_EQ(profiles.size(), 13u);
}

TEST_F(Surroundings, PortsAreTheSameWhereverTheEntryPointsComeFrom) {
    const std::string usual = tvrcim(TVR_SIMULATOR, "-o json enum TVRHBA_FCPort");
    EXPECT_EQ(tvrjson::Json::parse(usual).size(), 4u);
    for (const char* directory_name : {"no-hbaapi", "rmapi", "rmapi-alone"}) {
        EXPECT_EQ(
            tvrcim(std::string(TVR_SIMULATOR "/") + directory_name, "-o json enum TVRHBA_FCPort"),
            usual)
            << directory_name;
    }
}

// The real HBA API library with the simulated adapters as its vendor library. Its configuration is
// bound over in a private mount namespace; the machine's own file is not touched.
TEST_F(Surroundings, DiscoveryThroughTheRealHBAAPILibrary) {
    if (geteuid() != 0 || std::system("unshare -m true 2>/dev/null") != 0) {
        GTEST_SKIP() << "needs the right to make a mount namespace";
    }
    if (std::system("ldconfig -p | grep -q 'libHBAAPI.so '") != 0 ||
        access("/etc/hba.conf", F_OK) != 0) {
        GTEST_SKIP() << "needs the HBA API library";
    }
    const std::string conf = directory.write("hba.conf", "tvrsim " TVR_SIMULATOR "/libtvrsim.so\n");
    const std::string arguments = "-o json enum TVRHBA_FCPort";
    // That library keeps its list of vendors until HBA_FreeLibrary, which the module doesn't call.
    const std::string real = runProcess("unshare -m sh -c 'mount --bind " + conf +
                                        " /etc/hba.conf && " + "ASAN_OPTIONS=detect_leaks=0 " +
                                        command(TVR_SIMULATOR "/real-hbaapi", arguments) + "'");
    EXPECT_EQ(tvrjson::Json::parse(real).size(), 4u);
    EXPECT_EQ(real, tvrcim(TVR_SIMULATOR, arguments));
}

} // namespace
} // namespace client
