#include "tools/parse/timestamps.h"

#include "tests/properties/properties.h"

// The library itself answers by what it converted before.
TEST(Timestamps, OfARepeatedHourDoNotDependOnTheCallBefore) {
    run_in_child([] {
        set_zone("EST5EDT,M3.2.0,M11.1.0");
        const auto convert = [](std::string text) {
            return convert_into_second({text.data(), text.size()});
        };
        const time_t first = 1730611800; // the hour's first 01:30
        for (const char* before : {"15/Jan/2024:12:00:00 +0000", "15/Jul/2024:12:00:00 +0000",
                                   "03/Nov/2024:00:59:59 +0000", "03/Nov/2024:02:00:00 +0000"}) {
            convert(before);
            EXPECT_EQ(convert("03/Nov/2024:01:30:00 -0500"), first) << "after " << before;
            convert(before);
            EXPECT_EQ(local_time_to_epoch(2024, 11, 3, 1, 30, 7), first + 7) << "after " << before;
        }
    });
}
