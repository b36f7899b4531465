#include "tools/results/complete_url_list.h"

#include "tests/properties/properties.h"
#include "tools/load/request_table.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/unique_urls.h"

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

void read_list(const std::string& config_dir) {
    for (uint64_t* counter : counters) {
        *counter = 0;
    }
    forget_unique_urls();
    fill_url_pattern_from_cache(OwnDirectory(config_dir));
}

} // namespace

void check_complete_url_list(Choices& choices) {
    forget_unique_urls();
    for (uint64_t* counter : counters) {
        *counter = choices.one_in(3) ? UINT64_MAX : choices.below(9999);
    }
    const bool any_odd = !choices.one_in(20); // columns may look like something else
    const size_t text_count = any_odd ? 400 : 40'000;
    std::vector<std::string> texts;
    texts.reserve(text_count);
    while (texts.size() < text_count && choices.any_left()) {
        const bool is_odd = any_odd && choices.below(200) == 0;
        const std::string& host =
            texts.emplace_back(choices.text(is_odd ? "#|" : ".:ah", is_odd ? 2 : 8));
        std::string& url = texts.emplace_back(choices.text("/a|?# \r", 12));
        if (choices.below(4000) == 3999) {
            url.append(200'000, 'u');
        }
        const int index = create_url_pattern();
        UrlInfo& entry = url_pattern[index];
        entry = {};
        std::strcpy(entry.method, choices.text(is_odd ? "#|" : "ETOS", is_odd ? 2 : 16).c_str());
        entry.host_hdr = host.c_str();
        entry.count = choices.one_in(9) ? UINT64_MAX : choices.below(9999);
        entry.query_url_offset = static_cast<int64_t>(choices.below(9999)) - 1;
        entry.url = url.data();
    }
    const Rows expected = contents();
    const TemporaryDirectory directory;
    directory.write("complete_url.list", "of an earlier run");
    if (write_complete_url_list(OwnDirectory(directory.path()))) {
        read_list(directory.path());
        EXPECT_TRUE(contents() == expected);
    } else {
        EXPECT_TRUE(any_odd) << "every other list can be read back";
    }
}

void forget_unique_urls() {
    std::free(std::exchange(url_pattern, nullptr));
    url_pattern_count = max_url_pattern = 0;
}

void expect_list_is_kept(const std::string& config_dir) {
    read_list(config_dir);
    const Rows expected = contents();
    EXPECT_TRUE(write_complete_url_list(OwnDirectory(config_dir)));
    read_list(config_dir);
    EXPECT_EQ(contents(), expected);
}
