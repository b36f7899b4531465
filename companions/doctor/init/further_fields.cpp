#include "companions/doctor/init/further_fields.h"

#include "companions/doctor/init/line_trial.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <fmt/format.h>
#include <string_view>

namespace {

// What is seen of one position over all lines.
struct SeenField {
    size_t lines = 0;    // that have it
    size_t filled = 0;   // of these, with something else than "-"
    size_t cookies = 0;  // name=value; ...
    size_t settings = 0; // of these, with an attribute such as Path
    size_t hosts = 0;
    size_t numbers = 0;
    size_t redirects = 0;        // lines whose status is that of a redirect
    size_t filled_redirects = 0; // of these, with a path or URL
    size_t filled_others = 0;    // of the other lines, with anything
};

using SeenFields = std::array<SeenField, max_al_fields>;

bool contains_any_case(std::string_view text, std::string_view word) {
    const auto same = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == b;
    };
    return std::search(text.begin(), text.end(), word.begin(), word.end(), same) != text.end();
}

bool has_cookie_attribute(std::string_view text) {
    return std::ranges::any_of(
        std::array{"path=", "expires=", "max-age=", "httponly", "secure", "samesite=", "domain="},
        [&](const char* attribute) { return contains_any_case(text, attribute); });
}

bool is_host_character(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-';
}

// A name with a dot whose last part is letters, or localhost; with or without a port.
bool looks_like_host(std::string_view text) {
    const std::string_view name = text.substr(0, text.find(':'));
    if (name.empty() || !std::ranges::all_of(name, is_host_character)) {
        return false;
    }
    const size_t dot = name.rfind('.');
    const std::string_view last = name.substr(dot == std::string_view::npos ? 0 : dot + 1);
    const bool is_word = last.size() > 1 && std::ranges::all_of(last, [](char c) {
                             return std::isalpha(static_cast<unsigned char>(c)) != 0;
                         });
    return name == "localhost" || (dot != std::string_view::npos && dot != 0 && is_word);
}

bool looks_like_number(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '.';
    });
}

bool looks_like_location(std::string_view text) {
    return text.starts_with('/') || text.starts_with("http://") || text.starts_with("https://");
}

void look_at(std::string_view text, bool is_redirect, std::string_view request, SeenField& seen) {
    ++seen.lines;
    seen.redirects += is_redirect ? 1 : 0;
    if (text == "-" || text.empty()) {
        return;
    }
    ++seen.filled;
    // The query of the request looks like cookies, too.
    const bool is_cookie = looks_like_cookies(text) && request.find(text) == std::string_view::npos;
    seen.cookies += is_cookie ? 1 : 0;
    seen.settings += is_cookie && has_cookie_attribute(text) ? 1 : 0;
    seen.hosts += looks_like_host(text) ? 1 : 0;
    seen.numbers += looks_like_number(text) ? 1 : 0;
    if (!is_redirect) {
        ++seen.filled_others;
    } else if (looks_like_location(text)) {
        ++seen.filled_redirects;
    }
}

bool is_redirect_status(const std::string& status) {
    const int number = std::atoi(status.c_str());
    return number == 301 || number == 302 || number == 303 || number == 307 || number == 308;
}

SeenFields look_at_fields(const std::vector<LogSample>& samples, const LogLayout& layout) {
    SeenFields seen;
    const size_t status = static_cast<size_t>(layout.positions[AL_STATUS_CODE]) - 1;
    const size_t request = static_cast<size_t>(layout.positions[AL_REQUEST_LINE]) - 1;
    for (const LogSample& sample : samples) {
        for (const std::string& line : sample.lines) {
            const std::vector<std::string> fields = split_into_fields(line);
            if (fields.size() <= std::max(status, request)) {
                continue;
            }
            const bool is_redirect = is_redirect_status(fields[status]);
            for (size_t i = 0; i < fields.size(); ++i) {
                look_at(fields[i], is_redirect, fields[request], seen[i]);
            }
        }
    }
    return seen;
}

bool are_most(size_t part, size_t whole) {
    return part != 0 && part * 10 >= whole * 9;
}

bool is_free(const LogLayout& layout, size_t index) {
    return std::ranges::find(layout.positions, static_cast<short>(index + 1)) ==
           layout.positions.end();
}

// Takes the fields behind the status one by one for what they hold.
class FieldFinder {
  public:
    FieldFinder(const SeenFields& seen, LogLayout& layout) : seen_(seen), layout_(layout) {}

    Findings find() {
        const size_t status = static_cast<size_t>(layout_.positions[AL_STATUS_CODE]);
        for (size_t i = status; i < seen_.size(); ++i) {
            if (is_free(layout_, i) && are_most(seen_[i].lines, seen_[0].lines)) {
                look(i);
            }
        }
        tell_taken();
        return findings_;
    }

  private:
    void look(size_t index) {
        const SeenField& field = seen_[index];
        if (are_most(field.cookies, field.filled)) {
            const bool is_set = field.settings * 2 >= field.cookies;
            take(index, is_set ? AL_SET_COOKIE : AL_REQUEST_COOKIE,
                 is_set ? "Set-Cookie" : "Cookie");
        } else if (are_most(field.hosts, field.filled) && are_most(field.filled, field.lines)) {
            take(index, AL_HOST_HEADER, "Host");
        } else if (field.filled_others == 0 && are_most(field.filled_redirects, field.redirects)) {
            take(index, AL_LOCATION, "Location");
        } else if (are_most(field.numbers, field.lines) && !is_bytes(index)) {
            findings_.push_back(
                {"unknown-number", Severity::note, "", 0, fmt::format("field {}", index + 1),
                 "It is a number, perhaps a response time, but in a unit that the log does not "
                 "tell, and so it is left out.",
                 "Where response times matter, give the server's format with --log-format."});
        }
    }

    // The field right behind the status.
    bool is_bytes(size_t index) const {
        return static_cast<int>(index) == layout_.positions[AL_STATUS_CODE];
    }

    void take(size_t index, FieldKind kind, const char* header) {
        if (layout_.has(kind)) {
            return;
        }
        layout_.positions[kind] = static_cast<short>(index + 1);
        positions_.push_back(index + 1);
        headers_.emplace_back(header);
    }

    void tell_taken() {
        if (positions_.empty()) {
            return;
        }
        const bool is_one = positions_.size() == 1;
        findings_.push_back(
            {"field-found", Severity::note, "", 0,
             fmt::format("{} {}", is_one ? "field" : "fields", fmt::join(positions_, ", ")),
             fmt::format("By what {}: {}.",
                         is_one ? "it holds it is this header" : "they hold they are these headers",
                         fmt::join(headers_, ", ")),
             "Give the server's format with --log-format where that is wrong."});
    }

    const SeenFields& seen_;
    LogLayout& layout_;
    std::vector<size_t> positions_; // that were taken, from 1
    std::vector<std::string> headers_;
    Findings findings_;
};

} // namespace

Findings add_further_fields(const std::vector<LogSample>& samples, LogLayout& layout) {
    if (!layout.is_apache()) {
        return {};
    }
    const SeenFields seen = look_at_fields(samples, layout);
    return FieldFinder(seen, layout).find();
}
