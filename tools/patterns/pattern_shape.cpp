#include "tools/patterns/pattern_shape.h"

#include "tools/patterns/pattern_regex.h"
#include "tools/patterns/pattern_search.h"

#include <cstring>
#include <utility>

namespace {

constexpr const char* special_characters = "+?()[]{}|^$\\";

std::vector<std::string> split_at_stars(std::string_view pattern) {
    std::vector<std::string> segments;
    size_t start = 0;
    for (size_t star; (star = pattern.find('*', start)) != std::string_view::npos;
         start = star + 1) {
        segments.emplace_back(pattern.substr(start, star - start));
    }
    segments.emplace_back(pattern.substr(start));
    return segments;
}

// Whether a segment fits the characters at the start of `text`, which must be at least as many.
bool fits_at(std::string_view segment, const char* text) {
    for (size_t i = 0; i < segment.size(); ++i) {
        if (segment[i] != text[i] && segment[i] != '.') {
            return false;
        }
    }
    return true;
}

// Where in `text` a segment fits first.
size_t find_segment(std::string_view segment, std::string_view text) {
    if (segment.find('.') == std::string_view::npos) {
        // Unlike the search of std::string_view, linear whatever the texts are.
        const void* found = memmem(text.data(), text.size(), segment.data(), segment.size());
        return found == nullptr
                   ? std::string_view::npos
                   : static_cast<size_t>(static_cast<const char*>(found) - text.data());
    }
    for (size_t at = 0; at + segment.size() <= text.size(); ++at) {
        if (fits_at(segment, text.data() + at)) {
            return at;
        }
    }
    return std::string_view::npos;
}

// The part of a pattern before its first group, bracket, anchor, count or backslash: literal
// characters and '.' and '*', each perhaps followed by '?' or '+'.
std::string_view plain_start(std::string_view pattern) {
    const size_t end = pattern.find_first_of("()[]{}^$\\");
    const bool is_counted = end != std::string_view::npos && pattern[end] == '{';
    pattern = pattern.substr(0, end);
    if (is_counted) { // what the count belongs to may be missing
        const size_t last = pattern.find_last_not_of("?+*");
        pattern = pattern.substr(0, last == std::string_view::npos ? 0 : last);
    }
    return pattern;
}

// Texts that every match holds, as far as they stand in the plain start. A character before '?' may
// be missing, and so may one before '+', which may itself be made optional.
std::vector<std::string> find_required_texts(std::string_view pattern) {
    std::vector<std::string> texts;
    if (pattern.find('|') != std::string_view::npos) {
        return texts;
    }
    std::string text;
    const auto end_text = [&] {
        if (!text.empty()) {
            texts.push_back(std::exchange(text, {}));
        }
    };
    for (const char c : plain_start(pattern)) {
        const bool makes_optional = c == '?' || c == '+';
        if (makes_optional && !text.empty()) {
            text.pop_back();
        }
        if (makes_optional || c == '.' || c == '*') {
            end_text();
        } else {
            text += c;
        }
    }
    end_text();
    return texts;
}

// Whether the pattern can stand between "^(" and ")$" and mean the same there: no backslash or
// anchor, groups that are closed, and no bracket expression that holds a parenthesis or a class.
bool can_be_wrapped(std::string_view pattern) {
    if (pattern.find_first_of("\\^$") != std::string_view::npos) {
        return false;
    }
    int open_groups = 0;
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '[') {
            const size_t end =
                pattern.find(']', i + 2); // a bracket right after the first is one of the set
            if (end == std::string_view::npos ||
                pattern.substr(i + 1, end - i - 1).find_first_of("()[") != std::string_view::npos) {
                return false;
            }
            i = end;
        } else if (pattern[i] == '(') {
            ++open_groups;
        } else if (pattern[i] == ')' && --open_groups < 0) {
            return false;
        }
    }
    return open_groups == 0;
}

} // namespace

PatternShape::PatternShape(const UPInfo& pattern) : pattern_(&pattern) {
    const std::string_view text = pattern.url_ptrn_string;
    is_simple_ = text.find_first_of(special_characters) == std::string_view::npos;
    required_texts_ = find_required_texts(text);
    if (is_simple_) {
        segments_ = split_at_stars(text);
    } else if (can_be_wrapped(text)) {
        compile_anchored();
    }
}

PatternShape::~PatternShape() {
    if (is_anchored_) {
        regfree(&anchored_);
    }
}

PatternShape::PatternShape(PatternShape&& other) noexcept
    : pattern_(other.pattern_), is_simple_(other.is_simple_), segments_(std::move(other.segments_)),
      is_anchored_(std::exchange(other.is_anchored_, false)), anchored_(other.anchored_),
      required_texts_(std::move(other.required_texts_)) {}

bool PatternShape::covers(const char* url, size_t length) const {
    return is_simple_ ? covers_in_segments({url, length}) : covers_by_engine(url, length);
}

// The first segment must fit at the start, the last at the end, and those between them one after
// the other, each as early as it can.
bool PatternShape::covers_in_segments(std::string_view url) const {
    const std::string& first = segments_.front();
    if (segments_.size() == 1) {
        return url.size() == first.size() && fits_at(first, url.data());
    }
    const std::string& last = segments_.back();
    if (url.size() < first.size() + last.size() ||
        !fits_at(last, url.data() + url.size() - last.size()) || !fits_at(first, url.data())) {
        return false;
    }
    url.remove_prefix(first.size());
    url.remove_suffix(last.size());
    for (size_t i = 1; i + 1 < segments_.size(); ++i) {
        const size_t found = find_segment(segments_[i], url);
        if (found == std::string_view::npos) {
            return false;
        }
        url.remove_prefix(found + segments_[i].size());
    }
    return true;
}

bool PatternShape::covers_by_engine(const char* url, size_t length) const {
    return is_anchored_ ? regexec(&anchored_, url, 0, nullptr, 0) == 0
                        : covers_whole_url(*pattern_, url, length);
}

void PatternShape::compile_anchored() {
    const std::string wrapped = "^(" + encode_stars(pattern_->url_ptrn_string) + ")$";
    is_anchored_ = regcomp(&anchored_, wrapped.c_str(), REG_EXTENDED | REG_NOSUB) == 0;
}
