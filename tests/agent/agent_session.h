// Sessions with an agent: clients' calls on one side, the adapters' libraries on the other.
#pragma once

#include "tests/agent/agent_fixture.h"
#include "tests/common/session.h"

namespace cimple {

// Classes go without "TVRHBA_". What a command tells of its work: the requests that reached the
// libraries as "> ", the lines of the providers' log as "| ", and "rebuild" if it asked for one.
//
//   load, unload, refresh, clock SECONDS   of the agent and its time
//   status ENTRY_POINT CODE...             what its next calls come to
//   list CLASS PROPERTY...                 these properties of each instance
//   show CLASS NUMBER                      all properties of an instance
//   count CLASS...                         instances
//   stored CLASS NUMBER                    the same as the map has it
//   maps CLASS...                          instances in the maps, without a look at the hardware
//   let NAME CLASS NUMBER PROPERTY=VALUE...  a copy of an instance, changed
//   put NAME, drop CLASS...                changes the maps
//   call OF METHOD PARAMETER=VALUE...      OF is a copy, or a class for its first instance
//   modify NAME PROPERTY=VALUE...
//   log TEXT...                            how often each came in the log
//   trace FILE...                          their lines in the log, which is forgotten then
//   take                                   forgets the log
//   adapters NUMBER[xPORTS]...             the adapters from here on
//   state ADAPTER VALUE, statistic ADAPTER NUMBER VALUE   of the first port
class With_Session : public With_Agent {
protected:
    With_Session();
    // From here to there is what a client's call does.
    void begin_work();
    void tell_work(std::ostream& answer);
    Collected all(const std::string& class_name);
    static uint32 number(const std::string& word);
    fake::Port& first_port(std::size_t adapter) { return libraries.adapters.at(adapter).ports[0]; }

    // A copy that was made, or for the name of a class a copy of its first instance.
    Instance* named(const std::string& name);
    // PROPERTY=VALUE from that word on.
    void set(Instance* instance, const Text_Session::Words& words, std::size_t first);

    Text_Session session;
    std::map<std::string, Ref<Instance>> _named;

private:
    void call(const Text_Session::Words& words, std::ostream& answer);
    void modify(const Text_Session::Words& words, std::ostream& answer);
};

} // namespace cimple
