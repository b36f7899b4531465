#include "tools/patterns/pattern_program.h"

#include <algorithm>

namespace {

// Goes through the tree from its end to its start, so that what follows a part is always there.
class Compiler {
  public:
    PatternProgram compile(const SyntaxNode& root) {
        program_.first_instruction = compile(root, add({Action::finish, 0, 0}));
        find_byte_classes();
        return std::move(program_);
    }

  private:
    using Action = PatternProgram::Action;

    uint32_t add(const PatternProgram::Instruction& instruction) {
        program_.instructions.push_back(instruction);
        return static_cast<uint32_t>(program_.instructions.size() - 1);
    }

    // Adds the part and gives its first instruction; it goes on at `next`.
    uint32_t compile(const SyntaxNode& node, uint32_t next) {
        switch (node.kind) {
        case SyntaxKind::bytes:
            return add_position(node.bytes, next);
        case SyntaxKind::start:
            return add({Action::need_start, next, 0});
        case SyntaxKind::end:
            return add({Action::need_end, next, 0});
        case SyntaxKind::sequence:
            std::for_each(node.parts.rbegin(), node.parts.rend(),
                          [&](const SyntaxNode& part) { next = compile(part, next); });
            return next;
        case SyntaxKind::choice:
            return compile_choice(node, next);
        case SyntaxKind::repetition:
            return compile_repetition(node, next);
        default:
            return next;
        }
    }

    uint32_t add_position(const ByteSet& bytes, uint32_t next) {
        program_.positions.push_back({next, number_of_set(bytes)});
        return add({Action::consume, next, static_cast<uint32_t>(program_.positions.size() - 1)});
    }

    uint32_t number_of_set(const ByteSet& bytes) {
        const bool is_literal = is_single(bytes);
        uint32_t& number_of_literal = sets_of_literals_[bytes._Find_first() % bytes.size()];
        if (is_literal && number_of_literal != 0) {
            return number_of_literal - 1;
        }
        auto& sets = program_.byte_sets;
        const auto found = is_literal ? sets.end() : std::find(sets.begin(), sets.end(), bytes);
        const auto number = static_cast<uint32_t>(found - sets.begin());
        if (found == sets.end()) {
            sets.push_back(bytes);
            number_of_literal = is_literal ? number + 1 : number_of_literal;
        }
        return number;
    }

    uint32_t compile_choice(const SyntaxNode& node, uint32_t next) {
        uint32_t entry = compile(node.parts.back(), next);
        for (size_t i = node.parts.size() - 1; i-- > 0;) {
            entry = add({Action::fork, compile(node.parts[i], next), entry});
        }
        return entry;
    }

    uint32_t compile_repetition(const SyntaxNode& node, uint32_t next) {
        const SyntaxNode& part = node.parts.front();
        uint32_t needed = node.least;
        if (node.most == any_number) {
            const uint32_t loop = add({Action::fork, next, 0});
            const uint32_t last = compile(part, loop);
            program_.instructions[loop].other = last;
            next = node.least == 0 ? loop : last;
            needed -= node.least == 0 ? 0 : 1;
        } else {
            const uint32_t after = next;
            for (uint32_t i = node.least; i < node.most; ++i) {
                next = add({Action::fork, compile(part, next), after});
            }
        }
        for (; needed > 0; --needed) {
            next = compile(part, next);
        }
        return next;
    }

    void find_byte_classes() {
        program_.class_of_byte = {};
        program_.class_count = 1;
        class_sizes_ = {program_.class_of_byte.size()};
        for (const ByteSet& bytes : program_.byte_sets) {
            if (is_single(bytes)) {
                move_to_new_class(bytes._Find_first());
            } else if (!bytes.all()) {
                split_classes(bytes);
            }
        }
    }

    // Unless it has a class of its own.
    void move_to_new_class(size_t byte) {
        uint8_t& byte_class = program_.class_of_byte[byte];
        if (class_sizes_[byte_class] > 1) {
            --class_sizes_[byte_class];
            byte_class = static_cast<uint8_t>(program_.class_count++);
            class_sizes_[byte_class] = 1;
        }
    }

    // The part of each class that lies in the set becomes a class of its own, unless it is all of
    // it.
    void split_classes(const ByteSet& bytes) {
        auto& class_of_byte = program_.class_of_byte;
        std::array<uint16_t, 256> inside =
            {}; // of each class: how many of its bytes are in the set
        for_each_byte(bytes, [&](uint8_t byte) { ++inside[class_of_byte[byte]]; });
        std::array<uint8_t, 256> new_class;
        for (size_t old = 0, count = program_.class_count; old < count; ++old) {
            new_class[old] = static_cast<uint8_t>(old);
            if (inside[old] != 0 && inside[old] != class_sizes_[old]) {
                class_sizes_[old] -= inside[old];
                class_sizes_[program_.class_count] = inside[old];
                new_class[old] = static_cast<uint8_t>(program_.class_count++);
            }
        }
        for_each_byte(bytes,
                      [&](uint8_t byte) { class_of_byte[byte] = new_class[class_of_byte[byte]]; });
    }

    PatternProgram program_;
    std::array<size_t, 256> class_sizes_;
    std::array<uint32_t, 256> sets_of_literals_ = {}; // by byte: number of its set, plus 1
};

} // namespace

PatternProgram compile_program(const SyntaxNode& root) {
    return Compiler().compile(root);
}
