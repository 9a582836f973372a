// The rules of ownership: what breaks them is told, what keeps them isn't. A fault that a case
// doesn't take fails it.
#include "tests/host/host_fixture.h"

#include <thread>

namespace tvrtest {
namespace {

using enum tvrhost::Fault_Kind;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using Kinds = std::vector<Fault_Kind>;

// The place of an enumeration as faults tell it; a sanitizer's library may pass for a module.
std::string in_scope(const std::string& class_name) {
    return "\\(enumerateInstances " + class_name + "(, [a-z_.0-9]+\\+0x[0-9a-f]+)?\\)";
}

class Ownership : public Host_Fixture {
protected:
    // Runs `work` as one call into the module.
    Answer in_call(const std::function<void(Request&)>& work) {
        if (thing == nullptr) {
            thing = &module.add("Test_Thing");
        }
        thing->enumerate = [&](Request& r) {
            work(r);
            return CMPI_RC_OK;
        };
        return om().enumerate_instances("root/x", "Test_Thing", {}, {"Test_Thing", {}, 0});
    }
    Scripted_Class* thing = nullptr;
};

TEST_F(Ownership, the_scope_collects_what_a_call_has_not_released) {
    in_call([&](Request& r) {
        CMNewArgs(r.broker, nullptr);
        CMNewArray(r.broker, 3, CMPI_string, nullptr);
        const std::size_t before = om().live_objects();
        CMPIInstance* const instance = new_thing(r, "a", 1);
        CMPIString* const name = CMGetProperty(instance, "Name", nullptr).value.string;
        CMPIString* const again = CMGetProperty(instance, "Name", nullptr).value.string;
        EXPECT_NE(name, again) << "each get hands out a handle of its own";
        CMRelease(name);
        EXPECT_STREQ(CMGetCharPtr(again), "a");
        CMRelease(again);
        CMRelease(instance);
        EXPECT_EQ(om().live_objects(), before + 1) << "the path that new_thing leaves";
    });
    EXPECT_EQ(om().live_objects(), 0u);
}

TEST_F(Ownership, a_double_release_is_told_with_its_place) {
    in_call([](Request& r) {
        CMPIString* const text = CMNewString(r.broker, "a", nullptr);
        const char* const chars = CMGetCharPtr(text);
        EXPECT_EQ(CMRelease(text).rc, CMPI_RC_OK);
        EXPECT_STREQ(chars, "\xDD") << "the characters of an ended string are rubbish";
        EXPECT_EQ(CMRelease(text).rc, CMPI_RC_ERR_INVALID_HANDLE);
    });
    const std::vector<Fault> found = om().take_faults();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].kind, double_release);
    EXPECT_THAT(found[0].text, MatchesRegex("CMPIString \"a\" released " + in_scope("Test_Thing") +
                                            " after its release " + in_scope("Test_Thing")));
    EXPECT_THAT(found[0].text, HasSubstr(", host_test+0x")) << "the code that released it";
}

TEST_F(Ownership, a_use_after_release_or_scope_fails_and_is_told) {
    CMPIString* kept = nullptr;
    in_call([&](Request& r) {
        kept = CMNewString(r.broker, "a", nullptr);
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
    });
    EXPECT_EQ(faults(), Kinds(5, use_after_release));
    in_call([&](Request&) {
        EXPECT_EQ(CMGetCharPtr(kept), nullptr);
        EXPECT_EQ(CMRelease(kept).rc, CMPI_RC_ERR_INVALID_HANDLE);
    });
    EXPECT_EQ(faults(), Kinds(2, use_after_scope));
}

TEST_F(Ownership, a_clone_outlives_its_scope_and_leaks_until_released) {
    CMPIString* text = nullptr;
    CMPIInstance* instance = nullptr;
    in_call([&](Request& r) {
        text = CMClone(CMNewString(r.broker, "a", nullptr), nullptr);
        instance = CMClone(new_thing(r, "b", 2), nullptr);
    });
    EXPECT_EQ(om().live_clones(), 2u);
    in_call([&](Request&) {
        EXPECT_STREQ(CMGetCharPtr(text), "a");
        EXPECT_EQ(CMGetProperty(instance, "Count", nullptr).value.uint32, 20u);
        CMRelease(instance);
    });
    EXPECT_EQ(om().live_clones(), 1u);
    in_call([&](Request&) {
        EXPECT_EQ(CMGetProperty(instance, "Count", nullptr).state, CMPI_nullValue | CMPI_badValue);
        CMRelease(instance);
    });
    EXPECT_THAT(faults(), ElementsAre(use_after_release, double_release));
    om().shutdown();
    EXPECT_THAT(faults(), ElementsAre(leaked_clone));
}

TEST_F(Ownership, tombstones_of_a_scope_stay_until_it_ends) {
    options.tombstones = 10;
    in_call([&](Request& r) {
        CMPIString* const kept = CMNewString(r.broker, "a", nullptr);
        CMRelease(kept);
        for (int i = 0; i < 100; ++i) {
            CMRelease(CMNewString(r.broker, "b", nullptr));
        }
        CMRelease(kept);
    });
    EXPECT_THAT(faults(), ElementsAre(double_release));
}

// What a setter is given too early released is a fault where the object that it went into is read.
// The answer has NULL there, or what stood there when it was copied.
TEST_F(Ownership, what_setters_are_given_lives_until_it_is_handed_over) {
    struct Row {
        Keeps keeps;
        const char* given; // what is released too early
        Kinds faults;
    };
    const Row rows[] = {
        {Keeps::everything, "nothing", {}},
        {Keeps::everything, "key", {use_after_release, use_after_release}}, // newInstance, return
        {Keeps::everything, "element", {use_after_release}},
        {Keeps::everything, "array", {use_after_release}},
        {Keeps::everything, "argument", {use_after_release}},
        {Keeps::elements, "key", {}},
        {Keeps::elements, "element", {use_after_release}},
        {Keeps::elements, "array", {}},
        {Keeps::elements, "argument", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.given) + (row.keeps == Keeps::everything ? " of all" : ""));
        manager.reset();
        options.keeps = row.keeps;
        const auto early = [&](const char* what, auto* object) {
            if (std::string(row.given) == what) {
                CMRelease(object);
            }
        };
        const Answer answer = in_call([&](Request& r) {
            CMPIString* const key = CMNewString(r.broker, "a key", nullptr);
            CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", "Test_Thing", nullptr);
            CMAddKey(path, "Name", &key, CMPI_string);
            early("key", key);
            CMReturnObjectPath(r.result, path);
            CMPIInstance* const instance = CMNewInstance(r.broker, path, nullptr);

            CMPIString* const element = CMNewString(r.broker, "a word", nullptr);
            CMPIArray* const words = CMNewArray(r.broker, 2, CMPI_string, nullptr);
            CMSetArrayElementAt(words, 0, &element, CMPI_string);
            CMSetArrayElementAt(words, 1, "chars", CMPI_chars); // these are copied
            early("element", element);
            CMSetProperty(instance, "Words", &words, CMPI_stringA);
            early("array", words);
            CMReturnInstance(r.result, instance);

            CMPIArgs* const args = CMNewArgs(r.broker, nullptr);
            CMPIString* const argument = CMNewString(r.broker, "an argument", nullptr);
            CMAddArg(args, "v", &argument, CMPI_string);
            early("argument", argument);
            CMGetArg(args, "v", nullptr);
        });
        EXPECT_EQ(faults(), row.faults);
        if (row.faults.empty()) {
            EXPECT_EQ(answer.instance()["Words"],
                      Cim_Value::array_of<const char*>({"a word", "chars"}));
            EXPECT_EQ(answer.paths.at(0).keys["Name"], Cim_Value("a key"));
        }
    }
}

TEST_F(Ownership, what_is_read_late_is_read_as_it_is_then) {
    const Answer answer = in_call([](Request& r) {
        CMPIInstance* const instance = new_thing(r, "a", 1);
        CMPIArray* const words = CMNewArray(r.broker, 1, CMPI_string, nullptr);
        CMSetProperty(instance, "Words", &words, CMPI_stringA);
        CMSetArrayElementAt(words, 0, "before", CMPI_chars);
        CMPIInstance* const copy = CMClone(instance, nullptr);
        CMReturnInstance(r.result, instance); // what was handed over stays as it was
        CMSetArrayElementAt(words, 0, "after", CMPI_chars);
        CMSetProperty(instance, "Name", "after", CMPI_chars);
        CMReturnInstance(r.result, instance);
        CMReturnInstance(r.result, copy);
        CMRelease(copy);
    });
    const auto first_word = [&](std::size_t i) {
        return answer.instances.at(i)["Words"].elements().at(0).as_string();
    };
    EXPECT_EQ(names(answer), (std::vector<std::string>{"a", "after", "a"}));
    EXPECT_EQ(first_word(0) + first_word(1) + first_word(2), "beforeafterbefore");
}

TEST_F(Ownership, an_element_belongs_to_its_array) {
    module.add("Test_Thing").create = [](Request& r) {
        const CMPIArray* const words = CMGetProperty(r.instance, "Words", nullptr).value.array;
        CMPIString* const word = CMGetArrayElementAt(words, 0, nullptr).value.string;
        EXPECT_STREQ(CMGetCharPtr(word), "a");
        CMRelease(word);
        return CMPI_RC_OK;
    };
    const Cim_Path path = thing_path("a", 1);
    om().create_instance(path, {path, {{"Words", Cim_Value::array_of<const char*>({"a"})}}});
    EXPECT_THAT(faults(), ElementsAre(borrowed_release));
}

// ---- brokers

TEST_F(Ownership, each_class_has_a_broker_until_its_last_cleanup) {
    Scripted_Class& other = module.add("Test_Other");
    const CMPIBroker* first = nullptr;
    const CMPIBroker* others = nullptr;
    CMPIContext* context = nullptr;
    other.enumerate = [&](Request& r) {
        others = r.broker;
        return CMPI_RC_OK;
    };
    in_call([&](Request& r) {
        first = r.broker;
        context = CBPrepareAttachThread(r.broker, r.context);
    });
    om().enumerate_instances("root/x", "Test_Other", {}, {"Test_Other", {}, 0});
    EXPECT_NE(first, others);
    om().unload("Test_Thing");
    EXPECT_THAT(faults(), ElementsAre(ended_broker)) << "the context is still there";
    other.enumerate = [&](Request& r) {
        CMPIStatus rc{};
        EXPECT_EQ(CMNewString(first, "a", &rc), nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_EQ(CBAttachThread(first, context).rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_STREQ(CMGetCharPtr(CMNewString(r.broker, "a", nullptr)), "a");
        CMRelease(context);
        return CMPI_RC_OK;
    };
    om().enumerate_instances("root/x", "Test_Other", {}, {"Test_Other", {}, 0});
    const std::vector<Fault> found = om().take_faults();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].kind, ended_broker);
    EXPECT_THAT(found[0].text,
                MatchesRegex("newString at the broker of Test_Thing " + in_scope("Test_Other") +
                             " after the last cleanup of that class"));
    in_call([&](Request& r) { EXPECT_NE(r.broker, first) << "a new life, a new broker"; });
}

TEST_F(Ownership, a_call_neither_releases_its_result_nor_returns_after_done) {
    in_call([](Request& r) {
        CMReturnDone(r.result);
        EXPECT_EQ(CMReturnInstance(r.result, new_thing(r, "a", 1)).rc, CMPI_RC_ERR_FAILED);
        CMRelease(const_cast<CMPIResult*>(r.result));
        CMRelease(const_cast<CMPIContext*>(r.context));
        CMRelease(const_cast<CMPIObjectPath*>(r.path)); // what is only handed in may go early
    });
    EXPECT_THAT(faults(), ElementsAre(result_after_done, argument_release, argument_release));
}

TEST_F(Ownership, a_thread_is_in_a_call_or_attached) {
    in_call([&](Request& r) { std::thread([&] { CMNewString(r.broker, "a", nullptr); }).join(); });
    EXPECT_THAT(faults(), ElementsAre(outside_scope));
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
    });
    EXPECT_EQ(om().live_objects(), 0u) << "the context ends with the detach";
    in_call([&](Request&) { CMGetCharPtr(kept); });
    EXPECT_THAT(faults(), ElementsAre(use_after_scope));
}

TEST_F(Ownership, a_prepared_context_is_detached_or_released) {
    in_call([&](Request& r) {
        CMPIContext* const context = CBPrepareAttachThread(r.broker, r.context);
        EXPECT_EQ(CMRelease(context).rc, CMPI_RC_OK);
    });
    EXPECT_EQ(om().live_objects(), 0u);
    in_call([&](Request& r) {
        CBPrepareAttachThread(r.broker, r.context);
        CMPIContext* const context = CBPrepareAttachThread(r.broker, r.context);
        std::thread([&] {
            CBAttachThread(r.broker, context);
            CMNewString(r.broker, "a", nullptr);
        }).join();
    });
    om().shutdown();
    EXPECT_THAT(faults(), ElementsAre(ended_broker, leaked_context, leaked_context));
    EXPECT_EQ(om().live_objects(), 0u);
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
    });
    EXPECT_THAT(faults(), ElementsAre(thread_mismatch, thread_mismatch, thread_mismatch,
                                      thread_mismatch, use_after_scope));
}

// ---- data, as the module sees it

TEST_F(Ownership, values_and_objects_that_make_no_sense_are_refused) {
    in_call([](Request& r) {
        CMPIArgs* const args = CMNewArgs(r.broker, nullptr);
        CMAddArg(args, "v", "a", CMPI_chars);
        CMPIStatus rc;
        EXPECT_EQ(CMGetArgAt(args, 1, nullptr, &rc).state, CMPI_nullValue | CMPI_notFound);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(CMAddArg(args, "bad", &rc, 0x4321).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
        EXPECT_EQ(CMNewDateTimeFromChars(r.broker, "yesterday", &rc), nullptr);

        // What isn't of the right kind, or not an object of the object manager, is refused.
        CMPIString* const text = CMNewString(r.broker, "a", nullptr);
        EXPECT_EQ(CMReturnInstance(r.result, reinterpret_cast<CMPIInstance*>(text)).rc,
                  CMPI_RC_ERR_INVALID_PARAMETER);
        char chars[] = "b";
        CMPIString foreign{chars, nullptr};
        CMPIString* const pointer = &foreign;
        EXPECT_EQ(CMAddArg(args, "a", &pointer, CMPI_string).rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_EQ(CMReturnInstance(r.result, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    });
    EXPECT_EQ(faults(), Kinds(2, foreign_object));
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
        CMPIArray* const numbers = CMNewArray(r.broker, 1, CMPI_uint32, nullptr);
        EXPECT_EQ(CMSetArrayElementAt(numbers, 1, &narrow, CMPI_uint32).rc,
                  CMPI_RC_ERR_NO_SUCH_PROPERTY);
        EXPECT_EQ(CMSetProperty(instance, "Words", &numbers, CMPI_stringA).rc,
                  CMPI_RC_ERR_TYPE_MISMATCH);
        EXPECT_EQ(CMSetProperty(instance, "Count", nullptr, CMPI_null).rc, CMPI_RC_OK);
    });
    EXPECT_EQ(faults(), Kinds(5, schema_mismatch));
}

} // namespace
} // namespace tvrtest
