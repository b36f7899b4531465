#pragma once

#include "tools/patterns/pattern_outline.h"
#include "tools/patterns/pattern_tables.h"
#include "tools/patterns/pattern_texts.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

// The patterns of all tables in the order in which they decide, and by which texts they are found:
// a pattern only needs to be tested when the URL holds four characters in a row that it requires,
// the rarest among the patterns. Nothing is changed once it is made, so threads can share it.
class PatternIndex {
  public:
    // Entries with one pattern text, which follow each other in their table.
    struct Group {
        PatternKind kind;
        int first_entry;
        int end_entry;
        bool needs_library;     // only the C library can match the pattern
        PatternOutline outline; // says nothing of such a pattern

        const UPInfo& entry(int number) const { return pattern_tables[kind].entries[number]; }
    };
    using GroupNumber = uint32_t;
    using GramNumber = uint32_t;

    // Of the tables as they are; they must have been through sort_pattern_tables, and must not
    // change while the index is used.
    PatternIndex();

    const std::vector<Group>& groups() const { return groups_; } // the first that fits decides

    // Groups to be tested for every URL, and those that require a gram, both in order.
    const std::vector<GroupNumber>& groups_without_gram() const { return groups_without_gram_; }
    const std::vector<GroupNumber>& groups_of(GramNumber gram) const {
        return groups_of_gram_[gram];
    }
    size_t gram_count() const { return groups_of_gram_.size(); }

    // Calls `use` with the number of each gram that the URL holds, as often as it holds it.
    template <typename Use> void for_each_gram(std::string_view url, const Use& use) const {
        const auto look_up = [&](Gram gram) {
            if (gram_filter_[filter_place(gram)]) {
                const auto found = gram_numbers_.find(gram);
                if (found != gram_numbers_.end()) {
                    use(found->second);
                }
            }
        };
        Gram gram = 0; // in which the null byte of the start stands already
        for (size_t i = 0; i < url.size(); ++i) {
            gram = next_gram(gram, url[i]);
            if (i + 2 >= gram_size) {
                look_up(gram);
            }
        }
        if (url.size() + 2 >= gram_size) {
            look_up(next_gram(gram, '\0'));
        }
    }

  private:
    using Gram = uint32_t; // four characters
    using Required = std::vector<RequiredTexts>;
    using Frequencies = std::unordered_map<Gram, size_t>;
    static constexpr size_t gram_size = shortest_required_text;
    static_assert(gram_size == sizeof(Gram));

    static Gram next_gram(Gram gram, char c) { return gram << 8 | static_cast<unsigned char>(c); }
    static size_t filter_place(Gram gram) { return gram * 0x9e3779b1U >> 16; }
    template <typename Use> static void for_each_gram_of(const std::string& text, const Use& use);

    std::vector<Required> add_groups();
    void choose_grams(const std::vector<Required>& required_of_group);
    static std::vector<Gram> rarest_grams(const Required& required, const Frequencies& frequencies);
    void add_gram(Gram gram, GroupNumber group);

    std::vector<Group> groups_;
    std::vector<GroupNumber> groups_without_gram_;
    std::unordered_map<Gram, GramNumber> gram_numbers_;
    std::vector<std::vector<GroupNumber>> groups_of_gram_;
    std::vector<bool> gram_filter_; // by hash of a gram: false when no group requires it
};
