// `diag list` and `diag run`: the tests that adapters carry out, made of the calls that any client
// can make.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/ending.h"
#include "host/tvrcim/host_view.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/progress.h"
#include "host/tvrcim/result_codes.h"
#include "host/tvrcim/value_names.h"
#include "host/tvrcim/wwn.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <set>

namespace tvrcim {

using tvrhost::Answer;
using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;
using tvrhost::Cim_Value;
using tvrhost::Json;
using tvrhost::Named_Value;

namespace {

constexpr const char* run_method = "RunDiagnosticService";

// A test of the host's adapters, with its settings as they are now.
struct Test {
    Cim_Path path;
    std::string name;       // "TVR:FCHBA External Loopback Test"
    std::string short_name; // "external-loopback"
    std::string description;
    Cim_Instance settings;
    Cim_Instance job_settings;
};

std::vector<Cim_Instance> associated(Session& session, const Cim_Path& path,
                                     const char* association) {
    tvrhost::Association_Filter filter;
    filter.association_class = association;
    return session.manager.associators(path, filter).instances;
}

Cim_Instance first_associated(Session& session, const Cim_Path& path, const char* association) {
    const std::vector<Cim_Instance> found = associated(session, path, association);
    return found.empty() ? Cim_Instance() : found.front();
}

// The first of a property's values, as text.
std::string first_text(const Cim_Instance& instance, const char* property) {
    const Cim_Value& value = instance[property];
    return value.is_null() || value.elements().empty() ? "" : value.elements().front().plain();
}

std::vector<Test> read_tests(Session& session) {
    const tvrmof::Class& model = session.find_class("TVRHBA_FCHBADiagnosticTest");
    const Progress progress("reading the tests");
    const Answer answer =
        session.manager.enumerate_instances(session.name_space_of(model), model.name);
    Session::check(answer, model.name);
    std::vector<Test> tests;
    for (const Cim_Instance& instance : answer.instances) {
        Test test;
        test.path = instance.path;
        test.name = instance["Name"].plain();
        test.short_name = short_name_of(test.name);
        test.description =
            first_text(first_associated(session, test.path, "TVRHBA_ServiceAvailableToElement"),
                       "DocumentDescriptions");
        test.settings = first_associated(session, test.path, "TVRHBA_DiagElementSettingData");
        test.job_settings = first_associated(session, test.path, "TVRHBA_JobElementSettingData");
        tests.push_back(std::move(test));
    }
    if (tests.empty()) {
        session.explain_nothing();
        throw Cim_Error("no adapter of this host has diagnostic tests");
    }
    return tests;
}

// The test that is named in full, by its short name, or by the only beginning of one.
const Test& find_test(const std::vector<Test>& tests, const std::string& word) {
    const std::string wanted = short_name_of("- " + word);
    std::vector<const Test*> found;
    std::vector<std::string> names;
    for (const Test& test : tests) {
        if (test.short_name == wanted || test.name == word) {
            return test;
        }
        names.push_back(test.short_name);
        if (!wanted.empty() && test.short_name.starts_with(wanted)) {
            found.push_back(&test);
        }
    }
    if (found.size() == 1) {
        return *found.front();
    }
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + name;
    }
    throw Usage_Error(
        word + (found.empty() ? ": there is no such test" : ": there are several such tests") +
        (found.empty() ? suggestion(wanted, names) : "") + "; there are " + list);
}

Cim_Path find_controller(Session& session, const std::string& port) {
    return session.find_named(port, session.find_class("TVRHBA_PortController"));
}

// ---- records

// What tests of a port have left, service records before those of the completion.
std::vector<Cim_Instance> records_of(Session& session, const Cim_Path& controller) {
    std::vector<Cim_Instance> records =
        associated(session, controller, "TVRHBA_RecordAppliesToElement");
    std::stable_partition(records.begin(), records.end(), [](const Cim_Instance& record) {
        return record.path.class_name == "TVRHBA_DiagnosticServiceRecord";
    });
    return records;
}

bool is_completion(const Cim_Instance& record) {
    return record.path.class_name == "TVRHBA_DiagnosticCompletionRecord";
}

// What is told of the result, without the test's name in front.
std::string result_text(const Cim_Instance& record) {
    std::string text = record["RecordData"].plain();
    const std::string name = record["ServiceName"].plain() + " ";
    text = text.starts_with(name) ? text.substr(name.size()) : text;
    const std::string words = "Resulted with ";
    return text.starts_with(words) ? text.substr(words.size()) : text;
}

bool has_passed(const Cim_Instance& record) {
    constexpr std::uint64_t completed = 2;
    return number_of(record["CompletionState"]) == completed && result_text(record) == "Success";
}

std::string text_or_dash(const Cim_Value& value) {
    const std::string text = value.plain();
    return text.empty() ? "-" : text;
}

void print_records(Session& session, const std::vector<Cim_Instance>& records) {
    Rows rows = {{"RECORD", "RESULT", "CYCLES", "FAILED", "TIME"}};
    for (const Cim_Instance& record : records) {
        if (record["RecordData"].is_null()) {
            rows.push_back({"settings", "-", "-", "-", "-"});
            continue;
        }
        rows.push_back({is_completion(record) ? "completion" : "service", result_text(record),
                        text_or_dash(record["CompletedCycles"]),
                        text_or_dash(record["LoopsFailed"]),
                        text_or_dash(record["TimeToExecute"])});
    }
    print_table(session, rows);
}

// ---- settings

constexpr const char* job_property = "DeleteOnCompletion";
constexpr const char* target_property = "TargetDevice";

// What a person has to know before a run.
std::string needs_of(const Test& test) {
    const Cim_Value& target = test.settings[target_property];
    return target.is_null() ? "-" : target.plain().empty() ? target_property : target.plain();
}

// What a client may choose of the settings of a test, which itself tells whether it sends data, and
// to where; and of its job.
std::vector<std::string> settable(const Test& test) {
    std::vector<std::string> names;
    if (!test.settings["BufferPattern"].is_null()) {
        names = {"LoopControl", "LoopControlParameter", "HaltOnError", "BufferSizes",
                 "BufferPattern"};
    }
    if (!test.settings["TargetDevice"].is_null()) {
        names.insert(names.end(), {"TargetDevice", "LUN"});
    }
    names.emplace_back(job_property);
    return names;
}

// A pattern is the characters of its bytes, and a target the WWPN of a port in any spelling.
Cim_Value read_setting(Session& session, const tvrmof::Feature& property, const std::string& text,
                       const std::string& name_space) {
    if (property.name == "BufferPattern") {
        std::string bytes;
        for (const char c : text) {
            bytes += (bytes.empty() ? "" : ",") + std::to_string(static_cast<unsigned char>(c));
        }
        return session.read_value(bytes, property, name_space);
    }
    if (property.name == "TargetDevice") {
        constexpr std::size_t wwn_length = 16;
        const std::optional<std::string> digits = wwn_digits(text);
        if (!digits || digits->size() != wwn_length) {
            throw Usage_Error("TargetDevice is the WWPN of a port, not '" + text + "'");
        }
        return *digits;
    }
    return session.read_value(text, property, name_space);
}

// What is to be sent with a run: instances with the name of the present settings and with what is
// to be changed; empty ones are not sent.
struct Settings {
    Cim_Instance test;
    Cim_Instance job;
};

void add_setting(Session& session, Cim_Instance& to, const Cim_Instance& present,
                 const std::string& name, const std::string& value) {
    const tvrmof::Class& model = session.find_class(present.path.class_name);
    const tvrmof::Feature& property =
        session.find_feature(model, name, tvrmof::Feature_Kind::property);
    if (to.path.class_name.empty()) {
        to = Cim_Instance(present.path, present.path.keys);
    }
    if (to.properties.has(property.name)) {
        throw Usage_Error(property.name + " stands there twice");
    }
    to.properties.set(property.name,
                      read_setting(session, property, value, present.path.name_space));
}

Settings read_settings(Session& session, const Test& test, const std::vector<std::string>& words) {
    const std::vector<std::string> names = settable(test);
    Settings settings;
    for (const std::string& word : words) {
        const auto [name, value] = split_assignment(word);
        const auto known = std::find_if(names.begin(), names.end(), [&, &given = name](auto& each) {
            return tvrhost::same_name(each, given);
        });
        if (known == names.end()) {
            std::string list;
            for (const std::string& each : names) {
                list += (list.empty() ? "" : ", ") + each;
            }
            throw Usage_Error("the " + test.short_name + " test takes no " + name +
                              suggestion(name, names) + "; it takes " + list);
        }
        const bool is_of_job = *known == job_property;
        add_setting(session, is_of_job ? settings.job : settings.test,
                    is_of_job ? test.job_settings : test.settings, *known, value);
    }
    if (needs_of(test) == target_property && !settings.test.has(target_property)) {
        throw Usage_Error(test.short_name + " needs a target: --set TargetDevice=WWPN");
    }
    return settings;
}

// A setting as it is typed.
std::string setting_text(const std::string& name, const Cim_Value& value) {
    if (!value.is_array() || value.is_null()) {
        return printable(value.plain());
    }
    std::string text;
    for (const Cim_Value& element : value.elements()) {
        if (name == "BufferPattern") {
            text += static_cast<char>(element.as_uint());
        } else {
            text += (text.empty() ? "" : ",") + element.plain();
        }
    }
    return printable(text);
}

// Settings that are not as they were asked for: the module keeps its own where a value isn't valid.
void tell_kept_settings(Session& session, const Cim_Instance& asked) {
    const Answer now =
        asked.path.class_name.empty() ? Answer() : session.manager.get_instance(asked.path);
    if (now.instances.size() != 1) {
        return;
    }
    for (const Named_Value& each : asked.properties) {
        const Cim_Value& used = now.instance()[each.name];
        if (used != each.value) {
            std::cerr << "tvrcim: " << each.name << " is " << setting_text(each.name, used)
                      << ", not " << setting_text(each.name, each.value) << std::endl;
        }
    }
}

// ---- a run

bool is_disabled(Session& session, const std::string& port) {
    const tvrmof::Class& model = session.find_class("TVRHBA_FCPort");
    for (Cim_Instance& each :
         session.manager.enumerate_instances(session.name_space_of(model), model.name).instances) {
        if (each["DeviceID"].plain() == port) {
            return Port_View{std::move(each), {}}.state_text() == "disabled";
        }
    }
    return false;
}

// How it came out.
struct Outcome {
    Cim_Value code;
    std::string meaning;
    std::optional<Cim_Instance> job;
    std::vector<Cim_Instance> records; // of this run
    const char* verdict = "not run";
    std::string reason; // for one that was not run or has failed
};

void judge(Session& session, const std::string& port, Outcome& outcome) {
    const bool is_zero = outcome.code.literal() == "0";
    const std::string code = "returned " + outcome.code.literal() +
                             (outcome.meaning.empty() ? "" : " (" + outcome.meaning + ")");
    const auto completion =
        std::find_if(outcome.records.begin(), outcome.records.end(), is_completion);
    if (completion != outcome.records.end()) {
        const bool passed = is_zero && has_passed(*completion);
        outcome.verdict = passed ? "passed" : "failed";
        outcome.reason = passed ? "" : result_text(*completion);
        if (!is_zero) {
            outcome.reason += (outcome.reason.empty() ? "" : "; ") + code;
        }
    } else if (!is_zero) {
        outcome.reason = code + "; --device-log shows more";
    } else if (is_disabled(session, port)) {
        outcome.reason = "the port is disabled";
    } else {
        outcome.reason = "it took too long, or the port doesn't allow it; --device-log shows more";
    }
}

Outcome run_test(Session& session, const Test& test, const Cim_Path& controller,
                 const Settings& settings) {
    const std::string port = controller.keys["DeviceID"].plain();
    const std::string what = "running " + test.short_name + " on " + port;
    std::set<std::string> before;
    for (const Cim_Instance& record : records_of(session, controller)) {
        before.insert(identity(record.path));
    }
    tvrhost::Arguments in;
    in.set("ManagedElement", controller);
    if (!settings.test.path.class_name.empty()) {
        in.set("DiagnosticSettings", settings.test);
    }
    if (!settings.job.path.class_name.empty()) {
        in.set("JobSettings", settings.job);
    }
    Answer answer;
    {
        const Progress progress(what);
        const Ending::Change change("test");
        answer = session.manager.invoke_method(test.path, run_method, in);
    }
    Session::check(answer, what);
    Outcome outcome;
    outcome.code = answer.return_value();
    outcome.meaning =
        result_meaning(session.find_class(test.path.class_name), run_method, outcome.code);
    if (const Cim_Value* job = answer.out.find("Job"); job != nullptr && !job->is_null()) {
        const Answer got = session.manager.get_instance(job->as_path());
        if (got.ok()) {
            outcome.job = got.instance();
        }
    }
    for (Cim_Instance& record : records_of(session, controller)) {
        if (!before.contains(identity(record.path))) {
            outcome.records.push_back(std::move(record));
        }
    }
    judge(session, port, outcome);
    return outcome;
}

Json instances_json(const std::vector<Cim_Instance>& instances) {
    Json json = Json::array();
    for (const Cim_Instance& instance : instances) {
        json.push_back(to_json(instance));
    }
    return json;
}

void print_outcome(Session& session, const Test& test, const std::string& port,
                   const Outcome& outcome) {
    if (session.format == Format::json) {
        print_json(session, {{"test", test.short_name},
                             {"port", port},
                             {"verdict", outcome.verdict},
                             {"reason", outcome.reason},
                             {"returnValue", to_json(outcome.code)},
                             {"job", outcome.job ? to_json(*outcome.job) : Json()},
                             {"records", instances_json(outcome.records)}});
        return;
    }
    print_wrapped(session, "", "  ",
                  printable(test.short_name + " on " + port + ": " + outcome.verdict +
                            (outcome.reason.empty() ? "" : ": " + outcome.reason)));
    if (outcome.job) {
        const tvrmof::Class& model = session.find_class(outcome.job->path.class_name);
        session.out << "job " << printable((*outcome.job)["InstanceID"].plain()) << ": state "
                    << named_literal(&model, {"JobState", (*outcome.job)["JobState"]}) << ", "
                    << (*outcome.job)["PercentComplete"].plain() << " percent done\n";
    }
    if (!outcome.records.empty()) {
        print_records(session, outcome.records);
    }
}

// ---- the list

std::string loops_of(const Test& test) {
    const std::string loops = first_text(test.settings, "LoopControlParameter");
    return loops.empty() ? "-" : loops;
}

// The result of the test's last run on the port; empty without one.
std::string last_result(const std::vector<Cim_Instance>& records, const Test& test) {
    std::string result;
    for (const Cim_Instance& record : records) {
        if (is_completion(record) && record["ServiceName"].plain() == test.name) {
            result = result_text(record);
        }
    }
    return result;
}

} // namespace

std::string short_name_of(const std::string& name) {
    constexpr std::string_view tail = " Test";
    std::string text = name.substr(std::min(name.size(), name.find(' ') + 1));
    if (text.ends_with(tail)) {
        text.resize(text.size() - tail.size());
    }
    for (char& c : text) {
        c = c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

void list_diagnostics(Session& session, const std::string& port_name) {
    const std::vector<Test> tests = read_tests(session);
    std::vector<Cim_Instance> records;
    std::string port;
    if (!port_name.empty()) {
        const Cim_Path controller = find_controller(session, port_name);
        port = controller.keys["DeviceID"].plain();
        records = records_of(session, controller);
    }
    Json json = Json::array();
    Rows rows = {{"TEST", "LOOPS", "NEEDS", port.empty() ? "WHAT IT DOES" : "LAST RESULT"}};
    for (const Test& test : tests) {
        const std::string result = last_result(records, test);
        if (session.format == Format::json) {
            Json each = {{"test", test.short_name},
                         {"name", test.name},
                         {"description", test.description},
                         {"settings", to_json(test.settings)}};
            if (!port.empty()) {
                each["port"] = port;
                each["lastResult"] = result.empty() ? Json() : Json(result);
            }
            json.push_back(std::move(each));
        } else {
            rows.push_back({test.short_name, loops_of(test), needs_of(test),
                            port.empty()     ? test.description
                            : result.empty() ? "-"
                                             : result});
        }
    }
    if (session.format == Format::json) {
        print_json(session, json);
    } else {
        print_table(session, rows);
    }
}

void run_diagnostic(Session& session, const std::string& port_name, const std::string& test_name,
                    const std::vector<std::string>& settings) {
    const std::vector<Test> tests = read_tests(session);
    const Test& test = find_test(tests, test_name);
    const Cim_Path controller = find_controller(session, port_name);
    const std::string port = controller.keys["DeviceID"].plain();
    const Settings sent = read_settings(session, test, settings);
    const Outcome outcome = run_test(session, test, controller, sent);
    print_outcome(session, test, port, outcome);
    session.out << std::flush;
    tell_kept_settings(session, sent.test);
    tell_kept_settings(session, sent.job);
    session.status = std::string_view(outcome.verdict) == "passed" ? success : cim_error;
}

} // namespace tvrcim
