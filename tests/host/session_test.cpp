// What tvrcim does with what people type, in process.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/completion.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/session.h"
#include "host/tvrcim/shell.h"
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

TEST(Near_Names, finds_what_was_meant) {
    const std::vector<std::string> names = {"TVRHBA_FCPort", "TVRHBA_FCPortStatistics",
                                            "TVRHBA_Product", "TVRHBA_TapeDrive"};
    EXPECT_THAT(near_names("tvrhba_fcprot", names), ElementsAre("TVRHBA_FCPort"));
    EXPECT_EQ(suggestion("fcport", names),
              "; did you mean TVRHBA_FCPort or TVRHBA_FCPortStatistics?");
}

TEST(Shell_Words, are_split_as_people_expect) {
    EXPECT_THAT(split_words("  get  A.b=c\t-p x "), ElementsAre("get", "A.b=c", "-p", "x"));
    EXPECT_THAT(split_words("get A.b=\"c d\",e=\"f\\\"g\""),
                ElementsAre("get", "A.b=\"c d\",e=\"f\\\"g\""));
    EXPECT_THAT(split_words("get 'A.b=\"c d\"'"), ElementsAre("get", "A.b=\"c d\""));
    EXPECT_THAT(split_words("set A \"w=[1, 2]\" x=\\ y ''"),
                ElementsAre("set", "A", "w=[1, 2]", "x= y", ""));
    EXPECT_THAT(split_words("set A w=\"x y\" z=[\"a\",1]"),
                ElementsAre("set", "A", "w=x y", "z=[\"a\",1]"));
    EXPECT_THROW(split_words("get 'A"), Usage_Error);
    EXPECT_THROW(split_words("get A=\"b"), Usage_Error);
}

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
    }

    Session& session() {
        if (!made) {
            made.emplace(om(), Format::text, "root/x", out);
        }
        return *made;
    }
    std::string complaint(const std::string& path) {
        return error_of([&] { session().find_path(path); });
    }

    // Runs lines through the shell; the status of the last, with the errors in `errors`.
    int shell(const std::string& lines) {
        std::istringstream in(lines);
        testing::internal::CaptureStderr();
        const auto next = [&in]() -> std::optional<std::string> {
            std::string line;
            return std::getline(in, line) ? std::optional(line) : std::nullopt;
        };
        const int status = run_shell(session(), next, false);
        errors = testing::internal::GetCapturedStderr();
        return status;
    }

    Scripted_Class& thing = module.add("Test_Thing");
    std::ostringstream out;
    std::string errors;
    std::optional<Session> made;
};

TEST_F(Session_Test, a_path_is_completed_where_one_instance_fits) {
    EXPECT_EQ(session().find_path("test_thing.name=\"alpha\""), thing_path("alpha", 1));
    EXPECT_EQ(session().find_path("Test_Thing.Name=alph"), thing_path("alpha", 1)) << "a beginning";
    EXPECT_EQ(session().find_path("Test_Thing.Slot=2"), thing_path("beta", 2));
    // All keys: taken as it stands where nothing fits.
    EXPECT_EQ(session().find_path("Test_Thing.Name=x,Slot=9"), thing_path("x", 9));

    EXPECT_EQ(complaint("Test_Thing.Name=beta"),
              "Test_Thing.Name=beta fits 2 instances; Slot is 1, 2");
    struct {
        const char* spelled;
        const char* name;
    } constexpr wwns[] = {{"10:00:02:54:56:4a:10:20", "10000254564A1020"},
                          {"0x10000254564a1020", "10000254564A1020"},
                          {"10-00-02-54-56-4B", "10000254564B0000_5"}};
    for (const auto& [spelled, name] : wwns) {
        EXPECT_EQ(session().find_path(std::string("Test_Thing.Name=") + spelled),
                  thing_path(name, 7));
    }
    EXPECT_THAT(complaint("Test_Thing.Name=10:00"), HasSubstr("fits 2 instances"));
    EXPECT_THAT(complaint("Test_Thing.Name=gamma"), HasSubstr("no such instance; Name is \"alp"));
    EXPECT_THAT(complaint("Test_Other"), HasSubstr("Test_Other has no instances"));
    EXPECT_THAT(complaint("Test_Special.Name=a"), HasSubstr("CMPI_RC_ERR_INVALID_CLASS"));
}

TEST_F(Session_Test, set_sends_typed_values_and_the_names_of_what_changes) {
    thing.modify = [](Request& r) {
        EXPECT_EQ(CMGetProperty(r.instance, "Count", nullptr).value.uint32, 5u);
        EXPECT_STREQ(r.properties[0], "Count");
        EXPECT_STREQ(r.properties[1], "Words");
        EXPECT_EQ(r.properties[2], nullptr);
        return CMPI_RC_OK;
    };
    EXPECT_EQ(shell("set Test_Thing.Name=alpha count=5 'Words=[\"a\", \"b\"]'"), success);
    EXPECT_EQ(shell("set Test_Thing.Name=alpha Name=x\n"
                    "set Test_Thing.Name=alpha Cuont=5\n"
                    "set Test_Thing.Name=alpha Count=x\n"
                    "set Test_Thing.Name=alpha Count\n"
                    "set Test_Thing.Name=alpha"),
              usage_error);
    EXPECT_EQ(errors, "tvrcim: Name is a key of Test_Thing and cannot be changed\n"
                      "tvrcim: Test_Thing has no property Cuont; did you mean Count?\n"
                      "tvrcim: Count: takes a number (uint32), not \"x\"\n"
                      "tvrcim: 'Count' is not NAME=VALUE\n"
                      "tvrcim: PROP=VALUE is required; 'tvrcim set --help' tells the usage\n");
}

TEST_F(Session_Test, call_takes_what_people_write_and_tells_what_came_of_it) {
    CMPIUint32 code = 0;
    std::string seen;
    thing.invoke = [&](Request& r) {
        const CMPIData steps = CMGetArg(r.in, "Steps", nullptr);
        const CMPIData other = CMGetArg(r.in, "Other", nullptr);
        const CMPIData image = CMGetArg(r.in, "Image", nullptr);
        seen = steps.type == CMPI_uint16 ? std::to_string(steps.value.uint16) : "";
        if (other.type == CMPI_ref) {
            const CMPIData name = CMGetKey(other.value.ref, "Name", nullptr);
            seen += std::string(" ") + CMGetCharPtr(name.value.string);
        }
        for (CMPICount i = 0;
             image.type == CMPI_uint8A && i < CMGetArrayCount(image.value.array, nullptr); ++i) {
            seen += " " +
                    std::to_string(CMGetArrayElementAt(image.value.array, i, nullptr).value.uint8);
        }
        CMAddArg(r.out, "Said", "well", CMPI_chars);
        CMReturnData(r.result, &code, CMPI_uint32);
        return CMPI_RC_OK;
    };
    const auto call = [&](const std::string& arguments) {
        return shell("call Test_Thing.Name=alpha turn " + arguments);
    };
    const std::string file = ::testing::TempDir() + "image.bin";
    std::ofstream(file, std::ios::binary) << "\xff\n" << '\0';
    const std::pair<std::string, const char*> cases[] = {
        {"steps=0x3 Other=Test_Thing.Slot=2", "3 beta"},
        {"other=10:00:02:54:56:4b", " 10000254564B0000_5"},
        {"Other=alpi", " alpine"},
        {"Image=1,0x2", " 1 2"},
        {"Image=@" + file, " 255 10 0"},
    };
    for (const auto& [arguments, arrived] : cases) {
        EXPECT_EQ(call(arguments), success) << errors;
        EXPECT_EQ(seen, arrived) << arguments;
    }
    std::filesystem::resize_file(file, (8u << 20) + 1);
    const std::pair<std::string, const char*> complaints[] = {
        {"Said=x", "takes no argument Said; it is Turn(uint16 Steps, string Label, Test_Thing ref "
                   "Other, out string Said, in out uint32 Total, uint8 Image[])"},
        {"Steps=1 steps=2", "argument Steps stands there twice"},
        {"Other=beta", "beta fits 2 instances; Slot is 1, 2"},
        {"Other=gamma", "gamma: no such instance; Name is \"alpha\", "},
        {"Image=@/nonexistent", "Image: there is no file '/nonexistent'"},
        {"Image=@/", "Image: '/' is no file"},
        {"Image=@" + file, "is larger than 8 MiB"},
        {"Image=1,300", "Image: 300 is beyond uint8, at most 255"},
    };
    for (const auto& [arguments, complaint] : complaints) {
        EXPECT_NE(call(arguments), success);
        EXPECT_THAT(errors, HasSubstr(complaint));
    }
    std::filesystem::remove(file);

    const std::pair<CMPIUint32, const char*> results[] = {
        {0, "0 (success)"},
        {7, "7"},
        {33068, "33068 (not an instance of this service)"},
        {40092,
         "40092 (adapter library: status 92, WWN management is not available on this adapter)"},
        {40042, "40042 (adapter library: status 42)"}};
    for (const auto& [value, text] : results) {
        code = value;
        out.str({});
        EXPECT_EQ(call(""), value == 0 ? success : cim_error);
        EXPECT_EQ(out.str(), "Turn returned " + std::string(text) + "\n  Said = \"well\"\n");
    }
    EXPECT_EQ(shell("classes Test_Other"), success) << "and not the status before it";
}

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
    session().format = Format::json;
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

TEST_F(Session_Test, associations_are_followed_and_drawn) {
    Scripted_Class& link = module.add("Test_Link", "IA");
    link.associator_names = [](Request& r) {
        for (const char* name : {"a", "a", "b \"2\""}) {
            CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, name, 1), nullptr));
        }
        return CMPI_RC_OK;
    };
    link.associators = hand_out("a", 1);
    EXPECT_EQ(shell("assoc Test_Thing.Name=alpha --names\nassoc Test_Thing.Name=alpha -p count"),
              success);
    EXPECT_THAT(out.str(), StartsWith("root/x:Test_Thing.Name=\"a\",Slot=1\n"
                                      "root/x:Test_Thing.Name=\"b \\\"2\\\"\",Slot=1\n"
                                      "root/x:Test_Thing.Name=\"a\",Slot=1\n  Name"));
    EXPECT_THAT(errors, StartsWith("tvrcim: not delivered by its provider: root/x:Test_Thing."
                                   "Name=\"b "));
    EXPECT_EQ(shell("assoc Test_Thing.Name=alpha --role Rigth\n"
                    "refs Test_Thing.Name=alpha --class Test_Other\n"
                    "refs Test_Thing.Name=alpha --class Test_Link -p Leff"),
              usage_error);
    EXPECT_EQ(errors, "tvrcim: no association has a role Rigth; did you mean Right?\n"
                      "tvrcim: Test_Other is no association\n"
                      "tvrcim: Test_Link has no property Leff; did you mean Left?\n");

    // alpha is joined with itself and with three others; each tells the same associations.
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
    const auto drawn = [&](const std::string& how) {
        out.str({});
        EXPECT_EQ(shell("graph Test_Thing.Name=alpha " + how), success) << errors;
        return out.str().substr(std::min(out.str().find("  n0"), out.str().size()));
    };
    const std::string itself = "  n0 -> n0 [label=\"Test_Link\\nLeft \u2192 Right\"]\n";
    EXPECT_EQ(drawn("--fold 2"), "  n0 [label=\"Test_Thing\\nalpha 1\", style=bold]\n"
                                 "  n1 [label=\"3 Test_Thing\", style=dashed]\n" +
                                     itself +
                                     "  n0 -> n1 [label=\"Test_Link\\nLeft \u2192 Right\"]\n}\n");
    const std::string whole = drawn("--depth 9");
    EXPECT_EQ(std::count(whole.begin(), whole.end(), '>'), 4) << "each association once";
    EXPECT_EQ(drawn("--hide Test_Base"), "  n0 [label=\"Test_Thing\\nalpha 1\", style=bold]\n}\n");
}

TEST_F(Session_Test, completion_offers_what_may_follow) {
    const struct {
        const char* line;
        std::vector<std::string> words;
    } cases[] = {{"gr", {"graph"}},
                 {"enum test_t", {"Test_Thing"}},
                 {"get Test_T", {"Test_Thing."}},
                 {"get Test_Thing.", {"Test_Thing.Name=", "Test_Thing.Slot="}},
                 {"get Test_Thing.Name=al", {"Test_Thing.Name=alpha", "Test_Thing.Name=alpine"}},
                 {"get Test_Thing.Name=10:00:02:54:56:4b", {"Test_Thing.Name=10000254564B0000_5"}},
                 {"set Test_Thing.Slot=1 Cou", {"Count="}},
                 {"call Test_Thing.Slot=1 tu", {"Turn"}},
                 {"call Test_Thing.Slot=1 Turn St", {"Steps="}},
                 {"call Test_Thing.Slot=1 Turn Other=alp", {"Other=alpha", "Other=alpine"}},
                 {"enum Test_Thing -p Cou", {"Count"}},
                 {"enum Test_Thing --na", {"--names"}},
                 {"help li", {"list"}},
                 {"nope ", {}},
                 {"get Nope.", {}}};
    for (const auto& [line, words] : cases) {
        EXPECT_EQ(completions(session(), line), words) << line;
    }
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
    session().width = [] { return std::size_t{30}; };
    print_wrapped(session(), "|- ", "|  ", "a word and another word and more");
    EXPECT_EQ(out.str(), "|- a word and another word and\n|  more\n");
}

TEST_F(Session_Test, classes_tell_what_they_offer) {
    EXPECT_EQ(shell("classes\nclasses --all *link\nclasses test_thing"), success);
    EXPECT_THAT(out.str(), HasSubstr("CLASS       OFFERS\n"
                                     "Test_Thing  instances, association, 1 method\n"
                                     "Test_Other  instances, association\n"
                                     "CLASS          OFFERS\nTest_Link\nTest_Far_Link\n"
                                     "Test_Thing : Test_Base\n  string Name (key)\n"));
}

} // namespace
} // namespace tvrtest
