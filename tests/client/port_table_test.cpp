// What the numbers of the adapters are called in CIM, read as a client reads them: a host with a
// port for each row.
#include "tests/client/client.h"
#include "json/json.h"

namespace client {
namespace {

using tvrjson::Json;

class Port_Tables : public Client {
protected:
    struct Row {
        Json port;
        std::string shown; // of one class the properties, as of `columns`
    };
    // A port on an adapter of its own for each row; what they are called as ports.
    void expect(const std::vector<Row>& rows, const std::vector<std::string>& properties) {
        Json adapters = Json::array();
        std::vector<std::string> expected;
        for (const Row& row : rows) {
            adapters.push_back({{"ports", {row.port}}});
            expected.push_back(row.shown);
        }
        control(Json{{"scenario", {{"adapters", adapters}}}}.text());
        EXPECT_EQ(columns("TVRHBA_FCPort", properties), expected);
    }
    // Of all instances of a class the literals of some properties, "-" for NULL.
    std::vector<std::string> columns(const char* class_name,
                                     const std::vector<std::string>& properties) {
        std::vector<std::string> rows;
        for (const Cim_Instance& instance : enumerate(class_name).instances) {
            std::string& row = rows.emplace_back();
            for (const std::string& property : properties) {
                row += (row.empty() ? "" : " ") +
                       (instance.has(property) ? instance[property].literal() : "-");
            }
        }
        return rows;
    }
};

TEST_F(Port_Tables, Types) {
    std::vector<Row> rows;
    for (const auto& [type, shown] : std::vector<std::pair<std::uint32_t, const char*>>{
             {0, "0 - -"},
             {1, "0 - -"},
             {2, R"(1 "Other" "Other")"},
             {3, "0 - -"},
             {5, "10 - -"},
             {6, "11 - -"},
             {7, "16 - -"},
             {8, "15 - -"},
             {9, "14 - -"},
             {10, "18 - -"},
             {11, "0 - -"},
             {19, "0 - -"},
             {20, R"(1 "Private Loop" "Private Loop")"},
             {21, R"(1 "Point to Point" "Point to Point")"},
             {22, "0 - -"},
             {4294967295, "0 - -"}}) {
        rows.push_back({{{"type", type}}, shown});
    }
    expect(rows, {"PortType", "OtherPortType", "OtherNetworkPortType"});
}

TEST_F(Port_Tables, States) {
    const struct {
        std::uint32_t state;
        const char* port;
        const char* controller;
        const char* access;
    } cases[] = {
        {0, R"({0} {"Unknown"})", R"({0} {"Unknown"})", "2"},
        {1, R"({0} {"Unknown"})", R"({0} {"Unknown"})", "0"},
        {2, R"({2} {"OK"})", R"({2} {"OK"})", "1"},
        {3, R"({10} {"Stopped"})", R"({10} {"Stopped"})", "2"},
        {4, R"({1} {"Other"})", R"({1} {"Other"})", "2"},
        {5, R"({11} {"InService"})", R"({11} {"InService"})", "2"},
        {6, R"({1} {"Other"})", R"({1} {"Other"})", "2"},
        {7, R"({6} {"Error"})", R"({6} {"Error"})", "2"},
        {8, R"({32776} {"InService"})", R"({11} {"InService"})", "2"},
        {9, R"({0} {"Unknown"})", R"({0} {"Unknown"})", "2"},
        {20, R"({32788} {"Operational. Need RESET"})", R"({0} {"Unknown"})", "2"},
        {21, R"({32789} {"Link down. Need RESET"})", R"({0} {"Unknown"})", "2"},
        {22, R"({32790} {"Disable"})", R"({0} {"Unknown"})", "2"},
        {23, R"({0} {"Unknown"})", R"({0} {"Unknown"})", "2"},
    };
    std::vector<Row> rows;
    std::vector<std::string> controllers;
    std::vector<std::string> access;
    for (const auto& row : cases) {
        rows.push_back({{{"state", row.state}}, row.port});
        controllers.emplace_back(row.controller);
        access.emplace_back(row.access);
    }
    const std::vector<std::string> status = {"OperationalStatus", "StatusDescriptions"};
    expect(rows, status);
    EXPECT_EQ(columns("TVRHBA_PortController", status), controllers);
    EXPECT_EQ(columns("TVRHBA_SCSIProtocolController", status), controllers);
    EXPECT_EQ(columns("TVRHBA_ControlledBy", {"AccessState"}), access);
}

TEST_F(Port_Tables, SpeedsAndClassesOfService) {
    const struct {
        std::uint32_t speed;
        std::uint32_t supported;
        std::uint32_t classes;
        const char* shown;
    } cases[] = {
        {0, 0, 0, "0 0 {0} {0}"},
        {1, 0x01, 0x20, "1000000000 1000000000 {0} {0}"},
        {2, 0x03, 0x80, "2000000000 2000000000 {0} {0}"},
        {4, 0x1F, 0x01, "10000000000 10000000000 {7} {7}"},
        {8, 0x0B, 0x02, "4000000000 4000000000 {1} {1}"},
        {0x10, 0x1B, 0x04, "8000000000 8000000000 {2} {2}"},
        {0x20, 0x3F, 0x48, "16000000000 16000000000 {3, 5} {3, 5}"},
        {0x18, 0xC0, 0x10, "0 0 {4} {4}"},
        {0x40, 0xFFFFFFFF, 0xFFFFFFFF, "0 16000000000 {7, 1, 2, 3, 4, 5} {7, 1, 2, 3, 4, 5}"},
    };
    std::vector<Row> rows;
    for (const auto& [speed, supported, classes, shown] : cases) {
        rows.push_back({{{"speed", speed},
                         {"supportedSpeed", supported},
                         {"supportedClassOfService", classes}},
                        shown});
    }
    expect(rows, {"Speed", "MaxSpeed", "SupportedCOS", "ActiveCOS"});
}

TEST_F(Port_Tables, FC4Types) {
    // A bit a port, and what it is called; then no bit, and all of them.
    const std::map<std::size_t, std::array<const char*, 8>> named = {
        {0, {"1", "25", "26", "27", "28", "1", "1", "1"}},
        {1, {"1", "17", "18", "19", "1", "21", "22", "23"}},
        {2, {"8", "9", "1", "1", "1", "1", "1", "1"}},
        {3, {"1", "1", "1", "1", "4", "5", "1", "1"}},
        {7, {"32", "1", "34", "1", "36", "1", "1", "1"}},
        {8, {"88, 1", "1", "1", "1", "1", "1", "1", "1"}},
        {9, {"80", "81", "82", "1", "1", "1", "1", "1"}},
        {11, {"64", "1", "1", "1", "1", "1", "1", "1"}},
        {15, {"96", "1", "1", "1", "1", "1", "1", "1"}}};
    std::vector<Row> rows;
    for (std::size_t bit = 0; bit < 256; ++bit) {
        std::string bytes(64, '0');
        bytes[bit / 8 * 2 + (bit % 8 < 4 ? 1 : 0)] = "1248"[bit % 4];
        const auto row = named.find(bit / 8);
        rows.push_back({{{"supportedFc4Types", bytes}, {"activeFc4Types", std::string(64, 'F')}},
                        "{" + std::string(row == named.end() ? "1" : row->second[bit % 8]) +
                            "} {4, 5, 8, 9, 17, 18, 19, 21, 22, 23, 25, 26, 27, 28, 32, 34, 36, "
                            "64, 80, 81, 82, 88, 96, 1}"});
    }
    rows.push_back({{{"supportedFc4Types", "00"}, {"activeFc4Types", "00"}}, "{0} {0}"});
    expect(rows, {"SupportedFC4Types", "ActiveFC4Types"});
}

} // namespace
} // namespace client
