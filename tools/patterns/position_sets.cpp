#include "tools/patterns/position_sets.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace {

using Action = PatternProgram::Action;

constexpr size_t word_bits = 64;
constexpr size_t followed_without_tables = 4; // for each position; then that has cost as much

// Sets of more than one word have an even number of them, so that the processor can take two at
// once.
size_t words_for(size_t bits) {
    const size_t count = (bits + word_bits - 1) / word_bits;
    return count == 1 ? 1 : (count + 1) / 2 * 2;
}

void add_words(const PositionWord* __restrict words, size_t count, PositionWord* __restrict to) {
    if (count == 1) {
        to[0] |= words[0];
        return;
    }
    for (size_t i = 0; i < count; i += 2) {
        to[i] |= words[i];
        to[i + 1] |= words[i + 1];
    }
}

// Of each instruction whether it leads to the end of the pattern without a byte, at the end of the
// URL. An instruction stands after those that it leads to, apart from the body of a loop; but who
// leaves that at once comes to the loop again.
std::vector<bool> lead_to_finish(const PatternProgram& program, bool is_at_start) {
    std::vector<bool> leads;
    for (const auto& [action, next, other] : program.instructions) {
        const bool goes_on = action == Action::fork || action == Action::need_end ||
                             (action == Action::need_start && is_at_start);
        const bool by_other = action == Action::fork && other < leads.size() && leads[other];
        leads.push_back(action == Action::finish || (goes_on && leads[next]) || by_other);
    }
    return leads;
}

} // namespace

PositionSteps::PositionSteps(const PatternProgram& program, size_t table_bound)
    : program_(program), word_count_(words_for(program.positions.size() + 1)),
      finishing_(word_count_), takes_any_rest_(word_count_),
      class_sets_(word_count_ * program.class_count), table_bound_(table_bound),
      visited_(program.instructions.size(), 0) {
    find_finishing();
    find_class_sets();
    find_takes_any_rest();
}

void PositionSteps::make_start(PositionWord* set) const {
    std::fill_n(set, word_count_, 0);
    set[start_bit() / word_bits] = PositionWord{1} << start_bit() % word_bits;
}

bool PositionSteps::meet(const PositionWord* set, const Set& other) const {
    for (size_t i = 0; i < word_count_; ++i) {
        if ((set[i] & other[i]) != 0) {
            return true;
        }
    }
    return false;
}

void PositionSteps::set_bit(Set& set, size_t bit) const {
    set[bit / word_bits] |= PositionWord{1} << bit % word_bits;
}

void PositionSteps::find_finishing() {
    const std::vector<bool> leads = lead_to_finish(program_, false);
    for (size_t i = 0; i < program_.positions.size(); ++i) {
        if (leads[program_.positions[i].next]) {
            set_bit(finishing_, i);
        }
    }
    if (lead_to_finish(program_, true)[program_.first_instruction]) {
        set_bit(finishing_, start_bit());
    }
}

void PositionSteps::find_class_sets() {
    std::vector<uint8_t> byte_of_class(program_.class_count);
    for (size_t byte = 0; byte < program_.class_of_byte.size(); ++byte) {
        byte_of_class[program_.class_of_byte[byte]] = static_cast<uint8_t>(byte);
    }
    const auto add = [&](size_t byte_class, size_t i) {
        class_sets_[byte_class * word_count_ + i / word_bits] |= PositionWord{1} << i % word_bits;
    };
    for (size_t i = 0; i < program_.positions.size(); ++i) {
        const ByteSet& bytes = program_.byte_sets[program_.positions[i].byte_set];
        if (is_single(bytes)) {
            add(program_.class_of_byte[bytes._Find_first()], i);
            continue;
        }
        for (size_t byte_class = 0; byte_class < byte_of_class.size(); ++byte_class) {
            if (bytes.test(byte_of_class[byte_class])) {
                add(byte_class, i);
            }
        }
    }
}

// A position that takes every byte, may come again right after itself, and may be the last.
void PositionSteps::find_takes_any_rest() {
    Set following(word_count_);
    for (size_t i = 0; i < program_.positions.size(); ++i) {
        const PositionWord bit = PositionWord{1} << i % word_bits;
        if (program_.byte_sets[program_.positions[i].byte_set].all() &&
            (finishing_[i / word_bits] & bit) != 0) {
            std::fill(following.begin(), following.end(), 0);
            add_following(i, following.data());
            takes_any_rest_[i / word_bits] |= following[i / word_bits] & bit;
        }
    }
}

void PositionSteps::build_tables() {
    const size_t max_words = table_bound_ / sizeof(PositionWord);
    has_tables_ = true;
    all_far_.assign(word_count_ * word_count_, 0);
    for (size_t first = 0; first <= start_bit() && has_tables_; first += block_size) {
        std::vector<Set> following(block_size, Set(word_count_));
        for (size_t i = 0; i < block_size && first + i <= start_bit(); ++i) {
            add_following(first + i, following[i].data());
        }
        add_near(first / word_bits, following.data());
        add_far(following.data(), &all_far_[first / word_bits * word_count_]);
        has_tables_ = near_tables_.size() + far_tables_.size() <= max_words;
    }
    if (!has_tables_) {
        tables_are_possible_ = false;
        near_tables_ = {};
        far_ = {};
        far_tables_ = {};
        all_far_ = {};
    }
}

// Takes out of `following` what stands near.
void PositionSteps::add_near(size_t word, Set* following) {
    PositionWord near[block_size][near_words] = {};
    for (size_t i = 0; i < block_size; ++i) {
        near[i][0] = std::exchange(following[i][word], 0);
        near[i][1] = word == 0 ? 0 : std::exchange(following[i][word - 1], 0);
    }
    for (unsigned set = 0; set < sets_per_block; ++set) {
        for (size_t near_word = 0; near_word < near_words; ++near_word) {
            PositionWord all = 0;
            for (size_t i = 0; i < block_size; ++i) {
                all |= (set >> i & 1) != 0 ? near[i][near_word] : 0;
            }
            near_tables_.push_back(all);
        }
    }
}

void PositionSteps::add_far(const Set* following, PositionWord* all_far) {
    for (size_t i = 0; i < block_size; ++i) {
        add_words(following[i].data(), word_count_, all_far);
    }
    const auto is_empty = [&](size_t i) {
        return std::all_of(following, following + block_size,
                           [&](const Set& set) { return set[i] == 0; });
    };
    Block block;
    size_t end_word = word_count_;
    while (end_word > 0 && is_empty(end_word - 1)) {
        --end_word;
    }
    while (block.first_word < end_word && is_empty(block.first_word)) {
        ++block.first_word;
    }
    if (end_word - block.first_word > 1) {
        block.first_word -= block.first_word % 2;
        end_word += end_word % 2;
    }
    block.word_count = end_word - block.first_word;
    block.tables = far_tables_.size();
    for (unsigned set = 0; set < sets_per_block; ++set) {
        for (size_t word = block.first_word; word < end_word; ++word) {
            PositionWord all = 0;
            for (size_t i = 0; i < block_size; ++i) {
                all |= (set >> i & 1) != 0 ? following[i][word] : 0;
            }
            far_tables_.push_back(all);
        }
    }
    far_.push_back(block);
}

bool PositionSteps::step(const PositionWord* from, uint32_t byte_class, PositionWord* to) {
    std::fill_n(to, word_count_, 0);
    if (followed_ >= followed_without_tables * (program_.positions.size() + 1)) {
        build_tables();
        followed_ = 0;
    }
    if (has_tables_) {
        follow_by_tables(from, to);
    } else {
        follow_one_by_one(from, to);
    }
    const PositionWord* of_class = &class_sets_[byte_class * word_count_];
    PositionWord any = 0;
    for (size_t i = 0; i < word_count_; ++i) {
        any |= to[i] &= of_class[i];
    }
    return any != 0;
}

// From the pattern's start, the last position, on. In a row of parts that may all be left out each
// position leads far to the rest of them: what the first ones lead to holds what all others do.
void PositionSteps::follow_by_tables(const PositionWord* from, PositionWord* to) const {
    for (size_t i = word_count_; i-- > 0;) {
        if (from[i] != 0) {
            follow_near(i, from[i], to);
            if (!holds_far(i, to)) {
                follow_far(i, from[i], to);
            }
        }
    }
}

void PositionSteps::follow_near(size_t word, PositionWord from, PositionWord* to) const {
    const PositionWord* tables = &near_tables_[word * blocks_per_word * near_table_size];
    PositionWord here = 0;
    PositionWord before = 0;
    for (; from != 0; from >>= block_size, tables += near_table_size) {
        here |= tables[from % sets_per_block * near_words];
        before |= tables[from % sets_per_block * near_words + 1];
    }
    to[word] |= here;
    if (word != 0) {
        to[word - 1] |= before;
    }
}

void PositionSteps::follow_far(size_t word, PositionWord from, PositionWord* to) const {
    const Block* block = &far_[word * blocks_per_word];
    for (; from != 0; from >>= block_size, ++block) {
        const PositionWord* table =
            &far_tables_[block->tables + from % sets_per_block * block->word_count];
        add_words(table, block->word_count, to + block->first_word);
    }
}

// Whether a set holds all that the positions of a word lead far to.
bool PositionSteps::holds_far(size_t word, const PositionWord* set) const {
    const PositionWord* far = &all_far_[word * word_count_];
    PositionWord missing = 0;
    for (size_t i = 0; i < word_count_; ++i) {
        missing |= far[i] & ~set[i];
    }
    return missing == 0;
}

void PositionSteps::follow_one_by_one(const PositionWord* from, PositionWord* to) {
    ++round_;
    for (size_t i = 0; i < word_count_; ++i) {
        for (PositionWord rest = from[i]; rest != 0; rest &= rest - 1) {
            followed_ += tables_are_possible_ ? 1 : 0;
            const size_t bit = i * word_bits + static_cast<size_t>(std::countr_zero(rest));
            visit_from(bit, to);
        }
    }
}

// In a round of its own.
void PositionSteps::add_following(size_t bit, PositionWord* to) {
    ++round_;
    visit_from(bit, to);
}

void PositionSteps::visit_from(size_t bit, PositionWord* to) {
    const bool is_start = bit == start_bit();
    visit(is_start ? program_.first_instruction : program_.positions[bit].next, is_start, to);
}

// Goes on from an instruction up to those that consume, whose positions it adds to `to`. None is
// visited twice in a round.
void PositionSteps::visit(uint32_t instruction, bool is_at_start, PositionWord* to) {
    to_visit_.push_back(instruction);
    while (!to_visit_.empty()) {
        const uint32_t number = to_visit_.back();
        to_visit_.pop_back();
        if (std::exchange(visited_[number], round_) == round_) {
            continue;
        }
        const auto& [action, next, other] = program_.instructions[number];
        if (action == Action::consume) {
            to[other / word_bits] |= PositionWord{1} << other % word_bits;
        } else if (action == Action::fork) {
            to_visit_.push_back(next);
            to_visit_.push_back(other);
        } else if (action == Action::need_start && is_at_start) {
            to_visit_.push_back(next);
        }
    }
}
