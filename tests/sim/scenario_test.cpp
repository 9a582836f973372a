#include "sim/scenario.h"
#include "tests/common/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <set>

using namespace tvrsim;
using testing::HasSubstr;

namespace {

Scenario read(std::string_view text) {
    return readScenario(parseJson(text), "");
}

std::string failureOf(std::string_view text) {
    try {
        read(text);
    } catch (const FormatError& error) {
        return error.what();
    }
    return "";
}

uint32_t integerOf(const Attributes& attributes, uint16_t id) {
    const std::string& bytes = attributes.at(id);
    EXPECT_EQ(bytes.size(), 4U);
    uint32_t value = 0;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

} // namespace

TEST(Scenario, TextsAreBoundByTheirFields) {
    const std::string full(64, 's');
    const Scenario scenario = read("{\"adapters\": [{\"serialNumber\": \"" + full + "\"}]}");
    EXPECT_EQ(std::string(scenario.adapters.at(0).hba.SerialNumber, 64), full)
        << "a text as long as its field stands without terminator";
}

TEST(Scenario, CopiesOfTargetsAndUnitsCountOn) {
    const Scenario scenario = read(R"({"adapters": [{"ports": [{"targets": [
        {"portWWN": "50000000000000FF", "fcId": "0xFFFFFF", "scsiTarget": 5, "copies": 2, "luns": [
            {"fcpLun": 7, "copies": 2, "osDeviceName": "sd{n}.{n}", "serialNumber": "x",
             "identifiers": [{"bytes": "FFFFFFFF"}, {"bytes": "01FF"}, {"text": "u{n}"}]},
            {"osDeviceName": "sd{n}"}]},
        {"luns": [{"osDeviceName": "sd{n}"}, {"osLun": 9}]}]}]}]})");
    const Port& port = scenario.adapters.at(0).ports.at(0);
    EXPECT_EQ(port.hba.NumberofDiscoveredPorts, 3U);
    EXPECT_EQ(port.targets->unitCount(), 8U);
    const std::vector<Target>& targets = port.targets->targets();
    const Target& second = targets.at(1);
    EXPECT_EQ(wwnText(second.portWwn), "5000000000000100");
    EXPECT_EQ(second.fcId, 0U);
    EXPECT_EQ(second.scsiTarget, 6U);
    const Lun& last = second.luns.at(1);
    EXPECT_EQ(last.fcpLun, 8U);
    EXPECT_EQ(last.osDeviceName, "sd3.3");
    EXPECT_EQ(last.designators.at(0).bytes, std::string("\0\0\0\2", 4));
    EXPECT_EQ(last.designators.at(1).bytes, std::string("\2\2", 2));
    EXPECT_EQ(last.designators.at(2).bytes, "u3");
    EXPECT_EQ(last.designators.at(2).codeSet, 2);
    EXPECT_EQ(second.luns.at(2).osDeviceName, "sd1");
    EXPECT_TRUE(second.luns.at(2).designators.empty()) << "names come with copies of the unit";
    EXPECT_EQ(wwnText(targets.at(2).portWwn), "5002545690000002");
    EXPECT_EQ(targets.at(2).luns.at(0).osDeviceName, "sd{n}") << "without copies as it stands";
    EXPECT_EQ(targets.at(2).luns.at(1).osLun, 9U);
    EXPECT_EQ(port.targets->find(second.portWwn, 8), &last);
}

TEST(Scenario, FieldsOverrideAndFollow) {
    const Scenario scenario = read(R"({"adapters": [{
        "nodeWWN": "20:00:02:54:56:AA:BB:CC", "numberOfPorts": 3,
        "temperature": {"current": 1, "critical": 2, "warning": 3},
        "attributes": {"modelId": null, "kernelVersion": "1.11a5", "999": "0102", "deviceId":
                       {"bytes": "FF"}},
        "ports": [{"state": "disabled", "type": "ptp", "statistics": {"txFrames": null}},
                  {"attributes": {"physicalState": null}}]}]})");
    const Adapter& adapter = scenario.adapters.at(0);
    EXPECT_EQ(adapter.hba.NumberOfPorts, 3U);
    EXPECT_EQ(wwnText(adapter.ports.at(1).hba.NodeWWN), "20000254"
                                                        "56AABBCC");
    EXPECT_EQ(adapter.attributes.at(RM_HA_IEEE_ADDRESS), std::string("\x02\x54\x56\xAA\xBB\xCC"));
    EXPECT_EQ(integerOf(adapter.attributes, RM_HA_BOARD_TEMPERATURE), 0x030201U);
    EXPECT_FALSE(adapter.attributes.contains(RM_HA_MODEL_ID));
    EXPECT_EQ(adapter.attributes.at(RM_HA_KERNEL_VERSION), "1.11a5");
    EXPECT_EQ(adapter.attributes.at(RM_HA_DEVICE_ID), "\xFF");
    EXPECT_EQ(adapter.attributes.at(999), "\x01\x02");
    const Port& disabled = adapter.ports.at(0);
    EXPECT_EQ(disabled.hba.PortState, HBA_PORTSTATE_OFFLINE);
    EXPECT_EQ(integerOf(disabled.attributes, RM_PA_PHYSICAL_STATE), 22U);
    EXPECT_EQ(integerOf(disabled.attributes, RM_PA_TOPOLOGY), 21U);
    EXPECT_FALSE(disabled.statistics.contains(RM_PS_TX_FRAMES));
    EXPECT_FALSE(adapter.ports.at(1).attributes.contains(RM_PA_PHYSICAL_STATE));
}

namespace {

class Refusals : public testing::Test {
protected:
    Refusals() {
        std::ifstream file(SCENARIO_SCHEMA);
        EXPECT_TRUE(file) << SCENARIO_SCHEMA;
        schema = Json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
        session.on("read", [this] { return failureOf(session.rest()); });
        // The schema is what people's editors check a scenario by: it must not offer what is
        // refused. Each field of the object is known there, and refused for its value.
        session.on("place", [this](const auto& words, std::ostream& answer) {
            std::string place = session.rest().substr(words.at(0).size() + 1);
            if (place.starts_with("port ")) {
                place = R"({"adapters": [{"ports": [)" + place.substr(5) + "]}]}";
            }
            asked.insert(words[0]);
            const Json& properties = *definitions().find(words[0])->find("properties");
            for (const auto& property : properties.members()) {
                std::string text = place;
                text.replace(text.find('$'), 1, '"' + property.name + "\": [[]]");
                const std::string failure = failureOf(text);
                EXPECT_THAT(failure, HasSubstr(property.name));
                EXPECT_EQ(failure.find("no such"), std::string::npos) << failure;
            }
            answer << "all known\n";
        });
        session.on("others", [this](const auto&, std::ostream& answer) {
            for (const auto& [name, definition] : definitions().members()) {
                if (definition.find("properties") != nullptr && !asked.contains(name)) {
                    answer << name << '\n';
                }
            }
        });
    }
    const Json& definitions() const { return *schema.find("$defs"); }

    Json schema;
    std::set<std::string> asked;
    Text_Session session;
};

TVR_SESSIONS(Refusals, "scenario.txt");

} // namespace
