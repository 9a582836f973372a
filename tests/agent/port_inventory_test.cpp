// What a port's hardware tells of its making: vital product data, transceiver, flash images.
#include "tests/agent/agent_fixture.h"

#include <cstring>

namespace cimple {
namespace {

class Port_Inventory : public With_Agent {
protected:
    Port_Inventory() {
        libraries.adapters.resize(1);
        port().transceiver.emplace();
    }
    void SetUp() override { load(); }

    fake::Port& port() { return libraries.adapters[0].ports[0]; }
    template <class C> Collected made() {
        refresh();
        return enumerated<C>();
    }
};

TEST_F(Port_Inventory, VitalProductDataGoToPropertiesAndTags) {
    port().vpd = {{"\x82\x82", "Adapter"}};
    for (const char* keyword :
         {"PN", "SN", "EC", "V0", "V1", "V2", "V3", "V4", "V5", "VB", "V6", "pn"}) {
        port().vpd.emplace_back(keyword, std::string("a ") + keyword);
    }
    EXPECT_EQ(one_line(made<TVRHBA_VitalProductData>()[0]),
              "=root/tavrin; FieldV0=a V0; FieldV1=a V1; FieldV2=a V2; FieldV3=a V3; FieldV4=a V4; "
              "FieldV5=a V5; FieldVB=a VB; InstanceID=1000AABBCCDD0100; PartNumber=a PN; "
              "ProductName=Adapter; VPDSerialNumber=a SN; VPDTagValues={a V6, a pn}; "
              "VPDTags={V6, pn}; ");
    auto fc_port = describe(enumerated<TVRHBA_FCPort>()[0]);
    EXPECT_THAT(fc_port["IdentifyingDescriptions"],
                testing::StartsWith("{VPD:PRODUCT_NAME, VPD:PART_NUMBER, VPD:SERIAL_NUMBER, "
                                    "VPD:EC_LEVEL, VPD:V0, "));
    EXPECT_THAT(fc_port["OtherIdentifyingInfo"],
                testing::StartsWith("{Adapter, a PN, a SN, a EC, a V0, "));
    port().vpd = {{"CP", "c"}};
    EXPECT_EQ(one_line(made<TVRHBA_VitalProductData>()[0]),
              "=root/tavrin; InstanceID=1000AABBCCDD0100; ");
}

TEST_F(Port_Inventory, TransceiversTellWhatTheyHave) {
    RM_SFFDATA& data = *port().transceiver;
    std::strcpy(data.vendorName, "OPTICS  \t");
    std::memset(data.vendorPartNumber, 'p', sizeof data.vendorPartNumber); // without an end
    std::memset(data.vendorRevision, ' ', sizeof data.vendorRevision);
    std::strcpy(data.vendorSerialNumber, "S 1  ");
    std::memcpy(data.vendorOui, "\x0A\xBC\xEF", sizeof data.vendorOui);
    std::memcpy(data.dateCode, "260131", sizeof data.dateCode);
    data.temperature = 1;
    EXPECT_EQ(one_line(made<TVRHBA_Transceiver>()[0]),
              "=root/tavrin; CreationClassName=TVRHBA_Transceiver; "
              "Description=Tavrin PhysicalComponent Data; ElementName=1000AABBCCDD0100:S 1; "
              "InstanceID=1000AABBCCDD0100:S 1; ManufactureDate=20260131000000.000000+000; "
              "Manufacturer=OPTICS; Name=1000AABBCCDD0100:S 1; OUI=0A-BC-ef; "
              "OperationalStatus={0}; PartNumber=pppppppppppppppppp; RemovalConditions=2; "
              "SerialNumber=S 1; StatusDescriptions={unknown}; Tag=1000AABBCCDD0100:S 1; "
              "Version= ; ");
    data.hasDiagnostics = 1;
    data.temperature = 40.5F;
    data.vcc = 3.25F;
    std::memset(data.vendorSerialNumber, 0, 1);
    auto all = describe(made<TVRHBA_Transceiver>()[0]);
    EXPECT_EQ(all["InstanceID"] + all["SerialNumber"], "1000AABBCCDD0100:");
    EXPECT_EQ(all.count("Identifier") + all.count("Temperature"), 1u);
    for (const char* line : {"VendorSN: S 1#", "Temperature: 40.50  C", "Vcc:  3.25   V"}) {
        EXPECT_EQ(logged(line), 1u) << line;
    }
}

TEST_F(Port_Inventory, TransceiversHaveADateOfSixDigits) {
    for (const auto& [code, date] :
         std::map<std::string, std::string>{{"990101", "19990101"},
                                            {"700101", "19700101"},
                                            {"691231", "20691231"},
                                            {"000229", "20000229"},
                                            {"26 101", ""},
                                            {"26010x", ""},
                                            {"\xFF\xFF\xFF\xFF\xFF\xFF", ""}}) {
        code.copy(port().transceiver->dateCode, 6);
        EXPECT_EQ(made<TVRHBA_Transceiver>().texts("ManufactureDate")[0],
                  date.empty() ? "" : date + "000000.000000+000");
    }
}

TEST_F(Port_Inventory, FlashImagesAreSoftwareOfTheController) {
    const RM_LOADENTRY first{5, 4, 0x1000, 0x200, {7, 8}, "About it", 2, "Kernel", "1.11a5"};
    port().images = {first, {}, {}};
    std::memset(port().images[1].version, 'v', sizeof first.version); // without an end
    const Collected images = made<TVRHBA_FlashImageSoftwareIdentity>();
    ASSERT_EQ(images.size(), 3u);
    auto second = describe(images[1]);
    EXPECT_EQ(second["VersionString"], std::string(24, 'v'));
    EXPECT_EQ(second.count("MajorVersion"), 0u);
    EXPECT_EQ(second["IsWakeupParameter"], "false");
    auto element = describe(enumerated<TVRHBA_ElementFlashImageSoftwareIdentity>()[0]);
    EXPECT_EQ(element["UpgradeCondition"] + element["ElementSoftwareStatus"], "3{6}");
    EXPECT_THAT(element["Antecedent"], testing::HasSubstr("Flash Image Kernel"));
    EXPECT_THAT(element["Dependent"], testing::StartsWith("TVRHBA_PortController."));

    port().images[1] = first; // the same image again ends the list
    EXPECT_EQ(made<TVRHBA_FlashImageSoftwareIdentity>().size(), 1u);
    EXPECT_EQ(logged("Insert Failed : m_TVRHBA_FlashImageSoftwareIdentity_map "), 1u);
    libraries.statuses["LRM_DiagGetLoadListParams"] = {9};
    EXPECT_EQ(made<TVRHBA_PortController>().size(), 1u);
    EXPECT_EQ(logged("Failed to retrieve the flash contents. Exited with ErrorCode 9"), 1u);
}

} // namespace
} // namespace cimple
