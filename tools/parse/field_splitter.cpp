#include "tools/parse/field_splitter.h"

#include "tools/driver/logs.h"

#include <cstring>

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

char* find(char* from, char* end, char c) {
    return static_cast<char*>(std::memchr(from, c, static_cast<size_t>(end - from)));
}

// The quote that closes a field which begins at `start`; null when there is none.
char* closing_quote(char* start, char* end) {
    for (char* quote = find(start, end, '"'); quote != nullptr; quote = find(quote + 1, end, '"')) {
        const bool ends_field = quote[1] == ' ' || quote[1] == '\0';
        if (ends_field && quote[-1] != '\\') {
            return quote;
        }
    }
    return nullptr;
}

char* closing_bracket(char* start, char* end) {
    for (char* bracket = find(start, end, ']'); bracket != nullptr;
         bracket = find(bracket + 1, end, ']')) {
        if (bracket[-1] != '\\') {
            return bracket;
        }
    }
    return nullptr;
}

char* end_of_word(char* start) {
    while (!is_blank(*start) && *start != '\0') {
        ++start;
    }
    return start;
}

} // namespace

int get_al_fields(LineText line, LineText fields[], int max_fields) {
    char* const end = line.text + line.size;
    char* position = skip_blanks(line.text);
    int count = 0;
    while (*position != '\0') {
        char* start = position;
        char* field_end;
        if (*position == '"') {
            field_end = closing_quote(++start, end);
        } else if (*position == '[') {
            field_end = closing_bracket(++start, end);
        } else {
            field_end = end_of_word(start);
        }
        if (field_end == nullptr) {
            DEBUG_LOG(3, fname, "Invalid line found");
            return -1;
        }
        position = field_end == end ? end : skip_blanks(field_end + 1);
        *field_end = '\0';
        fields[count] = {start, static_cast<size_t>(field_end - start)};
        DEBUG_LOG(4, fname, "Field value = '%s'", start);
        if (++count == max_fields) {
            DEBUG_LOG(3, fname, "Reached to max fields, stopping al field parsing");
            return count;
        }
    }
    return count;
}
