#include "tools/patterns/pattern_tables.h"

#include "tests/unit_helpers.h"
#include "tools/patterns/pattern_files.h"

#include <algorithm>
#include <vector>

TEST(PatternTables, AreSortedByPatternTextAndGrouped) {
    Choices choices(12);
    std::string text;
    std::vector<std::pair<std::string, std::string>> expected; // pattern and transaction
    for (int i = 0; i < 1500; ++i) {
        expected.emplace_back("/" + choices.text("ab.*\xe9", 3), "T" + std::to_string(i));
        const auto& [pattern, transaction] = expected.back();
        text += "active|main|GET|-|" + transaction + "|h|-|NA|" + pattern + "\n";
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    const TemporaryDirectory directory;
    run_in_child([&] {
        save_url_pattern(directory.write("patterns", text).c_str());
        ASSERT_EQ(total_main_url_pattern, 1500);
        fill_seq_in_url_pattern_table(main_url_pattern, total_main_url_pattern);
        size_t parent = 0;
        for (size_t i = 0; i < expected.size(); ++i) {
            parent = expected[i].first == expected[parent].first ? parent : i;
            EXPECT_EQ(main_url_pattern[i].url_ptrn_string, expected[i].first) << i;
            EXPECT_EQ(main_url_pattern[i].txn_name, expected[i].second) << i;
            EXPECT_EQ(main_url_pattern[i].parent_seq, static_cast<int>(parent)) << i;
        }
    });
}
