// The provider's and the driver's log: instances, records and methods.
#include "tests/agent/agent_fixture.h"

#include "agent/driver_log.h"
#include "providers/TVRHBA_DriverRecordLogManagesRecord_Provider.h"
#include "providers/TVRHBA_FCDriverLogEntry_Provider.h"
#include "providers/TVRHBA_LogEntry_Provider.h"
#include "providers/TVRHBA_RecordLogManagesRecord_Provider.h"
#include "providers/TVRHBA_RecordLog_Provider.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

template <class T> Property<T> of(const T& value) {
    Property<T> property{};
    property.set(value);
    return property;
}

template <class Provider> Collected all_of() {
    Collected collected;
    EXPECT_EQ(Provider().enum_instances(nullptr, collected.handler()), ENUM_INSTANCES_OK);
    return collected;
}

class Logs : public With_Agent {
protected:
    Logs() {
        load();
        refresh();
    }
    // The driver's log comes behind the provider's.
    TVRHBA_RecordLog* log_at(std::size_t place) {
        return agent->maps.m_TVRHBA_TVRHBA_RecordLog_map.get(place);
    }
    TVRHBA_RecordLog* own() { return log_at(0); }
    TVRHBA_RecordLog* driver() { return log_at(1); }
    uint32 set(uint16 level, uint16 mode, const std::string& path) {
        Property<uint32> code{};
        EXPECT_EQ(TVRHBA_RecordLog_Provider().SetLogParams(own(), of(level), of(mode),
                                                           of(String(path)), code),
                  INVOKE_METHOD_OK);
        return code.value;
    }
    uint32 request(const TVRHBA_RecordLog* self, uint16 state) {
        Property<uint32> code{};
        CIM_ConcreteJob* job = nullptr;
        TVRHBA_RecordLog_Provider().RequestStateChange(self, of(state), job, {}, code);
        return code.value;
    }
    uint32 clear(const TVRHBA_RecordLog* self) {
        Property<uint32> code{};
        TVRHBA_RecordLog_Provider().ClearLog(self, code);
        return code.value;
    }
    void write_system_log(const std::string& text) {
        std::filesystem::create_directories(
            std::filesystem::path(settings().systemLog).parent_path());
        std::ofstream(settings().systemLog, std::ios::binary) << text;
    }
};

TEST_F(Logs, TakeTheParametersThatAreAllowed) {
    const std::string file = directory.path() + "/trace.log";
    struct Row {
        uint16 level;
        uint16 mode;
        std::string path;
        const char* refusal;
    };
    const Row rows[] = {
        {4, 1, "", "Log level provided is out of range"},
        {5, 0, "", "Log mode provided is out of range"},
        {5, 5, file, "Log mode provided is out of range"},
        {5, 2, "", "Setting the trace path failed"},
        {5, 4, directory.path(), "Setting the trace path failed"},
        {5, 2, directory.path() + "/none/x", "Setting the trace path failed"},
    };
    for (const Row& row : rows) {
        log.take();
        EXPECT_EQ(set(row.level, row.mode, row.path), 32968u) << row.refusal;
        EXPECT_EQ(log.take().back(), row.refusal);
        EXPECT_EQ(CLogger::getInstance().getMode(), own()->LogMode.value);
    }
    EXPECT_EQ(set(5, 3, ""), 0u);
    EXPECT_EQ(set(5, 4, file), 0u);
    EXPECT_EQ(own()->TracePath.value, file);
    EXPECT_EQ(own()->LogMode.value, 4u);
    EXPECT_THAT(log.take(), Contains("Changing the record log parameters 5-4-" + file));
    unload();
    load();
    refresh();
    EXPECT_EQ(own()->TracePath.value, file) << "kept over a restart";
    EXPECT_EQ(own()->LogMode.value, 4u);

    Property<uint32> code{};
    EXPECT_EQ(TVRHBA_RecordLog_Provider().SetLogParams(driver(), {}, {}, {}, code),
              INVOKE_METHOD_UNSUPPORTED);
    const Ref<TVRHBA_RecordLog> foreign(clone_of(own()));
    foreign->InstanceID.set("TVRHBA:providerlog:host.example");
    EXPECT_EQ(clear(foreign.get()), 33068u) << "names of logs are compared to the letter";
    EXPECT_EQ(request(foreign.get(), 2), 33068u);
}

TEST_F(Logs, ShowRecordsUntilTheyAreCleared) {
    ASSERT_EQ(set(5, 1, ""), 0u);
    CLogger& logger = CLogger::getInstance();
    logger.log("file", 1, TVR_ERR, "%s", "first");
    logger.log("file", 2, TVR_CRIT, "%s", "second");
    const Collected entries = all_of<TVRHBA_LogEntry_Provider>();
    EXPECT_THAT(entries.texts("InstanceID"),
                ElementsAre("TVRHBA:ProviderLog:0", "TVRHBA:ProviderLog:1"));
    EXPECT_THAT(entries.texts("RecordData"), ElementsAre("[first]", "[second]"));
    EXPECT_THAT(entries.texts("LogLevel"), ElementsAre("3", "1"));
    EXPECT_EQ(entries.texts("LogInstanceID")[0], own()->InstanceID.value);
    const Collected managed = all_of<TVRHBA_RecordLogManagesRecord_Provider>();
    EXPECT_THAT(managed.texts("Record"), ElementsAre(HasSubstr("\"TVRHBA: FC Driver Record:0\""),
                                                     HasSubstr("\"TVRHBA: FC Driver Record:1\"")));
    for (std::size_t i = 2; i < TVR_CIMLogger::capacity + 3; ++i) {
        logger.log("file", 3, TVR_ERR, "record %d", static_cast<int>(i));
    }
    const auto full = all_of<TVRHBA_LogEntry_Provider>().texts("RecordData");
    EXPECT_EQ(full.size(), TVR_CIMLogger::capacity);
    EXPECT_EQ(full[2], "[record 1026]") << "the oldest go, and places stay";
    EXPECT_EQ(full[3], "[record 3]");
    EXPECT_EQ(clear(own()), 0u);
    EXPECT_EQ(all_of<TVRHBA_LogEntry_Provider>().size(), 0u);
}

TEST_F(Logs, AreSwitchedTogether) {
    for (const uint16 bad : {uint16{6}, uint16{11}}) {
        EXPECT_EQ(request(own(), bad), 32968u);
        EXPECT_EQ(log.take().back(), "Invalid input");
    }
    EXPECT_EQ(request(own(), 3), 0u);
    EXPECT_EQ(CLogger::getInstance().isEnabled(), 0u);
    EXPECT_EQ(own()->EnabledState.value, 3u);
    refresh();
    EXPECT_EQ(describe(driver())["OperationalStatus"], "{10}");
    EXPECT_EQ(request(driver(), 2), 0u);
    EXPECT_NE(CLogger::getInstance().isEnabled(), 0u);
    EXPECT_EQ(own()->EnabledState.value, 3u) << "until the next rebuild";
    EXPECT_EQ(driver()->EnabledState.value, 2u);
}

TEST_F(Logs, OfTheDriverHasItsNewestLines) {
    EXPECT_EQ(enumerated<TVRHBA_ProviderUseOfLog>().size(), 2u);
    EXPECT_EQ(driver()->RequestedState.value, 2u);
    EXPECT_EQ(request(driver(), 2), 0u) << "without a system log";
    EXPECT_EQ(driver()->CurrentNumberOfRecords.value, 0u);
    std::string text;
    for (int i = 0; i < 250; ++i) {
        text += "kernel: tvfc " + std::to_string(i) + "\nother line\n\n";
    }
    write_system_log(text + "cron: not tvfc at all, without an end");
    EXPECT_EQ(request(driver(), 2), 0u);
    EXPECT_EQ(driver()->CurrentNumberOfRecords.value, 200u);
    const Collected records = all_of<TVRHBA_FCDriverLogEntry_Provider>();
    const auto lines = records.texts("RecordData");
    ASSERT_EQ(lines.size(), 200u);
    EXPECT_EQ(lines[0], "cron: not tvfc at all, without an end");
    EXPECT_EQ(lines[1], "kernel: tvfc 249");
    EXPECT_EQ(lines[199], "kernel: tvfc 51");
    EXPECT_EQ(records.texts("InstanceID")[199], "TVR:HBA FC Driver Record:199");
    EXPECT_EQ(records.texts("LogName")[0], driver()->ElementName.value);
    EXPECT_THAT(all_of<TVRHBA_DriverRecordLogManagesRecord_Provider>().texts("Record")[7],
                HasSubstr("\"TVRHBA:FC Driver Record Log:7\""));
    refresh();
    EXPECT_EQ(driver()->CurrentNumberOfRecords.value, 0u);
    EXPECT_EQ(all_of<TVRHBA_FCDriverLogEntry_Provider>().size(), 200u) << "the lines stay";
    EXPECT_EQ(clear(driver()), 0u);
    EXPECT_EQ(all_of<TVRHBA_FCDriverLogEntry_Provider>().size(), 0u);

    write_system_log("a tvfc " + std::string(100'000, 'x') + "\ntvfc b\n");
    EXPECT_EQ(request(driver(), 2), 0u);
    const auto cut = all_of<TVRHBA_FCDriverLogEntry_Provider>().texts("RecordData");
    ASSERT_EQ(cut.size(), 2u);
    EXPECT_EQ(cut[1].size(), 65536u);
    EXPECT_EQ(request(driver(), 3), 0u);
    EXPECT_EQ(agent->maps.m_DeviceLog.size(), 0u);

    std::filesystem::remove(settings().systemLog);
    ASSERT_EQ(mkfifo(settings().systemLog.c_str(), 0600), 0);
    EXPECT_EQ(request(driver(), 2), 0u) << "a pipe is no log";
    EXPECT_EQ(agent->maps.m_DeviceLog.size(), 0u);
}

} // namespace
} // namespace cimple
