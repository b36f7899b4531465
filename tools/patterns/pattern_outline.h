#pragma once

#include "tools/patterns/pattern_syntax.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What can be told of a pattern without an automaton: the characters at the start and at the end of
// every URL that it covers, and all of it when it consists of texts and stars only, as most do.
// Telling that costs a look at a few characters, where an automaton has to be made first and its
// states have mostly left the processor's caches.
class PatternOutline {
  public:
    enum class Verdict : uint8_t { covers, does_not_cover, unknown };

    // Tells nothing of use when the syntax needs the library.
    explicit PatternOutline(const PatternSyntax& syntax);

    // Whether the pattern covers the URL, as far as the outline tells. Takes time for the length of
    // the URL, times that of a text between stars at worst.
    Verdict test(std::string_view url) const;

  private:
    using Parts = std::span<const SyntaxNode>;

    void read_middle(Parts parts);

    // Characters at fixed places; a null byte, which no URL holds, stands for any.
    std::string start_;
    std::string end_;
    std::vector<std::string> texts_; // between the two, with stars before, between and behind
    bool has_stars_ = false;         // else the end follows the start
    bool is_all_ = true;             // nothing else is between them
};
