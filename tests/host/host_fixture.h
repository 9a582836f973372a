// An object manager over a scripted module with the sample classes. Faults that a test doesn't take
// fail it.
#ifndef TVR_TESTS_HOST_HOST_FIXTURE_H
#define TVR_TESTS_HOST_HOST_FIXTURE_H

#include "tests/host/sample_model.h"
#include "tests/host/scripted_module.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace tvrtest {

using namespace tvrhost;

class Host_Fixture : public ::testing::Test {
protected:
    Host_Fixture() {
        options.schema = sample_model();
        options.factories = module.factories();
        options.name_spaces = {"root/x"};
        options.principal = "tester";
    }
    ~Host_Fixture() override {
        if (!manager) {
            return;
        }
        manager->shutdown();
        for (const Fault& fault : manager->take_faults()) {
            ADD_FAILURE() << "fault: " << fault.text;
        }
        EXPECT_EQ(manager->live_objects(), 0u);
    }

    Object_Manager& om() {
        if (!manager) {
            manager.emplace(options);
        }
        return *manager;
    }

    // The kinds of the faults so far, which are then forgotten.
    std::vector<Fault_Kind> faults() {
        std::vector<Fault_Kind> kinds;
        for (const Fault& fault : om().take_faults()) {
            kinds.push_back(fault.kind);
        }
        return kinds;
    }

    static Cim_Path thing_path(const std::string& name, std::uint16_t slot,
                               const char* class_name = "Test_Thing") {
        return Cim_Path("root/x", class_name, {{"Name", name}, {"Slot", slot}});
    }

    // What a provider does to hand out an instance of Test_Thing, or a class below it.
    static CMPIInstance* new_thing(const Request& r, const char* name, CMPIUint16 slot,
                                   const char* class_name = "Test_Thing") {
        CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", class_name, nullptr);
        CMAddKey(path, "Name", name, CMPI_chars);
        CMAddKey(path, "Slot", &slot, CMPI_uint16);
        CMPIInstance* const instance = CMNewInstance(r.broker, path, nullptr);
        if (r.properties != nullptr) {
            CMSetPropertyFilter(instance, r.properties, nullptr);
        }
        CMSetProperty(instance, "Name", name, CMPI_chars);
        CMSetProperty(instance, "Slot", &slot, CMPI_uint16);
        const CMPIUint32 count = slot * 10u;
        CMSetProperty(instance, "Count", &count, CMPI_uint32);
        return instance;
    }
    static Script hand_out(const char* name, CMPIUint16 slot,
                           const char* class_name = "Test_Thing") {
        return [=](Request& r) {
            CMReturnInstance(r.result, new_thing(r, name, slot, class_name));
            CMReturnDone(r.result);
            return CMPI_RC_OK;
        };
    }

    // Names of the things in an answer.
    static std::vector<std::string> names(const Answer& answer) {
        std::vector<std::string> result;
        for (const Cim_Instance& instance : answer.instances) {
            result.push_back(instance["Name"].plain());
        }
        return result;
    }

    Scripted_Module module;
    Options options;
    std::optional<Object_Manager> manager; // made at first use
};

} // namespace tvrtest

#endif
