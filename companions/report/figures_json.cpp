#include "companions/report/figures_json.h"

#include "companions/common/shown_text.h"
#include "companions/report/wall_clock.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json time_as_json(WallSeconds time) {
    return {{"time", time}, {"text", wall_text(time)}};
}

Json time_or_null(const std::optional<WallSeconds>& time) {
    return time ? time_as_json(*time) : Json();
}

Json peak_as_json(const PeakStep& peak) {
    return peak.count == 0
               ? Json()
               : Json{{"count", peak.count}, {"time", peak.start}, {"text", wall_text(peak.start)}};
}

Json scenario_as_json(const ScenarioFigures& figures) {
    Json logs = Json::array();
    for (const LogFile& log : figures.logs) {
        logs.push_back({{"path", valid_utf8(log.path)},
                        {"bytes", log.bytes},
                        {"is_body_file", log.is_body_file}});
    }
    return {{"name", valid_utf8(figures.scenario)},
            {"replay_profile", valid_utf8(figures.replay_profile)},
            {"log_type", figures.log_type},
            {"session_mode", figures.session_mode},
            {"are_queries_cut", figures.are_queries_cut},
            {"logs", std::move(logs)}};
}

Json paths_as_json(const std::vector<std::string>& paths) {
    Json texts = Json::array();
    for (const std::string& path : paths) {
        texts.push_back(valid_utf8(path));
    }
    return texts;
}

Json freshness_as_json(const Freshness& freshness) {
    constexpr const char* names[] = {"current", "none", "older", "of_other_inputs",
                                     "being_written"};
    return {{"results", names[static_cast<size_t>(freshness.state)]},
            {"newer_inputs", paths_as_json(freshness.newer_inputs)},
            {"other_inputs", paths_as_json(freshness.other_inputs)},
            {"lacks_query_list", freshness.lacks_query_list},
            {"directory", valid_utf8(freshness.directory)}};
}

Json funnel_as_json(const Funnel& funnel) {
    const Funnel::BadLines& bad = funnel.bad_lines;
    return {{"lines", funnel.lines},
            {"blank", funnel.blank},
            {"comments", funnel.comments},
            {"requests", funnel.requests()},
            {"bad", funnel.bad},
            {"before_period", funnel.before_period},
            {"after_period", funnel.after_period},
            {"outside_period", funnel.outside_period()},
            {"beyond_waiting_limit", funnel.beyond_waiting_limit},
            {"loaded", funnel.loaded},
            {"redirect_follow_ups", funnel.redirect_follow_ups},
            {"without_session", funnel.without_session},
            {"counted", funnel.counted},
            {"inline_left_out", funnel.inline_left_out},
            {"filtered", funnel.filtered},
            {"inline_listed", funnel.inline_listed},
            {"main_with_transaction", funnel.main_with_transaction},
            {"main_without_transaction", funnel.main_without_transaction},
            {"no_pattern", funnel.no_pattern},
            {"bad_lines",
             {{"unclosed_field", bad.unclosed_field},
              {"too_few_fields", bad.too_few_fields},
              {"invalid_client_address", bad.invalid_client_address},
              {"invalid_request_line", bad.invalid_request_line},
              {"invalid_time", bad.invalid_time},
              {"missing_fields", bad.missing_fields}}},
            {"adds_up", funnel.adds_up()},
            {"summary", funnel.summary}};
}

Json outlying_as_json(const OutlyingLines& lines) {
    return lines.lines == 0 ? Json()
                            : Json{{"lines", lines.lines},
                                   {"first", time_as_json(lines.first)},
                                   {"last", time_as_json(lines.last)}};
}

Json over_time_as_json(const LoadOverTime& load) {
    Json responses = Json::object();
    for (size_t i = 0; i < status_class_count; ++i) {
        responses[status_class_names[i]] = load.responses[i];
    }
    return {{"step_seconds", load.step_seconds},
            {"start", load.start},
            {"start_text", wall_text(load.start)},
            {"steps", load.requests.size()},
            {"peak", load.peak ? Json(*load.peak) : Json()},
            {"requests", load.requests},
            {"main_requests", load.main_requests},
            {"sessions_begun", load.sessions_begun},
            {"sessions_at_work", load.sessions_at_work},
            {"responses", std::move(responses)},
            {"lines_far_before", outlying_as_json(load.before)},
            {"lines_far_after", outlying_as_json(load.after)}};
}

Json distribution_as_json(const Distribution& values) {
    Json bins = Json::array();
    for (const Bin& bin : values.bins) {
        bins.push_back({bin.from, bin.to, bin.count});
    }
    return {{"count", values.count},  {"mean", values.mean}, {"median", values.median},
            {"p90", values.p90},      {"p99", values.p99},   {"largest", values.largest},
            {"bins", std::move(bins)}};
}

Json sessions_as_json(const SessionFigures& sessions) {
    return {{"count", sessions.count},
            {"with_one_request", sessions.with_one_request},
            {"peak_at_work", peak_as_json(sessions.peak_at_work)},
            {"requests", distribution_as_json(sessions.requests)},
            {"length_seconds", distribution_as_json(sessions.length)},
            {"gap_seconds", distribution_as_json(sessions.gaps)},
            {"page_gap_seconds", distribution_as_json(sessions.page_gaps)}};
}

Json share_as_json(const TrafficShare& part) {
    return {{"name", valid_utf8(part.name)},
            {"requests", part.requests},
            {"urls", part.urls},
            {"share", part.share}};
}

Json shares_as_json(const std::vector<TrafficShare>& parts) {
    Json list = Json::array();
    for (const TrafficShare& part : parts) {
        list.push_back(share_as_json(part));
    }
    return list;
}

Json transaction_as_json(const TransactionFigures& transaction) {
    Json examples = Json::array();
    for (const UrlExample& example : transaction.examples) {
        examples.push_back({{"method", valid_utf8(example.method)},
                            {"host", valid_utf8(example.host)},
                            {"url", valid_utf8(example.url)},
                            {"requests", example.requests}});
    }
    Json json = share_as_json(transaction);
    json["peak_minute"] = peak_as_json(transaction.peak_minute);
    json["examples"] = std::move(examples);
    return json;
}

Json mix_as_json(const TrafficMix& mix) {
    Json transactions = Json::array();
    for (const TransactionFigures& transaction : mix.transactions) {
        transactions.push_back(transaction_as_json(transaction));
    }
    return {{"transactions", std::move(transactions)},
            {"without_transaction", transaction_as_json(mix.without_transaction)},
            {"hosts", shares_as_json(mix.hosts)},
            {"methods", shares_as_json(mix.methods)},
            {"post_without_body",
             {{"urls", mix.post_without_body}, {"requests", mix.post_without_body_requests}}}};
}

Json to_set_as_json(const ScenarioFigures& figures) {
    const LoadTestSettings& to_set = figures.to_set;
    const auto rate = [](double mean, const PeakStep& most) {
        return Json{{"mean", mean}, {"most", peak_as_json(most)}};
    };
    Json shares = Json::array();
    for (const TransactionFigures& transaction : figures.mix.transactions) {
        shares.push_back(
            {{"transaction", valid_utf8(transaction.name)}, {"share", transaction.share}});
    }
    const Distribution& think_time = figures.sessions.page_gaps;
    return {
        {"sessions_per_minute", rate(to_set.sessions_per_minute, to_set.most_sessions_a_minute)},
        {"requests_per_minute", rate(to_set.requests_per_minute, to_set.most_requests_a_minute)},
        {"main_requests_per_minute",
         rate(to_set.main_requests_per_minute, to_set.most_main_requests_a_minute)},
        {"concurrent_sessions", peak_as_json(figures.sessions.peak_at_work)},
        {"think_time_seconds", {{"median", think_time.median}, {"mean", think_time.mean}}},
        {"transaction_shares", std::move(shares)}};
}

std::string as_ascii(const Json& json) {
    constexpr int one_line = -1;
    constexpr bool in_ascii = true;
    return json.dump(one_line, ' ', in_ascii);
}

std::string escape_less_than(const std::string& json) {
    std::string escaped;
    escaped.reserve(json.size() + json.size() / 64);
    size_t begin = 0;
    for (size_t at = 0; (at = json.find('<', begin)) != std::string::npos; begin = at + 1) {
        escaped.append(json, begin, at - begin).append("\\u003c");
    }
    return escaped.append(json, begin);
}

// As JSON in ASCII. Most texts need no second look.
void append_text(std::string& json, std::string_view text) {
    const bool is_plain = std::all_of(text.begin(), text.end(), [](char c) {
        return c >= ' ' && c <= '~' && c != '"' && c != '\\' && c != '<';
    });
    if (is_plain) {
        json.append(1, '"').append(text).append(1, '"');
    } else {
        json += escape_less_than(as_ascii(valid_utf8(text)));
    }
}

void append_text_or_null(std::string& json, std::string_view text) {
    if (text.empty()) {
        json += "null";
    } else {
        append_text(json, text);
    }
}

void append_row(std::string& json, const ListedUrl& url) {
    constexpr const char* kinds[] = {"\"main\"", "\"main_without_transaction\"", "\"inline\""};
    json += '[';
    append_text(json, url.method);
    json += ',';
    append_text(json, url.host);
    json += ',';
    append_text(json, url.url);
    json.append(1, ',').append(kinds[static_cast<size_t>(url.kind)]);
    json += url.is_filtered ? ",true," : ",false,";
    append_text_or_null(json, url.transaction);
    json.append(1, ',').append(std::to_string(url.requests)).append(1, ',');
    append_text_or_null(json, url.body_file);
    json += ',';
    append_text_or_null(json, url.pattern);
    json += ']';
}

// Appends items with commas between them, each by `append`.
template <typename Items, typename Append>
void append_list(std::string& json, const Items& items, const Append& append) {
    json += '[';
    for (size_t i = 0; i < items.size(); ++i) {
        json += i == 0 ? "" : ",";
        append(json, items[i]);
    }
    json += ']';
}

// Rows as arrays: a hundred thousand objects would name each column as often.
void append_urls(std::string& json, const std::vector<ListedUrl>& urls) {
    json += R"("urls":{"columns":["method","host","url","type","filtered","transaction",)"
            R"("requests","body_file","pattern"],"rows":)";
    append_list(json, urls, append_row);
    json += '}';
}

void append_queries(std::string& json, const ScenarioFigures& figures) {
    constexpr const char* states[] = {"not_cut", "not_wanted", "left_out", "listed"};
    const auto append_query = [](std::string& out, const QueryCount& query) {
        out += '[';
        append_text(out, query.query);
        out.append(1, ',').append(std::to_string(query.requests)).append(1, ']');
    };
    json.append(R"("queries":{"state":")").append(states[static_cast<size_t>(figures.query_state)]);
    json += R"(","of_urls":)";
    append_list(json, figures.queries, [&](std::string& out, const UrlQueries& queries) {
        out += R"({"url":)" + std::to_string(queries.url) + R"(,"different":)" +
               std::to_string(queries.different) + R"(,"most_frequent":)";
        append_list(out, queries.most_frequent, append_query);
        out += '}';
    });
    json += '}';
}

} // namespace

std::string figures_as_json(const ScenarioFigures& figures) {
    const Json json = {
        {"format", 1},
        {"scenario", scenario_as_json(figures)},
        {"freshness", freshness_as_json(figures.freshness)},
        {"funnel", funnel_as_json(figures.funnel)},
        {"period",
         {{"start", time_or_null(figures.period.start)},
          {"end", time_or_null(figures.period.end)}}},
        {"first_request", time_or_null(figures.first_request)},
        {"last_request", time_or_null(figures.last_request)},
        {"over_time", over_time_as_json(figures.over_time)},
        {"sessions", sessions_as_json(figures.sessions)},
        {"response_time_microseconds",
         figures.response_times ? distribution_as_json(*figures.response_times) : Json()},
        {"mix", mix_as_json(figures.mix)},
        {"to_set", to_set_as_json(figures)}};
    std::string text = escape_less_than(as_ascii(json));
    text.back() = ','; // the members that follow are long, and not built as values first
    constexpr size_t usual_row = 128;
    text.reserve(text.size() + usual_row * figures.urls.size());
    append_urls(text, figures.urls);
    text += ',';
    append_queries(text, figures);
    text += '}';
    return text;
}
