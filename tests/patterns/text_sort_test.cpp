#include "tools/patterns/text_sort.h"

#include "tests/unit_helpers.h"

#include <algorithm>
#include <vector>

// Texts that share long beginnings, hold bytes above 127 and end where others go on.
TEST(TextSort, GivesTheOrderOfAPlainSort) {
    Choices choices(7);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> texts(choices.below(400));
        for (std::string& text : texts) {
            text = choices.one_in(3) ? "/a/long/common/beginning/of/many/" : "/";
            text += choices.text("ab\xe4\x01", 19);
        }
        std::vector<SortableText> sortable;
        for (uint32_t i = 0; i < texts.size(); ++i) {
            sortable.push_back({texts[i].c_str(), i, 0});
        }
        sort_texts(sortable);
        std::vector<std::string> sorted;
        for (const SortableText& text : sortable) {
            EXPECT_STREQ(text.text, texts[text.number].c_str());
            sorted.emplace_back(text.text);
        }
        std::sort(texts.begin(), texts.end()); // by unsigned characters, as strcmp does
        ASSERT_EQ(sorted, texts) << "round " << round;
    }
}
