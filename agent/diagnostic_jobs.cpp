#include "agent/diagnostic_jobs.h"

#include "agent/creation.h"

#include <atomic>
#include <cstdio>

namespace cimple {

namespace {

constexpr uint32 no_job = 32969;

// Jobs so far in this process; the first one has number 1.
constinit std::atomic<uint32> job_count{0};

Ref<TVRHBA_ConcreteJob> make_job(const String& test_name, bool delete_on_completion,
                                 Job_State state, uint32 test_id) {
    constexpr uint16 all_done = 100;
    constexpr uint16 nothing_done = 0;
    char id[128];
    std::snprintf(id, sizeof id, "%s:%d:%lu", test_name.c_str(), static_cast<int>(++job_count),
                  static_cast<unsigned long>(test_id));
    auto job = make<TVRHBA_ConcreteJob>();
    job->InstanceID.set(id);
    job->ElementName.set("TVRHBA_ConcreteJob");
    job->Name.set(test_name);
    job->DeleteOnCompletion.set(delete_on_completion);
    job->TimeSubmitted.set(Datetime::now());
    job->JobState.set(state);
    job->PercentComplete.set(state == JOB_COMPLETED ? all_done : nothing_done);
    return job;
}

// Null without memory.
template <class Make> auto try_to(Make&& make_it) -> decltype(make_it()) {
    try {
        return make_it();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

const TVRHBA_FCHBADiagnosticTest* find_test(const Instance_Maps& maps, const String& name) {
    for (const auto* test : maps.m_TVRHBA_FCHBADiagnosticTest_map) {
        if (test->Name.value == name) {
            return test;
        }
    }
    return nullptr;
}

void add_owner(Instance_Maps& maps, const TVRHBA_ConcreteJob& job) {
    const TVRHBA_FCHBADiagnosticTest* test = find_test(maps, job.Name.value);
    auto owning = try_to([&] {
        return test == nullptr ? Ref<TVRHBA_OwningJobElement>()
                               : join(&TVRHBA_OwningJobElement::OwningElement, End(*test),
                                      &TVRHBA_OwningJobElement::OwnedElement, End(job));
    });
    if (!owning) {
        TVR_LOG("Unable to create TVRHBA_OwningJobElement");
        return;
    }
    try_insert(maps.m_TVRHBA_OwningJobElement_map, std::move(owning),
               "Insert Failed: TVRHBA_OwningJobElement");
}

void add_affected(Instance_Maps& maps, const TVRHBA_ConcreteJob& job,
                  const TVRHBA_PortController* element) {
    auto affected = try_to([&] {
        return element == nullptr ? Ref<TVRHBA_AffectedJobElement>()
                                  : join(&TVRHBA_AffectedJobElement::AffectedElement, End(*element),
                                         &TVRHBA_AffectedJobElement::AffectingElement, End(job));
    });
    if (!affected) {
        TVR_LOG("Unable to create TVRHBA_AffectedJobElement");
        return;
    }
    try_insert(maps.m_TVRHBA_AffectedJobElement_map, std::move(affected),
               "Insert Failed: TVRHBA_AffectedJobElement");
}

// Ends the first association whose end is that job.
template <class C>
void erase_first(Class_Map<C>& map, TVRHBA_ConcreteJob* C::*end, const TVRHBA_ConcreteJob& job) {
    for (std::size_t i = 0; i < map.size(); ++i) {
        if (key_eq((*map.get(i)).*end, &job)) {
            map.erase({static_cast<uint32>(i)});
            return;
        }
    }
}

} // namespace

const TVRHBA_ConcreteJob*
CreateConcreteJobInstantiateNonBlocking(Instance_Maps& maps, const String& test_name,
                                        bool delete_on_completion, Job_State state, uint32 test_id,
                                        const TVRHBA_PortController* element) {
    TVR_LOG("TVR_Diagnostics::CreateConcreteJobInstantiateNonBlocking()");
    auto made = try_to([&] { return make_job(test_name, delete_on_completion, state, test_id); });
    if (!made) {
        TVR_LOG("Unable to create TVRHBA_ConcreteJob");
        return nullptr;
    }
    const TVRHBA_ConcreteJob* job = try_insert(maps.m_TVRHBA_ConcreteJob_map, std::move(made),
                                               "Insert Failed: TVRHBA_ConcreteJob");
    if (job != nullptr) {
        add_owner(maps, *job);
        add_affected(maps, *job, element);
    }
    return job;
}

uint32 DeleteConcreteJob(Instance_Maps& maps, const TVRHBA_ConcreteJob* job) {
    TVR_LOG("TVRHBA_DiagTestFunc::DeleteConcreteJob()");
    if (job == nullptr) {
        TVR_LOG("Invalid Job ID");
        return no_job;
    }
    erase_first(maps.m_TVRHBA_OwningJobElement_map, &TVRHBA_OwningJobElement::OwnedElement, *job);
    erase_first(maps.m_TVRHBA_AffectedJobElement_map, &TVRHBA_AffectedJobElement::AffectingElement,
                *job);
    if (const long position = maps.m_TVRHBA_ConcreteJob_map.find(job); position >= 0) {
        maps.m_TVRHBA_ConcreteJob_map.erase({static_cast<uint32>(position)});
    }
    return 0;
}

} // namespace cimple
