#include "tools/load/input_files.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

TEST(InputFiles, AreSortedAndGroupedByDirectoryAndPrefix) {
    using Files = std::vector<std::pair<std::string, int>>; // path and instance, sorted
    const Files rows[] = {
        {},
        {{"/logs/access_log", 0}, {"/logs/error_log", 1}},
        {{"/logs/ssl_access_log", 0}, {"/logs/ssl_request_log", 0}},
        {{"/logs/_x", 0}, {"/logs/a.log", 0}, {"/logs/a_log", 1}, {"/logs/b.log", 2}},
        {{"/logs/access_1", 0}, {"/logs/access_2/x_1", 1}, {"/logs/access_3", 2}},
        {{"/a_b/x.log", 0}, {"/a_b/y.log", 0}},
        {{"/l/ab_1", 0}, {"/l/abc_1", 1}, {"/l/abd_1", 2}},
        {{"a_1", 0}, {"a_2", 0}, {"b_1", 1}},
        {{"/l-/a_1", 0}, {"/l/a_1", 1}, {"/l0/a_1", 2}, {"/l_/a_1", 3}, {"/l\xe9/a_1", 4}},
    };
    for (Files files : rows) {
        num_al_files = static_cast<int>(files.size());
        g_num_instance = 0;
        const size_t last = files.size() - 1;
        for (size_t i = 0; i < files.size(); ++i) { // listed in the opposite order
            seq_file_path[last - i] = {files[i].first.data(), 0, 0, i, -1};
        }
        process_input_file_list2();
        for (size_t i = 0; i < files.size(); ++i) {
            EXPECT_EQ(seq_file_path[i].input_file, files[i].first);
            EXPECT_EQ(seq_file_path[i].num_req, i) << files[i].first;
            EXPECT_EQ(seq_file_path[i].instance_idx, files[i].second) << files[i].first;
        }
        EXPECT_EQ(g_num_instance, files.empty() ? 0 : files.back().second + 1);
    }
}
