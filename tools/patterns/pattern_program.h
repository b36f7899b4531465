#pragma once

#include "tools/patterns/pattern_syntax.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// A pattern as a program with a place for each byte that it consumes. A repeated part stands in it
// as often as it must or can be there, and once more where it may go on for ever: nothing is
// counted while a URL is read.
struct PatternProgram {
    enum class Action : uint8_t {
        consume,    // one byte of a set: this is a position
        fork,       // go on at `next` and at `other`
        need_start, // go on only at the start of the URL
        need_end,   // go on only at its end
        finish      // the pattern has been gone through
    };
    struct Instruction {
        Action action;
        uint32_t next;  // instruction to go on at
        uint32_t other; // of a fork: the second one; of consume: the number of the position
    };
    struct Position {
        uint32_t next;     // instruction after the byte
        uint32_t byte_set; // index into byte_sets
    };

    std::vector<Instruction> instructions;
    std::vector<Position> positions;
    std::vector<ByteSet> byte_sets; // each once
    uint32_t first_instruction;

    // Bytes that no set tells apart are of one class.
    std::array<uint8_t, 256> class_of_byte;
    uint32_t class_count;
};

// The program of a tree without back-references. It is as long as the tree is with its counts
// written out, so less than what the C library has already made of the same pattern.
PatternProgram compile_program(const SyntaxNode& root);
