#include "companions/doctor/pattern_reach.h"

#include "companions/doctor/pattern_inclusion.h"
#include "tools/patterns/pattern_automaton.h"
#include "tools/patterns/pattern_index.h"
#include "tools/patterns/pattern_lines.h"
#include "tools/patterns/pattern_program.h"
#include "tools/patterns/pattern_regex.h"
#include "tools/patterns/pattern_syntax.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace {

// Adds a text that the tree matches to `word`, in which repeated parts stand at least once.
void add_example(const SyntaxNode& node, std::string& word) {
    constexpr size_t longest = 4096;
    if (word.size() > longest) {
        return;
    }
    switch (node.kind) {
    case SyntaxKind::bytes: {
        constexpr unsigned char rare = '~'; // tells any text from the texts of other patterns
        const size_t first = node.bytes._Find_next(0);
        word += static_cast<char>(node.bytes.test(rare) ? rare : first);
        break;
    }
    case SyntaxKind::sequence:
        for (const SyntaxNode& part : node.parts) {
            add_example(part, word);
        }
        break;
    case SyntaxKind::choice:
        add_example(node.parts.front(), word);
        break;
    case SyntaxKind::repetition:
        for (uint32_t i = 0; i < std::max(node.least, 1U) && word.size() <= longest; ++i) {
            add_example(node.parts.front(), word);
        }
        break;
    default:
        break;
    }
}

bool fits_all_of(const UPInfo& taker, const UPInfo& entry) {
    const auto is_any = [](const char* text) { return std::strcmp(text, na_string) == 0; };
    return (is_any(taker.method) || equal_ignoring_case(taker.method, entry.method)) &&
           (is_any(taker.host) || std::strcmp(taker.host, entry.host) == 0);
}

class ReachSearch {
  public:
    std::vector<UnreachedEntry> find() {
        patterns_.resize(index_.groups().size());
        last_look_.resize(patterns_.size(), unseen);
        for (Number number = 0; number < patterns_.size(); ++number) {
            find_in_group(number);
        }
        return std::move(found_);
    }

  private:
    using Number = PatternIndex::GroupNumber;
    using Group = PatternIndex::Group;
    static constexpr Number unseen = static_cast<Number>(-1);

    // What is known of the pattern of a group, once it was asked for.
    struct Pattern {
        PatternProgram program;
        std::unique_ptr<PatternAutomaton> automaton;
        std::string example;
    };

    const Group& group(Number number) const { return index_.groups()[number]; }

    Pattern& pattern_of(Number number) {
        constexpr size_t memory_bound = 8192;
        std::unique_ptr<Pattern>& pattern = patterns_[number];
        if (pattern == nullptr) {
            const char* const text = group(number).entry(group(number).first_entry).url_ptrn_string;
            const PatternSyntax syntax = parse_pattern(encode_stars(text));
            pattern = std::make_unique<Pattern>();
            pattern->program = compile_program(syntax.root);
            pattern->automaton = std::make_unique<PatternAutomaton>(pattern->program, memory_bound);
            add_example(syntax.root, pattern->example);
        }
        return *pattern;
    }

    // Equal patterns take each other's URLs; then come the earlier patterns of the table.
    void find_in_group(Number number) {
        const Group& own = group(number);
        std::vector<const UPInfo*> open;
        for (int i = own.first_entry; i < own.end_entry; ++i) {
            if (!is_taken_in(own, i, own.entry(i))) {
                open.push_back(&own.entry(i));
            }
        }
        if (!own.needs_library && !open.empty() && budget_ > 0) {
            find_takers(number, open);
        }
    }

    // Whether an entry of the group before the one numbered `end` takes all URLs of the entry.
    bool is_taken_in(const Group& takers, int end, const UPInfo& entry) {
        for (int i = takers.first_entry; i < end && budget_ > 0; ++i, --budget_) {
            if (fits_all_of(takers.entry(i), entry)) {
                found_.push_back({&entry, &takers.entry(i)});
                return true;
            }
        }
        return false;
    }

    // Patterns that do not even take the example of this one need not be compared with it.
    void find_takers(Number number, std::vector<const UPInfo*>& open) {
        const std::string example = pattern_of(number).example;
        if (!pattern_of(number).automaton->covers(example)) {
            return; // anchors within the pattern, or a pattern that takes nothing
        }
        for (const Number other : candidates_for(example, number)) {
            Pattern& taker = pattern_of(other);
            budget_ -= std::min(budget_, size_t{1});
            if (open.empty() || !taker.automaton->covers(example) ||
                !may_fit_any(group(other), open) || !takes_all(taker, pattern_of(number))) {
                continue;
            }
            std::erase_if(open, [&](const UPInfo* entry) {
                return is_taken_in(group(other), group(other).end_entry, *entry);
            });
        }
    }

    static bool may_fit_any(const Group& takers, const std::vector<const UPInfo*>& open) {
        for (int i = takers.first_entry; i < takers.end_entry; ++i) {
            if (std::any_of(open.begin(), open.end(), [&](const UPInfo* entry) {
                    return fits_all_of(takers.entry(i), *entry);
                })) {
                return true;
            }
        }
        return false;
    }

    bool takes_all(const Pattern& taker, const Pattern& taken) {
        constexpr size_t most_positions = 2000; // of both, since a set of them is copied each time
        constexpr size_t share = 100'000;
        if (taker.program.positions.size() + taken.program.positions.size() > most_positions) {
            return false;
        }
        size_t own_budget = std::min(budget_, share);
        const size_t before = own_budget;
        const Inclusion inclusion = compare_languages(taker.program, taken.program, own_budget);
        budget_ -= before - own_budget;
        return inclusion == Inclusion::all_taken;
    }

    // Earlier patterns of the same table that may take a URL, in their order.
    std::vector<Number> candidates_for(std::string_view url, Number number) {
        std::vector<Number> candidates;
        const auto add_all = [&](const std::vector<Number>& groups) {
            for (const Number other : groups) {
                if (other >= number) {
                    break; // they are in order
                }
                if (group(other).kind == group(number).kind && !group(other).needs_library &&
                    last_look_[other] != number) {
                    last_look_[other] = number;
                    candidates.push_back(other);
                }
            }
        };
        add_all(index_.groups_without_gram());
        index_.for_each_gram(
            url, [&](PatternIndex::GramNumber gram) { add_all(index_.groups_of(gram)); });
        std::sort(candidates.begin(), candidates.end());
        return candidates;
    }

    PatternIndex index_;
    std::vector<std::unique_ptr<Pattern>> patterns_; // by group
    std::vector<Number> last_look_; // of each group, for which other one it was looked at last
    size_t budget_ = 2'000'000;     // steps of comparisons that are left
    std::vector<UnreachedEntry> found_;
};

} // namespace

std::vector<UnreachedEntry> find_unreached_entries() {
    return ReachSearch().find();
}
