#include "tools/urls/unique_urls.h"

#include "tests/urls/table_of_requests.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/session_order.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <deque>
#include <map>
#include <set>
#include <string_view>
#include <tuple>

namespace {

// What comes out: the table, a line an entry, the query lines and the counters, one text each.
using Outcome = std::array<std::string, 3>;

std::string row(const char* method, const char* host, uint64_t count, const std::string& url,
                int64_t offset) {
    return std::string(method) + "|" + host + "|" + std::to_string(count) + "|" + url + "|" +
           std::to_string(offset) + "\n";
}

std::string counters(uint64_t redirected, uint64_t non_session, uint64_t with_secondary_cookie) {
    return std::to_string(redirected) + " " + std::to_string(non_session) + " " +
           std::to_string(with_secondary_cookie);
}

// Cookie or address; empty: none.
std::string session_of(const alInfo& request) {
    return request.client_ip != 0 ? std::to_string(request.client_ip) : request.jsession_id;
}

std::string lower_case(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Whether the location, in lower case, is the request's URL, with scheme and host if it has them.
bool names(const std::string& location, const alInfo& request) {
    std::string url = request.url;
    for (const std::string scheme : {"http://", "https://"}) {
        url = location.starts_with(scheme) ? scheme + request.host_ip + request.url : url;
    }
    return location == lower_case(url);
}

// The locations that a session has still to follow, in lower case, each under the lowest of sixteen
// numbers that was free.
class PlainRedirects {
  public:
    // Whether a browser made the request by itself. Keeps the location that it leads to.
    bool take(const alInfo& request) {
        if (session_ != session_of(request)) {
            session_ = session_of(request);
            locations_.clear();
        }
        const auto followed =
            std::find_if(locations_.begin(), locations_.end(),
                         [&](const auto& numbered) { return names(numbered.second, request); });
        const bool is_follow_up = followed != locations_.end();
        if (is_follow_up) {
            locations_.erase(followed);
        }
        const int code = request.response_code;
        if ((code == 301 || code == 302 || code == 307) && request.redirect_url != nullptr) {
            int number = 0;
            while (locations_.contains(number)) {
                ++number;
            }
            locations_[number % 16] = lower_case(request.redirect_url);
        }
        return is_follow_up;
    }

  private:
    std::string session_;
    std::map<int, std::string> locations_;
};

Outcome plain_unique_urls(std::vector<alInfo> requests) {
    std::stable_sort(requests.begin(), requests.end(), [](const alInfo& a, const alInfo& b) {
        return std::tuple(session_of(a), a.time_stamp) < std::tuple(session_of(b), b.time_stamp);
    });
    uint64_t redirected = 0;
    uint64_t non_session = 0;
    uint64_t with_secondary_cookie = 0;
    PlainRedirects redirects;
    std::map<std::array<std::string, 3>, std::vector<const alInfo*>> urls; // by URL, method, host
    for (const alInfo& request : requests) {
        bool counts = true;
        if (session_of(request).empty()) {
            ++non_session;
            with_secondary_cookie +=
                session_mode == SESSION_MODE_COOKIE && request.akaau_id[0] != '\0';
            counts = ignore_non_session_urls == 0;
        } else if (auto_redirect_flag != 0) {
            counts = !redirects.take(request);
            redirected += !counts;
        }
        if (counts) {
            const std::string method = request.method;
            urls[{std::string(request.url).substr(0, static_cast<size_t>(request.url_len)),
                  method == "az" ? "AZ" : method, request.host_ip}]
                .push_back(&request);
        }
    }
    std::string table;
    std::string queries;
    for (const auto& [url, its_requests] : urls) {
        const alInfo& first = *its_requests[0];
        const bool is_cut = first.ignore_query_flag != 0;
        const bool is_dumped = is_cut && dump_query_flag != 0;
        table += row(first.method, first.host_ip, its_requests.size(), url[0] + (is_cut ? "*" : ""),
                     is_dumped ? static_cast<int64_t>(queries.size()) : -1);
        for (const alInfo* request : its_requests) {
            queries += is_dumped ? std::string(request->url) + "\n" : "";
        }
    }
    return {table, queries, counters(redirected, non_session, with_secondary_cookie)};
}

// Rows that the observer is told of, by reason.
std::map<DroppedRequest, std::set<uint32_t>> dropped_rows;

void note_dropped(uint32_t row, DroppedRequest why) {
    EXPECT_TRUE(dropped_rows[why].insert(row).second) << row;
}

// Expects each request that was left out to be told of once, with its reason.
void expect_dropped_are_told(const RequestTable& table) {
    for (const auto& [why, rows] : dropped_rows) {
        for (const uint32_t row : rows) {
            const std::string_view session = table.texts.sessions.text(table.rows[row].session);
            const bool has_session = session.find_first_not_of('\0') != session.npos;
            EXPECT_EQ(has_session, why == DroppedRequest::redirect_follow_up) << row;
        }
    }
    uint64_t kept = 0;
    for (int i = 0; i < url_pattern_count; ++i) {
        kept += url_pattern[i].count;
    }
    const uint64_t follow_ups = dropped_rows[DroppedRequest::redirect_follow_up].size();
    const uint64_t without_session = dropped_rows[DroppedRequest::without_session].size();
    EXPECT_EQ(follow_ups, g_redirected_req);
    EXPECT_EQ(without_session, ignore_non_session_urls != 0 ? g_total_non_session_req : 0);
    EXPECT_EQ(kept + follow_ups + without_session, table.rows.size());
}

std::string counted_so_far() {
    return counters(g_redirected_req, g_total_non_session_req,
                    g_total_non_session_with_secondary_cookie);
}

// A copy of a text that is spoilt when it goes.
class PassingText {
  public:
    explicit PassingText(const char* text)
        : text_(text == nullptr ? "" : text), is_(text != nullptr) {}
    explicit PassingText(std::string_view text) : text_(text), is_(true) {}
    ~PassingText() { std::fill(text_.begin(), text_.end(), '~'); }
    PassingText(const PassingText&) = delete;
    PassingText& operator=(const PassingText&) = delete;

    const char* get() const { return is_ ? text_.c_str() : nullptr; }
    std::string_view view() const { return text_; }

  private:
    std::string text_;
    bool is_;
};

bool take_passing(RequestSelection& selection, const RequestTable& table,
                  const OrderedRequest& request) {
    OwnTexts own = read_own_texts(table.rows[request.row].own_texts);
    const PassingText key(table.texts.urls.text(request.url));
    const PassingText location(own.location);
    const PassingText full_url(own.full_url);
    own.location = location.get();
    own.full_url = full_url.get();
    return selection.take(own, request.is_redirect != 0, [&] { return key.view(); });
}

// Rows of the requests that do not count when they come in a stream, each by its texts, which are
// gone when the next one comes.
std::set<uint32_t> dropped_of_stream(const RequestTable& table, const SessionOrder& order) {
    std::set<uint32_t> dropped;
    RequestSelection selection;
    size_t place = 0;
    for (const OrderedSession& session : order.sessions) {
        selection.begin_session(session.has_session);
        for (; place < session.end; ++place) {
            if (!take_passing(selection, table, order.requests[place])) {
                dropped.insert(order.requests[place].row);
            }
        }
    }
    return dropped;
}

// Expects that a stream of requests is decided on as the table was.
void expect_stream_is_decided_alike(const RequestTable& table) {
    std::set<uint32_t> expected = dropped_rows[DroppedRequest::without_session];
    expected.merge(std::set(dropped_rows[DroppedRequest::redirect_follow_up]));
    const std::string expected_counters = counted_so_far();
    g_redirected_req = g_total_non_session_req = g_total_non_session_with_secondary_cookie = 0;
    EXPECT_EQ(dropped_of_stream(table, order_by_session(table)), expected);
    EXPECT_EQ(counted_so_far(), expected_counters);
}

Outcome make_unique_urls(std::vector<alInfo>& records, Choices& choices) {
    const TemporaryDirectory directory;
    directory.write("query_url.list", "of an earlier run");
    QueryList query_list{OwnDirectory(directory.path())};
    const RequestTable requests = table_of_requests(records, choices);
    dropped_request_observer = note_dropped;
    make_url_pattern_list(requests, order_by_session(requests), query_list);
    expect_dropped_are_told(requests);
    expect_stream_is_decided_alike(requests);
    EXPECT_EQ(std::filesystem::exists(directory.path("query_url.list")),
              dump_query_flag != 0 && ignore_query_flag != 0);

    std::string table;
    for (int i = 0; i < url_pattern_count; ++i) {
        const UrlInfo& entry = url_pattern[i];
        table += row(entry.method, entry.host_hdr, entry.count, entry.url, entry.query_url_offset);
    }
    return {table, directory.read("query_url.list"), counted_so_far()};
}

// Texts and numbers that sort otherwise when they are taken for signed or are cut off.
void give_session(alInfo& request, Choices& choices) {
    static const std::string x62(62, 'x');
    static const std::string ids[] = {
        "",          "a",         "A",       "ab",   "a\xe9",        "b",       "12345678",
        "123456789", "123456780", "1234567", "\xe9", "12345678\xe9", x62 + "x", x62 + "y"};
    const uint32_t addresses[] = {0, 1, 2, 0x7fffffff, 0x80000000, 0xffffffff};
    if (session_mode == SESSION_MODE_COOKIE) {
        std::strcpy(request.jsession_id, choices.of(ids).c_str());
    } else {
        request.client_ip = choices.of(addresses);
    }
}

// Their texts are in `texts`. Many URLs share long beginnings.
std::vector<alInfo> random_requests(Choices& choices, size_t count, std::string_view letters,
                                    size_t max_url, std::deque<std::string>& texts) {
    const int codes[] = {200, 301, 302, 303, 307, 308};
    const uint64_t times[] = {0, 1, 2, 3, 971211336, uint64_t{1} << 63, UINT64_MAX};
    const std::string prefixes[] = {"", "http://", "HTTPS://", "http:/"};
    const std::string directories[] = {"/", "/", "/shared/beginning/of/very/many/urls/",
                                       "/shared/catalog/and/more/"};
    std::vector<alInfo> requests(count);
    for (alInfo& request : requests) {
        const char* host = choices.of(std::array{"h", "H", "NA", "h2"});
        give_session(request, choices);
        std::strcpy(request.akaau_id, choices.one_in(2) ? "=k" : "");
        std::strcpy(request.method, choices.of(std::array{"AZ", "az", "POST", "PROPERTYOFSIXTEE"}));
        request.time_stamp = choices.of(times);
        request.host_ip = host;
        request.response_code = choices.of(codes);
        const std::string url = choices.of(directories) + choices.text(letters, max_url);
        request.url = texts.emplace_back(url + std::string(2, '\0')).data();
        const size_t query = url.find_first_of("?#;");
        request.ignore_query_flag = ignore_query_flag != 0 && query != std::string::npos;
        request.url_len = static_cast<int>(request.ignore_query_flag ? query + 1 : url.size());
        if (choices.one_in(2)) {
            const std::string& prefix = choices.of(prefixes);
            const std::string start = (prefix.empty() ? "" : prefix + host);
            request.redirect_url =
                texts.emplace_back(start + "/" + choices.text(letters, max_url)).data();
        }
    }
    if (choices.one_in(3)) { // as single logs mostly are
        std::stable_sort(requests.begin(), requests.end(), [](const alInfo& a, const alInfo& b) {
            return a.time_stamp < b.time_stamp;
        });
    }
    return requests;
}

void expect_plain_form(unsigned seed, size_t count, std::string_view letters, size_t max_url) {
    Choices choices(seed);
    std::deque<std::string> texts;
    std::vector<alInfo> records = random_requests(choices, count, letters, max_url, texts);
    const Outcome expected = plain_unique_urls(records);
    EXPECT_EQ(make_unique_urls(records, choices), expected);
}

} // namespace

TEST(UniqueUrls, AgreeWithThePlainFormInAllSettings) {
    for (unsigned settings = 0; settings < 32; ++settings) {
        for (const size_t count : {0U, 1U, 2U, 10U, 400U}) {
            SCOPED_TRACE(testing::Message() << "settings " << settings << " count " << count);
            run_in_child([&] {
                session_mode = settings & 1 ? SESSION_MODE_COOKIE : SESSION_MODE_CLIENT_IP;
                ignore_query_flag = settings >> 1 & 1;
                dump_query_flag = settings >> 2 & 1;
                auto_redirect_flag = settings >> 3 & 1;
                ignore_non_session_urls = settings >> 4 & 1;
                expect_plain_form(settings, count, "abB?;#|\xe4\x01", 3);
            });
        }
    }
}

// Sessions with more redirects than are remembered, and more URLs than the first table holds.
TEST(UniqueUrls, AgreeWithThePlainFormBeyondTheFirstTable) {
    run_in_child([] {
        ignore_query_flag = 1;
        expect_plain_form(11, 30'000, "0123456789;", 5);
    });
}
