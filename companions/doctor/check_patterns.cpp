#include "companions/doctor/check_patterns.h"

#include "base/file_exists.h"
#include "cache/input_copies.h"
#include "companions/doctor/input_file.h"
#include "companions/doctor/near_word.h"
#include "companions/doctor/observed_file.h"
#include "companions/doctor/pattern_reach.h"
#include "companions/doctor/pattern_traps.h"
#include "companions/doctor/value_findings.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/paths.h"
#include "tools/driver/run_inputs.h"
#include "tools/patterns/pattern_columns.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_lines.h"
#include "tools/patterns/pattern_regex.h"
#include "tools/patterns/pattern_tables.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <map>
#include <string>
#include <strings.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

constexpr const char* url_form =
    "active|TYPE|METHOD|any|TRANSACTION|HOST|any|POST-DATA|PATTERN, with na where there is nothing "
    "to say";
constexpr const char* filter_form =
    "active|METHOD|any|HOST|PATTERN, with na where there is nothing to say";

struct PatternPlace {
    std::string file;
    int line;
};

struct TrapText {
    Severity severity;
    const char* id;
    const char* meaning;
};

// By kind.
constexpr TrapText trap_texts[] = {
    {Severity::warning, "question-mark-operator",
     "A ? makes the character before it optional and is not matched itself."},
    {Severity::note, "dot-operator", "A dot between letters takes any character, not only a dot."},
    {Severity::warning, "dot-star",
     "A star alone is any text; the dot before it asks for one more character."},
    {Severity::warning, "star-after-set",
     "A star is any text: it does not repeat what stands in the brackets."},
    {Severity::warning, "escaped-star",
     "A star is always written as any text first, so that this takes dots and no star."},
    {Severity::warning, "behind-the-cut",
     "IGNORE_URL_QUERY_PARAM is on: URLs are cut at the first ?, # or ; and end in a star there, "
     "so that this pattern fits none."},
    {Severity::warning, "no-star-at-the-cut",
     "IGNORE_URL_QUERY_PARAM is on: URLs that are cut here end in a star, which the pattern has to "
     "match as well."},
    {Severity::warning, "no-slash-at-start",
     "The pattern has to match the whole URL, which begins with a slash."},
};

// Looks at the patterns of both files.
class PatternCheck {
  public:
    explicit PatternCheck(Findings& findings) : findings_(findings) {}

    void read(const char* name, void (*load)(const char*), const char* form) {
        FileFindings own(findings_, replay_profile_file_path(name));
        if (!file_exists(own.file().c_str())) {
            own.add(Severity::error, "patterns-missing", 0, "",
                    "The replay profile lacks this file, of which a run makes a copy first: it "
                    "fails.",
                    "Put an empty file there.");
            return;
        }
        const InputForm input = check_input_file(own);
        if (!input.is_readable || input.is_utf16) {
            return;
        }
        dots_ = {};
        read_observed([&] { load_pattern_file(name, load); },
                      [&](const ReadLine& line) { look_at(own, line, form); });
        report_dots(own);
    }

    void look_at_tables() {
        sort_pattern_tables();
        for (const auto& [entry, taker] : find_unreached_entries()) {
            const PatternPlace& place = places_.at(entry->url_ptrn_string);
            const PatternPlace& taker_place = places_.at(taker->url_ptrn_string);
            const bool is_same = std::strcmp(entry->url_ptrn_string, taker->url_ptrn_string) == 0;
            findings_.push_back(
                {"unreachable", Severity::warning, place.file, place.line, entry->url_ptrn_string,
                 fmt::format("No URL can reach this pattern: {} is tried first and takes all of "
                             "them.",
                             is_same ? fmt::format("the same one of line {}", taker_place.line)
                                     : fmt::format("{}, line {}, whose text comes first in byte "
                                                   "order,",
                                                   taker->url_ptrn_string, taker_place.line)),
                 "Make the other pattern narrower, or take this one out."});
        }
    }

    std::vector<HostOfPattern> take_hosts() { return std::move(hosts_); }

  private:
    // Dots that are operators stand in most pattern files, so that one finding tells of them all.
    struct Dots {
        int count;
        int first_line;
        std::string first_pattern;
        std::string likely;
    };

    void look_at(FileFindings& own, const ReadLine& line, const char* form) {
        if (line.has(ObservedKind::line_cut)) {
            add_cut_line_finding(own, line.number, pattern_line_size - 1);
        }
        for (const LineRemark& remark : line.remarks) {
            look_at_remark(own, line, remark);
        }
        switch (line.outcome.kind) {
        case ObservedKind::unknown_type:
            report_word(own, line, "unknown-type", {"main", "inline", "MAIN_WITHOUT_TX"},
                        "There is no such type of pattern; the line does not count.");
            break;
        case ObservedKind::inactive:
            look_at_status(own, line);
            break;
        case ObservedKind::taken:
            look_at_pattern(own, line);
            break;
        default:
            report_failure(own, line, form);
        }
    }

    static void look_at_remark(FileFindings& own, const ReadLine& line, const LineRemark& remark) {
        const auto warn = [&](const char* id, const char* meaning, const char* cure) {
            own.add(Severity::warning, id, line.number, remark.text, meaning, cure);
        };
        if (remark.kind == ObservedKind::empty_column) {
            warn("empty-column",
                 "An empty column is passed over, so that those after it count for others.",
                 "Write na in it.");
        } else if (remark.kind == ObservedKind::text_not_read) {
            warn("rest-ignored",
                 "The line has more columns than are read: a | ends a pattern, too.",
                 "Write a dot for a | in a URL; of alternatives, each in a line of its own.");
        } else if (remark.kind == ObservedKind::text_cut) {
            warn("method-cut", "A method is cut after 16 characters.", "Write the method.");
        } else if (remark.kind == ObservedKind::spacing_kept &&
                   remark.text.find('\t') != std::string::npos) {
            warn("tab-in-value", "The tab belongs to the pattern, and no URL holds one.",
                 "Take it out.");
        }
    }

    static void report_word(FileFindings& own, const ReadLine& line, const char* id,
                            const std::vector<std::string>& words, const char* meaning) {
        const std::string near = nearest_word(line.outcome.text, words);
        own.add(Severity::warning, id, line.number, line.outcome.text, meaning,
                near.empty() ? fmt::format("Write {}.", fmt::join(words, " or "))
                             : fmt::format("Write {} if that is meant.", near));
    }

    // Any other word but "active" turns a pattern off, which is mostly meant.
    static void look_at_status(FileFindings& own, const ReadLine& line) {
        if (strcasecmp(line.outcome.text.c_str(), "inactive") != 0 &&
            !nearest_word(line.outcome.text, {"active"}).empty()) {
            report_word(own, line, "unknown-status", {"active"},
                        "This is not the word active, so that the line does not count.");
        }
    }

    // Of the first refused patterns, since each may take a while.
    std::string place_of_fault(const std::string& pattern) {
        constexpr int most_placed = 20;
        return placed_faults_++ < most_placed ? find_refused_place(pattern) : "";
    }

    void report_failure(FileFindings& own, const ReadLine& line, const char* form) {
        if (line.failure.empty()) {
            return;
        }
        const std::string fails = line.failure + ": a run fails.";
        if (line.outcome.kind == ObservedKind::pattern_not_compiled) {
            own.add(Severity::error, "pattern-refused", line.number, line.outcome.text,
                    fmt::format("{}{}. {}", why_not_compiled(line.outcome.text.c_str()),
                                place_of_fault(line.outcome.text), fails),
                    "Write a backslash before what stands for itself: one of ( ) [ { ? + | ^ $.");
        } else if (line.outcome.kind == ObservedKind::post_data_missing) {
            own.add(Severity::error, "post-data-missing", line.number, line.outcome.text, fails,
                    "Put the file there, or write NA.");
        } else {
            own.add(Severity::error, "too-few-columns", line.number, line.outcome.text, fails,
                    fmt::format("Write {}.", form));
        }
    }

    // The last entry of the table that the line has gone into.
    static const UPInfo& entry_of(const ReadLine& line) {
        const std::string& type = line.outcome.name;
        const PatternKind kind = type == "filter"            ? PATTERN_FILTER
                                 : type == "inline"          ? PATTERN_INLINE
                                 : type == main_pattern_type ? PATTERN_MAIN
                                                             : PATTERN_MAIN_WITHOUT_TX;
        return pattern_tables[kind].entries[pattern_tables[kind].total - 1];
    }

    void look_at_pattern(FileFindings& own, const ReadLine& line) {
        const UPInfo& entry = entry_of(line);
        places_[entry.url_ptrn_string] = {own.file(), line.number};
        for (const PatternTrap& trap : find_traps(entry.url_ptrn_string, ignore_query_flag != 0)) {
            report_trap(own, line.number, entry.url_ptrn_string, trap);
        }
        if (std::strcmp(entry.host, na_string) != 0) {
            hosts_.push_back({own.file(), line.number, entry.host});
        }
        if (!equal_ignoring_case(entry.txn_name, na_string)) {
            look_at_transaction(own, line.number, entry.txn_name);
        }
    }

    void report_trap(FileFindings& own, int line, const std::string& pattern,
                     const PatternTrap& trap) {
        const TrapText& text = trap_texts[static_cast<size_t>(trap.kind)];
        if (trap.kind == TrapKind::dot_operator) {
            if (dots_.count++ == 0) {
                dots_ = {1, line, pattern, trap.likely};
            }
            return;
        }
        own.add(text.severity, text.id, line, pattern, text.meaning,
                fmt::format("Write {} if that is meant.", trap.likely));
    }

    void report_dots(FileFindings& own) const {
        if (dots_.count > 0) {
            const TrapText& text = trap_texts[static_cast<size_t>(TrapKind::dot_operator)];
            own.add(text.severity, text.id, dots_.first_line, dots_.first_pattern,
                    fmt::format("{} Lines like this: {}.", text.meaning, dots_.count),
                    fmt::format("Write {} if that is meant.", dots_.likely));
        }
    }

    void look_at_transaction(FileFindings& own, int line, const std::string& name) {
        const auto [earlier, is_new] = line_of_transaction_.emplace(name, line);
        if (!is_new) {
            own.add(Severity::warning, "transaction-twice", line, name,
                    fmt::format("Line {} gives this name to another pattern, too; the URLs of both "
                                "count for one transaction.",
                                earlier->second),
                    "Give each of them a name of its own, unless this is meant.");
        }
    }

    Findings& findings_;
    std::vector<HostOfPattern> hosts_;
    int placed_faults_ = 0;
    std::unordered_map<const char*, PatternPlace> places_; // by the text that an entry owns
    std::map<std::string, int> line_of_transaction_;
    Dots dots_ = {};
};

} // namespace

std::vector<HostOfPattern> check_patterns(Findings& findings) {
    PatternCheck check(findings);
    check.read(filter_patterns_name, save_filter_url_pattern, filter_form);
    check.read(url_patterns_name, save_url_pattern, url_form);
    check.look_at_tables();
    return check.take_hosts();
}
