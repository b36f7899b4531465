#include "tools/parse/timestamps.h"

#include "tests/properties/properties.h"

// The library itself answers by what it converted before.
TEST(Timestamps, OfARepeatedOrMissingHourDoNotDependOnTheLinesBefore) {
    struct Row {
        const char* zone;
        const char* time;
        time_t converted;
    };
    constexpr Row rows[] = {
        {"EST5EDT,M3.2.0,M11.1.0", "03/Nov/2024:01:30:07 -0500", 1730611807}, // the first of two
        {"CET-1CEST,M3.5.0,M10.5.0/3", "27/Oct/2024:02:30:07 +0100", 1729992607}, // the second
        {"CET-1CEST,M3.5.0,M10.5.0/3", "31/Mar/2024:02:30:07 +0100", 1711848607}, // never
    };
    for (const Row& row : rows) {
        run_in_child([&] {
            set_zone(row.zone);
            const auto convert = [](std::string text) {
                return convert_into_second({text.data(), text.size()});
            };
            for (const char* before :
                 {"15/Jan/2024:12:00:00 +0000", "15/Jul/2024:12:00:00 +0000",
                  "03/Nov/2024:00:59:59 +0000", "27/Oct/2024:03:00:00 +0000"}) {
                convert(before);
                EXPECT_EQ(convert(row.time), row.converted) << row.time << " after " << before;
            }
        });
    }
}
