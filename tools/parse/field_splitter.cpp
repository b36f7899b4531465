#include "tools/parse/field_splitter.h"

#include "base/byte_search.h"
#include "base/logs.h"
#include "tools/parse/quote_index.h"

namespace {

constexpr const char* fname = "get_al_fields";

bool is_blank(char c) {
    return c <= ' ' && (c == ' ' || c == '\t'); // most characters need but one comparison
}

char* skip_blanks(char* position) {
    while (is_blank(*position)) {
        ++position;
    }
    return position;
}

bool closes_quoted_field(const char* quote) {
    const bool ends_field = quote[1] == ' ' || quote[1] == '\0';
    return ends_field && quote[-1] != '\\';
}

// Finds the quote that closes a field by searching for each quote.
class QuoteSearch {
  public:
    explicit QuoteSearch(LineText line) : end_(line.text + line.size) {}

    // Of a field whose text begins at `start`; the end of the line when there is none.
    char* closing_quote(char* start) {
        char* quote = find_either(start, end_, '"', '"');
        while (quote != end_ && !closes_quoted_field(quote)) {
            quote = find_either(quote + 1, end_, '"', '"');
        }
        return quote;
    }

  private:
    char* end_;
};

// The same for a line whose quotes are found beforehand. Fields have to come in their order.
class IndexedQuotes {
  public:
    IndexedQuotes(LineText line, const QuoteOffsets& offsets)
        : text_(line.text), end_(line.text + line.size), next_(offsets) {}

    char* closing_quote(const char* start) {
        while (text_ + *next_ != start - 1) { // quotes in fields before this one
            ++next_;
        }
        ++next_; // behind the one that opens the field
        while (text_ + *next_ != end_ && !closes_quoted_field(text_ + *next_)) {
            ++next_;
        }
        return text_ + *next_++;
    }

  private:
    char* text_;
    char* end_;
    const uint16_t* next_;
};

char* closing_bracket(char* start, char* end) {
    char* bracket = find_either(start, end, ']', ']');
    while (bracket != end && bracket[-1] == '\\') {
        bracket = find_either(bracket + 1, end, ']', ']');
    }
    return bracket;
}

struct Split {
    int count = 0; // fields stored
    bool is_unclosed = false;
};

template <typename Quotes>
Split split(Quotes quotes, LineText line, LineText fields[], int max_fields) {
    char* const end = line.text + line.size;
    char* start = skip_blanks(line.text);
    int count = 0;
    while (start != end && count < max_fields) {
        char* field_end;
        bool is_closed = true;
        if (*start == '"') {
            field_end = quotes.closing_quote(++start);
            is_closed = field_end != end;
        } else if (*start == '[') {
            field_end = closing_bracket(++start, end);
            is_closed = field_end != end;
        } else {
            field_end = find_either(start, end, ' ', '\t');
        }
        if (!is_closed) {
            return {count, true};
        }
        *field_end = '\0';
        fields[count++] = {start, static_cast<size_t>(field_end - start)};
        start = field_end == end ? end : skip_blanks(field_end + 1);
    }
    return {count, false};
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

Split split_line(LineText line, LineText fields[], int max_fields) {
    if (line.size > max_indexed_size) {
        return split(QuoteSearch(line), line, fields, max_fields);
    }
    QuoteOffsets offsets;
    index_quotes(line.text, line.size, offsets);
    return split(IndexedQuotes(line, offsets), line, fields, max_fields);
}

} // namespace

int get_al_fields(LineText line, LineText fields[], int max_fields) {
    const Split result = split_line(line, fields, max_fields);
    if (debug_wanted(3)) {
        log_split(result, fields, max_fields);
    }
    return result.is_unclosed ? -1 : result.count;
}
