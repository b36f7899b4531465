#include "tools/patterns/bracket_syntax.h"

#include <cctype>

namespace {

struct ByteClass {
    std::string_view name;
    int (*holds)(int byte);
};

constexpr ByteClass byte_classes[] = {
    {"alnum", isalnum}, {"alpha", isalpha}, {"blank", isblank}, {"cntrl", iscntrl},
    {"digit", isdigit}, {"graph", isgraph}, {"lower", islower}, {"print", isprint},
    {"punct", ispunct}, {"space", isspace}, {"upper", isupper}, {"xdigit", isxdigit},
};

// What stands between the brackets, apart from ranges.
struct Element {
    ByteSet bytes;
    unsigned char byte;     // the only one, of an element that may begin or end a range
    bool can_begin_a_range; // a class or what is equivalent to a character cannot
};

Element element_of(char c, bool can_begin_a_range) {
    const auto byte = static_cast<unsigned char>(c);
    return {ByteSet().set(byte), byte, can_begin_a_range};
}

// "[:name:]", "[=c=]" or "[.c.]", of which the opening bracket has been read.
std::optional<Element> take_named(std::string_view& rest) {
    const char kind = rest.front();
    const size_t end = rest.find(std::string{kind, ']'}, 1);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view name = rest.substr(1, end - 1);
    rest.remove_prefix(end + 2);
    if (kind == ':') {
        const std::optional<ByteSet> bytes = bytes_of_class(name);
        return bytes ? std::optional<Element>({*bytes, 0, false}) : std::nullopt;
    }
    return name.size() == 1 ? std::optional(element_of(name[0], kind == '.')) : std::nullopt;
}

std::optional<Element> take_element(std::string_view& rest) {
    if (rest.empty()) {
        return std::nullopt;
    }
    const char c = rest.front();
    rest.remove_prefix(1);
    const bool is_named =
        c == '[' && !rest.empty() && std::string_view(":=.").find(rest.front()) != rest.npos;
    return is_named ? take_named(rest) : element_of(c, true);
}

// Whether a hyphen comes that is not the last of the bracket.
bool at_range(std::string_view rest) {
    return rest.size() > 1 && rest[0] == '-' && rest[1] != ']';
}

std::optional<ByteSet> take_element_or_range(std::string_view& rest) {
    const std::optional<Element> first = take_element(rest);
    if (!first || !first->can_begin_a_range || !at_range(rest)) {
        return first ? std::optional(first->bytes) : std::nullopt;
    }
    rest.remove_prefix(1);
    const std::optional<Element> last = take_element(rest);
    if (!last || !last->can_begin_a_range || last->byte < first->byte) {
        return std::nullopt;
    }
    ByteSet range;
    for (unsigned byte = first->byte; byte <= last->byte; ++byte) {
        range.set(byte);
    }
    return range;
}

} // namespace

std::optional<ByteSet> take_bracket(std::string_view& rest) {
    const bool is_negated = !rest.empty() && rest.front() == '^';
    rest.remove_prefix(is_negated ? 1 : 0);
    ByteSet bytes;
    do { // a closing bracket right at the start is one of the set
        const std::optional<ByteSet> more = take_element_or_range(rest);
        if (!more || rest.empty()) {
            return std::nullopt;
        }
        bytes |= *more;
    } while (rest.front() != ']');
    rest.remove_prefix(1);
    return is_negated ? ~bytes : bytes;
}

std::optional<ByteSet> bytes_of_class(std::string_view name) {
    for (const auto& [class_name, holds] : byte_classes) {
        if (name == class_name) {
            ByteSet bytes;
            for (int byte = 0; byte < 256; ++byte) {
                bytes.set(static_cast<size_t>(byte), holds(byte) != 0);
            }
            return bytes;
        }
    }
    return std::nullopt;
}

ByteSet word_bytes() {
    return bytes_of_class("alnum")->set('_');
}
