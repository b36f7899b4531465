#include "base/result_file.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/parse/cookie_values.h"
#include "tools/parse/field_splitter.h"
#include "tools/parse/request_numbers.h"
#include "tools/parse/timestamps.h"
#include "tools/patterns/pattern_index.h"
#include "tools/patterns/pattern_regex.h"
#include "tools/patterns/pattern_search.h"
#include "tools/patterns/pattern_tables.h"
#include "tools/urls/request_collapse.h"
#include "tools/urls/session_order.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

// The steps that a run spends its time in, each by itself.

namespace {

const std::string log_line =
    R"(192.0.2.17 - - [10/Oct/2025:13:55:36 +0000] 8599 )"
    R"("GET /shop/product/view.jsp?category=curtain&item=10983&view=carpets HTTP/1.1" 200 70889 )"
    R"("https://www.example.com/shop/index.jsp" )"
    R"("Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 Safari/605.1.15" )"
    R"("text/html;charset=UTF-8" )"
    R"("lang=en_US; akaau=1759708800~id=8E9ABEC9BBF1B65D41CD4E93AB272E59; JSESSIONID=41FD71B73203EA21" )"
    R"("-" "www.example.com" "-")";

// Lines whose fields differ in length, as those of a log do.
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
    std::string line;
    LineText fields[max_al_fields];
    int64_t bytes = 0;
    size_t next = 0;
    for (auto _ : state) {
        line = lines[next++ % lines.size()];
        bytes += static_cast<int64_t>(line.size());
        benchmark::DoNotOptimize(get_al_fields({line.data(), line.size()}, fields, max_al_fields));
    }
    state.SetBytesProcessed(bytes);
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

void cut_cookie_value(benchmark::State& state) {
    const char* header =
        "lang=en_US; akaau=1759708800~id=8E9ABEC9BBF1B65D41CD4E93AB272E59; JSESSIONID=41FD71B73203";
    char value[max_cookie_length];
    for (auto _ : state) {
        benchmark::DoNotOptimize(get_cookie_value(header, "JSESSIONID", 11, value));
    }
}
BENCHMARK(cut_cookie_value);

// A sorted table of wildcard patterns that fit none of the URLs below.
std::vector<UPInfo> make_patterns(int count, std::vector<std::string>& texts) {
    texts.reserve(static_cast<size_t>(count));
    std::vector<UPInfo> patterns;
    for (int i = 0; i < count; ++i) {
        texts.push_back("/other" + std::to_string(i) + "/*.jsp");
        UPInfo pattern = {};
        pattern.host = const_cast<char*>(na_string);
        std::strcpy(pattern.method, na_string);
        pattern.url_ptrn_string = texts.back().data();
        zvr_compile_regex(texts.back().c_str(), 1, &pattern.url_ptrn_regex);
        patterns.push_back(pattern);
    }
    fill_seq_in_url_pattern_table(patterns.data(), count);
    return patterns;
}

constexpr const char* unmatched_url = "/shop/product/view.jsp?category=curtain&item=10983";

void match_patterns_by_index(benchmark::State& state) {
    std::vector<std::string> texts;
    const auto patterns = make_patterns(static_cast<int>(state.range(0)), texts);
    PatternIndex index(patterns.data(), static_cast<int>(patterns.size()));
    for (auto _ : state) {
        benchmark::DoNotOptimize(index.find(unmatched_url, "GET", "www.example.com"));
    }
}
BENCHMARK(match_patterns_by_index)->ArgName("patterns")->Arg(50)->Arg(5000);

void match_patterns_by_engine(benchmark::State& state) {
    std::vector<std::string> texts;
    const auto patterns = make_patterns(static_cast<int>(state.range(0)), texts);
    for (auto _ : state) {
        benchmark::DoNotOptimize(get_url_pattern_idx(patterns.data(),
                                                     static_cast<int>(patterns.size()),
                                                     unmatched_url, "GET", "www.example.com"));
    }
}
BENCHMARK(match_patterns_by_engine)->ArgName("patterns")->Arg(50);

// Requests of 20 a session, in time order, over a tenth as many URLs.
class Requests {
  public:
    explicit Requests(uint32_t count) : records_(count), urls_(count / 10 + 1) {
        std::mt19937 random(1);
        for (size_t i = 0; i < urls_.size(); ++i) {
            urls_[i] = "/shop/product/view-" + std::to_string(i) + ".jsp";
        }
        for (uint32_t i = 0; i < count; ++i) {
            alInfo& record = records_[i];
            record.time_stamp = i / 100;
            std::snprintf(record.jsession_id, sizeof record.jsession_id, "%016x",
                          static_cast<unsigned>(random() % (count / 20 + 1)) * 2654435761U);
            std::strcpy(record.method, "GET");
            record.host_ip = "www.example.com";
            std::string& url = urls_[random() % urls_.size()];
            record.url = url.data();
            record.url_len = static_cast<int>(url.size());
        }
    }

    RequestNumbers number() const {
        RequestNumbers numbers;
        for (const alInfo& record : records_) {
            numbers.add(record);
        }
        numbers.finish();
        return numbers;
    }

    std::vector<alInfo>& records() { return records_; }

  private:
    std::vector<alInfo> records_;
    std::vector<std::string> urls_;
};

constexpr uint32_t request_count = 1'000'000;

void number_requests(benchmark::State& state) {
    const Requests requests(request_count);
    for (auto _ : state) {
        benchmark::DoNotOptimize(requests.number().url_count());
    }
    state.SetItemsProcessed(state.iterations() * request_count);
}
BENCHMARK(number_requests)->Unit(benchmark::kMillisecond);

void order_requests_by_session(benchmark::State& state) {
    Requests requests(request_count);
    const RequestNumbers numbers = requests.number();
    for (auto _ : state) {
        benchmark::DoNotOptimize(order_by_session(requests.records().data(), numbers));
    }
    state.SetItemsProcessed(state.iterations() * request_count);
}
BENCHMARK(order_requests_by_session)->Unit(benchmark::kMillisecond);

void collapse_and_sort_urls(benchmark::State& state) {
    Requests requests(request_count);
    const RequestNumbers numbers = requests.number();
    al_info_array = requests.records().data();
    const SessionOrder order = order_by_session(al_info_array, numbers);
    for (auto _ : state) {
        benchmark::DoNotOptimize(collapse_requests(order.requests, numbers.url_count(), false));
    }
    al_info_array = nullptr;
    state.SetItemsProcessed(state.iterations() * request_count);
}
BENCHMARK(collapse_and_sort_urls)->Unit(benchmark::kMillisecond);

void write_row(benchmark::State& state) {
    constexpr const char* name = "zvr_micro_benchmark.rows";
    const OwnDirectory directory(std::filesystem::temp_directory_path());
    ResultFile file;
    if (!file.create(directory, name)) {
        state.SkipWithError("no temporary file");
        return;
    }
    for (auto _ : state) {
        file.append("NO|MAIN|GET|");
        file.append(unmatched_url);
        file.append('|');
        file.append_unsigned(123456);
        file.append("|NA|www.example.com|");
        file.append_signed(-1);
        file.append("|NA|NA\n");
    }
    file.close();
    directory.remove(name);
}
BENCHMARK(write_row)->Iterations(1'000'000);

} // namespace

BENCHMARK_MAIN();
