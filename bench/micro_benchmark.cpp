// The dearest steps of loading, each by itself, on made-up requests.

#include "base/marked_line.h"
#include "tools/config/field_layout.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/field_splitter.h"
#include "tools/parse/request_interner.h"
#include "tools/parse/timestamps.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

const std::string log_line =
    R"(192.0.2.17 - - [10/Oct/2025:13:55:36 +0000] 8599 )"
    R"("GET /shop/product/view.jsp?category=curtain&item=10983&view=carpets HTTP/1.1" 200 70889 )"
    R"("https://www.example.com/shop/index.jsp" )"
    R"("Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 Safari/605.1.15" )"
    R"("text/html;charset=UTF-8" )"
    R"("lang=en_US; akaau=1759708800~id=8E9ABEC9BBF1B65D41CD4E93AB272E59; JSESSIONID=41FD71B" )"
    R"("-" "www.example.com" "-")";

// Lines whose fields differ in length, as those of a log do: on equal ones the processor foresees
// every branch.
std::vector<std::string> varied_lines() {
    std::mt19937 random(5);
    std::vector<std::string> lines(20000, log_line);
    for (std::string& line : lines) {
        for (size_t at = line.find(' '); at != std::string::npos; at = line.find(' ', at)) {
            const size_t more = random() % 8;
            line.insert(at, more, 'x');
            at += more + 1;
        }
    }
    return lines;
}

void split_fields(benchmark::State& state) {
    const std::vector<std::string> lines = varied_lines();
    LineText fields[max_al_fields];
    size_t next = 0;
    for (auto _ : state) {
        MarkedLine line(lines[next++ % lines.size()], field_quote);
        benchmark::DoNotOptimize(get_al_fields(line.text(), line.marks(), fields, max_al_fields));
    }
}
BENCHMARK(split_fields);

// `seconds_per_time`: how far apart the times of consecutive lines are.
void convert_times(benchmark::State& state) {
    char text[] = "10/Oct/2025:13:55:36 +0000";
    int seconds = 0;
    for (auto _ : state) {
        seconds = (seconds + static_cast<int>(state.range(0))) % 3600;
        text[15] = static_cast<char>('0' + seconds / 600);
        text[16] = static_cast<char>('0' + seconds / 60 % 10);
        benchmark::DoNotOptimize(convert_into_second({text, sizeof text - 1}));
    }
}
BENCHMARK(convert_times)->ArgName("seconds_per_time")->Arg(0)->Arg(61);

// Requests of 20 a session over a tenth as many URLs, whose texts `urls` keeps.
std::vector<alInfo> make_requests(uint32_t count, std::vector<std::string>& urls) {
    std::mt19937 random(1);
    for (uint32_t i = 0; i < count / 10; ++i) {
        urls.push_back("/shop/product/view-" + std::to_string(i) + ".jsp");
    }
    std::vector<alInfo> requests(count);
    for (alInfo& request : requests) {
        std::snprintf(request.jsession_id, sizeof request.jsession_id, "%016x",
                      static_cast<unsigned>(random() % (count / 20)) * 2654435761U);
        std::strcpy(request.method, "GET");
        request.host_ip = "www.example.com";
        std::string& url = urls[random() % urls.size()];
        request.url = url.data();
        request.url_len = static_cast<int>(url.size());
    }
    return requests;
}

void intern_requests(benchmark::State& state) {
    std::vector<std::string> urls;
    const std::vector<alInfo> requests = make_requests(1'000'000, urls);
    for (auto _ : state) {
        RequestInterner interner;
        RequestRows rows;
        for (const alInfo& request : requests) {
            rows.emplace_back();
            interner.add(request.jsession_id,
                         {request.method, request.host_ip, counted_url(request)}, rows);
        }
        interner.finish(rows);
        benchmark::DoNotOptimize(rows.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(requests.size()));
}
BENCHMARK(intern_requests)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
