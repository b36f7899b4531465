#include "tools/patterns/text_sort.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

// Texts that share long beginnings, hold bytes above 127 and end where others go on.
TEST(TextSort, GivesTheOrderOfAPlainSort) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> texts(random() % 400);
        for (std::string& text : texts) {
            text = random() % 3 == 0 ? "/a/long/common/beginning/of/many/" : "/";
            for (size_t length = random() % 20; length != 0; --length) {
                text += "ab\xe4\x01"[random() % 4];
            }
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
        std::stable_sort(texts.begin(), texts.end(),
                         [](const std::string& a, const std::string& b) {
                             return std::strcmp(a.c_str(), b.c_str()) < 0;
                         });
        ASSERT_EQ(sorted, texts) << "round " << round;
    }
}
