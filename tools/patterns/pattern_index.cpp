#include "tools/patterns/pattern_index.h"

#include "tools/patterns/pattern_search.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t gram_size = sizeof(uint32_t);
constexpr size_t filter_size = 1 << 16;

uint32_t gram_at(const char* text) {
    uint32_t gram;
    std::memcpy(&gram, text, gram_size);
    return gram;
}

size_t filter_place(uint32_t gram) {
    return gram * 0x9e3779b1U >> 16;
}

// Calls `use` for every four characters in a row that the pattern requires.
template <typename Use> void for_each_gram(const PatternShape& shape, const Use& use) {
    for (const std::string& text : shape.required_texts()) {
        for (size_t at = 0; at + gram_size <= text.size(); ++at) {
            use(gram_at(text.data() + at));
        }
    }
}

} // namespace

PatternIndex::PatternIndex(const UPInfo* pattern_table, int pattern_count)
    : pattern_table_(pattern_table), gram_filter_(filter_size, false) {
    add_groups(pattern_count);
    choose_grams();
}

void PatternIndex::add_groups(int pattern_count) {
    for (int i = 0; i < pattern_count; ++i) {
        if (pattern_table_[i].parent_seq == i) {
            groups_.push_back({i, i, PatternShape(pattern_table_[i])});
        }
        groups_.back().end_entry = i + 1;
    }
}

void PatternIndex::choose_grams() {
    std::unordered_map<Gram, int> frequency;
    for (const Group& group : groups_) {
        for_each_gram(group.shape, [&](Gram gram) { ++frequency[gram]; });
    }
    for (GroupNumber number = 0; number < groups_.size(); ++number) {
        int lowest = 0;
        Gram rarest = 0;
        for_each_gram(groups_[number].shape, [&](Gram gram) {
            if (lowest == 0 || frequency[gram] < lowest) {
                lowest = frequency[gram];
                rarest = gram;
            }
        });
        if (lowest == 0) {
            groups_without_gram_.push_back(number);
        } else {
            groups_of_gram_[rarest].push_back(number);
            gram_filter_[filter_place(rarest)] = true;
        }
    }
}

int32_t PatternIndex::find(const char* url, const char* method, const char* host) {
    const size_t length = std::strlen(url);
    collect_candidates(url, length);
    for (const GroupNumber number : candidates_) {
        const Group& group = groups_[number];
        const int32_t entry = fitting_entry(group, method, host);
        if (entry != no_pattern && group.shape.covers(url, length)) {
            return entry;
        }
    }
    return no_pattern;
}

// In table order, so that the first that fits is the one to give.
void PatternIndex::collect_candidates(const char* url, size_t length) {
    candidates_ = groups_without_gram_;
    for (size_t at = 0; at + gram_size <= length; ++at) {
        const Gram gram = gram_at(url + at);
        if (!gram_filter_[filter_place(gram)]) {
            continue;
        }
        const auto found = groups_of_gram_.find(gram);
        if (found != groups_of_gram_.end()) {
            candidates_.insert(candidates_.end(), found->second.begin(), found->second.end());
        }
    }
    std::sort(candidates_.begin(), candidates_.end());
    candidates_.erase(std::unique(candidates_.begin(), candidates_.end()), candidates_.end());
}

// The method and host are tested before the pattern, which costs more; it is one pattern for all of
// them.
int32_t PatternIndex::fitting_entry(const Group& group, const char* method,
                                    const char* host) const {
    for (int32_t i = group.first_entry; i < group.end_entry; ++i) {
        if (fits_method_and_host(pattern_table_[i], method, host)) {
            return i;
        }
    }
    return no_pattern;
}
