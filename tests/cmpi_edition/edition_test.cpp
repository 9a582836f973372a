// The adapter as built with older CMPI headers, under an object manager of that age.
#include "host/object_manager.h"
#include "tests/adapter/fixture.h"

#include <cmpimacs.h>

#include <gtest/gtest.h>

namespace cimple {
namespace {

static_assert(CMPI_VERSION == 100, "the other edition must come first on the include path");

CMPI_Static_Data block;

CMPIIndicationMI* create(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus*) {
    void* mi = nullptr;
    cimple_cmpi_adapter(block, &fixture_registration, broker, context, provider_name, 'N', mi);
    return static_cast<CMPIIndicationMI*>(mi);
}

TEST(Cmpi_Edition, FilterCallsWithTheOlderArgumentsAreAnswered) {
    script = Script();
    tvrhost::Options options;
    options.broker_version = 100;
    options.older_indication_arguments = true;
    options.factories = [](const std::string& name) {
        return name == "Widget_Create_IndicationMI"
                   ? reinterpret_cast<tvrhost::Any_Function>(create)
                   : nullptr;
    };
    tvrhost::Object_Manager manager(options);
    const int answers[] = {manager.authorize_filter("root/test", "Widget").rc,
                           manager.must_poll("root/test", "Widget").rc,
                           manager.activate_filter("root/test", "Widget").rc,
                           manager.deactivate_filter("root/test", "Widget").rc};
    for (const int rc : answers) {
        EXPECT_TRUE(rc == CMPI_RC_OK || rc == CMPI_RC_ERR_NOT_SUPPORTED) << rc;
    }
    manager.shutdown();
    EXPECT_TRUE(manager.faults().empty());
}

} // namespace
} // namespace cimple
