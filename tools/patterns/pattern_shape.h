#pragma once

#include "tools/patterns/pattern_tables.h"

#include <regex.h>
#include <string>
#include <string_view>
#include <vector>

// What a pattern looks like, to test a whole URL against it without the regular-expression engine
// where that is possible, and where it is not, with a copy that fails in time linear in the URL's
// length: the pattern as it was compiled looks for a match at every place of the URL.
class PatternShape {
  public:
    // `pattern` stays the table's; it must not move while this object is used.
    explicit PatternShape(const UPInfo& pattern);
    ~PatternShape();
    PatternShape(PatternShape&& other) noexcept;
    PatternShape(const PatternShape&) = delete;
    PatternShape& operator=(const PatternShape&) = delete;
    PatternShape& operator=(PatternShape&&) = delete;

    // Whether the pattern covers the whole URL.
    bool covers(const char* url, size_t length) const;

    // Texts that every URL it covers contains. Without any, every URL may be covered.
    const std::vector<std::string>& required_texts() const { return required_texts_; }

  private:
    bool covers_in_segments(std::string_view url) const;
    bool covers_by_engine(const char* url, size_t length) const;
    void compile_anchored();

    const UPInfo* pattern_;
    bool is_simple_; // only literal text, '.' and '*'
    std::vector<std::string>
        segments_; // of a simple one: what stands between its '*', '.' for any character
    bool is_anchored_ = false; // of any other: anchored_ holds a copy that only fits as a whole
    regex_t anchored_ = {};
    std::vector<std::string> required_texts_;
};
