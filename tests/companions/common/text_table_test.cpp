#include "companions/common/text_table.h"

#include <gtest/gtest.h>

TEST(TextTable, LinesUpByCharacters) {
    TextTable table({{"Count", Alignment::right}, {"Name"}, {"Text"}});
    EXPECT_TRUE(table.empty());
    table.add_row({"7", "\xc3\xbc", "a"});
    table.add_row({"1234567", "long", ""});
    EXPECT_EQ(table.text(), "  Count  Name  Text\n"
                            "      7  \xc3\xbc     a\n"
                            "1234567  long  \n");
}
