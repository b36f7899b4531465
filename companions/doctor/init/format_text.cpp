#include "companions/doctor/init/format_text.h"

#include <algorithm>
#include <cctype>
#include <strings.h>
#include <vector>

namespace {

struct NamedFormat {
    std::string_view name;
    LogServer server;
    std::string_view text;
};

constexpr NamedFormat named_formats[] = {
    {"common", LogServer::apache, R"(%h %l %u %t "%r" %>s %O)"},
    {"combined", LogServer::apache, R"(%h %l %u %t "%r" %>s %O "%{Referer}i" "%{User-Agent}i")"},
    {"combinedio", LogServer::apache,
     R"(%h %l %u %t "%r" %>s %b "%{Referer}i" "%{User-Agent}i" %I %O)"},
    {"vhost_combined", LogServer::apache,
     R"(%v:%p %h %l %u %t "%r" %>s %O "%{Referer}i" "%{User-Agent}i")"},
};

std::string_view trimmed(std::string_view text) {
    const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && is_space(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && is_space(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Takes a word off the text when it begins with it, in any case, and a blank or quote follows.
bool take_word(std::string_view& text, std::string_view word) {
    if (text.size() <= word.size() || strncasecmp(text.data(), word.data(), word.size()) != 0 ||
        std::string_view(" \t\n\"'").find(text[word.size()]) == std::string_view::npos) {
        return false;
    }
    text = trimmed(text.substr(word.size()));
    return true;
}

// What a backslash and `c` stand for in a format.
std::string unescaped(char c) {
    switch (c) {
    case 'n':
        return "\n";
    case 't':
        return "\t";
    case '"':
    case '\'':
    case '\\':
        return std::string(1, c);
    default:
        return std::string("\\") + c;
    }
}

std::string without_escapes(std::string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool is_escape = text[i] == '\\' && i + 1 < text.size();
        result += is_escape ? unescaped(text[++i]) : std::string(1, text[i]);
    }
    return result;
}

// Takes a quoted text off `rest`, without its quotes; all of it when the quote is not closed.
std::string_view take_quoted(std::string_view& rest) {
    const char quote = rest.front();
    size_t end = 1;
    while (end < rest.size() && rest[end] != quote) {
        end += rest[end] == '\\' ? 2 : 1;
    }
    const std::string_view text = rest.substr(1, std::min(end, rest.size()) - 1);
    rest = trimmed(rest.substr(std::min(end + 1, rest.size())));
    return text;
}

bool begins_with_quote(std::string_view text) {
    return !text.empty() && (text.front() == '"' || text.front() == '\'');
}

// The quoted texts of a directive joined; words outside of quotes, names and options, are passed
// over, but count where there is no quoted text.
std::string joined_texts(std::string_view directive) {
    std::string joined;
    std::string_view rest = directive;
    while (!rest.empty()) {
        if (begins_with_quote(rest)) {
            joined += without_escapes(take_quoted(rest));
        } else {
            rest = trimmed(rest.substr(std::min(rest.find_first_of(" \t\n"), rest.size())));
        }
    }
    return joined.empty() ? without_escapes(directive) : joined;
}

// A string that stands in its quotes still, as it was copied.
bool is_quoted(std::string_view text) {
    if (text.size() < 2 || !begins_with_quote(text)) {
        return false;
    }
    std::string_view rest = text;
    take_quoted(rest);
    return rest.empty();
}

bool has_variable(std::string_view text) {
    for (size_t i = text.find('$'); i != std::string_view::npos; i = text.find('$', i + 1)) {
        if (i + 1 < text.size() &&
            (std::isalpha(static_cast<unsigned char>(text[i + 1])) != 0 || text[i + 1] == '{')) {
            return true;
        }
    }
    return false;
}

std::string without_controls(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == '\x7f'; }, ' ');
    return text;
}

} // namespace

FormatText read_format_text(std::string_view argument) {
    std::string_view text = trimmed(argument);
    for (const NamedFormat& format : named_formats) {
        if (text == format.name) {
            return {format.server, std::string(format.text)};
        }
    }
    if (take_word(text, "LogFormat")) {
        // Only the first text is the format; what follows is its name.
        const std::string_view quoted = begins_with_quote(text) ? take_quoted(text) : text;
        return {LogServer::apache, without_controls(without_escapes(quoted))};
    }
    if (take_word(text, "log_format")) {
        while (text.ends_with(';')) {
            text = trimmed(text.substr(0, text.size() - 1));
        }
        return {LogServer::nginx, without_controls(joined_texts(text))};
    }
    if (text.starts_with('\'') && has_variable(text)) {
        return {LogServer::nginx, without_controls(joined_texts(text))};
    }
    // A single quoted text of nginx holds blanks between quotes of its own, so only the outer
    // quotes of a whole string are taken off.
    const bool is_whole = is_quoted(text) && text.substr(1, text.size() - 2).find_first_of("%$") !=
                                                 std::string_view::npos;
    const std::string_view inner = is_whole ? text.substr(1, text.size() - 2) : text;
    return {has_variable(inner) && inner.find("%>s") == std::string_view::npos ? LogServer::nginx
                                                                               : LogServer::apache,
            without_controls(without_escapes(inner))};
}
