#pragma once

#include "tools/patterns/pattern_automaton.h"
#include "tools/patterns/pattern_index.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

// The entry of the pattern tables that decides what a URL is.
struct DecidingEntry {
    PatternKind kind;
    int32_t index; // into the kind's table; no_pattern: none fits, and there is no kind
};

// Finds the patterns that fit URLs. An entry fits when its pattern covers the whole URL, its method
// is "NA" or the URL's (ignoring case), and its host "NA" or the URL's.
//
// The index is shared; each thread has a matcher of its own, which keeps the automata that its URLs
// have asked for, in about 64 MB at most, or 32 KB a pattern if that is more.
class PatternMatcher {
  public:
    // The index must stay where it is while the matcher is used.
    explicit PatternMatcher(const PatternIndex& index);

    // The first fitting entry of the first table of filter, inline, main and main without
    // transaction that has one.
    DecidingEntry find(const char* url, const char* method, const char* host);

    // All fitting entries: the one that decides, and behind it those that would decide one after
    // the other if the ones before were not there.
    std::vector<DecidingEntry> find_all(const char* url, const char* method, const char* host);

    // Index of the first fitting entry of a table, or no_pattern. As the debug log tells of it, all
    // patterns of the table are tried one after the other up to that entry, by the library, too.
    int32_t get_url_pattern_idx(PatternKind kind, const char* url, const char* method,
                                const char* host);

  private:
    using Group = PatternIndex::Group;
    using GroupNumber = PatternIndex::GroupNumber;

    template <typename Visit> void visit_candidates(std::string_view url, const Visit& visit);
    void collect_candidates(std::string_view url);
    void add_candidates(PatternIndex::GramNumber gram);
    bool covers(GroupNumber number, std::string_view url);
    PatternAutomaton& automaton_of(GroupNumber number);

    const PatternIndex& index_;
    size_t memory_of_automaton_;
    std::vector<std::unique_ptr<PatternAutomaton>> automata_; // of each group; null: not asked for
    uint64_t url_number_ = 0;
    std::vector<uint64_t> url_of_gram_;   // of each gram the URL in which it was met last
    std::vector<uint64_t> url_of_group_;  // of each group the one for which it was a candidate last
    std::vector<GroupNumber> candidates_; // of the URL at work
};
