#include "companions/doctor/init/init_report.h"

#include "companions/common/shown_text.h"
#include "companions/common/text_table.h"
#include "companions/doctor/findings_output.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>

namespace {

constexpr size_t max_rows = 5;
constexpr size_t name_width = 40;
constexpr size_t max_logs = 10;

double percent(double share) {
    return share * 100;
}

void print_scores(FILE* stream, const std::vector<LayoutScore>& scores) {
    TextTable table({{"fits", Alignment::right}, {"layout"}, {"why other lines do not"}});
    for (size_t i = 0; i < scores.size() && i < max_rows; ++i) {
        table.add_row({fmt::format("{:.0f} %", percent(scores[i].share())), scores[i].layout.name,
                       main_reason(scores[i])});
    }
    fmt::print(stream, "\n{}", table.text());
}

std::string fields_of(const LogLayout& layout) {
    std::string text;
    for (int position = 1; position <= layout.field_count(); ++position) {
        for (size_t kind = 0; kind < layout.positions.size(); ++kind) {
            if (layout.positions[kind] == position) {
                text += fmt::format("{}{} {}", text.empty() ? "" : ", ",
                                    al_required_fields[kind].name, position);
            }
        }
    }
    return text;
}

void print_cookies(FILE* stream, const InitReport& report) {
    TextTable table({{"cookie"},
                     {"requests", Alignment::right},
                     {"values", Alignment::right},
                     {"values a client", Alignment::right},
                     {"set by responses", Alignment::right},
                     {"score", Alignment::right}});
    const std::vector<CookieUse>& cookies = report.evidence.cookies;
    for (size_t i = 0; i < cookies.size() && i < max_rows; ++i) {
        const CookieUse& use = cookies[i];
        const double share =
            static_cast<double>(use.requests) / static_cast<double>(report.evidence.requests);
        table.add_row({shown_text(use.name, name_width), fmt::format("{:.0f} %", percent(share)),
                       std::to_string(use.values), fmt::format("{:.1f}", use.values_for_client()),
                       std::to_string(use.set_count), fmt::format("{:.2f}", use.score)});
    }
    if (!table.empty()) {
        fmt::print(stream, "\n{}", table.text());
    }
}

void print_logs(FILE* stream, const InitReport& report) {
    const std::vector<std::string>& logs = report.plan.logs;
    fmt::print(stream, "{} log{}:\n", logs.size(), logs.size() == 1 ? "" : "s");
    for (size_t i = 0; i < logs.size() && i < max_logs; ++i) {
        fmt::print(stream, "  {}\n", shown_text(logs[i]));
    }
    if (logs.size() > max_logs) {
        fmt::print(stream, "  and {} more\n", logs.size() - max_logs);
    }
}

void print_choice(FILE* stream, const InitReport& report) {
    print_logs(stream, report);
    fmt::print(stream, "\n{}\n  {}\n", shown_text(report.layout.reason),
               fields_of(report.plan.layout));
    fmt::print(stream, "{}\n", shown_text(report.plan.session_reason));
    print_cookies(stream, report);
}

void print_written(FILE* stream, const InitReport& report) {
    fmt::print(stream, "\nWritten:\n");
    for (const std::string& path : report.written) {
        fmt::print(stream, "  {}\n", shown_text(path));
    }
}

const char* name_of(SessionKey key) {
    return key == SessionKey::cookie           ? "cookie"
           : key == SessionKey::client_address ? "client_ip"
                                               : "none";
}

nlohmann::json json_of(const LayoutScore& score) {
    return {{"layout", score.layout.name},
            {"lines", score.line_count},
            {"fitting", score.fitting_count},
            {"reason", main_reason(score)}};
}

nlohmann::json json_of(const LogLayout& layout) {
    nlohmann::json fields = nlohmann::json::object();
    for (size_t kind = 0; kind < layout.positions.size(); ++kind) {
        if (layout.positions[kind] != 0) {
            fields[al_required_fields[kind].name] = layout.positions[kind];
        }
    }
    return {{"name", layout.name}, {"log_type", layout.log_type}, {"fields", fields}};
}

nlohmann::json json_of(const CookieUse& use) {
    return {
        {"name", valid_utf8(use.name)}, {"requests", use.requests},          {"values", use.values},
        {"clients", use.clients},       {"set_by_responses", use.set_count}, {"score", use.score}};
}

template <typename List> nlohmann::json json_list(const List& list) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& item : list) {
        array.push_back(json_of(item));
    }
    return array;
}

nlohmann::json json_list(const std::vector<std::string>& texts) {
    nlohmann::json array = nlohmann::json::array();
    for (const std::string& text : texts) {
        array.push_back(valid_utf8(text));
    }
    return array;
}

} // namespace

void print_report(FILE* stream, const InitReport& report) {
    if (report.layout.layout) {
        print_choice(stream, report);
        print_written(stream, report);
        fmt::print(stream, "\n");
    } else if (!report.layout.scores.empty()) {
        fmt::print(stream, "No scenario is written, since no layout is clear.\n");
        print_scores(stream, report.layout.scores);
        fmt::print(stream, "\n");
    }
    print_findings(stream, report.findings);
    if (!report.command.empty()) {
        fmt::print(stream, "\nRun it:\n\n    {}\n", shown_text(report.command));
        fmt::print(stream, "\nThen see what is left out, what patterns do with the URLs, and the "
                           "load:\n\n");
        for (const std::string& command : report.later_commands) {
            fmt::print(stream, "    {}\n", shown_text(command));
        }
    }
}

nlohmann::json report_as_json(const InitReport& report) {
    nlohmann::json json = findings_as_json(report.findings);
    json["scenario"] = valid_utf8(report.scenario);
    json["scores"] = json_list(report.layout.scores);
    json["cookies"] = json_list(report.evidence.cookies);
    json["logs"] = json_list(report.plan.logs);
    json["written"] = json_list(report.written);
    json["command"] = valid_utf8(report.command);
    if (report.layout.layout) {
        json["layout"] = json_of(report.plan.layout);
        json["session"] = {{"key", name_of(report.plan.session.key)},
                           {"cookie", report.plan.session.cookie},
                           {"secondary", report.plan.session.secondary}};
    }
    return json;
}
