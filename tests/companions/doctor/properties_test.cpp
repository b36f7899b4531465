#include "tests/companions/properties/companion_properties.h"

// By chance, but the same each time.
TEST(CompanionProperties, HoldOfCheckedInputs) {
    run_in_child([] {
        for (uint32_t seed = 0; seed < 200 && !testing::Test::HasFailure(); ++seed) {
            SCOPED_TRACE(seed);
            Choices choices(seed);
            check_checked_inputs(choices);
        }
    });
}
