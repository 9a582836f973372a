// The provider's and the driver's log: instances, records and methods.
#include "tests/agent/agent_session.h"

#include <sys/stat.h>

namespace cimple {
namespace {

class Logs : public With_Session {
protected:
    Logs() {
        session.on("logger",
                   [] { return CLogger::getInstance().isEnabled() != 0 ? "enabled" : "disabled"; });
        session.on("mode", [] { return CLogger::getInstance().getMode(); });
        // So many records, each with its number from `first` on.
        session.on("write", [](const auto& words) {
            const uint32 first = number(words.at(0));
            for (uint32 i = first; i < first + number(words.at(1)); ++i) {
                CLogger::getInstance().log("file", 1, i == 2 ? TVR_CRIT : TVR_ERR, "%u", i);
            }
        });
        session.on("records", [this](const auto&, std::ostream& answer) {
            const std::vector<std::string> texts = all("LogEntry").texts("RecordData");
            answer << texts.size() << " records, in their places " << texts.at(2) << " and "
                   << texts.at(3) << '\n';
        });
        session.on("device-log", [this] { return agent->maps.m_DeviceLog.size(); });
        session.on("system-log", [this](const auto& words) {
            std::string text;
            for (int i = 0; words.at(0) == "lines" && i < 250; ++i) {
                text += "kernel: tvfc " + std::to_string(i) + "\nother line\n\n";
            }
            if (words[0] == "long") {
                text = "a tvfc " + std::string(100'000, 'x') + "\n";
            }
            write_system_log(text + words.at(1));
        });
        session.on("pipe", [] {
            std::filesystem::remove(settings().systemLog);
            EXPECT_EQ(mkfifo(settings().systemLog.c_str(), 0600), 0);
        });
        // Lengths of the records, of which some are long.
        session.on("lengths", [this](const auto& words, std::ostream& answer) {
            for (const std::string& text : all(words.at(0)).texts("RecordData")) {
                answer << text.size() << '\n';
            }
        });
        load();
        refresh();
    }
    void write_system_log(const std::string& text) {
        std::filesystem::create_directories(
            std::filesystem::path(settings().systemLog).parent_path());
        std::ofstream(settings().systemLog, std::ios::binary) << text;
    }
};

TVR_SESSIONS(Logs, "logs.txt");

} // namespace
} // namespace cimple
