// What tvrcim does with what people type, in process.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/completion.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/session.h"
#include "host/tvrcim/shell.h"
#include "tests/common/session.h"
#include "tests/common/temp_dir.h"
#include "tests/host/host_fixture.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace tvrtest {
namespace {

using namespace tvrcim;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class Session_Test : public Host_Fixture {
protected:
    Session_Test() {
        thing.enumerate_names = [](Request& r) {
            for (const char* name : {"alpha", "alpine", "beta"}) {
                CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, name, 1), nullptr));
            }
            CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, "beta", 2), nullptr));
            for (const char* name : {"10000254564A1020", "10000254564B0000_5"}) {
                CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, name, 7), nullptr));
            }
            return CMReturnDone(r.result).rc;
        };
        module.add("Test_Other").enumerate_names = [](Request& r) {
            return CMReturnDone(r.result).rc;
        };
        script_changes();
        add_commands();
    }

    tvrcim::Session& console() {
        if (!made) {
            made.emplace(om(), Format::text, "root/x", out);
        }
        return *made;
    }

    // Runs lines through the shell; the status of the last, with the errors in `errors`.
    int shell(const std::string& lines) {
        std::istringstream in(lines);
        testing::internal::CaptureStderr();
        const auto next = [&in]() -> std::optional<std::string> {
            std::string line;
            return std::getline(in, line) ? std::optional(line) : std::nullopt;
        };
        const int status = run_shell(console(), next, false);
        errors = testing::internal::GetCapturedStderr();
        return status;
    }

    cimple::TempDir directory;
    Scripted_Class& thing = module.add("Test_Thing");
    std::ostringstream out;
    std::string errors;
    std::optional<tvrcim::Session> made;
    Text_Session session;

private:
    void script_changes();
    void script_links();
    void add_commands();

    CMPIUint32 code = 0; // of a method
    std::string arrived; // at the module
};

// What comes to the module.
void Session_Test::script_changes() {
    thing.modify = [this](Request& r) {
        for (const char** name = r.properties; *name != nullptr; ++name) {
            arrived += std::string(*name) + ' ';
        }
        arrived += std::to_string(CMGetProperty(r.instance, "Count", nullptr).value.uint32);
        return CMPI_RC_OK;
    };
    thing.invoke = [this](Request& r) {
        const CMPIData steps = CMGetArg(r.in, "Steps", nullptr);
        const CMPIData other = CMGetArg(r.in, "Other", nullptr);
        const CMPIData image = CMGetArg(r.in, "Image", nullptr);
        if (steps.type == CMPI_uint16) {
            arrived += "Steps " + std::to_string(steps.value.uint16) + ' ';
        }
        if (other.type == CMPI_ref) {
            const CMPIData name = CMGetKey(other.value.ref, "Name", nullptr);
            arrived += std::string("Other ") + CMGetCharPtr(name.value.string);
        }
        for (CMPICount i = 0;
             image.type == CMPI_uint8A && i < CMGetArrayCount(image.value.array, nullptr); ++i) {
            const CMPIData byte = CMGetArrayElementAt(image.value.array, i, nullptr);
            arrived += std::to_string(byte.value.uint8) + ' ';
        }
        CMAddArg(r.out, "Said", "well", CMPI_chars);
        CMReturnData(r.result, &code, CMPI_uint32);
        return CMPI_RC_OK;
    };
}

// alpha is joined with itself and with three others; each tells the same associations.
void Session_Test::script_links() {
    Scripted_Class& link = module.add("Test_Link", "IA");
    link.associator_names = [](Request& r) {
        for (const char* name : {"a", "a", "b \"2\""}) {
            CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, name, 1), nullptr));
        }
        return CMPI_RC_OK;
    };
    link.associators = hand_out("a", 1);
    link.reference_names = [](Request& r) {
        CMPIObjectPath* const left = CMGetObjectPath(new_thing(r, "alpha", 1), nullptr);
        for (const char* name : {"alpha", "x", "y", "z \"2\""}) {
            CMPIObjectPath* const right = CMGetObjectPath(new_thing(r, name, 1), nullptr);
            CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", "Test_Link", nullptr);
            CMAddKey(path, "Left", &left, CMPI_ref);
            CMAddKey(path, "Right", &right, CMPI_ref);
            CMReturnObjectPath(r.result, path);
        }
        return CMPI_RC_OK;
    };
}

// A line without a command's name goes to the shell: its output, what came to the module, errors.
void Session_Test::add_commands() {
    session.rename(directory.path(), "$DIR");
    session.on("", [this](const auto&, std::ostream& answer) {
        out.str({});
        arrived.clear();
        const int status = shell(session.rest());
        answer << out.str() << (arrived.empty() ? "" : "> " + arrived + '\n') << errors;
        if (status != success) {
            answer << (status == usage_error ? "usage error\n" : "CIM error\n");
        }
    });
    session.on("path", [this](const auto&, std::ostream& answer) {
        const auto find = [&] { answer << console().find_path(session.rest()).text(); };
        const std::string error = error_of(find);
        answer << (error == "no error" ? "" : error) << '\n';
    });
    session.on("links", [this] { script_links(); });
    session.on("code", [this](const auto& words) {
        code = static_cast<CMPIUint32>(std::stoul(words.at(0)));
    });
    session.on("file", [this](const auto& words) {
        directory.write(words.at(0), std::string("\xff\n\0", 3));
        std::filesystem::resize_file(directory.file(words[0]), std::stoul(words.at(1)));
    });
    // Up to the bar.
    session.on("complete", [this](const auto&, std::ostream& answer) {
        const std::string line = session.rest().substr(0, session.rest().find('|'));
        for (const std::string& word : completions(console(), line)) {
            answer << word << '\n';
        }
    });
    session.on("split", [this](const auto&, std::ostream& answer) {
        const std::string error = error_of([&] {
            for (const std::string& word : split_words(session.rest())) {
                answer << '<' << word << '>';
            }
        });
        answer << (error == "no error" ? "" : error) << '\n';
    });
    session.on("near", [](const auto& words, std::ostream& answer) {
        const std::vector<std::string> names(words.begin() + 1, words.end());
        answer << testing::PrintToString(near_names(words.at(0), names)) << '\n'
               << suggestion(words.at(0), names) << '\n';
    });
}

TVR_SESSIONS(Session_Test, "shell.txt");

TEST_F(Session_Test, watch_shows_alerts_as_they_come_and_ends_in_order) {
    Scripted_Class& alert = module.add("Test_Alert", "N");
    alert.authorize = alert.must_poll = alert.activate = [](Request&) { return CMPI_RC_OK; };
    bool is_deactivated = false;
    alert.deactivate = [&](Request& r) {
        is_deactivated = r.edge;
        return CMPI_RC_OK;
    };
    std::thread worker;
    alert.enable = [&](Request& r) {
        worker = std::thread([broker = r.broker,
                              context = CBPrepareAttachThread(r.broker, r.context)] {
            CBAttachThread(broker, context);
            for (const char* time : {"20240229133059.000000+060", ""}) {
                CMPIInstance* const instance = CMNewInstance(
                    broker, CMNewObjectPath(broker, "root/x", "Test_Alert", nullptr), nullptr);
                CMSetProperty(instance, "Description", "Port\x1b down", CMPI_chars);
                if (*time != '\0') {
                    CMPIDateTime* const when = CMNewDateTimeFromChars(broker, time, nullptr);
                    CMSetProperty(instance, "IndicationTime", &when, CMPI_dateTime);
                    CMSetProperty(instance, "ProbableCauseDescription", "Link Down", CMPI_chars);
                }
                CBDeliverIndication(broker, context, "root/x", instance);
            }
            CBDetachThread(broker, context);
        });
        return CMPI_RC_OK;
    };
    alert.disable = [&](Request&) {
        worker.join();
        return CMPI_RC_OK;
    };
    EXPECT_EQ(shell("watch --count 2 test_alert"), success) << errors;
    EXPECT_EQ(out.str(), "2024-02-29 13:30:59  Link Down  Port? down\n-  -  Port? down\n");
    EXPECT_TRUE(is_deactivated);
    out.str({});
    console().format = Format::json;
    EXPECT_EQ(shell("watch --count 1 Test_Alert"), success) << errors;
    const std::string json = out.str();
    EXPECT_THAT(json, StartsWith("{\"class\":"));
    EXPECT_EQ(std::count(json.begin(), json.end(), '\n'), 1) << "one line an alert";
    EXPECT_EQ(shell("watch Test_Thing"), cim_error);
    EXPECT_THAT(errors, HasSubstr("served with no indications"));
}

TEST_F(Session_Test, the_shell_goes_on_after_errors_until_exit) {
    EXPECT_EQ(shell("nope\nget 'Test\n# a comment\n\nenum Test_Other --names\nexit\nenum Nope\n"),
              success);
    EXPECT_EQ(errors.find("Nope"), std::string::npos);
    EXPECT_THAT(errors, HasSubstr("tvrcim: there is no command 'nope'"));
    EXPECT_THAT(errors, HasSubstr("tvrcim: a quotation mark is missing"));
    EXPECT_EQ(shell("enum Test_Thing"), cim_error); // no script
    EXPECT_THAT(errors, HasSubstr("tvrcim: Test_Thing: CMPI_RC_ERR_NOT_SUPPORTED"));
}

TEST(Output, columns_count_characters_and_hold_control_characters_back) {
    EXPECT_EQ(aligned({{"\u00dc", "a"}, {"\x1b", "b"}, {"cc", "\n"}}),
              (std::vector<std::string>{"\u00dc   a", "?   b", "cc  ?"}));
}

TEST_F(Session_Test, long_lines_keep_to_the_width) {
    EXPECT_THAT(wrapped("one two  three four", 17, 16), ElementsAre("one two  three", "four"));
    EXPECT_THAT(wrapped(std::string(20, 'x') + " y", 16, 18),
                ElementsAre(std::string(16, 'x'), "xxxx y"));
    EXPECT_THAT(wrapped("\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc "
                        "\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc",
                        16, 16),
                testing::SizeIs(1))
        << "characters count";
    EXPECT_THAT(wrapped("no room for any of it", 5, 5), testing::SizeIs(1));
    console().width = [] { return std::size_t{30}; };
    print_wrapped(console(), "|- ", "|  ", "a word and another word and more");
    EXPECT_EQ(out.str(), "|- a word and another word and\n|  more\n");
}

} // namespace
} // namespace tvrtest
