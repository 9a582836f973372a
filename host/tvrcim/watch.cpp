// `watch`: alerts as they arrive.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/output.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace tvrcim {

using tvrhost::Cim_Instance;
using tvrhost::Cim_Type;
using tvrhost::Cim_Value;
using tvrhost::Indication;

namespace {

// What arrived and is yet to be printed.
class Arrivals {
public:
    void add(const Indication& indication) {
        const std::lock_guard lock(_mutex);
        _waiting.push_back(indication.instance);
        _came.notify_one();
    }
    Cim_Instance next() {
        std::unique_lock lock(_mutex);
        _came.wait(lock, [this] { return !_waiting.empty(); });
        Cim_Instance instance = std::move(_waiting.front());
        _waiting.pop_front();
        return instance;
    }

private:
    std::mutex _mutex;
    std::condition_variable _came;
    std::deque<Cim_Instance> _waiting;
};

// "2024-02-29 13:30:59"; "-" for none.
std::string time_text(const Cim_Value& value) {
    if (value.type() != Cim_Type::datetime || value.is_null()) {
        return "-";
    }
    std::string text = value.as_datetime().text().substr(0, 14);
    for (const auto& [place, mark] :
         {std::pair(12, ":"), {10, ":"}, {8, " "}, {6, "-"}, {4, "-"}}) {
        text.insert(static_cast<std::size_t>(place), mark);
    }
    return text;
}

std::string plain_or_dash(const Cim_Value& value) {
    const std::string text = value.plain();
    return text.empty() ? "-" : printable(text);
}

// The port that an alert is of, where its text doesn't name it.
std::string port_of(const Session& session, const Cim_Instance& alert) {
    const Cim_Value& path = alert["AlertingManagedElement"];
    try {
        const std::string id = tvrhost::parse_path(path.plain(), session.manager.schema(), "")
                                   .keys["DeviceID"]
                                   .plain();
        const bool is_named = alert["Description"].plain().find(id) != std::string::npos;
        return id.empty() || is_named ? "" : "  " + printable(id);
    } catch (const tvrhost::Value_Error&) {
        return {};
    }
}

void print_alert(Session& session, const Cim_Instance& alert) {
    if (session.format == Format::json) {
        session.out << to_json(alert).text(-1) << std::endl;
        return;
    }
    session.out << time_text(alert["IndicationTime"]) << "  "
                << plain_or_dash(alert["ProbableCauseDescription"]) << "  "
                << plain_or_dash(alert["Description"]) << port_of(session, alert) << std::endl;
}

} // namespace

void watch_alerts(Session& session, const std::string& class_name, unsigned count) {
    const tvrmof::Class& model = session.find_class(class_name);
    Arrivals arrivals;
    tvrhost::Subscription subscription =
        session.manager.subscribe(session.name_space_of(model), model.name,
                                  [&arrivals](const Indication& each) { arrivals.add(each); });
    if (!subscription.is_active()) {
        session.explain_nothing();
    }
    Session::check(subscription.answer(), model.name);
    for (unsigned i = 0; (count == 0 || i < count) && session.out; ++i) {
        print_alert(session, arrivals.next());
    }
    Session::check(subscription.end(), model.name);
}

} // namespace tvrcim
