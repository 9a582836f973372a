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

const TVRHBA_FCHBADiagnosticTest* find_test(const Instance_Maps& maps, const String& name) {
    for (const auto* test : maps.m_TVRHBA_FCHBADiagnosticTest_map) {
        if (test->Name.value == name) {
            return test;
        }
    }
    return nullptr;
}

// Ties a job to one of its ends; the job is there all the same if that doesn't work.
template <class C, class End_Class>
void tie(Instance_Maps& maps, End_Class* C::*end_field, const End_Class* end,
         TVRHBA_ConcreteJob* C::*job_field, const TVRHBA_ConcreteJob& job) {
    const char* name = C::static_meta_class.name;
    Ref<C> association;
    try {
        if (end != nullptr) {
            association = join(end_field, End(*end), job_field, End(job));
        }
    } catch (const std::bad_alloc&) {
    }
    if (!association) {
        TVR_LOG("Unable to create %s", name);
        return;
    }
    char failure[64];
    std::snprintf(failure, sizeof failure, "Insert Failed: %s", name);
    try_insert(maps.*map_of<C>, std::move(association), failure);
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
    Ref<TVRHBA_ConcreteJob> made;
    try {
        made = make_job(test_name, delete_on_completion, state, test_id);
    } catch (const std::bad_alloc&) {
        TVR_LOG("Unable to create TVRHBA_ConcreteJob");
        return nullptr;
    }
    const TVRHBA_ConcreteJob* job = try_insert(maps.m_TVRHBA_ConcreteJob_map, std::move(made),
                                               "Insert Failed: TVRHBA_ConcreteJob");
    if (job != nullptr) {
        tie(maps, &TVRHBA_OwningJobElement::OwningElement, find_test(maps, test_name),
            &TVRHBA_OwningJobElement::OwnedElement, *job);
        tie(maps, &TVRHBA_AffectedJobElement::AffectedElement, element,
            &TVRHBA_AffectedJobElement::AffectingElement, *job);
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
