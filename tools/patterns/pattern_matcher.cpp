#include "tools/patterns/pattern_matcher.h"

#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <cstring>
#include <strings.h>
#include <utility>

namespace {

constexpr size_t memory_of_automata = size_t{32} << 20; // for states, and as much for tables
constexpr size_t least_memory_of_automaton = size_t{16} << 10;
constexpr size_t most_memory_of_automaton = size_t{1} << 20;

bool fits_method_and_host(const UPInfo& pattern, const char* method, const char* host) {
    const bool fits_method =
        std::strcmp(pattern.method, na_string) == 0 || strcasecmp(pattern.method, method) == 0;
    return fits_method &&
           (std::strcmp(pattern.host, na_string) == 0 || std::strcmp(pattern.host, host) == 0);
}

// The first entry of the group that takes requests of this method and host, or no_pattern.
int32_t fitting_entry(const PatternIndex::Group& group, const char* method, const char* host) {
    for (int32_t i = group.first_entry; i < group.end_entry; ++i) {
        if (fits_method_and_host(group.entry(i), method, host)) {
            return i;
        }
    }
    return no_pattern;
}

bool covers_by_library(const UPInfo& pattern, std::string_view url) {
    int32_t start;
    int32_t end;
    return zvr_match_regex(url.data(), &pattern.url_ptrn_regex, &start, &end) == 0 && start == 0 &&
           static_cast<size_t>(end) == url.size();
}

} // namespace

PatternMatcher::PatternMatcher(const PatternIndex& index)
    : index_(index),
      memory_of_automaton_(std::clamp(memory_of_automata / (index.groups().size() + 1),
                                      least_memory_of_automaton, most_memory_of_automaton)),
      automata_(index.groups().size()), url_of_gram_(index.gram_count(), 0),
      url_of_group_(index.groups().size(), 0) {}

// Calls `visit` with the groups that may cover the URL, in the order in which they decide, for as
// long as it returns true.
template <typename Visit>
void PatternMatcher::visit_candidates(std::string_view url, const Visit& visit) {
    collect_candidates(url);
    const std::vector<GroupNumber>& others = index_.groups_without_gram();
    auto candidate = candidates_.begin();
    auto other = others.begin();
    bool goes_on = true;
    while (goes_on && (candidate != candidates_.end() || other != others.end())) {
        const bool is_other =
            candidate == candidates_.end() || (other != others.end() && *other < *candidate);
        goes_on = visit(is_other ? *other++ : *candidate++);
    }
}

DecidingEntry PatternMatcher::find(const char* url, const char* method, const char* host) {
    const std::string_view text = url;
    DecidingEntry found = {pattern_kind_count, no_pattern};
    visit_candidates(text, [&](GroupNumber number) {
        const Group& group = index_.groups()[number];
        // The pattern, one for all entries of the group, costs more to test than method and host.
        const int32_t entry = fitting_entry(group, method, host);
        if (entry != no_pattern && covers(number, text)) {
            found = {group.kind, entry};
        }
        return found.index == no_pattern;
    });
    return found;
}

std::vector<DecidingEntry> PatternMatcher::find_all(const char* url, const char* method,
                                                    const char* host) {
    const std::string_view text = url;
    std::vector<DecidingEntry> all;
    visit_candidates(text, [&](GroupNumber number) {
        const Group& group = index_.groups()[number];
        const int32_t first = fitting_entry(group, method, host);
        if (first == no_pattern || !covers(number, text)) {
            return true;
        }
        for (int32_t i = first; i < group.end_entry; ++i) {
            if (fits_method_and_host(group.entry(i), method, host)) {
                all.push_back({group.kind, i});
            }
        }
        return true;
    });
    return all;
}

int32_t PatternMatcher::get_url_pattern_idx(PatternKind kind, const char* url, const char* method,
                                            const char* host) {
    const std::string_view text = url;
    const std::vector<Group>& groups = index_.groups();
    for (GroupNumber number = 0; number < groups.size(); ++number) {
        const Group& group = groups[number];
        if (group.kind != kind) {
            continue;
        }
        const bool covers_by_its_debug_lines =
            covers_by_library(group.entry(group.first_entry), text);
        const bool covers_url =
            group.needs_library ? covers_by_its_debug_lines : covers(number, text);
        const int32_t entry = covers_url ? fitting_entry(group, method, host) : no_pattern;
        if (entry != no_pattern) {
            return entry;
        }
    }
    return no_pattern;
}

// In the order of the groups, so that the first that fits is the one to give.
void PatternMatcher::collect_candidates(std::string_view url) {
    ++url_number_;
    candidates_.clear();
    index_.for_each_gram(url, [this](PatternIndex::GramNumber gram) { add_candidates(gram); });
    std::sort(candidates_.begin(), candidates_.end());
}

void PatternMatcher::add_candidates(PatternIndex::GramNumber gram) {
    if (std::exchange(url_of_gram_[gram], url_number_) == url_number_) {
        return;
    }
    for (const GroupNumber group : index_.groups_of(gram)) {
        if (std::exchange(url_of_group_[group], url_number_) != url_number_) {
            candidates_.push_back(group);
        }
    }
}

bool PatternMatcher::covers(GroupNumber number, std::string_view url) {
    const Group& group = index_.groups()[number];
    if (group.needs_library) {
        return covers_by_library(group.entry(group.first_entry), url);
    }
    const PatternOutline::Verdict verdict = group.outline.test(url);
    return verdict == PatternOutline::Verdict::unknown ? automaton_of(number).covers(url)
                                                       : verdict == PatternOutline::Verdict::covers;
}

PatternAutomaton& PatternMatcher::automaton_of(GroupNumber number) {
    if (automata_[number] == nullptr) {
        const Group& group = index_.groups()[number];
        const std::string encoded = encode_stars(group.entry(group.first_entry).url_ptrn_string);
        automata_[number] = std::make_unique<PatternAutomaton>(
            compile_program(parse_pattern(encoded).root), memory_of_automaton_);
    }
    return *automata_[number];
}
