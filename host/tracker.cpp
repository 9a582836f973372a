#include "host/tracker.h"

#include <dlfcn.h>
#include <execinfo.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <thread>
#include <utility>

namespace tvrhost {

namespace {

constexpr std::size_t fault_limit = 1000;

thread_local Scope_Frame* innermost = nullptr;

// "libtavrin_fc_provider.so+0x1f2c0", as the tools that find source lines want it.
std::string code_place(const void* address) {
    Dl_info info{};
    if (address == nullptr || dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    const std::string file = info.dli_fname;
    const auto offset =
        static_cast<const char*>(address) - static_cast<const char*>(info.dli_fbase);
    std::ostringstream text;
    text << file.substr(file.rfind('/') + 1) << "+0x" << std::hex << offset;
    return text.str();
}

const void* base_of(const void* address) noexcept {
    Dl_info info{};
    return dladdr(address, &info) == 0 ? nullptr : info.dli_fbase;
}

// The code of the module on this thread's stack, nearest to the call; null if the module is linked
// with the object manager. The C and C++ libraries, which start threads, are nobody's.
const void* calling_code() {
    static const void* const nobodys[] = {
        base_of(reinterpret_cast<const void*>(&calling_code)),
        base_of(dlsym(RTLD_DEFAULT, "gnu_get_libc_version")),
        base_of(dlsym(RTLD_DEFAULT, "_ZSt9terminatev")),
    };
    void* frames[32];
    const int depth = backtrace(frames, std::size(frames));
    for (int i = 0; i < depth; ++i) {
        if (std::find(std::begin(nobodys), std::end(nobodys), base_of(frames[i])) ==
            std::end(nobodys)) {
            return frames[i];
        }
    }
    return nullptr;
}

std::string in_brackets(const std::string& scope, const std::string& code) {
    if (scope.empty() && code.empty()) {
        return {};
    }
    return " (" + scope + (scope.empty() || code.empty() ? "" : ", ") + code + ")";
}

// "CMPIString "eth0"".
std::string text_of(const Tracked& object) {
    const char* const name = object.short_name.get();
    return *name == '\0' ? std::string(object.kind) : std::string(object.kind) + " \"" + name + '"';
}

// "its release (enumerateInstances TVRHBA_FCPort, module.so+0x12)".
std::string end_of(const Tracked& object, State state) {
    return (state == State::released ? "its release" : "the end of its scope") +
           in_brackets(object.ended_in == nullptr ? std::string() : *object.ended_in,
                       code_place(object.ended_at));
}

// The state once an end in progress is over.
State state_of(const Tracked& object) noexcept {
    State state = object.state;
    for (; state == State::ending; state = object.state) {
        std::this_thread::yield();
    }
    return state;
}

} // namespace

// ---- scopes

Scope_Frame::Scope_Frame(Tracker& tracker, std::string label)
    : _tracker(&tracker), _label(std::make_shared<const std::string>(std::move(label))),
      _below(std::exchange(innermost, this)) {}

Scope_Frame::~Scope_Frame() {
    // A frame that another thread attached and never detached ends on this one.
    for (Scope_Frame** frame = &innermost; *frame != nullptr; frame = &(*frame)->_below) {
        if (*frame == this) {
            *frame = _below;
            break;
        }
    }
    abandon();
}

void Scope_Frame::abandon() noexcept {
    if (Tracker* const tracker = std::exchange(_tracker, nullptr)) {
        tracker->collect(std::move(_objects), _label);
    }
}

Scope_Frame* Scope_Frame::top(const Tracker& tracker) noexcept {
    Scope_Frame* frame = innermost;
    while (frame != nullptr && frame->_tracker != &tracker) {
        frame = frame->_below;
    }
    return frame;
}

// ---- objects

Tracker::~Tracker() {
    report_leaks();
    collect(std::move(_orphans), nullptr);
}

void Tracker::adopt(std::unique_ptr<Tracked> object, bool clone) {
    ++_live;
    if (clone) {
        object->is_clone = true;
        const Tracked* const key = object.get();
        std::shared_ptr<const std::string> origin = scope_label();
        const std::lock_guard lock(_mutex);
        _clones.emplace(key, Clone{std::move(object), std::move(origin), nullptr});
        return;
    }
    if (Scope_Frame* scope = Scope_Frame::top(*this)) {
        scope->add(std::move(object));
        return;
    }
    fault(Fault_Kind::outside_scope,
          std::string(object->kind) + " made on a thread that is neither in a call nor attached");
    const std::lock_guard lock(_mutex);
    _orphans.push_back(std::move(object));
}

void Tracker::set_broker(const Tracked& context, const void* broker) {
    const std::lock_guard lock(_mutex);
    if (const auto found = _clones.find(&context); found != _clones.end()) {
        found->second.broker = broker;
    }
}

bool Tracker::has_contexts_of(const void* broker) const {
    const std::lock_guard lock(_mutex);
    return std::any_of(_clones.begin(), _clones.end(),
                       [&](const auto& each) { return each.second.broker == broker; });
}

// False if it had ended before.
bool Tracker::end(Tracked& object, State state, const std::shared_ptr<const std::string>& scope,
                  const void* caller) noexcept {
    State expected = State::live;
    if (!object.state.compare_exchange_strong(expected, State::ending)) {
        return false;
    }
    object.ended_in = scope;
    object.ended_at = caller;
    object.poison();
    object.state = state;
    --_live;
    return true;
}

bool Tracker::release(Tracked& object, const void* caller) noexcept {
    if (object.is_argument || object.is_element) {
        fault(object.is_argument ? Fault_Kind::argument_release : Fault_Kind::borrowed_release,
              std::string(object.kind) +
                  (object.is_argument ? " of a call" : ", an element of an array,") +
                  " released by the module" + place());
        if (object.is_clone) {
            return false; // its filter has it yet
        }
    }
    if (!end(object, State::released, scope_label(), caller)) {
        const State state = state_of(object);
        fault(state == State::released ? Fault_Kind::double_release : Fault_Kind::use_after_scope,
              text_of(object) + " released" + place() + " after " + end_of(object, state));
        return false;
    }
    if (object.is_clone) {
        Objects ended;
        {
            const std::lock_guard lock(_mutex);
            auto node = _clones.extract(&object);
            if (!node.empty()) {
                ended.push_back(std::move(node.mapped().object));
            }
        }
        bury(std::move(ended));
    }
    return true;
}

void Tracker::end_clone(Tracked& object) noexcept {
    end(object, State::collected, scope_label(), nullptr);
    Objects ended;
    {
        const std::lock_guard lock(_mutex);
        auto node = _clones.extract(&object);
        if (!node.empty()) {
            ended.push_back(std::move(node.mapped().object));
        }
    }
    bury(std::move(ended));
}

bool Tracker::is_live(const Tracked& object, const char* operation) {
    if (object.state == State::live) {
        return true;
    }
    const State state = state_of(object);
    fault(state == State::released ? Fault_Kind::use_after_release : Fault_Kind::use_after_scope,
          std::string(operation) + " of " + text_of(object) + place() + " after " +
              end_of(object, state));
    return false;
}

void Tracker::collect(Objects objects, const std::shared_ptr<const std::string>& scope) noexcept {
    for (const std::unique_ptr<Tracked>& object : objects) {
        end(*object, State::collected, scope, nullptr);
    }
    bury(std::move(objects));
}

void Tracker::bury(Objects objects) {
    if (objects.empty()) {
        return;
    }
    std::vector<Objects> forgotten; // freed without the lock
    const std::lock_guard lock(_mutex);
    _tombstone_count += objects.size();
    _tombstones.push_back(std::move(objects));
    while (_tombstone_count > _tombstone_limit && _tombstones.size() > 1) {
        _tombstone_count -= _tombstones.front().size();
        forgotten.push_back(std::move(_tombstones.front()));
        _tombstones.pop_front();
    }
}

std::size_t Tracker::live_clones() const noexcept {
    const std::lock_guard lock(_mutex);
    return _clones.size();
}

// ---- threads

CMPIStatus Tracker::attach(Tracked& context) {
    bool prepared = false;
    bool attached = false;
    {
        const std::lock_guard lock(_mutex);
        prepared = _clones.contains(&context);
        attached = _attached.contains(&context);
    }
    const char* wrong = nullptr;
    if (!prepared) {
        wrong = "attachThread with a context that prepareAttachThread did not make";
    } else if (attached) {
        wrong = "attachThread with a context that a thread is attached with";
    } else if (Scope_Frame::top(*this) != nullptr) {
        wrong = "attachThread on a thread that is in a call or attached";
    }
    if (wrong != nullptr) {
        fault(Fault_Kind::thread_mismatch, wrong + place());
        return {CMPI_RC_ERR_FAILED, nullptr};
    }
    auto frame = std::make_unique<Scope_Frame>(*this, "attached thread");
    const std::lock_guard lock(_mutex);
    _attached.emplace(&context, std::move(frame));
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus Tracker::detach(Tracked& context) {
    std::unique_ptr<Scope_Frame> frame;
    {
        const std::lock_guard lock(_mutex);
        const auto found = _attached.find(&context);
        if (found != _attached.end() && found->second.get() == Scope_Frame::top(*this)) {
            frame = std::move(found->second);
            _attached.erase(found);
        }
    }
    if (frame == nullptr) {
        fault(Fault_Kind::thread_mismatch,
              "detachThread with a context that this thread is not attached with" + place());
        return {CMPI_RC_ERR_FAILED, nullptr};
    }
    frame.reset();
    end_clone(context);
    return {CMPI_RC_OK, nullptr};
}

// ---- faults

std::shared_ptr<const std::string> Tracker::scope_label() const {
    const Scope_Frame* const scope = Scope_Frame::top(*this);
    return scope == nullptr ? nullptr : scope->label();
}

std::string Tracker::place() const {
    const std::shared_ptr<const std::string> scope = scope_label();
    return in_brackets(scope == nullptr ? std::string() : *scope, code_place(calling_code()));
}

void Tracker::fault(Fault_Kind kind, const std::string& text) {
    const std::lock_guard lock(_mutex);
    _unseen = true;
    if (_faults.size() < fault_limit) {
        _faults.push_back({kind, text});
    }
}

std::vector<Fault> Tracker::faults() const {
    const std::lock_guard lock(_mutex);
    _unseen = false;
    return _faults;
}

std::vector<Fault> Tracker::take_faults() {
    const std::lock_guard lock(_mutex);
    _unseen = false;
    return std::exchange(_faults, {});
}

bool Tracker::has_unseen_faults() const {
    const std::lock_guard lock(_mutex);
    return _unseen;
}

void Tracker::report_leaks() {
    std::unordered_map<const Tracked*, Clone> left;
    std::unordered_map<const Tracked*, std::unique_ptr<Scope_Frame>> attached;
    {
        const std::lock_guard lock(_mutex);
        left.swap(_clones);
        attached.swap(_attached);
    }
    for (const auto& [key, clone] : left) {
        const bool context = std::string_view(key->kind) == "CMPIContext";
        fault(context ? Fault_Kind::leaked_context : Fault_Kind::leaked_clone,
              std::string(key->kind) +
                  (attached.contains(key) ? " of a thread that was never detached"
                                          : " never released") +
                  in_brackets(clone.made_in == nullptr ? std::string() : *clone.made_in, {}));
    }
    Objects ended;
    for (auto& [key, clone] : left) {
        ended.push_back(std::move(clone.object));
    }
    for (auto& [key, frame] : attached) {
        frame->abandon();
        // The thread may look at its frames as long as it lives.
        static std::mutex mutex;
        static std::vector<std::unique_ptr<Scope_Frame>> graveyard;
        const std::lock_guard lock(mutex);
        graveyard.push_back(std::move(frame));
    }
    collect(std::move(ended), nullptr);
}

} // namespace tvrhost
