#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

// Patterns as trees: extended regular expressions in the form that the C library gives them. As the
// program never sets a locale, a character is a byte, and ranges and classes go by bytes, too.

using ByteSet = std::bitset<256>;

inline bool is_single(const ByteSet& bytes) {
    return bytes._Find_next(bytes._Find_first()) == bytes.size();
}

template <typename Use> void for_each_byte(const ByteSet& bytes, const Use& use) {
    for (size_t byte = bytes._Find_first(); byte < bytes.size(); byte = bytes._Find_next(byte)) {
        use(static_cast<uint8_t>(byte));
    }
}

enum class SyntaxKind : uint8_t {
    nothing,       // the empty text
    bytes,         // one byte of a set
    start,         // the empty text at the start of the URL
    end,           // the empty text at its end
    sequence,      // the parts one after the other
    choice,        // one of the parts
    repetition,    // the only part, `least` to `most` times
    back_reference // what a group has matched: the C library alone can tell
};

constexpr uint32_t any_number = std::numeric_limits<uint32_t>::max(); // for `most`

struct SyntaxNode {
    SyntaxKind kind = SyntaxKind::nothing;
    ByteSet bytes = {};
    uint32_t least = 0;
    uint32_t most = 0;
    std::vector<SyntaxNode> parts = {};
};

struct PatternSyntax {
    SyntaxNode root;
    // The pattern holds a back-reference or an anchor at words, which stand in the tree as unknown
    // and empty text. So is a pattern marked that is not understood at all, as an empty text.
    bool needs_library = false;
};

// The tree of a pattern whose stars are encoded, and which the C library has compiled. Its texts
// are those that the pattern matches, if it does not need the library.
PatternSyntax parse_pattern(std::string_view encoded_pattern);
