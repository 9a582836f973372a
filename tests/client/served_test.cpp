// What tvrcim tells of the classes holds: what it calls empty or unsupported is so, on a host that
// has everything.
#include "host/tvrcim/not_served.h"
#include "tests/client/client.h"

namespace client {
namespace {

TEST_F(Client, what_is_told_as_not_served_is_not_served) {
    constexpr int not_supported = 7;
    std::size_t served = 0;
    std::size_t methods = 0;
    std::size_t empty = 0;
    for (const auto& model : manager().schema()->classes()) {
        if (!manager().serves(model->name, tvrhost::Kind::instance)) {
            continue;
        }
        SCOPED_TRACE(model->name);
        ++served;
        const Answer answer = manager().enumerate_instance_names(name_space, model->name);
        EXPECT_EQ(answer.rc, 0);
        if (tvrcim::is_always_empty(*model)) {
            EXPECT_EQ(answer.paths.size(), 0u);
            ++empty;
        }
        for (const tvrmof::Feature* method : model->methods()) {
            if (tvrcim::is_unsupported(*model, *method) && !answer.paths.empty()) {
                EXPECT_EQ(manager().invoke_method(answer.paths.front(), method->name).rc,
                          not_supported)
                    << method->name;
                ++methods;
            }
        }
    }
    EXPECT_EQ(served, 136u);
    EXPECT_GT(empty, 1u);
    EXPECT_GT(methods, 30u);
}

} // namespace
} // namespace client
