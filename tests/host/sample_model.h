// A small class model, and what else the tests of the object manager share.
#ifndef TVR_TESTS_HOST_SAMPLE_MODEL_H
#define TVR_TESTS_HOST_SAMPLE_MODEL_H

#include "schema/mof_reader.h"

#include <memory>
#include <string>

namespace tvrtest {

inline std::shared_ptr<const tvrmof::Schema> sample_model() {
    return std::make_shared<const tvrmof::Schema>(tvrmof::read_text(R"(
        Qualifier Abstract : boolean = false, Scope(class);
        Qualifier Association : boolean = false, Scope(association);
        Qualifier Indication : boolean = false, Scope(indication);
        Qualifier Key : boolean = false, Scope(property, reference);
        Qualifier In : boolean = true, Scope(parameter);
        Qualifier Out : boolean = false, Scope(parameter);
        [Abstract] class Test_Base {
            [Key] string Name;
        };
        class Test_Thing : Test_Base {
            [Key] uint16 Slot;
            uint32 Count;
            sint8 Offset;
            boolean Ready;
            string Words[];
            datetime Since;
            uint32 Turn([In] uint16 Steps, [In] string Label, [In] Test_Thing REF Other,
                        [In(false), Out] string Said, [In, Out] uint32 Total,
                        [In] uint8 Image[]);
        };
        class Test_Special : Test_Thing {
            string Extra;
        };
        class Test_Other {
            [Key] string Id;
        };
        [Association] class Test_Link {
            [Key] Test_Base REF Left;
            [Key] Test_Thing REF Right;
        };
        [Indication] class Test_Event {
            string Description;
        };
        [Indication] class Test_Alert : Test_Event {
            datetime IndicationTime;
            string ProbableCauseDescription;
        };
        [Association] class Test_Far_Link {
            [Key] Test_Other REF Left;
            [Key] Test_Other REF Right;
        };
    )",
                                                                    "sample"));
}

// The text of the error that `work` ends with.
template <class Work> std::string error_of(Work work) {
    try {
        work();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "no error";
}

} // namespace tvrtest

#endif
