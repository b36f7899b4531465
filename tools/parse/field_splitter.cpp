#include "tools/parse/field_splitter.h"

#include "base/byte_search.h"
#include "base/logs.h"

namespace {

constexpr const char* fname = "get_al_fields";

bool is_blank(char c) {
    return c <= ' ' && (c == ' ' || c == '\t'); // most characters need but one comparison
}

bool is_visible(char c) {
    return static_cast<unsigned char>(c) > ' ';
}

char* skip_blanks(char* position) {
    while (is_blank(*position)) {
        ++position;
    }
    return position;
}

// Where the next field may start, when the one before is followed by `separator` at `position`.
char* next_start(char* position, char separator) {
    if (separator == ' ' && is_visible(position[1])) { // as it mostly is
        return position + 1;
    }
    return is_blank(separator) ? skip_blanks(position + 1) : position;
}

// The end of a word, which a blank or the end of the line follows, given the first blank or control
// character from its start on. Not inlined: hardly any word needs it.
[[gnu::noinline]] char* find_odd_word_end(char* end) {
    while (!is_blank(*end) && *end != '\0') {
        end = find_blank_or_control(end + 1);
    }
    return end;
}

bool closes_quoted_field(const char* quote) {
    return (quote[1] == ' ' || quote[1] == '\0') && quote[-1] != '\\';
}

char* closing_bracket(char* start, const char* end) {
    char* bracket = find_in_line(start, end, ']');
    while (bracket != nullptr && bracket[-1] == '\\') {
        bracket = find_in_line(bracket + 1, end, ']');
    }
    return bracket;
}

struct Split {
    int count = 0; // fields stored
    bool is_unclosed = false;
};

// Takes the fields off a line in their order. There is a function for each form of a field: it
// returns where the next one may start, or null when the field is not closed.
class FieldSplitter {
  public:
    FieldSplitter(LineText line, char* const* quotes, LineText fields[], int max_fields)
        : end_(line.text + line.size), quote_(quotes), field_(fields),
          fields_end_(fields + max_fields) {}

    bool is_full() const { return field_ == fields_end_; }
    const LineText* fields_end() const { return field_; }
    char* const* quote() const { return quote_; }

    char* take_word(char* start) {
        char* end = find_blank_or_control(start);
        if (*end == ' ') {
            store(start, end);
            return skip_blanks(end + 1);
        }
        end = find_odd_word_end(end);
        return take(start, end, end);
    }

    char* take_bracketed(char* bracket) {
        char* const end = closing_bracket(bracket + 1, end_);
        return end == nullptr ? nullptr : take(bracket + 1, end, end + 1);
    }

    // Goes from quote to quote, and on to the quoted fields that follow by a blank each.
    char* take_quoted(char* opening) {
        while (*quote_ != opening) { // in fields before this one
            ++quote_;
        }
        do {
            char* const closing = quote_[1];
            if (closing >= end_ || closing[1] != ' ' || closing[-1] == '\\') {
                return take_odd_quoted(opening);
            }
            store(opening + 1, closing);
            quote_ += 2;
            opening = closing + 2;
        } while (*opening == field_quote && !is_full());
        return skip_blanks(opening);
    }

  private:
    // Holds quotes, or nothing but the end of the line follows.
    char* take_odd_quoted(char* opening) {
        while (*++quote_ < end_) {
            char* const closing = *quote_;
            if (closes_quoted_field(closing)) {
                ++quote_;
                return take(opening + 1, closing, closing + 1);
            }
        }
        return nullptr;
    }

    // The separator stands at `behind`.
    char* take(char* start, char* end, char* behind) {
        const char separator = *behind;
        store(start, end);
        return next_start(behind, separator);
    }

    void store(char* start, char* end) {
        *field_++ = {start, static_cast<size_t>(end - start)};
        *end = '\0';
    }

    const char* end_;
    char* const* quote_; // the first that is not passed
    LineText* field_;    // behind those that were stored
    LineText* fields_end_;
};

Split split(LineText line, MarkCursor& quotes, LineText fields[], int max_fields) {
    FieldSplitter splitter(line, quotes.next, fields, max_fields);
    char* start = skip_blanks(line.text);
    while (start != nullptr && *start != '\0' && !splitter.is_full()) {
        if (*start == field_quote) {
            start = splitter.take_quoted(start);
        } else if (*start == '[') {
            start = splitter.take_bracketed(start);
        } else {
            start = splitter.take_word(start);
        }
    }
    quotes.next = splitter.quote();
    return {static_cast<int>(splitter.fields_end() - fields), start == nullptr};
}

void log_split(const Split& split, const LineText fields[], int max_fields) {
    for (int i = 0; i < split.count; ++i) {
        DEBUG_LOG(4, fname, "Field value = '%s'", fields[i].text);
    }
    if (split.is_unclosed) {
        DEBUG_LOG(3, fname, "Invalid line found");
    } else if (split.count == max_fields) {
        DEBUG_LOG(3, fname, "Reached to max fields, stopping al field parsing");
    }
}

} // namespace

int get_al_fields(LineText line, MarkCursor& quotes, LineText fields[], int max_fields) {
    const Split result = split(line, quotes, fields, max_fields);
    if (debug_wanted(3)) {
        log_split(result, fields, max_fields);
    }
    return result.is_unclosed ? -1 : result.count;
}
