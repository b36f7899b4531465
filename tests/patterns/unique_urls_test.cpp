#include "tools/patterns/unique_urls.h"

#include "tests/patterns/numbered_requests.h"
#include "tests/patterns/plain_redirects.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/patterns/request_selection.h"
#include "tools/patterns/session_order.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <tuple>

namespace {

struct Request {
    std::string session; // cookie or address, by session_mode; empty: none
    std::string secondary_cookie;
    uint64_t time;
    std::string method;
    std::string host;
    std::string url;
    int code;
    std::optional<std::string> location;
};

// What comes out: the table, a line an entry, the query lines and the counters, one text each.
using Outcome = std::array<std::string, 3>;

struct CountedRequest {
    std::string cut_url;
    std::string upper_method;
    std::string query; // full URL of a cut one
    const Request* request;

    auto key() const { return std::tie(cut_url, upper_method, request->host); }
};

std::string row(const std::string& method, const std::string& host, uint64_t count,
                const std::string& url, int64_t offset) {
    return method + "|" + host + "|" + std::to_string(count) + "|" + url + "|" +
           std::to_string(offset) + "\n";
}

std::string counters(uint64_t redirected, uint64_t non_session, uint64_t with_secondary_cookie) {
    return std::to_string(redirected) + " " + std::to_string(non_session) + " " +
           std::to_string(with_secondary_cookie);
}

std::string plain_collapse(std::vector<CountedRequest> counted, std::string& queries) {
    std::stable_sort(counted.begin(), counted.end(),
                     [](const auto& a, const auto& b) { return a.key() < b.key(); });
    std::string table;
    for (auto first = counted.begin(); first != counted.end();) {
        const auto end = std::find_if(
            first, counted.end(), [&](const auto& other) { return other.key() != first->key(); });
        const bool is_cut = !first->query.empty();
        const bool is_dumped = is_cut && dump_query_flag != 0;
        table += row(first->request->method, first->request->host,
                     static_cast<uint64_t>(end - first), first->cut_url + (is_cut ? "*" : ""),
                     is_dumped ? static_cast<int64_t>(queries.size()) : -1);
        for (; first != end; ++first) {
            queries += is_dumped ? first->query + "\n" : "";
        }
    }
    return table;
}

Outcome plain_unique_urls(std::vector<Request> requests) {
    std::stable_sort(requests.begin(), requests.end(), [](const Request& a, const Request& b) {
        return std::tie(a.session, a.time) < std::tie(b.session, b.time);
    });
    uint64_t redirected = 0;
    uint64_t non_session = 0;
    uint64_t with_secondary_cookie = 0;
    std::string session;
    PlainRedirects locations;
    std::vector<CountedRequest> counted;
    for (const Request& request : requests) {
        bool is_follow_up = false;
        if (request.session.empty()) {
            ++non_session;
            with_secondary_cookie +=
                session_mode == SESSION_MODE_COOKIE && !request.secondary_cookie.empty();
            if (ignore_non_session_urls != 0) {
                continue;
            }
        } else if (auto_redirect_flag != 0) {
            if (request.session != session) {
                locations.clear();
                session = request.session;
            }
            is_follow_up = locations.take(request.host, request.url);
            redirected += is_follow_up;
            const bool redirects =
                request.code == 301 || request.code == 302 || request.code == 307;
            if (redirects && request.location) {
                locations.remember(*request.location);
            }
        }
        const size_t query =
            ignore_query_flag != 0 ? request.url.find_first_of("?#;") : std::string::npos;
        const bool is_cut = query != std::string::npos;
        if (!is_follow_up) {
            counted.push_back({is_cut ? request.url.substr(0, query + 1) : request.url,
                               request.method == "get" ? "GET" : request.method,
                               is_cut ? request.url : "", &request});
        }
    }
    std::string queries;
    const std::string table = plain_collapse(std::move(counted), queries);
    return {table, queries, counters(redirected, non_session, with_secondary_cookie)};
}

Outcome make_unique_urls(const std::vector<Request>& requests) {
    std::vector<alInfo> records(requests.size());
    std::deque<std::string> urls;
    for (size_t i = 0; i < requests.size(); ++i) {
        const Request& request = requests[i];
        alInfo& record = records[i];
        if (session_mode == SESSION_MODE_COOKIE) {
            std::strcpy(record.jsession_id, request.session.c_str());
        } else {
            record.client_ip = static_cast<uint32_t>(std::atoi(request.session.c_str()));
        }
        std::strcpy(record.akaau_id, request.secondary_cookie.c_str());
        record.time_stamp = request.time;
        std::strcpy(record.method, request.method.c_str());
        record.host_ip = request.host.c_str();
        record.url = urls.emplace_back(request.url + std::string(2, '\0')).data();
        record.response_code = request.code;
        record.redirect_url =
            request.location ? const_cast<char*>(request.location->c_str()) : nullptr;
        const size_t query = request.url.find_first_of("?#;");
        record.ignore_query_flag = ignore_query_flag != 0 && query != std::string::npos;
        record.url_len =
            static_cast<int>(record.ignore_query_flag ? query + 1 : request.url.size());
    }
    al_info_array = records.data();
    g_valid_request = records.size();

    const TemporaryDirectory directory;
    directory.write("query_url.list", "of an earlier run");
    QueryList query_list(directory.path());
    Choices choices(21);
    const RequestNumbers numbers = number_requests(records, choices);
    make_url_pattern_list(order_by_session(al_info_array, numbers), numbers, query_list);
    EXPECT_EQ(std::filesystem::exists(directory.path("query_url.list")),
              dump_query_flag != 0 && ignore_query_flag != 0);

    std::string table;
    for (int i = 0; i < url_pattern_count; ++i) {
        const UrlInfo& entry = url_pattern[i];
        table += row(entry.method, entry.host_hdr, entry.count, entry.url, entry.query_url_offset);
    }
    return {table, directory.read("query_url.list"),
            counters(g_redirected_req, g_total_non_session_req,
                     g_total_non_session_with_secondary_cookie)};
}

std::vector<Request> random_requests(Choices& choices, size_t count, std::string_view letters,
                                     size_t max_url) {
    const std::string sessions[] = {"", "1", "2", "3", "4"};
    const std::string methods[] = {"GET", "get", "POST", "PROPERTYOFSIXTEE"};
    const std::string hosts[] = {"h", "H", "NA", "h2"};
    const int codes[] = {200, 301, 302, 303, 307, 308};
    const std::string prefixes[] = {"", "http://", "HTTPS://"};
    std::vector<Request> requests(count);
    for (Request& request : requests) {
        const auto url = [&] { return "/" + choices.text(letters, max_url); };
        request = {choices.of(sessions), choices.one_in(2) ? "=k" : "",
                   choices.below(20),    choices.of(methods),
                   choices.of(hosts),    url(),
                   choices.of(codes),    std::nullopt};
        if (choices.one_in(2)) {
            const std::string& prefix = choices.of(prefixes);
            request.location = prefix + (prefix.empty() ? "" : choices.of(hosts)) + url();
        }
    }
    return requests;
}

} // namespace

TEST(UniqueUrls, AgreeWithThePlainFormInAllSettings) {
    Choices choices(10);
    for (unsigned settings = 0; settings < 32; ++settings) {
        const auto requests = random_requests(choices, 400, "abB?;#|", 3);
        SCOPED_TRACE("settings " + std::to_string(settings));
        run_in_child([&] {
            session_mode = settings & 1 ? SESSION_MODE_COOKIE : SESSION_MODE_CLIENT_IP;
            ignore_query_flag = settings >> 1 & 1;
            dump_query_flag = settings >> 2 & 1;
            auto_redirect_flag = settings >> 3 & 1;
            ignore_non_session_urls = settings >> 4 & 1;
            EXPECT_EQ(make_unique_urls(requests), plain_unique_urls(requests));
        });
    }
}

TEST(UniqueUrls, AgreeWithThePlainFormBeyondTheFirstTable) {
    Choices choices(11);
    const auto requests = random_requests(choices, 30'000, "0123456789;", 5);
    run_in_child([&] {
        ignore_query_flag = 1;
        EXPECT_EQ(make_unique_urls(requests), plain_unique_urls(requests));
    });
}
