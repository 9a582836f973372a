// An object manager in one process: it loads a provider module (or takes its factories from a
// table), serves it as a CMPI broker, and lets a client call the operations of its classes.
//
//     tvrhost::Options options;
//     options.module = "build/lib/libtavrin_fc_provider.so";
//     options.mof = {"build/mof/tavrin_fc_schema.mof"};
//     tvrhost::Object_Manager manager(options);
//     tvrhost::Answer answer = manager.enumerate_instances("root/tavrin", "TVRHBA_FCPort");
//     for (const tvrhost::Cim_Instance& port : answer.instances)
//         std::cout << port["DeviceID"].as_string() << '\n';
//     manager.shutdown();
//     EXPECT_THAT(manager.faults(), IsEmpty());
//
// It is strict: every object that the module is given or makes is counted and belongs to a scope
// (one call, or one attached thread), and what breaks the rules of ownership is reported as a
// `Fault`. Broken rules never harm the object manager itself: objects that have ended are kept for
// a while as tombstones, so that a late use is told from a good one. It is careless as well, where
// an object manager may be: what a setter is given is kept as the pointer that it is, and looked at
// when the object that it went into is read. Each class has a broker of its own, which ends with
// the class's last cleanup.
//
// Threads: any operation may be called from any thread at any time, also from the module by
// up-call. The object manager holds no lock across a call into the module. Factory and cleanup
// calls of one class never overlap, and a class is cleaned up only while no request is in it.
#ifndef TVR_HOST_OBJECT_MANAGER_H
#define TVR_HOST_OBJECT_MANAGER_H

#include "host/cim_value.h"
#include "schema/mof_reader.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// CMPI's own types, for those who speak CMPI with the broker directly.
typedef struct _CMPIBroker CMPIBroker;
typedef struct _CMPIContext CMPIContext;

namespace tvrhost {

class Scope_Frame;
class Object_Manager;
struct Filter;

// The object manager can't start: no module, no MOF, a malformed instance file. One line.
class Start_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// MI kinds; the letter is the one used in the module's tables.
enum class Kind : char { instance = 'I', method = 'M', association = 'A', indication = 'N' };

// "Instance" and so on, as in a factory's name.
const char* kind_name(Kind kind) noexcept;

// Finds an exported function by name, as "TVRHBA_FCPort_Create_InstanceMI"; null if there is none.
using Any_Function = void (*)();
using Factory_Lookup = std::function<Any_Function(const std::string& name)>;

enum class Fault_Kind {
    leaked_clone,      // a clone that is alive after the last cleanup
    leaked_context,    // a prepared context that neither a thread's end nor a release has ended
    double_release,    // an object released twice
    use_after_release, // an object used after its release
    use_after_scope,   // an object used, or released, after its scope has ended
    outside_scope,     // an object made on a thread that is neither in a call nor attached
    foreign_object,    // not an object of this object manager, or of another kind
    result_after_done, // something returned after CMReturnDone
    schema_mismatch,   // a property, key or type that the class in the MOF doesn't have
    thread_mismatch,   // attach and detach that don't belong together
    argument_release,  // the release of the context or the result of a call
    missing_cleanup,   // a cleanup that failed, or requests in flight for ever at the end
    borrowed_release,  // the release of an element that belongs to its array
    ended_broker,      // a class's broker used after the class's last cleanup
    no_filter,         // an indication delivered that no active filter takes
};

struct Fault {
    Fault_Kind kind;
    std::string text; // one line
};

// What setters keep as the pointer that it is. Arrays keep their elements in any case.
enum class Keeps {
    elements,  // properties, keys and arguments are copied when they are set
    everything // properties, keys and arguments, too
};

struct Indication {
    std::string name_space;
    Cim_Instance instance;
};

struct Options {
    // The module: a file for dlopen, or factories of code that is linked. With neither, nothing is
    // served but the given instances.
    std::string module;
    Factory_Lookup factories;

    // The class model: given, or read from these MOF files. May be absent for classes that need no
    // types from it; a class is then found by its factories alone.
    std::shared_ptr<const tvrmof::Schema> schema;
    std::vector<std::string> mof;

    // Instances of classes of other providers, which up-calls and clients find.
    std::vector<Cim_Instance> instances;
    std::string instance_file; // JSON, docs/tvrcim.1 tells the format

    // The namespaces in which the module's classes are registered. A request for a class that the
    // module itself serves goes to the module in any namespace; one for a parent class reaches it
    // only in these.
    std::vector<std::string> name_spaces = {"root/tavrin", "root/pg_interop"};

    int broker_version = 210; // 100: tables that claim and end at 100
    // Calls an indication MI with the argument lists of the oldest headers, which hand over a
    // result with a filter and none to mustPoll; for a module that was built with such.
    bool older_indication_arguments = false;
    std::string principal = "root";

    // Called on the thread that delivers, before the indication goes into the queue.
    std::function<void(const Indication&)> on_indication;
    // Texts that the module logs or traces through the broker.
    std::function<void(const std::string&)> on_log;

    Keeps keeps = Keeps::everything;
    // Ended objects that are kept to recognise a late use.
    std::size_t tombstones = 50000;
};

// Where and how a request is made.
struct Call {
    // Sends the request to the MI of this class, whatever class the path names; without it the
    // class of the path decides.
    std::string through;
    std::optional<std::string> principal; // instead of the options'
    std::uint32_t flags = 0;              // CMPIInvocationFlags
};

// What came of a request. Codes are CMPI's; those above 0 that the object manager itself gives: 5
// a class that the schema doesn't have, 6 nothing at that path, 7 a kind that the class doesn't
// offer, 1 a factory that made no MI.
struct Answer {
    int rc = 0;
    std::string message; // of the status, or of the object manager; may be empty
    bool done = false;   // CMReturnDone was called, by each MI that was asked

    // In the order in which they were returned.
    std::vector<Cim_Instance> instances;
    std::vector<Cim_Path> paths;
    std::vector<Cim_Value> data;

    Arguments out; // of a method

    bool ok() const noexcept { return rc == 0; }
    // The only instance; throws Value_Error unless there is exactly one.
    const Cim_Instance& instance() const;
    // What the method returned; NULL of no type if it returned nothing.
    const Cim_Value& return_value() const noexcept;
};

// "CMPI_RC_ERR_NOT_FOUND" and the like; "code 42" for others.
std::string rc_name(int rc);

// A property list: null asks for all. Keys come along in any case.
using Properties = std::optional<std::vector<std::string>>;

struct Association_Filter {
    std::string association_class; // empty: any, as are the following
    std::string result_class;
    std::string role;
    std::string result_role;
};

// The interest of a client in the indications of a class, from `subscribe` on. It ends with the
// destructor, by `end`, with a terminating unload of the class, or with the object manager;
// whichever is first. From then on no callback is going on or will be called. Not for several
// threads at a time, and not to be ended from within a callback.
class Subscription {
public:
    Subscription() = default;
    Subscription(Subscription&& other) noexcept { *this = std::move(other); }
    Subscription& operator=(Subscription&& other) noexcept;
    ~Subscription();

    // What came of the request.
    const Answer& answer() const noexcept { return _answer; }
    bool is_active() const noexcept;
    // Switches indications off if no other filter of the class is active, and deactivates the
    // filter. The answer is that of the first that failed; code 1 where it had ended before.
    Answer end();

private:
    friend class Object_Manager;
    Answer _answer;
    Object_Manager* _manager = nullptr;
    Call _call;
    std::shared_ptr<Filter> _filter;
};

class Object_Manager {
public:
    // Opens the module, reads MOF and instances. Throws Start_Error. No MI is loaded yet: that
    // happens at a class's first use.
    explicit Object_Manager(Options options);
    // Shuts down if that has not happened; then tells faults nobody asked for on standard error.
    ~Object_Manager();
    Object_Manager(const Object_Manager&) = delete;
    Object_Manager& operator=(const Object_Manager&) = delete;

    // Instance operations. The enumerations are deep: a class's own instances first, then those of
    // its subclasses in order of declaration, from the module and from the given instances.
    Answer enumerate_instances(const std::string& name_space, const std::string& class_name,
                               const Properties& properties = {}, const Call& call = {});
    Answer enumerate_instance_names(const std::string& name_space, const std::string& class_name,
                                    const Call& call = {});
    Answer get_instance(const Cim_Path& path, const Properties& properties = {},
                        const Call& call = {});
    Answer create_instance(const Cim_Path& path, const Cim_Instance& instance,
                           const Call& call = {});
    Answer modify_instance(const Cim_Path& path, const Cim_Instance& instance,
                           const Properties& properties = {}, const Call& call = {});
    Answer delete_instance(const Cim_Path& path, const Call& call = {});
    Answer exec_query(const std::string& name_space, const std::string& class_name,
                      const std::string& query, const std::string& language = "WQL",
                      const Call& call = {});

    Answer invoke_method(const Cim_Path& path, const std::string& method, const Arguments& in = {},
                         const Call& call = {});

    // Associations. Asked, in order of declaration, is every served association class that is of
    // the filter's class or below it, and whose declaration has a reference for the path and
    // another one for the result: of the role asked for, and to the class of the path, or of the
    // result, a parent or a subclass of it. What a provider then hands out is not filtered again.
    // The answer's code is that of the first that failed; the others are asked all the same.
    Answer associators(const Cim_Path& path, const Association_Filter& filter = {},
                       const Properties& properties = {}, const Call& call = {});
    Answer associator_names(const Cim_Path& path, const Association_Filter& filter = {},
                            const Call& call = {});
    Answer references(const Cim_Path& path, const std::string& association_class = {},
                      const std::string& role = {}, const Properties& properties = {},
                      const Call& call = {});
    Answer reference_names(const Cim_Path& path, const std::string& association_class = {},
                           const std::string& role = {}, const Call& call = {});

    // Subscribes to the indications of a class: authorizes and activates a filter, and switches the
    // class's indications on if it is the first. Where one of these fails nothing stays active. The
    // callback, which must not throw, is called on the thread that delivers, for what is of the
    // query's class or below it and in the namespace. The query is SELECT * FROM a class without a
    // condition; empty, it asks for the class. A class that subscriptions are active for isn't
    // unloaded (code 1) unless it is terminated.
    Subscription subscribe(const std::string& name_space, const std::string& class_name,
                           std::function<void(const Indication&)> callback,
                           const std::string& query = {}, const Call& call = {});

    // The same one by one. `first` and `last` are counted here over all namespaces. What is
    // delivered is accepted where an active filter takes it: from its activation to the end of its
    // deactivation, in its namespace. All calls for a filter get the same expression.
    Answer activate_filter(const std::string& name_space, const std::string& class_name,
                           const std::string& query = {}, const Call& call = {});
    Answer deactivate_filter(const std::string& name_space, const std::string& class_name,
                             const std::string& query = {}, const Call& call = {});
    Answer authorize_filter(const std::string& name_space, const std::string& class_name,
                            const std::string& query = {}, const Call& call = {});
    Answer must_poll(const std::string& name_space, const std::string& class_name,
                     const std::string& query = {}, const Call& call = {});
    Answer enable_indications(const std::string& class_name, const Call& call = {});
    Answer disable_indications(const std::string& class_name, const Call& call = {});

    // The next accepted indication, in order; empty if none comes within the time.
    std::optional<Indication> next_indication(std::chrono::milliseconds wait);
    std::vector<Indication> take_indications(); // all that wait

    // The class model, or null.
    const tvrmof::Schema* schema() const noexcept;
    // Whether the module exports a factory of that kind for the class.
    bool serves(const std::string& class_name, Kind kind) const;
    // The path by which a class's instance is named: its key properties, with their types from the
    // MOF. Throws Value_Error if a key is missing.
    Cim_Path path_of(const std::string& name_space, const std::string& class_name,
                     const Named_Values& properties) const;

    // Loads the MI of a kind, as a first use does; null if there is none. The pointer is a
    // CMPIInstanceMI and so on, and lives until the class is cleaned up.
    void* load(const std::string& class_name, Kind kind);
    // Waits until no request is in the class and cleans up all its MIs; with `terminating` false an
    // MI that answers "do not unload" stays. Returns the code of the last cleanup. Must not be
    // called from within a request.
    int unload(const std::string& class_name, bool terminating = false);

    // Cleans up every MI in reverse order of loading, and reports what is left over; the module is
    // closed with the object manager.
    // Requests from then on answer with code 1. Called by the destructor; may be called twice.
    void shutdown();

    // Broken rules so far, oldest first.
    std::vector<Fault> faults() const;
    std::vector<Fault> take_faults(); // and forgets them
    // Objects alive now, clones and prepared contexts among them; 0 between requests if no clone is
    // held and no thread attached.
    std::size_t live_objects() const noexcept;
    std::size_t live_clones() const noexcept;

    // For those who call the module's tables themselves: a broker that belongs to no class, and a
    // scope on the calling thread with a context of its own. Scopes nest, and end in reverse order.
    const CMPIBroker* broker() const noexcept;
    class Scope {
    public:
        explicit Scope(Object_Manager& manager, const Call& call = {});
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        const CMPIContext* context() const noexcept { return _context; }

    private:
        std::unique_ptr<Scope_Frame> _frame;
        const CMPIContext* _context;
    };

private:
    friend class Subscription;
    struct Rep;
    std::unique_ptr<Rep> _rep;
};

// Reads a path in its usual text form, as
//     root/tavrin:TVRHBA_FCPort.DeviceID="1000",SystemName="host"
// Types of keys come from the schema; without a schema, or for a key that it doesn't have, a quoted
// value is a string, TRUE and FALSE are booleans and a number is an integer of 64 bits. A value
// without quotes that isn't a number is taken as a string up to the next comma. Where the text has
// no namespace the given one is used. Throws Value_Error, whose text names the place.
Cim_Path parse_path(std::string_view text, const tvrmof::Schema* schema,
                    const std::string& name_space);

// Reads a value of a declared type from what a person writes: a number, true or yes or on, text
// without quotes, a datetime, a path; NULL for no value. An array is its elements with commas
// between them, or a JSON array such as ["a, b", "c"]; one of paths or instances is the latter.
// Throws Value_Error that names what would be right.
Cim_Value parse_value(std::string_view text, const tvrmof::Typed& declared,
                      const tvrmof::Schema* schema, const std::string& name_space);

// Reads an instance file. Throws Start_Error.
std::vector<Cim_Instance> read_instances(const std::string& file, const tvrmof::Schema* schema);

} // namespace tvrhost

#endif
