#pragma once

#include "tools/patterns/pattern_shape.h"
#include "tools/patterns/pattern_tables.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

// Finds the first fitting entry of a sorted pattern table without a look at most of its patterns: a
// pattern is only tested when the URL holds four characters in a row that the pattern requires, the
// rarest among the table's patterns. Gives what get_url_pattern_idx gives, without its debug lines.
class PatternIndex {
  public:
    // The table must stay where it is while the index is used.
    PatternIndex(const UPInfo* pattern_table, int pattern_count);

    // Index of the first entry that fits, or no_pattern.
    int32_t find(const char* url, const char* method, const char* host);

  private:
    // Entries with one pattern text.
    struct Group {
        int first_entry;
        int end_entry;
        PatternShape shape;
    };
    using Gram = uint32_t; // four characters
    using GroupNumber = uint32_t;

    void add_groups(int pattern_count);
    void choose_grams();
    void collect_candidates(const char* url, size_t length);
    int32_t fitting_entry(const Group& group, const char* method, const char* host) const;

    const UPInfo* pattern_table_;
    std::vector<Group> groups_;                    // in table order
    std::vector<GroupNumber> groups_without_gram_; // to be tested for every URL
    std::unordered_map<Gram, std::vector<GroupNumber>> groups_of_gram_;
    std::vector<bool> gram_filter_;       // by hash of a gram: false when no group has it
    std::vector<GroupNumber> candidates_; // of the URL at work
};
