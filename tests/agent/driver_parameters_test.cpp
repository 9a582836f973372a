// The driver's parameters: their instances, their associations and their current values.
#include "tests/agent/agent_session.h"

#include "agent/driver_parameters.h"
#include "agent/locks.h"

#include <cstring>

namespace cimple {
namespace {

// As "name:low:current:high"; current and highest value follow from the lowest where they aren't
// told. "*" fills all fields to their ends.
RM_DRIVERPARAM param(const std::string& text) {
    RM_DRIVERPARAM param{};
    if (text == "*") {
        std::memset(static_cast<void*>(&param), 'x', sizeof param);
        return param;
    }
    std::istringstream parts(text);
    std::string name;
    std::getline(parts, name, ':');
    name.copy(param.name, sizeof param.name);
    char colon = 0;
    parts >> param.low;
    param.defaultValue = param.low + 2;
    param.current = param.low + 3;
    param.high = param.low + 1;
    parts >> colon >> param.current >> colon >> param.high;
    param.exportFlag = 1;
    param.dynamic = 5;
    ("About " + name).copy(param.help, sizeof param.help);
    return param;
}

class Driver_Parameters : public With_Session {
protected:
    Driver_Parameters() {
        session.on("params", [this](const auto& words) {
            first_port(number(words.at(0))).params = params({words.begin() + 1, words.end()});
        });
        session.on("global", [this](const auto& words) { libraries.globalParams = params(words); });
        session.on("need", [this](const auto& words) { libraries.toldNeed = number(words.at(0)); });
        session.on("fetch", [this](const auto& words) {
            const Full_Guard guard(*agent);
            return tvrcimGetDriverParam(agent->maps, words.at(0), words.at(1) == "global");
        });
    }

private:
    // A number stands for as many parameters of the next name.
    static std::vector<RM_DRIVERPARAM> params(const Text_Session::Words& words) {
        std::vector<RM_DRIVERPARAM> params;
        uint32 times = 1;
        for (const std::string& word : words) {
            if (std::isdigit(word[0]) != 0) {
                times = number(word);
            } else {
                params.insert(params.end(), std::exchange(times, 1), param(word));
            }
        }
        return params;
    }
};

TVR_SESSIONS(Driver_Parameters, "driver_parameters.txt");

} // namespace
} // namespace cimple
