#include "companions/doctor/patterns_output.h"

#include "companions/common/counted.h"
#include "companions/common/shown_text.h"
#include "companions/common/style.h"
#include "companions/common/text_table.h"

#include <algorithm>
#include <cstring>
#include <fmt/core.h>

namespace {

using nlohmann::json;

constexpr size_t pattern_width = 60;
constexpr size_t url_width = 70;
constexpr size_t most_takers = 3; // named for one pattern

const char* name_of(PatternKind kind) {
    constexpr const char* names[pattern_kind_count] = {"filter", "inline", "main",
                                                       "main_without_tx"};
    return names[kind];
}

const UPInfo& entry_of(PatternKind kind, int32_t index) {
    return pattern_tables[kind].entries[index];
}

const UPInfo& entry_of(const PatternUse& use) {
    return entry_of(use.kind, use.index);
}

std::string file_name(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string place_of(const PatternSource& source) {
    return fmt::format("{}:{}", shown_text(file_name(source.file)), source.line_num);
}

double share(uint64_t part, uint64_t all) {
    return all == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(all);
}

std::string percent(uint64_t part, uint64_t all) {
    return fmt::format("{:.1f} %", share(part, all));
}

std::string counted_hits(const Hits& hits) {
    return counted(hits.urls, "URL") + ", " + counted(hits.requests, "request");
}

// What stands in the pattern's line beside the pattern and asks for something.
std::string conditions_of(const UPInfo& entry) {
    std::string conditions;
    if (std::strcmp(entry.method, na_string) != 0) {
        conditions += shown_text(entry.method);
    }
    if (std::strcmp(entry.host, na_string) != 0) {
        conditions += (conditions.empty() ? "" : " ") + shown_text(entry.host);
    }
    return conditions.empty() ? "any" : conditions;
}

std::string pattern_table(const ShownReport& shown, const PatternSources& sources) {
    TextTable table({{"Kind"},
                     {"Pattern"},
                     {"For"},
                     {"Transaction"},
                     {"URLs", Alignment::right},
                     {"Requests", Alignment::right},
                     {"Share", Alignment::right},
                     {"Stands at"},
                     {"Example"}});
    for (const PatternUse& use : shown.report.patterns) {
        const UPInfo& entry = entry_of(use);
        table.add_row({name_of(use.kind), shown_text(entry.url_ptrn_string, pattern_width),
                       conditions_of(entry), shown_text(entry.txn_name),
                       std::to_string(use.decided.urls), std::to_string(use.decided.requests),
                       percent(use.decided.requests, shown.report.all.requests),
                       place_of(sources.of(use.kind, use.index)),
                       use.examples.empty() ? "" : shown_text(use.examples[0]->url, url_width)});
    }
    return table.text();
}

// The patterns that take what this one fits, the one that takes most requests first.
std::vector<std::pair<size_t, Hits>> takers_of(const PatternUse& use) {
    std::vector<std::pair<size_t, Hits>> takers(use.lost_to.begin(), use.lost_to.end());
    std::stable_sort(takers.begin(), takers.end(), [](const auto& a, const auto& b) {
        return a.second.requests > b.second.requests;
    });
    return takers;
}

std::string takers_text(const PatternUse& use, const std::vector<PatternUse>& patterns,
                        const PatternSources& sources) {
    const auto takers = takers_of(use);
    std::string text;
    for (size_t i = 0; i < std::min(takers.size(), most_takers); ++i) {
        const PatternUse& taker = patterns[takers[i].first];
        text += fmt::format("      {} to {} at {}\n", counted_hits(takers[i].second),
                            shown_text(entry_of(taker).url_ptrn_string, pattern_width),
                            place_of(sources.of(taker.kind, taker.index)));
    }
    if (takers.size() > most_takers) {
        text +=
            fmt::format("      and to {}\n", counted(takers.size() - most_takers, "more pattern"));
    }
    return text;
}

std::string never_deciding(const ShownReport& shown, const PatternSources& sources) {
    std::string text;
    for (const PatternUse& use : shown.report.patterns) {
        if (use.decided.urls == 0 && use.lost.urls == 0) {
            text += fmt::format("  {}: {} {}\n", place_of(sources.of(use.kind, use.index)),
                                name_of(use.kind),
                                shown_text(entry_of(use).url_ptrn_string, pattern_width));
        }
    }
    return text;
}

std::string losing(const ShownReport& shown, const PatternSources& sources) {
    std::string text;
    for (const PatternUse& use : shown.report.patterns) {
        if (use.lost.urls != 0) {
            text += fmt::format("  {}: {} {} loses\n{}", place_of(sources.of(use.kind, use.index)),
                                name_of(use.kind),
                                shown_text(entry_of(use).url_ptrn_string, pattern_width),
                                takers_text(use, shown.report.patterns, sources));
        }
    }
    return text;
}

std::string group_table(const ShownReport& shown, size_t limit) {
    TextTable table({{"Requests", Alignment::right},
                     {"Share", Alignment::right},
                     {"URLs", Alignment::right},
                     {"Pattern that takes them"},
                     {"Example"}});
    const size_t count = std::min(limit, shown.untaken_groups.size());
    for (size_t i = 0; i < count; ++i) {
        const UrlGroup& group = shown.untaken_groups[i];
        table.add_row({std::to_string(group.hits.requests),
                       percent(group.hits.requests, shown.report.all.requests),
                       std::to_string(group.hits.urls), shown_text(group.pattern, pattern_width),
                       shown_text(group.example->url, url_width)});
    }
    const size_t left = shown.untaken_groups.size() - count;
    return table.text() + (left == 0 ? "" : fmt::format("and {}\n", counted(left, "more group")));
}

void add_part(std::string& text, const std::string& heading, const std::string& part) {
    if (!part.empty()) {
        text += "\n" + Style(stdout).heading(heading) + "\n" + part;
    }
}

json as_json(const Hits& hits) {
    return {{"urls", hits.urls}, {"requests", hits.requests}};
}

json as_json(const PatternSource& source) {
    return {{"file", valid_utf8(source.file)}, {"line", source.line_num}};
}

json as_json(const UrlInfo& url) {
    return {{"method", valid_utf8(url.method)},
            {"host", valid_utf8(url.host_hdr)},
            {"url", valid_utf8(url.url)},
            {"requests", url.count}};
}

json identity_as_json(PatternKind kind, int32_t index, const PatternSources& sources) {
    const UPInfo& entry = entry_of(kind, index);
    json identity = as_json(sources.of(kind, index));
    identity["kind"] = name_of(kind);
    identity["pattern"] = valid_utf8(entry.url_ptrn_string);
    identity["method"] = valid_utf8(entry.method);
    identity["host"] = valid_utf8(entry.host);
    identity["transaction"] = valid_utf8(entry.txn_name);
    return identity;
}

json use_as_json(const PatternUse& use, const ShownReport& shown, const PatternSources& sources) {
    json object = identity_as_json(use.kind, use.index, sources);
    object["decided"] = as_json(use.decided);
    object["lost"] = as_json(use.lost);
    object["share"] = share(use.decided.requests, shown.report.all.requests);
    object["examples"] = json::array();
    for (const UrlInfo* url : use.examples) {
        object["examples"].push_back(as_json(*url));
    }
    object["lost_to"] = json::array();
    for (const auto& [number, hits] : takers_of(use)) {
        const PatternUse& taker = shown.report.patterns[number];
        json lost = identity_as_json(taker.kind, taker.index, sources);
        lost.update(as_json(hits));
        object["lost_to"].push_back(lost);
    }
    return object;
}

std::string why(const PatternTrial& trial) {
    switch (trial.outcome) {
    case TrialOutcome::decides:
        return "fits, and decides";
    case TrialOutcome::fits_too:
        return "would fit, but is not tried any more";
    case TrialOutcome::other_method:
        return fmt::format("is for method {}",
                           shown_text(entry_of(trial.kind, trial.index).method));
    case TrialOutcome::other_host:
        return fmt::format("is for host {}", shown_text(entry_of(trial.kind, trial.index).host));
    case TrialOutcome::covers_part:
        return fmt::format("covers only the part {}", shown_text(trial.part, url_width));
    default:
        return "does not cover it";
    }
}

const char* id_of(TrialOutcome outcome) {
    constexpr const char* ids[] = {"decides",    "fits_too",    "other_method",
                                   "other_host", "covers_part", "covers_nothing"};
    return ids[static_cast<int>(outcome)];
}

bool is_decided(const std::vector<PatternTrial>& trials) {
    return std::any_of(trials.begin(), trials.end(), [](const PatternTrial& trial) {
        return trial.outcome == TrialOutcome::decides;
    });
}

} // namespace

std::string report_as_text(const ShownReport& shown, const PatternSources& sources, size_t limit) {
    const PatternReport& report = shown.report;
    Hits untaken;
    for (const UrlInfo* url : report.untaken) {
        untaken.add(*url);
    }
    std::string text =
        fmt::format("{}; no pattern takes {} ({})\n", counted_hits(report.all),
                    counted_hits(untaken), percent(untaken.requests, report.all.requests));
    if (!report.patterns.empty()) {
        add_part(text, "Patterns in the order in which they decide", pattern_table(shown, sources));
    }
    add_part(text, "Patterns that fit no URL", never_deciding(shown, sources));
    add_part(text, "Patterns whose URLs others take", losing(shown, sources));
    if (!report.untaken.empty()) {
        add_part(text, "URLs that no pattern takes", group_table(shown, limit));
    }
    return text;
}

json report_as_json(const ShownReport& shown, const PatternSources& sources, size_t limit) {
    json object = {{"all", as_json(shown.report.all)},
                   {"patterns", json::array()},
                   {"untaken_groups", json::array()},
                   {"untaken_group_count", shown.untaken_groups.size()}};
    for (const PatternUse& use : shown.report.patterns) {
        object["patterns"].push_back(use_as_json(use, shown, sources));
    }
    const size_t count = std::min(limit, shown.untaken_groups.size());
    for (size_t i = 0; i < count; ++i) {
        const UrlGroup& group = shown.untaken_groups[i];
        json entry = as_json(group.hits);
        entry["pattern"] = valid_utf8(group.pattern);
        entry["example"] = as_json(*group.example);
        object["untaken_groups"].push_back(entry);
    }
    return object;
}

std::string trials_as_text(const TriedUrl& url, const std::vector<PatternTrial>& trials,
                           const PatternSources& sources) {
    TextTable table({{"Kind"}, {"Pattern"}, {"For"}, {"Stands at"}, {"Outcome"}});
    for (const PatternTrial& trial : trials) {
        const UPInfo& entry = entry_of(trial.kind, trial.index);
        table.add_row({name_of(trial.kind), shown_text(entry.url_ptrn_string, pattern_width),
                       conditions_of(entry), place_of(sources.of(trial.kind, trial.index)),
                       why(trial)});
    }
    const std::string tried = fmt::format("{} {} of host {}", shown_text(url.method),
                                          shown_text(url.url), shown_text(url.host));
    return tried + "\n" + table.text() +
           (is_decided(trials) ? "" : "No pattern takes it: MAIN, without a transaction\n");
}

json trials_as_json(const TriedUrl& url, const std::vector<PatternTrial>& trials,
                    const PatternSources& sources) {
    json object = {{"method", valid_utf8(url.method)},
                   {"host", valid_utf8(url.host)},
                   {"url", valid_utf8(url.url)},
                   {"trials", json::array()}};
    for (const PatternTrial& trial : trials) {
        json entry = identity_as_json(trial.kind, trial.index, sources);
        entry["outcome"] = id_of(trial.outcome);
        entry["part"] = valid_utf8(trial.part);
        object["trials"].push_back(entry);
    }
    return object;
}
