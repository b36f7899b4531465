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

// The end of the word at `start`, which a blank or the end of the line follows.
char* find_word_end(char* start) {
    char* end = find_blank_or_control(start);
    while (*end != ' ' && !is_blank(*end) && *end != '\0') {
        end = find_blank_or_control(end + 1);
    }
    return end;
}

bool closes_quoted_field(const char* quote) {
    return (quote[1] == ' ' || quote[1] == '\0') && quote[-1] != '\\';
}

// Goes from quote to quote. Fields have to come in their order.
class QuotedFields {
  public:
    QuotedFields(MarkCursor& quotes, const char* end)
        : quotes_(quotes), next_(quotes.next), end_(end) {}
    ~QuotedFields() { quotes_.next = next_; }
    QuotedFields(const QuotedFields&) = delete;
    QuotedFields& operator=(const QuotedFields&) = delete;

    // The quote that closes the field that begins with the one at `start`, or null.
    char* closing_quote(const char* start) {
        while (*next_ != start) { // in fields before this one
            ++next_;
        }
        while (*++next_ < end_) {
            if (closes_quoted_field(*next_)) {
                return *next_++;
            }
        }
        return nullptr;
    }

  private:
    MarkCursor& quotes_;
    char* const* next_;
    const char* end_;
};

// Likewise.
char* closing_bracket(char* start, char* end) {
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

Split split(QuotedFields quoted, LineText line, LineText fields[], int max_fields) {
    char* const end = line.text + line.size;
    char* start = skip_blanks(line.text);
    LineText* field = fields;
    LineText* const fields_end = fields + max_fields;
    while (*start != '\0' && field != fields_end) {
        char* field_end;
        int closing_characters = 1;
        if (*start == field_quote) {
            field_end = quoted.closing_quote(start++);
        } else if (*start == '[') {
            field_end = closing_bracket(++start, end);
        } else {
            field_end = find_word_end(start);
            closing_characters = 0;
        }
        if (field_end == nullptr) {
            return {static_cast<int>(field - fields), true};
        }
        *field++ = {start, static_cast<size_t>(field_end - start)};
        char* const behind = field_end + closing_characters;
        const char separator = *behind;
        *field_end = '\0';
        start = next_start(behind, separator);
    }
    return {static_cast<int>(field - fields), false};
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
    const Split result = split({quotes, line.text + line.size}, line, fields, max_fields);
    if (debug_wanted(3)) {
        log_split(result, fields, max_fields);
    }
    return result.is_unclosed ? -1 : result.count;
}
