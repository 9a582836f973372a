// What a port's hardware tells of its making: vital product data, transceiver, flash images.
#include "tests/agent/agent_session.h"

#include <cstring>

namespace cimple {
namespace {

class Port_Inventory : public With_Session {
protected:
    Port_Inventory() {
        libraries.adapters.resize(1);
        port().transceiver.emplace();
        session.on("vpd", [this](const auto& words) {
            port().vpd.clear();
            for (const std::string& word : words) {
                const std::size_t equals = word.find('=');
                const std::string keyword = word.substr(0, equals);
                port().vpd.emplace_back(keyword == "name" ? "\x82\x82" : keyword,
                                        word.substr(equals + 1));
            }
        });
        session.on("date-code", [this](const auto& words) {
            std::memset(port().transceiver->dateCode, 0xFF, 6);
            words.at(0).copy(port().transceiver->dateCode, 6);
        });
        session.on("optics", [this] {
            RM_SFFDATA& data = *port().transceiver;
            std::strcpy(data.vendorName, "OPTICS  \t");
            std::memset(data.vendorPartNumber, 'p', sizeof data.vendorPartNumber); // without an end
            std::memset(data.vendorRevision, ' ', sizeof data.vendorRevision);
            std::strcpy(data.vendorSerialNumber, "S 1  ");
            std::memcpy(data.vendorOui, "\x0A\xBC\xEF", sizeof data.vendorOui);
            data.temperature = 1;
        });
        session.on("diagnostics", [this] {
            RM_SFFDATA& data = *port().transceiver;
            data.hasDiagnostics = 1;
            data.temperature = 40.5F;
            data.vcc = 3.25F;
            std::memset(data.vendorSerialNumber, 0, 1);
        });
        session.on("images", [this](const auto& words) {
            const RM_LOADENTRY kernel{5,          4, 0x1000,   0x200,   {7, 8},
                                      "About it", 2, "Kernel", "1.11a5"};
            port().images.clear();
            for (const std::string& word : words) {
                RM_LOADENTRY& image = port().images.emplace_back();
                if (word == "kernel") {
                    image = kernel;
                } else if (word == "endless") {
                    std::memset(image.version, 'v', sizeof image.version);
                }
            }
        });
        load();
    }

    fake::Port& port() { return libraries.adapters[0].ports[0]; }
};

TVR_SESSIONS(Port_Inventory, "port_inventory.txt");

} // namespace
} // namespace cimple
