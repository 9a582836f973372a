#include "sim/scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

using namespace tvrsim;
using testing::HasSubstr;
using testing::StartsWith;

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

TEST(Scenario, MalformedTextNamesThePlace) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "document: parse error at line 1, column 1"},
        {"{\"adapters\": [}", "document: parse error at line 1, column 15"},
        {"[]", "document: an object is wanted here"},
        {"{\"adapters\": {}}", "adapters: an array is wanted here"},
        {"{\"description\": 1}", "description: a text is wanted here"},
        {"{\"adapters\": [], \"adapters\": []}", "document: the name \"adapters\" stands twice"},
        {R"({"adapters": [{}, {"colour": 1}]})", "adapters[1].colour: no such field"},
        {R"({"adapters": [{"numberOfPorts": -1}]})",
         "adapters[0].numberOfPorts: a non-negative whole number"},
        {R"({"adapters": [{"driverType": 4294967296}]})",
         "adapters[0].driverType: 4294967296 is above"},
        {R"({"adapters": [{"driverType": "0xZ"}]})", "adapters[0].driverType: \"0xZ\" is no hexa"},
        {R"({"adapters": [{"nodeWWN": "20:00:02:54:56:00:00:0"}]})", "adapters[0].nodeWWN: "},
        {R"({"adapters": [{"name": "a", "copies": 2}]})", "adapters[0].copies: "},
        {R"({"adapters": [{"copies": 4000}, {"copies": 97}]})", "adapters[1]: more than 4096"},
        {R"({"adapters": [{"attributes": {"colour": 1}}]})",
         "adapters[0].attributes.colour: no such"},
        {R"({"adapters": [{"ports": [{"speed": "17G"}]}]})",
         "adapters[0].ports[0].speed: \"17G\" is none of unknown, 1G"},
        {R"({"adapters": [{"ports": [{"supportedSpeed": ["8G", true]}]}]})",
         "adapters[0].ports[0].supportedSpeed[1]: a number or one of the words"},
        {R"({"adapters": [{"ports": [{"statistics": {"txFrames": {"value": "1"}}}]}]})",
         "adapters[0].ports[0].statistics.txFrames.value: "},
        {R"({"adapters": [{"ports": [{"targets": [{"luns": [{"type": "toaster"}]}]}]}]})",
         "adapters[0].ports[0].targets[0].luns[0].type: \"toaster\" is none of disk"},
        {R"({"adapters": [{"ports": [{"targets": [{"luns": [{"identifier": "01",
            "identifiers": []}]}]}]}]})",
         "adapters[0].ports[0].targets[0].luns[0].identifiers: there is \"identifier\" already"},
        {R"({"adapters": [{"ports": [{"targets": [{"luns": [{"identifiers": [{"type": 16}]}]}]}]}]})",
         "adapters[0].ports[0].targets[0].luns[0].identifiers[0].type: 16 is above"},
        {R"({"adapters": [{"ports": [{"targets": [{"luns": [{"raw": {"0x8": ""}}]}]}]}]})",
         "adapters[0].ports[0].targets[0].luns[0].raw.0x8: no such command"},
        {R"({"adapters": [{"ports": [{"targets": [{"copies": 66, "luns": [{"copies": 1000}]}]}]}]})",
         "adapters[0].ports[0].targets[0]: more than 65536 targets or logical units"},
        {R"({"adapters": [{"copies": 5, "ports": [{"targets": [{"luns": [{"copies": 60000}]}]}]}]})",
         "adapters[0]: more than 262144 logical units in all"},
        {R"({"adapters": [{"ports": [{"transceiver": {"vcc": 1e39}}]}]})",
         "adapters[0].ports[0].transceiver.vcc: a number is wanted here"},
        {R"({"adapters": [{"ports": [{"transceiver": {"vendorName": "1234567890123456789"}}]}]})",
         "adapters[0].ports[0].transceiver.vendorName: a text of 19 bytes is longer than 18"},
        {R"({"adapters": [{"ports": [{"flash": {"images": [{}, {"copies": 1224}]}}]}]})",
         "adapters[0].ports[0].flash.images[1]: more than 1224"},
        {R"({"adapters": [{"ports": [{"pciRegisters": {"baseClass": 256}}]}]})",
         "adapters[0].ports[0].pciRegisters.baseClass: 256 is above the highest value 255"},
        {R"({"globalDriverParameters": {"entries": [{"name": "12345678901234567890123456789012",
            "copies": 1}]}})",
         "globalDriverParameters.entries[0].name: with its number"},
        {R"({"entryPoints": {"LRM_Nothing": {}}})", "entryPoints.LRM_Nothing: no such entry point"},
        {R"({"entryPoints": {"LRM_InitLib": {"latencyMs": 60001}}})",
         "entryPoints.LRM_InitLib.latencyMs: a number from 0 to 60000"},
        {R"({"entryPoints": {"LRM_InitLib": {"failTimes": 2}}})",
         "entryPoints.LRM_InitLib.failTimes: "},
        {R"({"entryPoints": {"LRM_InitLib": [{"status": 1, "failCall": 1}]}})",
         "entryPoints.LRM_InitLib[0].status: "},
    };
    for (const auto& [text, reason] : cases) {
        const std::string failure = failureOf(text);
        EXPECT_THAT(failure, StartsWith(reason)) << text;
        EXPECT_EQ(failure.find('\n'), std::string::npos) << text;
    }
}

TEST(Scenario, TextsAreBoundByTheirFields) {
    const std::string full(64, 's');
    const Scenario scenario = read("{\"adapters\": [{\"serialNumber\": \"" + full + "\"}]}");
    EXPECT_EQ(std::string(scenario.adapters.at(0).hba.SerialNumber, 64), full)
        << "a text as long as its field stands without terminator";
    EXPECT_THAT(failureOf("{\"adapters\": [{\"serialNumber\": \"" + full + "s\"}]}"),
                HasSubstr("longer than 64"));
    EXPECT_THAT(failureOf("{\"adapters\": [{\"name\": \"a\\u0000b\"}]}"), HasSubstr("zero byte"));
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

// The schema is what people's editors check a scenario by: it must not offer what is refused.
TEST(Scenario, SchemaOffersOnlyKnownFields) {
    std::ifstream file(SCENARIO_SCHEMA);
    ASSERT_TRUE(file) << SCENARIO_SCHEMA;
    const Json schema = Json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
    // Where each object of the schema stands; the field to be refused comes where the $ is.
    const std::map<std::string, std::string> places = {
        {"adapter", R"({"adapters": [{$}]})"},
        {"adapterAttributes", R"({"adapters": [{"attributes": {$}}]})"},
        {"mapping", R"({"adapters": [{"mapping": {$}}]})"},
        {"driverParameters", R"({"globalDriverParameters": {$}})"},
        {"driverParameter", R"({"globalDriverParameters": {"entries": [{$}]}})"},
        {"rule", R"({"entryPoints": {"LRM_InitLib": {$}}})"},
        {"port", "port {$}"},
        {"portAttributes", R"(port {"attributes": {$}})"},
        {"statistics", R"(port {"statistics": {$}})"},
        {"vpd", R"(port {"vpd": {$}})"},
        {"vpdEntry", R"(port {"vpd": {"entries": [{$}]}})"},
        {"transceiver", R"(port {"transceiver": {$}})"},
        {"flash", R"(port {"flash": {$}})"},
        {"flashImage", R"(port {"flash": {"images": [{$}]}})"},
        {"pciRegisters", R"(port {"pciRegisters": {$}})"},
        {"dumps", R"(port {"dumps": {$}})"},
        {"diagnostics", R"(port {"diagnostics": {$}})"},
        {"diagnosticTest", R"(port {"diagnostics": {"echo": {$}}})"},
        {"wwnManagement", R"(port {"wwnManagement": {$}})"},
        {"namePair", R"(port {"wwnManagement": {"factoryDefault": {$}}})"},
        {"virtualPorts", R"(port {"virtualPorts": {$}})"},
        {"virtualPort", R"(port {"virtualPorts": {"entries": [{$}]}})"},
        {"virtualMachine", R"(port {"virtualPorts": {"entries": [{"machines": [{$}]}]}})"},
        {"target", R"(port {"targets": [{$}]})"},
        {"lun", R"(port {"targets": [{"luns": [{$}]}]})"},
        {"identifier", R"(port {"targets": [{"luns": [{"identifiers": [{$}]}]}]})"},
        {"failure", R"(port {"targets": [{"luns": [{"failures": {"0x00": {$}}}]}]})"},
    };
    const Json& definitions = *schema.find("$defs");
    for (const auto& [name, definition] : definitions.members()) {
        EXPECT_TRUE(definition.find("properties") == nullptr || places.contains(name)) << name;
    }
    for (const auto& [name, place] : places) {
        const Json& properties = *definitions.find(name)->find("properties");
        EXPECT_FALSE(properties.empty()) << name;
        for (const auto& property : properties.members()) {
            std::string text = place;
            text.replace(text.find('$'), 1, '"' + property.name + "\": [[]]");
            const std::string failure = failureOf(
                text.starts_with("port ") ? R"({"adapters": [{"ports": [)" + text.substr(5) + "]}]}"
                                          : text);
            EXPECT_THAT(failure, HasSubstr(property.name));
            EXPECT_EQ(failure.find("no such"), std::string::npos) << failure;
        }
    }
}
