// Targets through the loaded module: what SCSI devices of all kinds become, and what libraries and
// devices that answer nonsense do not break.
#include "tests/client/client.h"
#include "json/json.h"

namespace client {
namespace {

using testing::SizeIs;
using tvrjson::Json;

const char* const device_classes[] = {"TVRHBA_StorageVolume", "TVRHBA_TapeDrive",
                                      "TVRHBA_LogicalDisk", "TVRHBA_StorageExtent",
                                      "TVRHBA_SCSIArbitraryLogicalUnit"};

class Targets : public Client {
protected:
    // A host with one port that sees these units of one remote port.
    void set_units(const Json& units) {
        stop();
        const Json port = {{"portWWN", "10:00:02:54:56:4A:10:20"},
                           {"targets",
                            {{{"nodeWWN", "50:02:54:56:70:00:0A:00"},
                              {"portWWN", "50:02:54:56:70:00:0A:01"},
                              {"luns", units}}}}};
        const Json adapter = {{"ports", {port}}};
        control(Json{{"scenario", {{"adapters", {adapter}}}}}.text());
    }
    // All devices, by the number that ends the name of their system.
    std::map<int, Cim_Instance> devices() {
        std::map<int, Cim_Instance> found;
        for (const char* class_name : device_classes) {
            for (const Cim_Instance& device : enumerate(class_name).instances) {
                const std::string name = device["ElementName"].as_string();
                found[std::stoi(name.substr(name.rfind(' ')))] = device;
            }
        }
        return found;
    }
};

std::string plain(const Cim_Instance& instance, const char* property) {
    return instance.has(property) ? instance[property].plain() : "-";
}

TEST_F(Targets, AreOfTheClassOfTheirType) {
    struct Row {
        int type;
        const char* class_name;
        const char* element_name;
        const char* device_type = "-";
    };
    const Row rows[] = {
        {0, "StorageVolume", "Storage Volume:"},
        {1, "TapeDrive", "Tape Drive"},
        {2, "StorageExtent", "Printer"},
        {3, "StorageExtent", "Processor"},
        {4, "StorageExtent", "Write-once device"},
        {5, "StorageExtent", "CD/DVD"},
        {6, "StorageExtent", "Scanner"},
        {7, "StorageExtent", "Optical memory device"},
        {8, "StorageExtent", "Jukebox"},
        {9, "StorageExtent", "Communications device"},
        {10, "StorageExtent", "Unknown device"},
        {12, "SCSIArbitraryLogicalUnit", "Storage array controller", "1"},
        {13, "SCSIArbitraryLogicalUnit", "Enclosure services", "4"},
        {14, "StorageVolume", "Storage Volume:"},
        {15, "StorageExtent", "Optical card reader/writer"},
        {16, "SCSIArbitraryLogicalUnit", "Bridge controller", "1"},
        {17, "LogicalDisk", "Object-based storage device:"},
        {18, "StorageExtent", "Unknown device"},
        {31, "StorageExtent", "Unknown device"},
    };
    Json units = Json::array();
    for (const Row& row : rows) {
        units.push_back({{"type", row.type},
                         {"blocks", 11},
                         {"identifier", "50:02:54:56:70:00:0A:02"},
                         {"osDeviceName", "/dev/unit"}});
    }
    set_units(units);
    auto found = devices();
    ASSERT_THAT(found, SizeIs(std::size(rows)));
    int number = 0;
    for (const Row& row : rows) {
        const Cim_Instance& device = found[number];
        EXPECT_EQ(device.class_name(), std::string("TVRHBA_") + row.class_name) << row.type;
        EXPECT_EQ(device["ElementName"].plain(),
                  row.element_name + std::string(" ") + std::to_string(number++));
        EXPECT_EQ(plain(device, "DeviceType"), row.device_type);
        const bool has_capacity = device.class_name() != "TVRHBA_SCSIArbitraryLogicalUnit";
        EXPECT_EQ(plain(device, "Capacity"), has_capacity ? "5120" : "-") << row.type;
        const bool has_blocks = has_capacity && row.type != 1;
        EXPECT_EQ(plain(device, "NumberOfBlocks"), has_blocks ? "10" : "-") << row.type;
        EXPECT_EQ(plain(device, "DataOrganization"), row.type == 17 ? "1" : "-") << row.type;
        EXPECT_EQ(device["IdentifyingDescriptions"].literal().starts_with("{\"OS"),
                  device.class_name() != "TVRHBA_StorageExtent");
    }
    // The unit's kind is what its identification says, its device type what its standard data says.
    set_units({{{"type", "array"}, {"raw", {{"inquiry", "1E"}}}, {"identifier", "51"}}});
    EXPECT_EQ(plain(devices()[0], "DeviceType"), "6");
    EXPECT_EQ(plain(devices()[0], "OtherDeviceType"), "Peripheral devices type is 0x1E");
}

TEST_F(Targets, AreNamedByTheirIdentifier) {
    struct Row {
        const char* type;
        const char* bytes;
        const char* name;
        const char* format;
        const char* other_format;
        const char* name_space;
        const char* other_name_space;
    };
    const Row rows[] = {
        {"vendorSpecific", "0102030405060708", "0102030405060708", "6", "-", "1",
         "Vendor specific"},
        {"t10", "010203040506070809101112", "010203040506070809101112", "5", "-", "4", "-"},
        {"eui64", "6102030405060708", "6102030405060708", "10", "-", "3", "-"},
        {"naa", "1102030405060708", "030405060708", "9", "-", "2", "-"},
        {"naa", "2102030405060708", "030405060708", "9", "-", "2", "-"},
        {"naa", "5102030405060708", "030405060708", "9", "-", "2", "-"},
        {"naa", "61020304050607080910111213141516", "020304050607080910111213141516", "9", "-", "2",
         "-"},
        {"naa", "3102030405060708", "3102030405060708", "9", "-", "2", "-"},
        {"naa", "60010203", "010203", "9", "-", "2", "-"},
        {"relativePort", "00000001", "", "1", "Relative target port identifier", "1",
         "Relative target port idientifier"},
        {"portGroup", "0102030405060708", "0102030405060708", "1", "Target port group", "1",
         "Target port group"},
        {"unitGroup", "0102030405060708", "0102030405060708", "1", "Logical port group", "1",
         "Logical unit group"},
        {"md5", "01020304050607080910111213141516", "01020304050607080910111213141516", "1",
         "MD5 logical unit identifier", "1", "MD5 logical unit identifier"},
        {"scsiName", "0102030405060708", "0102030405060708", "1", "SCSI name std::string", "1",
         "SCSI name std::string"},
        {"9", "0102030405060708", "0102030405060708", "-", "-", "-", "-"},
    };
    // The same on a volume, which tells its format, and on devices that don't.
    Json units = Json::array();
    for (const Row& row : rows) {
        Json identifier = {{"bytes", row.bytes}};
        identifier["type"] = std::isdigit(*row.type) ? Json(std::atoi(row.type)) : Json(row.type);
        for (const char* type : {"disk", "cdrom", "objectStorage"}) {
            units.push_back({{"type", type}, {"identifiers", {identifier}}});
        }
    }
    set_units(units);
    auto found = devices();
    int number = 0;
    for (const Row& row : rows) {
        const Cim_Instance& volume = found[number++];
        EXPECT_EQ(plain(volume, "Name"), row.name) << row.type;
        EXPECT_EQ(plain(volume, "NameFormat"), row.format) << row.type;
        EXPECT_EQ(plain(volume, "OtherNameFormat"), row.other_format) << row.type;
        EXPECT_EQ(plain(volume, "NameNamespace"), row.name_space) << row.type;
        EXPECT_EQ(plain(volume, "OtherNameNamespace"), row.other_name_space) << row.type;
        for (const char* default_format : {"-", "12"}) {
            const Cim_Instance& device = found[number++];
            EXPECT_EQ(plain(device, "Name"), row.name) << row.type;
            EXPECT_EQ(plain(device, "NameFormat"), default_format) << row.type;
        }
    }
}

// Each unit answers one command in a way of its own; its neighbours and its other fields stay.
TEST_F(Targets, WithStrangeAnswersChangeTheirOwnFieldsOnly) {
    const Json good = {{"blocks", 11},
                       {"vendor", "TVSTORE"},
                       {"product", "ARRAY"},
                       {"revision", "4.10"},
                       {"serialNumber", "S1"},
                       {"osDeviceName", "/dev/x"},
                       {"identifier", "6102030405060708"}};
    const std::string inquiry = "TVSTORE  ARRAY            Revision 4.10 Serial Number ";
    const std::string name = "02030405060708";
    struct Row {
        Json changes;
        std::string description;
        std::string name;
        const char* capacity = "5120";
    };
    const std::string endless(2 * 251, '4'); // no terminator within the response
    const Row rows[] = {
        {{{"failures", {{"inquiry", {{"times", 2}}}}}}, inquiry + "S1", name},
        {{{"failures", {{"inquiry", {{"times", 3}}}}}},
         "Unknown Unknown Revision Unkn Serial Number S1",
         name},
        {{{"raw", {{"inquiry", "00"}}}}, "  Revision  Serial Number S1", name},
        {{{"raw", {{"inquiry", nullptr}, {"0x80", nullptr}}}},
         "Unknown Unknown Revision Unkn Serial Number Unknown",
         name},
        {{{"raw", {{"0x80", "0080FFFF" + endless}}}}, inquiry + std::string(40, 'D'), name},
        {{{"raw", {{"0x80", "00800002535331"}}}}, inquiry + "SS", name},
        {{{"raw", {{"0x80", "00"}}}}, inquiry, name},
        // Longer than what came: what didn't come reads as zero.
        {{{"raw", {{"0x83", "0083000C010300FF61020304"}}}},
         inquiry + "S1",
         "020304" + std::string(2 * 251, '0')},
        {{{"raw", {{"0x83", "008300FF0103000861020304"}}}}, inquiry + "S1", "02030400000000"},
        {{{"raw", {{"0x83", "00"}}}}, inquiry + "S1", ""},
        {{{"raw", {{"0x83", nullptr}}}}, inquiry + "S1", ""},
        {{{"raw", {{"readCapacity", nullptr}}}}, inquiry + "S1", name, "-"},
        {{{"raw", {{"readCapacity", "0000"}}}}, inquiry + "S1", name, "-"},
        {{{"failures", {{"readCapacity", {{"times", 1}, {"status", 2}}}}}},
         inquiry + "S1",
         name,
         "-"},
    };
    Json units = Json::array();
    for (const Row& row : rows) {
        Json strange = good;
        for (const auto& [field, value] : row.changes.members()) {
            strange.append(field, value);
        }
        units.push_back(strange);
        units.push_back(good);
    }
    set_units(units);
    auto found = devices();
    ASSERT_THAT(found, SizeIs(2 * std::size(rows)));
    int number = 0;
    for (const Row& row : rows) {
        for (const Row& expected : {row, Row{{}, inquiry + "S1", name}}) {
            const Cim_Instance& device = found[number++];
            EXPECT_EQ(device.class_name(), "TVRHBA_StorageVolume") << row.changes.text(-1);
            EXPECT_EQ(plain(device, "Description"), expected.description) << row.changes.text(-1);
            EXPECT_EQ(plain(device, "Name"), expected.name) << row.changes.text(-1);
            EXPECT_EQ(plain(device, "Capacity"), expected.capacity) << row.changes.text(-1);
            EXPECT_EQ(device["OtherIdentifyingInfo"].as_strings().front(), "/dev/x");
        }
    }
}

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
