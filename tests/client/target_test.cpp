// Targets through the loaded module: what SCSI devices of all kinds become, and what libraries and
// devices that answer nonsense do not break.
#include "tests/client/client_session.h"

namespace client {
namespace {

using testing::SizeIs;

class Targets : public Client_Session {};

TVR_SESSIONS(Targets, "target.txt");

TEST_F(Targets, OfALargeSANAreAllPublished) {
    control(R"({"scenario": {"adapters": [{"copies": 16, "ports": [
                {"targets": [{"luns": [{"copies": 1000, "blocks": 2048}]}]}]}]}})");
    const std::vector<Cim_Path> volumes =
        manager().enumerate_instance_names(name_space, "TVRHBA_StorageVolume").paths;
    ASSERT_THAT(volumes, SizeIs(16'000));
    const Cim_Path& last = volumes.back();
    EXPECT_TRUE(manager().get_instance(last).instance()["DeviceID"] == last.keys["DeviceID"]);
    EXPECT_THAT(
        manager()
            .associator_names(last, {"TVRHBA_SCSIInitiatorTargetStorageVolumePath", "", "", ""})
            .paths,
        SizeIs(2));
}

} // namespace
} // namespace client
