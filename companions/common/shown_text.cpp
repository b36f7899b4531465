#include "companions/common/shown_text.h"

#include "companions/common/utf8.h"

#include <algorithm>
#include <fmt/core.h>

namespace {

// Controls of both kinds; what changes the direction of writing, breaks lines, or is not seen.
bool is_harmful(uint32_t code) {
    const auto is_within = [code](uint32_t low, uint32_t high) {
        return code >= low && code <= high;
    };
    return code < 0x20 || is_within(0x7f, 0x9f) || code == 0xad || code == 0x61c ||
           is_within(0x200b, 0x200f) || is_within(0x2028, 0x202e) || is_within(0x2060, 0x206f) ||
           code == 0xfeff || is_within(0xfff9, 0xfffb) || is_within(0xe0000, 0xe007f);
}

std::string escaped(std::string_view bytes) {
    if (bytes == "\n") {
        return "\\n";
    }
    if (bytes == "\r") {
        return "\\r";
    }
    if (bytes == "\t") {
        return "\\t";
    }
    std::string text;
    for (const char byte : bytes) {
        text += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    }
    return text;
}

// Calls `use` with each character as it stands, and whether it is valid and its number.
template <typename Use> void for_each_character(std::string_view text, const Use& use) {
    while (!text.empty()) {
        const Utf8Character character = first_character(text);
        const size_t size = character.size == 0 ? 1 : character.size;
        use(text.substr(0, size), character);
        text.remove_prefix(size);
    }
}

constexpr std::string_view mark = "..."; // of a text that is cut

// Whether all of the text is printable ASCII, as nearly all texts are.
bool is_plain(std::string_view text) {
    bool is_other = false;
    for (const char byte : text) { // to the end, so that the compiler takes many at a time
        is_other |= byte < 0x20 || byte > 0x7e;
    }
    return !is_other;
}

// Marks a plain text as cut, without making it longer.
std::string cut_plain(std::string_view text) {
    const size_t kept = text.size() - std::min(text.size(), mark.size());
    return std::string(text.substr(0, kept)).append(mark.substr(0, text.size()));
}

// Cuts a text of shown characters after `width` of them.
std::string cut_to(std::string_view shown, size_t width) {
    if (shown.size() <= width || width_of(shown) <= width) {
        return std::string(shown);
    }
    const size_t kept_width = width > mark.size() ? width - mark.size() : 0;
    std::string kept;
    size_t count = 0;
    for_each_character(shown, [&](std::string_view bytes, Utf8Character) {
        if (count++ < kept_width) {
            kept += bytes;
        }
    });
    return kept.append(mark.substr(0, width));
}

} // namespace

std::string shown_text(std::string_view text, size_t width) {
    const std::string_view start = text.substr(0, width);
    if (is_plain(start)) {
        return start.size() == text.size() ? std::string(text) : cut_plain(start);
    }
    // What is cut off anyway need not be looked at: no character has more than four bytes.
    if (width < text.size() / 4) {
        text = text.substr(0, 4 * (width + 1));
    }
    std::string shown;
    for_each_character(text, [&](std::string_view bytes, Utf8Character character) {
        const bool is_fit = character.size != 0 && !is_harmful(character.code);
        shown += is_fit ? std::string(bytes) : escaped(bytes);
    });
    return cut_to(shown, width);
}

std::string shown_lines(std::string_view text) {
    std::string shown;
    size_t start = 0;
    while (true) {
        const size_t end = text.find('\n', start);
        shown += shown_text(text.substr(start, end - start));
        if (end == std::string_view::npos) {
            return shown;
        }
        shown += '\n';
        start = end + 1;
    }
}

std::string valid_utf8(std::string_view text) {
    std::string valid;
    for_each_character(text, [&](std::string_view bytes, Utf8Character character) {
        valid += character.size != 0 ? std::string(bytes) : escaped(bytes);
    });
    return valid;
}

size_t width_of(std::string_view shown) {
    size_t width = 0;
    for_each_character(shown, [&](std::string_view, Utf8Character) { ++width; });
    return width;
}
