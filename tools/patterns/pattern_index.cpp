#include "tools/patterns/pattern_index.h"

#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr size_t filter_size = 1 << 16;

} // namespace

PatternIndex::PatternIndex() : gram_filter_(filter_size, false) {
    choose_grams(add_groups());
}

// Gives what each group requires.
std::vector<PatternIndex::Required> PatternIndex::add_groups() {
    std::vector<Required> required_of_group;
    for (int kind = 0; kind < pattern_kind_count; ++kind) {
        const PatternTable& table = pattern_tables[kind];
        for (int i = 0; i < table.total; ++i) {
            if (table.entries[i].parent_seq == i) {
                const PatternSyntax syntax =
                    parse_pattern(encode_stars(table.entries[i].url_ptrn_string));
                groups_.push_back({static_cast<PatternKind>(kind), i, i, syntax.needs_library,
                                   PatternOutline(syntax)});
                required_of_group.push_back(find_required_texts(syntax));
            }
            groups_.back().end_entry = i + 1;
        }
    }
    return required_of_group;
}

template <typename Use>
void PatternIndex::for_each_gram_of(const std::string& text, const Use& use) {
    Gram gram = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        gram = next_gram(gram, text[i]);
        if (i + 1 >= gram_size) {
            use(gram);
        }
    }
}

void PatternIndex::choose_grams(const std::vector<Required>& required_of_group) {
    Frequencies frequencies;
    for (const Required& required : required_of_group) {
        for (const RequiredTexts& texts : required) {
            for (const std::string& text : texts) {
                for_each_gram_of(text, [&](Gram gram) { ++frequencies[gram]; });
            }
        }
    }
    for (GroupNumber number = 0; number < groups_.size(); ++number) {
        std::vector<Gram> grams = rarest_grams(required_of_group[number], frequencies);
        if (grams.empty()) {
            groups_without_gram_.push_back(number);
        }
        for (const Gram gram : grams) {
            add_gram(gram, number);
        }
    }
}

// For each text of one of the requirements a gram: URLs that hold none of them do not meet it. Of
// several requirements, that whose grams are the rarest together; none when there is none.
std::vector<PatternIndex::Gram> PatternIndex::rarest_grams(const Required& required,
                                                           const Frequencies& frequencies) {
    std::vector<Gram> rarest;
    size_t lowest_sum = std::numeric_limits<size_t>::max();
    for (const RequiredTexts& texts : required) {
        std::vector<Gram> grams;
        size_t sum = 0;
        for (const std::string& text : texts) {
            std::pair<size_t, Gram> least = {std::numeric_limits<size_t>::max(), 0};
            for_each_gram_of(text, [&](Gram gram) {
                least = std::min(least, {frequencies.find(gram)->second, gram});
            });
            grams.push_back(least.second);
            sum += least.first;
        }
        if (sum < lowest_sum) {
            lowest_sum = sum;
            rarest = std::move(grams);
        }
    }
    return rarest;
}

void PatternIndex::add_gram(Gram gram, GroupNumber group) {
    const auto [found, is_new] =
        gram_numbers_.emplace(gram, static_cast<GramNumber>(groups_of_gram_.size()));
    if (is_new) {
        groups_of_gram_.emplace_back();
        gram_filter_[filter_place(gram)] = true;
    }
    groups_of_gram_[found->second].push_back(group);
}
