#include "tests/companions/properties/layout_properties.h"

namespace {

void expect_to_hold(void (*check)(Choices& choices), uint32_t rounds) {
    run_in_child([=] {
        for (uint32_t seed = 0; seed < rounds && !testing::Test::HasFailure(); ++seed) {
            SCOPED_TRACE(seed);
            Choices choices(seed);
            check(choices);
        }
    });
}

} // namespace

TEST(LayoutProperties, HoldOfAnyFormat) {
    expect_to_hold(check_log_format, 20'000);
}

TEST(LayoutProperties, HoldOfAnyLog) {
    expect_to_hold(check_log_layouts, 400);
}
