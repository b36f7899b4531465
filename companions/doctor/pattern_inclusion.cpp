#include "companions/doctor/pattern_inclusion.h"

#include "tools/patterns/position_sets.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

// Goes through both patterns at once, over all pairs of places that a URL can lead to in them.
class Comparison {
  public:
    Comparison(const PatternProgram& taker, const PatternProgram& taken)
        : taker_(taker, 0), taken_(taken, 0) {
        // No URL holds a NUL or a line feed.
        std::set<std::pair<uint8_t, uint8_t>> pairs;
        for (size_t byte = 1; byte < taker.class_of_byte.size(); ++byte) {
            if (byte != '\n') {
                pairs.emplace(taker.class_of_byte[byte], taken.class_of_byte[byte]);
            }
        }
        classes_.assign(pairs.begin(), pairs.end());
    }

    Inclusion compare(size_t& budget) {
        Pair start = {Set(taker_.words_per_set()), Set(taken_.words_per_set())};
        taker_.make_start(start.taker.data());
        taken_.make_start(start.taken.data());
        add(std::move(start));
        while (!open_.empty()) {
            const Pair pair = std::move(open_.back());
            open_.pop_back();
            const bool is_taken = taker_.may_finish(pair.taker.data());
            if (taken_.may_finish(pair.taken.data()) && !is_taken) {
                return Inclusion::not_all_taken;
            }
            if (budget < classes_.size()) {
                return Inclusion::not_decided;
            }
            budget -= classes_.size();
            if (!taker_.takes_any_rest(pair.taker.data())) {
                follow(pair);
            }
        }
        return Inclusion::all_taken;
    }

  private:
    using Set = std::vector<PositionWord>;
    struct Pair {
        Set taker;
        Set taken;
    };

    void follow(const Pair& pair) {
        for (const auto& [taker_class, taken_class] : classes_) {
            Pair next = {Set(pair.taker.size()), Set(pair.taken.size())};
            if (taken_.step(pair.taken.data(), taken_class, next.taken.data())) {
                taker_.step(pair.taker.data(), taker_class, next.taker.data());
                add(std::move(next));
            }
        }
    }

    void add(Pair pair) {
        const auto bytes_of = [](const Set& set) {
            return std::string_view(reinterpret_cast<const char*>(set.data()),
                                    set.size() * sizeof(PositionWord));
        };
        std::string key(bytes_of(pair.taker));
        key += bytes_of(pair.taken);
        if (known_.insert(std::move(key)).second) {
            open_.push_back(std::move(pair));
        }
    }

    PositionSteps taker_;
    PositionSteps taken_;
    std::vector<std::pair<uint8_t, uint8_t>> classes_; // of taker and taken, met by some byte
    std::vector<Pair> open_;
    std::unordered_set<std::string> known_;
};

} // namespace

Inclusion compare_languages(const PatternProgram& taker, const PatternProgram& taken,
                            size_t& budget) {
    return Comparison(taker, taken).compare(budget);
}
