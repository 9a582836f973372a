#include "host/tracker.h"

#include <utility>

namespace tvrhost {

namespace {

constexpr std::size_t fault_limit = 1000;

thread_local Scope_Frame* innermost = nullptr;

const char* end_of(State state) noexcept {
    return state == State::released ? "its release" : "the end of its scope";
}

} // namespace

// ---- scopes

Scope_Frame::Scope_Frame(Tracker& tracker, std::string label)
    : _tracker(&tracker), _label(std::move(label)), _below(std::exchange(innermost, this)) {}

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
        tracker->collect(std::move(_objects));
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
    collect(std::move(_orphans));
}

void Tracker::adopt(std::unique_ptr<Tracked> object, bool clone) {
    ++_live;
    if (clone) {
        object->is_clone = true;
        const Tracked* const key = object.get();
        std::string origin = place();
        const std::lock_guard lock(_mutex);
        _clones.emplace(key, Clone{std::move(object), std::move(origin)});
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

bool Tracker::release(Tracked& object) noexcept {
    State state = State::live;
    if (!object.state.compare_exchange_strong(state, State::released)) {
        fault(state == State::released ? Fault_Kind::double_release : Fault_Kind::use_after_scope,
              std::string(object.kind) + " released after " + end_of(state) + place());
        return false;
    }
    if (object.is_argument) {
        fault(Fault_Kind::argument_release,
              std::string(object.kind) + " of a call released by the module" + place());
    }
    object.drop();
    --_live;
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

void Tracker::end_context(Tracked& context) noexcept {
    State state = State::live;
    if (context.state.compare_exchange_strong(state, State::collected)) {
        context.drop();
        --_live;
    }
    Objects ended;
    {
        const std::lock_guard lock(_mutex);
        auto node = _clones.extract(&context);
        if (!node.empty()) {
            ended.push_back(std::move(node.mapped().object));
        }
    }
    bury(std::move(ended));
}

bool Tracker::is_live(const Tracked& object, const char* operation) {
    const State state = object.state;
    if (state == State::live) {
        return true;
    }
    fault(state == State::released ? Fault_Kind::use_after_release : Fault_Kind::use_after_scope,
          std::string(operation) + " of a " + object.kind + " after " + end_of(state) + place());
    return false;
}

void Tracker::collect(Objects objects) noexcept {
    for (const std::unique_ptr<Tracked>& object : objects) {
        State state = State::live;
        if (object->state.compare_exchange_strong(state, State::collected)) {
            object->drop();
            --_live;
        }
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
    end_context(context);
    return {CMPI_RC_OK, nullptr};
}

// ---- faults

std::string Tracker::place() const {
    const Scope_Frame* const scope = Scope_Frame::top(*this);
    return scope == nullptr ? std::string() : " (" + scope->label() + ")";
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
                  clone.place);
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
    collect(std::move(ended));
}

} // namespace tvrhost
