#pragma once

#include "tools/patterns/pattern_program.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Sets of the positions of a program, as bits in words of 64: where reading may have come to. The
// bit after those of the positions stands for the start, where nothing has been read yet.
using PositionWord = uint64_t;

// Finds the positions that a byte leads to: by tables, at the cost of words_per_set() words for
// each byte and four positions at most, or of few where what follows stands near, or where
// positions lead far to the same ones; or, for programs whose tables would be too large, by a look
// at each instruction. Not for several threads.
class PositionSteps {
  public:
    // The program must stay while this object is used. `table_bound`: greatest size of the tables
    // in bytes; 0: none.
    PositionSteps(const PatternProgram& program, size_t table_bound);

    size_t words_per_set() const { return word_count_; }
    void make_start(PositionWord* set) const;

    // Puts into `to` where the positions of `from` lead by a byte of this class. Returns whether
    // that is anywhere.
    bool step(const PositionWord* from, uint32_t byte_class, PositionWord* to);

    // Whether the pattern may have been gone through where the URL ends.
    bool may_finish(const PositionWord* set) const { return meet(set, finishing_); }

    // Whether it has been gone through whatever the rest of the URL is.
    bool takes_any_rest(const PositionWord* set) const { return meet(set, takes_any_rest_); }

  private:
    // The tables of four positions in a row: for each set of them, what follows far from them, in
    // the words in which there is anything.
    struct Block {
        size_t first_word = 0;
        size_t word_count = 0;
        size_t tables = 0; // index into far_tables_
    };
    using Set = std::vector<PositionWord>;
    static constexpr size_t block_size = 4;
    static constexpr size_t sets_per_block = 1 << block_size;
    static constexpr size_t blocks_per_word = 64 / block_size;
    static constexpr size_t near_words = 2;
    static constexpr size_t near_table_size = sets_per_block * near_words;

    bool meet(const PositionWord* set, const Set& other) const;
    void set_bit(Set& set, size_t bit) const;
    size_t start_bit() const { return program_.positions.size(); }
    void find_finishing();
    void find_takes_any_rest();
    void find_class_sets();
    void build_tables();
    void add_near(size_t word, Set* following);
    void add_far(const Set* following, PositionWord* all_far);
    void add_following(size_t bit, PositionWord* to);
    void visit_from(size_t bit, PositionWord* to);
    void visit(uint32_t instruction, bool is_at_start, PositionWord* to);
    void follow_by_tables(const PositionWord* from, PositionWord* to) const;
    void follow_near(size_t word, PositionWord from, PositionWord* to) const;
    void follow_far(size_t word, PositionWord from, PositionWord* to) const;
    bool holds_far(size_t word, const PositionWord* set) const;
    void follow_one_by_one(const PositionWord* from, PositionWord* to);

    const PatternProgram& program_;
    size_t word_count_;
    Set finishing_;
    Set takes_any_rest_;
    Set class_sets_; // of each class the positions that take its bytes
    const size_t table_bound_;
    size_t followed_ = 0; // positions without tables
    bool tables_are_possible_ = true;
    bool has_tables_ = false; // only after some steps, which most programs do not come to
    std::vector<PositionWord> near_tables_; // of four positions each: for each set of them, what
                                            // follows in their word and in the one before
    std::vector<Block> far_;                // the same of all other words
    std::vector<PositionWord> far_tables_;
    Set all_far_;                   // of each word of positions all that they lead far to
    std::vector<uint64_t> visited_; // of each instruction: in which round it was visited last
    uint64_t round_ = 0;
    std::vector<uint32_t> to_visit_;
};
