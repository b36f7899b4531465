#include "tools/parse/field_splitter.h"

#include "base/byte_search.h"
#include "base/logs.h"

namespace {

constexpr const char* fname = "get_al_fields";

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

char* skip_blanks(char* position) {
    while (is_blank(*position)) {
        ++position;
    }
    return position;
}

// The quote that closes a field which begins at `start`; null when there is none.
char* closing_quote(char* start, char* end) {
    for (char* quote = find_either(start, end, '"', '"'); quote != end;
         quote = find_either(quote + 1, end, '"', '"')) {
        const bool ends_field = quote[1] == ' ' || quote[1] == '\0';
        if (ends_field && quote[-1] != '\\') {
            return quote;
        }
    }
    return nullptr;
}

char* closing_bracket(char* start, char* end) {
    for (char* bracket = find_either(start, end, ']', ']'); bracket != end;
         bracket = find_either(bracket + 1, end, ']', ']')) {
        if (bracket[-1] != '\\') {
            return bracket;
        }
    }
    return nullptr;
}

// The end of a field that begins with this character, and at `start` its text; null when it is not
// closed.
char* end_of_field(char*& start, char* end) {
    switch (*start) {
    case '"':
        return closing_quote(++start, end);
    case '[':
        return closing_bracket(++start, end);
    default:
        return find_either(start, end, ' ', '\t');
    }
}

} // namespace

int get_al_fields(LineText line, LineText fields[], int max_fields) {
    const bool logs_fields = debug_wanted(4);
    char* const end = line.text + line.size;
    char* position = skip_blanks(line.text);
    int count = 0;
    while (*position != '\0') {
        char* start = position;
        char* const field_end = end_of_field(start, end);
        if (field_end == nullptr) {
            DEBUG_LOG(3, fname, "Invalid line found");
            return -1;
        }
        position = field_end == end ? end : skip_blanks(field_end + 1);
        *field_end = '\0';
        fields[count] = {start, static_cast<size_t>(field_end - start)};
        if (logs_fields) {
            debug_log(4, fname, "Field value = '%s'", start);
        }
        if (++count == max_fields) {
            DEBUG_LOG(3, fname, "Reached to max fields, stopping al field parsing");
            return count;
        }
    }
    return count;
}
