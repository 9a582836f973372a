// The rules of ownership: what breaks them is told, what keeps them isn't.
#include "tests/host/host_fixture.h"

#include <cstring>
#include <thread>

namespace tvrtest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Ownership : public Host_Fixture {
protected:
    // Runs `script` as one call into the module.
    Answer in_call(const Script& script) {
        if (thing == nullptr)
            thing = &module.add("Test_Thing");
        thing->enumerate = script;
        return om().enumerate_instances("root/x", "Test_Thing", {}, {"Test_Thing", {}, 0});
    }
    Scripted_Class* thing = nullptr;
};

TEST_F(Ownership, the_scope_collects_what_a_call_leaves) {
    in_call([&](Request& r) {
        for (int i = 0; i < 10; ++i) {
            CMPIInstance* const instance = new_thing(r, "a", 1);
            CMGetObjectPath(instance, nullptr);
            CMGetProperty(instance, "Name", nullptr);
        }
        CMNewArgs(r.broker, nullptr);
        CMNewArray(r.broker, 3, CMPI_string, nullptr);
        CMNewDateTime(r.broker, nullptr);
        EXPECT_GT(om().live_objects(), 40u);
        return CMPI_RC_OK;
    });
    EXPECT_EQ(om().live_objects(), 0u);
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, everything_may_be_released_once_and_early) {
    in_call([&](Request& r) {
        const std::size_t before = om().live_objects();
        CMPIInstance* const instance = new_thing(r, "a", 1);
        CMPIObjectPath* const path = CMGetObjectPath(instance, nullptr);
        CMPIString* const name = CMGetProperty(instance, "Name", nullptr).value.string;
        CMPIString* const again = CMGetProperty(instance, "Name", nullptr).value.string;
        EXPECT_NE(name, again) << "each get hands out a handle of its own";
        CMRelease(name);
        EXPECT_STREQ(CMGetCharPtr(again), "a");
        CMRelease(again);
        CMRelease(path);
        CMRelease(instance);
        EXPECT_EQ(om().live_objects(), before + 1) << "the path that new_thing leaves";
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, a_double_release_is_told_with_its_place) {
    in_call([](Request& r) {
        CMPIString* const text = CMNewString(r.broker, "a", nullptr);
        EXPECT_EQ(CMRelease(text).rc, CMPI_RC_OK);
        EXPECT_EQ(CMRelease(text).rc, CMPI_RC_ERR_INVALID_HANDLE);
        return CMPI_RC_OK;
    });
    const std::vector<Fault> found = om().take_faults();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].kind, Fault_Kind::double_release);
    EXPECT_EQ(found[0].text, "CMPIString released after its release (enumerateInstances "
                             "Test_Thing)");
}

TEST_F(Ownership, a_use_after_release_fails_and_is_told) {
    in_call([](Request& r) {
        CMPIInstance* const instance = new_thing(r, "a", 1);
        CMRelease(instance);
        CMPIStatus rc;
        EXPECT_EQ(CMGetProperty(instance, "Name", &rc).state, CMPI_nullValue | CMPI_badValue);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_EQ(CMReturnInstance(r.result, instance).rc, CMPI_RC_ERR_INVALID_PARAMETER);
        CMPIString* const text = CMNewString(r.broker, "a", nullptr);
        CMRelease(text);
        EXPECT_EQ(CMGetCharPtr(text), nullptr);
        EXPECT_EQ(CMClone(text, nullptr), nullptr);
        CMPIArgs* const args = CMNewArgs(r.broker, nullptr);
        EXPECT_EQ(CMAddArg(args, "a", &text, CMPI_string).rc, CMPI_RC_ERR_INVALID_HANDLE);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::use_after_release, Fault_Kind::use_after_release,
                                      Fault_Kind::use_after_release, Fault_Kind::use_after_release,
                                      Fault_Kind::use_after_release));
}

TEST_F(Ownership, a_use_after_the_scope_is_told) {
    CMPIString* kept = nullptr;
    CMPIInstance* instance = nullptr;
    in_call([&](Request& r) {
        kept = CMNewString(r.broker, "a", nullptr);
        instance = new_thing(r, "a", 1);
        return CMPI_RC_OK;
    });
    in_call([&](Request&) {
        EXPECT_EQ(CMGetCharPtr(kept), nullptr);
        EXPECT_EQ(CMRelease(instance).rc, CMPI_RC_ERR_INVALID_HANDLE);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::use_after_scope, Fault_Kind::use_after_scope));
}

TEST_F(Ownership, a_clone_outlives_its_scope_and_leaks_until_released) {
    CMPIString* text = nullptr;
    CMPIInstance* instance = nullptr;
    in_call([&](Request& r) {
        text = CMClone(CMNewString(r.broker, "a", nullptr), nullptr);
        instance = CMClone(new_thing(r, "b", 2), nullptr);
        return CMPI_RC_OK;
    });
    EXPECT_EQ(om().live_clones(), 2u);
    in_call([&](Request&) {
        EXPECT_STREQ(CMGetCharPtr(text), "a");
        EXPECT_EQ(CMGetProperty(instance, "Count", nullptr).value.uint32, 20u);
        CMRelease(instance);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
    om().shutdown();
    const std::vector<Fault> found = om().take_faults();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].kind, Fault_Kind::leaked_clone);
    EXPECT_THAT(found[0].text, HasSubstr("CMPIString never released (enumerateInstances"));
}

TEST_F(Ownership, a_released_clone_is_watched_like_anything_else) {
    CMPIArray* array = nullptr;
    in_call([&](Request& r) {
        array = CMClone(CMNewArray(r.broker, 2, CMPI_uint16, nullptr), nullptr);
        CMRelease(array);
        return CMPI_RC_OK;
    });
    in_call([&](Request&) {
        CMPIStatus rc;
        EXPECT_EQ(CMGetArrayCount(array, &rc), 0u);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
        CMRelease(array);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::use_after_release, Fault_Kind::double_release));
    EXPECT_EQ(om().live_clones(), 0u);
}

TEST_F(Ownership, tombstones_of_a_scope_stay_until_it_ends) {
    options.tombstones = 10;
    CMPIString* kept = nullptr;
    in_call([&](Request& r) {
        // More than the limit within one scope: all stay until it ends.
        kept = CMNewString(r.broker, "a", nullptr);
        CMRelease(kept);
        for (int i = 0; i < 100; ++i)
            CMRelease(CMNewString(r.broker, "b", nullptr));
        CMRelease(kept);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::double_release));
}

TEST_F(Ownership, setters_and_returns_copy) {
    const Answer answer = in_call([](Request& r) {
        CMPIString* const text = CMNewString(r.broker, "before", nullptr);
        CMPIInstance* const instance = new_thing(r, "a", 1);
        CMPIArray* const words = CMNewArray(r.broker, 1, CMPI_string, nullptr);
        CMSetArrayElementAt(words, 0, &text, CMPI_string);
        CMRelease(text);
        CMSetProperty(instance, "Words", &words, CMPI_stringA);
        CMSetArrayElementAt(words, 0, "after", CMPI_chars);
        CMReturnInstance(r.result, instance);
        CMSetProperty(instance, "Name", "after", CMPI_chars);
        CMRelease(words);
        CMRelease(instance);
        return CMPI_RC_OK;
    });
    EXPECT_EQ(answer.instance()["Name"], Cim_Value("a"));
    EXPECT_EQ(answer.instance()["Words"], Cim_Value::array_of<const char*>({"before"}));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, contexts_and_results_of_a_call_are_not_the_modules_to_release) {
    in_call([](Request& r) {
        CMRelease(const_cast<CMPIResult*>(r.result));
        CMRelease(const_cast<CMPIContext*>(r.context));
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::argument_release, Fault_Kind::argument_release));
    in_call([](Request& r) { // what is only handed in may go early
        CMRelease(const_cast<CMPIObjectPath*>(r.path));
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, nothing_is_returned_after_done) {
    in_call([](Request& r) {
        CMPIInstance* const instance = new_thing(r, "a", 1);
        CMReturnInstance(r.result, instance);
        CMReturnDone(r.result);
        EXPECT_EQ(CMReturnInstance(r.result, instance).rc, CMPI_RC_ERR_FAILED);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::result_after_done));
}

TEST_F(Ownership, objects_of_another_kind_or_origin_are_refused) {
    in_call([](Request& r) {
        CMPIString* const text = CMNewString(r.broker, "a", nullptr);
        EXPECT_EQ(CMReturnInstance(r.result, reinterpret_cast<CMPIInstance*>(text)).rc,
                  CMPI_RC_ERR_INVALID_PARAMETER);
        char chars[] = "b";
        CMPIString foreign{chars, nullptr};
        CMPIString* const pointer = &foreign;
        CMPIArgs* const args = CMNewArgs(r.broker, nullptr);
        EXPECT_EQ(CMAddArg(args, "a", &pointer, CMPI_string).rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_EQ(CMReturnInstance(r.result, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::foreign_object, Fault_Kind::foreign_object));
}

TEST_F(Ownership, a_thread_is_in_a_call_or_attached) {
    in_call([&](Request& r) {
        std::thread([&] { CMNewString(r.broker, "a", nullptr); }).join();
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::outside_scope));
    om().shutdown();
    manager.reset(); // what was made outside is freed with the object manager
}

TEST_F(Ownership, an_attached_thread_has_a_scope_until_its_detach) {
    CMPIString* kept = nullptr;
    in_call([&](Request& r) {
        CMPIContext* const context = CBPrepareAttachThread(r.broker, r.context);
        std::thread([&, broker = r.broker] {
            EXPECT_EQ(CBAttachThread(broker, context).rc, CMPI_RC_OK);
            const CMPIData principal = CMGetContextEntry(context, CMPIPrincipal, nullptr);
            EXPECT_STREQ(CMGetCharPtr(principal.value.string), "tester");
            kept = CMNewString(broker, "a", nullptr);
            EXPECT_STREQ(CMGetCharPtr(kept), "a");
            EXPECT_EQ(CBDetachThread(broker, context).rc, CMPI_RC_OK);
        }).join();
        return CMPI_RC_OK;
    });
    EXPECT_EQ(om().live_objects(), 0u) << "the context ends with the detach";
    EXPECT_THAT(faults(), IsEmpty());
    in_call([&](Request&) {
        CMGetCharPtr(kept);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::use_after_scope));
}

TEST_F(Ownership, a_context_may_be_released_where_no_thread_came_of_it) {
    in_call([&](Request& r) {
        CMPIContext* const context = CBPrepareAttachThread(r.broker, r.context);
        EXPECT_EQ(CMRelease(context).rc, CMPI_RC_OK);
        return CMPI_RC_OK;
    });
    EXPECT_EQ(om().live_objects(), 0u);
    in_call([&](Request& r) {
        CBPrepareAttachThread(r.broker, r.context);
        return CMPI_RC_OK;
    });
    om().shutdown();
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::leaked_context));
}

TEST_F(Ownership, attach_and_detach_belong_together) {
    in_call([&](Request& r) {
        CMPIContext* const context = CBPrepareAttachThread(r.broker, r.context);
        CMPIContext* const other = CBPrepareAttachThread(r.broker, r.context);
        EXPECT_NE(CBAttachThread(r.broker, context).rc, CMPI_RC_OK) << "in a call";
        std::thread([&] {
            EXPECT_NE(CBAttachThread(r.broker, r.context).rc, CMPI_RC_OK) << "not prepared";
            EXPECT_EQ(CBAttachThread(r.broker, context).rc, CMPI_RC_OK);
            EXPECT_NE(CBAttachThread(r.broker, context).rc, CMPI_RC_OK) << "twice";
            EXPECT_NE(CBDetachThread(r.broker, other).rc, CMPI_RC_OK) << "another's context";
            EXPECT_EQ(CBDetachThread(r.broker, context).rc, CMPI_RC_OK);
            EXPECT_NE(CBDetachThread(r.broker, context).rc, CMPI_RC_OK) << "ended";
        }).join();
        CMRelease(other);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::thread_mismatch, Fault_Kind::thread_mismatch,
                                      Fault_Kind::thread_mismatch, Fault_Kind::thread_mismatch,
                                      Fault_Kind::use_after_scope));
}

TEST_F(Ownership, a_thread_that_never_detaches_is_a_leak) {
    in_call([&](Request& r) {
        CMPIContext* const context = CBPrepareAttachThread(r.broker, r.context);
        std::thread([&] {
            CBAttachThread(r.broker, context);
            CMNewString(r.broker, "a", nullptr);
        }).join();
        return CMPI_RC_OK;
    });
    om().shutdown();
    const std::vector<Fault> found = om().take_faults();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].kind, Fault_Kind::leaked_context);
    EXPECT_THAT(found[0].text, HasSubstr("never detached"));
    EXPECT_EQ(om().live_objects(), 0u);
}

TEST_F(Ownership, scopes_of_a_client_nest) {
    om();
    CMPIString* inner = nullptr;
    const Object_Manager::Scope outer_scope(om());
    CMPIString* const outer = CMNewString(om().broker(), "a", nullptr);
    {
        const Object_Manager::Scope inner_scope(om(), {"", "guest", 0});
        inner = CMNewString(om().broker(), "b", nullptr);
        const CMPIData principal = CMGetContextEntry(inner_scope.context(), CMPIPrincipal, nullptr);
        EXPECT_STREQ(CMGetCharPtr(principal.value.string), "guest");
    }
    EXPECT_STREQ(CMGetCharPtr(outer), "a");
    EXPECT_EQ(CMGetCharPtr(inner), nullptr);
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::use_after_scope));
}

// ---- data, as the module sees it

TEST_F(Ownership, values_of_every_type_come_back_as_they_went_in) {
    in_call([](Request& r) {
        CMPIArgs* const args = CMNewArgs(r.broker, nullptr);
        const auto check = [&](CMPIType type, const auto& value) {
            EXPECT_EQ(CMAddArg(args, "v", &value, type).rc, CMPI_RC_OK);
            const CMPIData data = CMGetArg(args, "V", nullptr);
            EXPECT_EQ(data.type, type);
            EXPECT_EQ(data.state, CMPI_goodValue);
            EXPECT_EQ(std::memcmp(&data.value, &value, sizeof value), 0) << type;
        };
        check(CMPI_boolean, CMPIBoolean{1});
        check(CMPI_char16, CMPIChar16{0x263A});
        check(CMPI_uint8, CMPIUint8{255});
        check(CMPI_uint16, CMPIUint16{65535});
        check(CMPI_uint32, CMPIUint32{4294967295u});
        check(CMPI_uint64, CMPIUint64{~0ull});
        check(CMPI_sint8, CMPISint8{-128});
        check(CMPI_sint16, CMPISint16{-32768});
        check(CMPI_sint32, CMPISint32{-2147483647 - 1});
        check(CMPI_sint64, CMPISint64{-9223372036854775807 - 1});
        check(CMPI_real32, CMPIReal32{1.5f});
        check(CMPI_real64, CMPIReal64{-2.25});
        EXPECT_EQ(CMGetArgCount(args, nullptr), 1u);

        CMPIStatus rc;
        CMPIString* name = nullptr;
        EXPECT_EQ(CMGetArgAt(args, 0, &name, &rc).type, CMPI_real64);
        EXPECT_STREQ(CMGetCharPtr(name), "v");
        EXPECT_EQ(CMGetArgAt(args, 1, &name, &rc).state, CMPI_nullValue | CMPI_notFound);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(name, nullptr);
        EXPECT_EQ(CMAddArg(args, "bad", &rc, 0x4321).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
        CMPIString* const none = nullptr;
        EXPECT_EQ(CMAddArg(args, "none", &none, CMPI_string).rc, CMPI_RC_OK);
        EXPECT_EQ(CMGetArg(args, "none", &rc).state, CMPI_nullValue);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, strings_hold_their_characters) {
    in_call([](Request& r) {
        CMPIString* const text = CMNewString(r.broker, "abc", nullptr);
        EXPECT_STREQ(static_cast<const char*>(text->hdl), "abc");
        EXPECT_EQ(CMGetCharPtr(text), static_cast<const char*>(text->hdl));
        CMPIDateTime* const interval =
            CMNewDateTimeFromChars(r.broker, "00000001000000.000000:000", nullptr);
        EXPECT_TRUE(CMIsInterval(interval, nullptr));
        EXPECT_EQ(CMGetBinaryFormat(interval, nullptr), 86400000000ull);
        CMPIStatus rc;
        EXPECT_EQ(CMNewDateTimeFromChars(r.broker, "yesterday", &rc), nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(CMNewArray(r.broker, 1, 0x4321, &rc), nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, the_schema_is_enforced) {
    in_call([](Request& r) {
        CMPIInstance* const instance = new_thing(r, "a", 1);
        const CMPIUint16 narrow = 1;
        EXPECT_EQ(CMSetProperty(instance, "Nope", &narrow, CMPI_uint16).rc,
                  CMPI_RC_ERR_NO_SUCH_PROPERTY);
        EXPECT_EQ(CMSetProperty(instance, "Count", &narrow, CMPI_uint16).rc,
                  CMPI_RC_ERR_TYPE_MISMATCH);
        EXPECT_EQ(CMSetProperty(instance, "Words", "a", CMPI_chars).rc, CMPI_RC_ERR_TYPE_MISMATCH);
        CMPIObjectPath* const path = CMGetObjectPath(instance, nullptr);
        EXPECT_EQ(CMAddKey(path, "Count", &narrow, CMPI_uint16).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        EXPECT_EQ(CMAddKey(path, "Slot", "1", CMPI_chars).rc, CMPI_RC_ERR_TYPE_MISMATCH);
        CMPIArray* const numbers = CMNewArray(r.broker, 1, CMPI_uint32, nullptr);
        EXPECT_EQ(CMSetArrayElementAt(numbers, 0, &narrow, CMPI_uint16).rc,
                  CMPI_RC_ERR_TYPE_MISMATCH);
        EXPECT_EQ(CMSetArrayElementAt(numbers, 1, &narrow, CMPI_uint32).rc,
                  CMPI_RC_ERR_NO_SUCH_PROPERTY);
        EXPECT_EQ(CMSetProperty(instance, "Words", &numbers, CMPI_stringA).rc,
                  CMPI_RC_ERR_TYPE_MISMATCH);
        // NULL of any form is fine.
        EXPECT_EQ(CMSetProperty(instance, "Count", nullptr, CMPI_null).rc, CMPI_RC_OK);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::schema_mismatch, Fault_Kind::schema_mismatch,
                                      Fault_Kind::schema_mismatch, Fault_Kind::schema_mismatch,
                                      Fault_Kind::schema_mismatch, Fault_Kind::schema_mismatch,
                                      Fault_Kind::schema_mismatch));
}

TEST_F(Ownership, a_property_filter_holds_for_what_is_set_later_and_keeps_the_keys) {
    in_call([](Request& r) {
        CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", "Test_Thing", nullptr);
        CMPIInstance* const instance = CMNewInstance(r.broker, path, nullptr);
        const CMPIUint32 count = 5;
        const CMPIBoolean ready = 1;
        CMSetProperty(instance, "Ready", &ready, CMPI_boolean);
        const char* wanted[] = {"count", nullptr};
        CMSetPropertyFilter(instance, wanted, nullptr);
        EXPECT_EQ(CMGetPropertyCount(instance, nullptr), 0u) << "set before";
        CMSetProperty(instance, "Name", "a", CMPI_chars);
        CMSetProperty(instance, "Count", &count, CMPI_uint32);
        EXPECT_EQ(CMSetProperty(instance, "Ready", &ready, CMPI_boolean).rc, CMPI_RC_OK);
        CMPIString* name = nullptr;
        EXPECT_EQ(CMGetPropertyCount(instance, nullptr), 2u);
        EXPECT_EQ(CMGetPropertyAt(instance, 0, &name, nullptr).state, CMPI_keyValue);
        EXPECT_STREQ(CMGetCharPtr(name), "Name");
        EXPECT_EQ(CMGetPropertyAt(instance, 1, nullptr, nullptr).value.uint32, 5u);
        CMPIStatus rc;
        CMGetProperty(instance, "Ready", &rc);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(Ownership, an_edition_of_100_ends_there) {
    options.broker_version = 100;
    in_call([](Request& r) {
        EXPECT_EQ(r.broker->bft->brokerVersion, 100);
        EXPECT_EQ(r.broker->eft->ftVersion, 100);
        EXPECT_EQ(r.broker->bft->enumerateInstancesFiltered, nullptr);
        EXPECT_EQ(r.broker->eft->newCMPIError, nullptr);
        CMPIInstance* const instance = new_thing(r, "a", 1);
        EXPECT_EQ(instance->ft->setObjectPath, nullptr);
        EXPECT_EQ(r.broker->xft, nullptr);
        EXPECT_EQ(r.broker->mft, nullptr);
        return CMPI_RC_OK;
    });
    EXPECT_THAT(faults(), IsEmpty());
}

} // namespace
} // namespace tvrtest
