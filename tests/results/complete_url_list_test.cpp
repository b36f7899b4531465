#include "tools/results/complete_url_list.h"

#include "tests/unit_helpers.h"
#include "tools/load/request_table.h"
#include "tools/patterns/request_selection.h"
#include "tools/patterns/unique_urls.h"

#include <cstring>
#include <vector>

namespace {

using Rows = std::vector<std::string>;

uint64_t* const counters[] = {
    &g_total_req,     &g_redirected_req,        &g_time_filtered_req,
    &g_total_bad_req, &g_total_non_session_req, &g_total_non_session_with_secondary_cookie};

// The counters and the table.
Rows contents() {
    Rows rows;
    for (const uint64_t* counter : counters) {
        rows.push_back(std::to_string(*counter));
    }
    for (int i = 0; i < url_pattern_count; ++i) {
        const UrlInfo& entry = url_pattern[i];
        rows.push_back(std::string(entry.method) + " " + entry.host_hdr + " " +
                       std::to_string(entry.count) + " " + std::to_string(entry.query_url_offset) +
                       " " + entry.url);
    }
    return rows;
}

void forget_contents() {
    for (uint64_t* counter : counters) {
        *counter = 0;
    }
    std::free(url_pattern);
    url_pattern = nullptr;
    url_pattern_count = max_url_pattern = 0;
}

} // namespace

TEST(CompleteUrlList, IsReadBackAsItWasWritten) {
    run_in_child([] {
        Choices choices(14);
        std::vector<std::string> texts(20'000);
        for (uint64_t i = 0; i < std::size(counters); ++i) {
            *counters[i] = i == 0 ? UINT64_MAX : i + 1;
        }
        for (size_t i = 0; i < texts.size(); i += 2) {
            texts[i] = choices.text(".:ah", 8);
            texts[i + 1] = i == 0 ? "||" + std::string(200'000, 'u') : choices.text("/a|?# \r", 12);
            const int index = create_url_pattern();
            UrlInfo& entry = url_pattern[index];
            entry = {};
            std::strcpy(entry.method, choices.text("ETOS", 16).c_str());
            entry.host_hdr = texts[i].c_str();
            entry.count = i == 0 ? UINT64_MAX : choices.below(9999);
            entry.query_url_offset = static_cast<int64_t>(choices.below(9999)) - 1;
            entry.url = texts[i + 1].data();
        }
        const Rows expected = contents();
        const TemporaryDirectory directory;
        directory.write("complete_url.list", "of an earlier run");
        write_complete_url_list(directory.path());
        forget_contents();
        fill_url_pattern_from_cache(directory.path().c_str());
        EXPECT_TRUE(contents() == expected);
    });
}
