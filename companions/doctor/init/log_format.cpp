#include "companions/doctor/init/log_format.h"

#include "base/marked_line.h"
#include "companions/doctor/init/format_pieces.h"
#include "tools/parse/field_splitter.h"

#include <algorithm>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace {

// In the line that stands for all lines of a format, a directive is two numbered marks, with a
// blank between them where its text may hold blanks: a splitter that separates the two would
// separate what the directive writes.
constexpr char mark_begin = '\x02';
constexpr char mark_end = '\x03';

std::string mark_of(size_t piece) {
    return mark_begin + std::to_string(piece) + mark_end;
}

std::string text_of(const FormatPiece& piece, size_t number) {
    if (piece.content == LogContent::text) {
        return piece.source;
    }
    const std::string mark = mark_of(number);
    const std::string text = piece.may_hold_blanks ? mark + " " + mark : mark;
    return piece.brings_brackets ? "[" + text + "]" : text;
}

std::string line_of(const std::vector<FormatPiece>& pieces) {
    std::string line;
    for (size_t i = 0; i < pieces.size(); ++i) {
        line += text_of(pieces[i], i);
    }
    return line;
}

// A field of that line: its directives in their order, each once, and its text with a '$' for each
// of them and for nothing else.
struct FormatField {
    std::vector<const FormatPiece*> pieces;
    std::string shape;
};

size_t read_mark(std::string_view text, size_t& at) {
    size_t number = 0;
    for (++at; text[at] != mark_end; ++at) {
        number = number * 10 + static_cast<size_t>(text[at] - '0');
    }
    return number;
}

FormatField read_field(std::string_view text, const std::vector<FormatPiece>& pieces) {
    FormatField field;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != mark_begin) {
            field.shape += text[i] == '$' ? '?' : text[i];
            continue;
        }
        const FormatPiece* piece = &pieces[read_mark(text, i)];
        if (!field.pieces.empty() && field.pieces.back() == piece) {
            field.shape.pop_back(); // the blank between the marks of one directive
            continue;
        }
        field.pieces.push_back(piece);
        field.shape += '$';
    }
    return field;
}

class FormatReader {
  public:
    explicit FormatReader(std::string_view argument)
        : format_(read_format_text(argument)), pieces_(split_format(format_)) {}

    FormatReading read();

  private:
    void add(Severity severity, const char* id, const std::string& value,
             const std::string& meaning, const std::string& cure);
    bool split();
    void find_cut_fields();
    void place_fields();
    void place(size_t index, FieldKind kind, const FormatPiece& piece);
    void place_single(size_t index, const FormatPiece& piece);
    void place_joined(size_t index, const FormatField& field);
    void set_log_type();

    FormatText format_;
    std::vector<FormatPiece> pieces_;
    std::vector<FormatField> fields_;
    std::array<int, al_field_kind_count> preferences_ = {};
    FormatReading reading_;
};

void FormatReader::add(Severity severity, const char* id, const std::string& value,
                       const std::string& meaning, const std::string& cure) {
    reading_.findings.push_back({id, severity, "", 0, value, meaning, cure});
}

FormatReading FormatReader::read() {
    reading_.layout.name = format_.server == LogServer::nginx ? "the given nginx log_format"
                                                              : "the given Apache LogFormat";
    if (format_.text.starts_with('{')) {
        add(Severity::error, "json-log", format_.text,
            "The log is JSON, which the tool cannot read.",
            "Log in a format whose fields stand between blanks, for example combined.");
        return reading_;
    }
    if (!split()) {
        return reading_;
    }
    find_cut_fields();
    place_fields();
    set_log_type();
    const Findings missing = missing_fields(reading_.layout);
    reading_.findings.insert(reading_.findings.end(), missing.begin(), missing.end());
    return reading_;
}

bool FormatReader::split() {
    const std::string text = line_of(pieces_);
    MarkedLine line(text.substr(0, text.find('\n')), field_quote); // a line ends there
    LineText fields[max_al_fields];
    const int count = get_al_fields(line.text(), line.marks(), fields, max_al_fields);
    for (int i = 0; i < count; ++i) {
        fields_.push_back(read_field({fields[i].text, fields[i].size}, pieces_));
    }
    if (count == -1) {
        add(Severity::error, "format-not-closed", format_.text,
            "A quote or bracket is not closed as the tool reads it: behind a closing quote a blank "
            "has to stand, or the end of the line.",
            "Write a blank behind each quoted part of the format.");
    }
    return count != -1;
}

// From the first directive on whose blanks are not kept together, nobody knows which field is
// which.
void FormatReader::find_cut_fields() {
    for (size_t i = 1; i < fields_.size(); ++i) {
        const bool continues = !fields_[i].pieces.empty() && !fields_[i - 1].pieces.empty() &&
                               fields_[i].pieces.front() == fields_[i - 1].pieces.back();
        if (!continues) {
            continue;
        }
        const std::string source = fields_[i].pieces.front()->source;
        add(Severity::warning, "format-not-quoted", source,
            "What it writes may hold blanks and stands neither in quotes nor in brackets, so the "
            "fields from here on have no fixed places.",
            "Write \"" + source + "\" in quotes in the server's configuration.");
        fields_.resize(i - 1);
        return;
    }
}

void FormatReader::place_fields() {
    for (size_t i = 0; i < fields_.size(); ++i) {
        const FormatField& field = fields_[i];
        if (field.shape == "$") {
            place_single(i, *field.pieces.front());
        } else if (!field.pieces.empty()) {
            place_joined(i, field);
        }
    }
}

// Where two pieces say the same, the better one counts, of equal ones the first.
void FormatReader::place(size_t index, FieldKind kind, const FormatPiece& piece) {
    LogLayout& layout = reading_.layout;
    if (layout.has(kind) && preferences_[kind] >= piece.preference) {
        return;
    }
    layout.positions[kind] = static_cast<short>(index + 1);
    preferences_[kind] = piece.preference;
    layout.logs_when_done = layout.logs_when_done || piece.logs_when_done;
}

struct ContentField {
    LogContent content;
    FieldKind kind;
};

constexpr ContentField content_fields[] = {
    {LogContent::client_address, AL_CLIENT_IP},
    {LogContent::date_and_time, AL_DATE_AND_TIME},
    {LogContent::date, AL_DATE},
    {LogContent::time, AL_TIME},
    {LogContent::request_line, AL_REQUEST_LINE},
    {LogContent::method, AL_METHOD},
    {LogContent::url_path, AL_URL},
    {LogContent::url_query, AL_URL_QUERY},
    {LogContent::query_string, AL_QUERY_STRING},
    {LogContent::status, AL_STATUS_CODE},
    {LogContent::request_cookie, AL_REQUEST_COOKIE},
    {LogContent::set_cookie, AL_SET_COOKIE},
    {LogContent::host, AL_HOST_HEADER},
    {LogContent::location, AL_LOCATION},
    {LogContent::seconds, AL_RESPONSE_TIME},
    {LogContent::microseconds, AL_RESPONSE_TIME_USEC},
};

void FormatReader::place_single(size_t index, const FormatPiece& piece) {
    for (const ContentField& field : content_fields) {
        if (field.content == piece.content) {
            place(index, field.kind, piece);
            return;
        }
    }
    if (piece.content == LogContent::unreadable_time) {
        add(Severity::note, "unreadable-time", piece.source,
            "The tool cannot read a time of this form.",
            "Log the server's usual time in brackets: %t with Apache, [$time_local] with nginx.");
    } else if (piece.content == LogContent::other_unit) {
        add(Severity::note, "unreadable-response-time", piece.source,
            "The tool reads response times in seconds or microseconds; this one is left out.",
            "Log %D instead when response times matter.");
    } else if (piece.content == LogContent::single_cookie) {
        add(Severity::note, "cookie-without-name", piece.source,
            "The value of a cookie is logged without its name, by which the tool finds it.",
            "Log the whole header, or write \"" + piece.name + "=" + piece.source +
                "\" in the format.");
    }
}

bool holds(const FormatField& field, size_t index, std::initializer_list<LogContent> contents) {
    return index < field.pieces.size() &&
           std::ranges::find(contents, field.pieces[index]->content) != contents.end();
}

bool is_request_line(const FormatField& field) {
    const size_t words = static_cast<size_t>(std::ranges::count(field.shape, ' ')) + 1;
    return words >= 3 && field.shape.starts_with("$ $") && holds(field, 0, {LogContent::method}) &&
           holds(field, 1, {LogContent::url_path, LogContent::url_query});
}

// A field of several directives, or of one with text beside it.
void FormatReader::place_joined(size_t index, const FormatField& field) {
    const FormatPiece& first = *field.pieces.front();
    if (is_request_line(field)) {
        place(index, AL_REQUEST_LINE, first);
    } else if (field.shape == "$$" && holds(field, 0, {LogContent::url_path}) &&
               holds(field, 1, {LogContent::query_with_mark})) {
        place(index, AL_URL_QUERY, first);
    } else if (field.shape == "$:$" && holds(field, 0, {LogContent::host}) &&
               holds(field, 1, {LogContent::port})) {
        place(index, AL_HOST_HEADER, first);
    } else if (field.shape == "$:$" && holds(field, 0, {LogContent::client_address})) {
        place(index, AL_CLIENT_IP, first); // what follows the address is not read
    } else if (first.content == LogContent::single_cookie && field.shape == first.name + "=$") {
        place(index, AL_REQUEST_COOKIE, first);
    }
}

// One of the two ways to give a URL is taken, as the line of one field unsets the other, and one
// response time.
void FormatReader::set_log_type() {
    LogLayout& layout = reading_.layout;
    const bool has_separate_time = layout.has(AL_DATE) && layout.has(AL_TIME);
    if (has_separate_time && !(layout.has(AL_DATE_AND_TIME) && layout.has(AL_REQUEST_LINE))) {
        layout.log_type = "WEBLOGIC";
        layout.positions[AL_DATE_AND_TIME] = 0;
        layout.positions[AL_REQUEST_LINE] = 0;
        add(Severity::warning, "times-must-be-utc", "",
            "Date and time are fields of their own, which the tool takes for UTC.",
            "Let the server log UTC, or its usual time with its zone.");
    } else {
        for (const FieldKind kind :
             {AL_DATE, AL_TIME, AL_METHOD, AL_URL, AL_QUERY_STRING, AL_URL_QUERY}) {
            layout.positions[kind] = 0;
        }
    }
    if (layout.has(AL_URL_QUERY)) {
        layout.positions[AL_URL] = 0;
        layout.positions[AL_QUERY_STRING] = 0;
    }
    if (layout.has(AL_RESPONSE_TIME_USEC)) {
        layout.positions[AL_RESPONSE_TIME] = 0;
    }
}

struct Missing {
    bool is_missing;
    const char* id;
    const char* fields;
    const char* meaning;
    const char* cure;
};

// A header that a run does without.
struct UsefulHeader {
    FieldKind kind;
    const char* without;
    const char* directives; // of Apache, nginx and others that write it
};

constexpr UsefulHeader useful_headers[] = {
    {AL_REQUEST_COOKIE, "users behind one address are not told apart",
     "\"%{Cookie}i\", \"$http_cookie\" or cs(Cookie)"},
    {AL_HOST_HEADER, "the host of every URL is NA", "\"%{Host}i\", \"$http_host\" or cs-host"},
    {AL_LOCATION, "requests that follow a redirect are not found and count",
     "\"%{Location}o\" or \"$sent_http_location\""},
};

// One note of all.
void add_missing_headers(Findings& findings, const LogLayout& layout) {
    std::vector<std::string> names;
    std::vector<std::string> effects;
    std::vector<std::string> directives;
    for (const UsefulHeader& header : useful_headers) {
        if (!layout.has(header.kind)) {
            names.emplace_back(al_required_fields[header.kind].name);
            effects.emplace_back(header.without);
            directives.emplace_back(header.directives);
        }
    }
    if (!names.empty()) {
        findings.push_back(
            {headers_not_logged, Severity::note, "", 0, fmt::format("{}", fmt::join(names, ", ")),
             fmt::format("The log does not have {}: {}.", names.size() == 1 ? "it" : "them",
                         fmt::join(effects, "; ")),
             fmt::format("Where that matters, let the server log {}.",
                         fmt::join(directives, ", and "))});
    }
}

} // namespace

FormatReading read_log_format(std::string_view argument) {
    return FormatReader(argument).read();
}

Findings missing_fields(const LogLayout& layout) {
    const bool has_time = layout.is_apache() ? layout.has(AL_DATE_AND_TIME)
                                             : layout.has(AL_DATE) && layout.has(AL_TIME);
    const bool has_url =
        layout.has(AL_URL_QUERY) || (layout.has(AL_URL) && layout.has(AL_QUERY_STRING));
    const bool has_request =
        layout.is_apache() ? layout.has(AL_REQUEST_LINE) : layout.has(AL_METHOD) && has_url;
    const Missing rows[] = {
        {!has_time, "no-time", "DATE_AND_TIME",
         "No field holds a date and time that the tool reads.",
         "Log the server's usual time: %t with Apache, [$time_local] with nginx, date and time "
         "with "
         "others."},
        {!has_request, "no-request", "REQUEST_LINE",
         "No field holds the request as the tool reads it.",
         "Log the request line in quotes: \"%r\" with Apache, \"$request\" with nginx; with others "
         "cs-method, cs-uri-stem and cs-uri-query."},
        {!layout.has(AL_STATUS_CODE), "no-status", "STATUS_CODE", "No field holds the status.",
         "Log it: %>s with Apache, $status with nginx, sc-status with others."},
        {!layout.has(AL_REQUEST_COOKIE) && !layout.has(AL_CLIENT_IP), "no-session",
         "REQUEST_COOKIE, CLIENT_IP",
         "No field holds cookies or the client address, so no request has a session.",
         "Log the Cookie header in quotes, or the client address."},
    };
    Findings findings;
    for (const Missing& row : rows) {
        if (row.is_missing) {
            findings.push_back({row.id, Severity::error, "", 0, row.fields, row.meaning, row.cure});
        }
    }
    add_missing_headers(findings, layout);
    return findings;
}
