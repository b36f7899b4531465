#include "tools/config/field_layout.h"

#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/config/value_remarks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

const alFields al_required_fields[al_field_kind_count] = {
    {"CLIENT_IP", 9},
    {"DATE_AND_TIME", 13},
    {"REQUEST_LINE", 12},
    {"STATUS_CODE", 11},
    {"REFERER", 7},
    {"USER_AGENT", 10},
    {"REQUEST_COOKIE", 14},
    {"SET_COOKIE", 10},
    {"HOST_HEADER", 11},
    {"CONTENT_TYPE", 12},
    {"LOCATION", 8},
    {"DATE", 4},
    {"TIME", 4},
    {"METHOD", 6},
    {"URL", 3},
    {"QUERY_STRING", 12},
    {"HTTP_VERSION", 12},
    {"RESPONSE_TIME", 13},
    {"RESPONSE_TIME_USEC", 18},
    {"URL_QUERY", 9},
};

short al_required_field_position[al_field_kind_count];
int max_required_field_position = 0;
int present_field_count = 0;
PresentField present_fields[al_field_kind_count];
int read_field_count = 0;
PresentField read_fields[al_field_kind_count];
char al_modified_flag = 0;

namespace {

// One row for each kind of field, in the order of al_required_fields.
struct DefaultPositions {
    short apache;
    short iis;
    short other;
};

constexpr DefaultPositions default_positions[al_field_kind_count] = {
    {1, 1, 1},    // CLIENT_IP
    {4, 0, 0},    // DATE_AND_TIME
    {6, 0, 0},    // REQUEST_LINE
    {7, 8, 7},    // STATUS_CODE
    {9, 10, 9},   // REFERER
    {10, 9, 8},   // USER_AGENT
    {12, 12, 11}, // REQUEST_COOKIE
    {13, 13, 12}, // SET_COOKIE
    {14, 14, 13}, // HOST_HEADER
    {11, 11, 10}, // CONTENT_TYPE
    {15, 15, 14}, // LOCATION
    {0, 2, 2},    // DATE
    {0, 3, 3},    // TIME
    {0, 4, 4},    // METHOD
    {0, 5, 5},    // URL
    {0, 6, 0},    // QUERY_STRING
    {0, 7, 0},    // HTTP_VERSION
    {0, 0, 0},    // RESPONSE_TIME
    {0, 0, 0},    // RESPONSE_TIME_USEC
    {0, 0, 6},    // URL_QUERY
};

using Faults = std::vector<LayoutFault>;

bool are_response_times_read = false; // by read_response_times

bool is_missing(FieldKind kind) {
    return al_required_field_position[kind] == 0;
}

void require(Faults& faults, bool condition, FieldKind kind, const char* message) {
    if (!condition) {
        faults.push_back({make_failure("%s", message), kind});
    }
}

void require_range(Faults& faults, FieldKind kind) {
    const int position = al_required_field_position[kind];
    if (position < 0 || position > max_al_fields) {
        faults.push_back({make_failure("Field position for %s is more than max access log fields "
                                       "%d",
                                       al_required_fields[kind].name, max_al_fields),
                          kind});
    }
}

void require_uniqueness(Faults& faults, FieldKind kind) {
    for (int earlier = 0; earlier < kind; ++earlier) {
        if (al_required_field_position[earlier] == al_required_field_position[kind]) {
            faults.push_back(
                {make_failure("Field position for %s and %s are same in 'replay_setting.dat'",
                              al_required_fields[earlier].name, al_required_fields[kind].name),
                 kind});
        }
    }
}

bool is_read(int kind) {
    switch (kind) {
    case AL_CLIENT_IP:
        return session_mode == SESSION_MODE_CLIENT_IP;
    case AL_REQUEST_COOKIE:
    case AL_SET_COOKIE:
        return session_mode == SESSION_MODE_COOKIE;
    case AL_RESPONSE_TIME:
    case AL_RESPONSE_TIME_USEC:
        return consider_response_time != 0 || are_response_times_read;
    case AL_REFERER:
    case AL_USER_AGENT:
    case AL_CONTENT_TYPE:
    case AL_HTTP_VERSION:
        return false;
    default:
        return true;
    }
}

void find_fields_to_read() {
    read_field_count = 0;
    for (int i = 0; i < present_field_count; ++i) {
        if (is_read(present_fields[i].kind)) {
            read_fields[read_field_count++] = present_fields[i];
        }
    }
}

void require_fields_of_log_type(Faults& faults) {
    const auto need = [&](FieldKind kind, const char* message) {
        require(faults, !is_missing(kind), kind, message);
    };
    if (al_type == AL_TYPE_APACHE) {
        need(AL_DATE_AND_TIME, "Date and Time field is missing from access log format.");
        need(AL_REQUEST_LINE, "Request Line field is missing from access log format.");
        return;
    }
    need(AL_DATE, "Date field is missing from access log format.");
    need(AL_TIME, "Time field is missing from access log format.");
    need(AL_METHOD, "Http Method field is missing from access log format.");
    const bool has_url_and_query = !is_missing(AL_URL) && !is_missing(AL_QUERY_STRING);
    require(faults, has_url_and_query || !is_missing(AL_URL_QUERY), AL_URL_QUERY,
            "Url, Query and Url_Query field is missing, Either (URL + Qyery) or (URL_QUERY) should "
            "be given");
}

void require_fields_of_settings(Faults& faults) {
    require(faults, session_mode != SESSION_MODE_COOKIE || !is_missing(AL_REQUEST_COOKIE),
            AL_REQUEST_COOKIE,
            "Session mode is Cookie and Request Cookie Field is missing from access log format");
    require(faults, !is_missing(AL_STATUS_CODE), AL_STATUS_CODE,
            "Status code field is missing from access log format");
    require(faults, session_mode != SESSION_MODE_CLIENT_IP || !is_missing(AL_CLIENT_IP),
            AL_CLIENT_IP,
            "Session mode is CLient ip and Client ip is missing from access log format");
    const bool has_response_time =
        !is_missing(AL_RESPONSE_TIME) || !is_missing(AL_RESPONSE_TIME_USEC);
    require(faults, consider_response_time == 0 || has_response_time, AL_RESPONSE_TIME,
            "CONSIDER_RESPONSE_TIME keyword is enabled but response time field is missing.");
}

bool begins_with_keyword(const char* text, int kind) {
    const AlFields& field = al_required_fields[kind];
    return std::strncmp(text, field.name, static_cast<size_t>(field.len)) == 0;
}

// The text one character after the keyword that it begins with.
const char* position_after(const char* text, int kind) {
    const char* separator = text + al_required_fields[kind].len;
    return *separator == '\0' ? separator : separator + 1;
}

// Whether the text begins with a longer keyword than that of this kind.
bool begins_with_longer_keyword(const char* text, int kind) {
    for (int other = 0; other < al_field_kind_count; ++other) {
        if (al_required_fields[other].len > al_required_fields[kind].len &&
            begins_with_keyword(text, other)) {
            return true;
        }
    }
    return false;
}

// Tells the line observer what `text` has made of the position of a kind that it begins with.
void remark_on_position(const LinePlace& line, int kind, const char* text) {
    if (line_observer == nullptr) {
        return;
    }
    const AlFields& field = al_required_fields[kind];
    const LinePlace place = {line.file, line.line_num, field.name};
    if (begins_with_longer_keyword(text, kind)) {
        observe_line(place, ObservedKind::field_unset, text);
        return;
    }
    const char* position = position_after(text, kind);
    remark_on_separator(place, text + field.len);
    remark_on_number(place, position, 10, 0, max_al_fields);
    observe_line(place, ObservedKind::value_set, position);
}

} // namespace

void set_field_position(const LinePlace& place, const char* text) {
    al_modified_flag = 1;
    bool is_known = false;
    // A keyword that begins with a shorter one (DATE_AND_TIME with DATE) also sets the shorter
    // one's position, to the 0 that the rest of the longer keyword reads as.
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        if (begins_with_keyword(text, kind)) {
            const char* position = position_after(text, kind);
            al_required_field_position[kind] = static_cast<short>(std::atoi(position));
            remark_on_position(place, kind, text);
            is_known = true;
        }
    }
    if (!is_known) {
        remark_on_unknown(place, text);
    }
}

void set_default_field_positions() {
    if (al_modified_flag != 0) {
        return;
    }
    DEBUG_LOG(1, "main", "Access logs field position not given , setting default values.");
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        const DefaultPositions& positions = default_positions[kind];
        al_required_field_position[kind] = al_type == AL_TYPE_APACHE ? positions.apache
                                           : al_type == AL_TYPE_IIS  ? positions.iis
                                                                     : positions.other;
    }
}

std::vector<LayoutFault> find_layout_faults() {
    Faults faults;
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        if (al_required_field_position[kind] != 0) {
            require_range(faults, static_cast<FieldKind>(kind));
            require_uniqueness(faults, static_cast<FieldKind>(kind));
        }
    }
    require_fields_of_log_type(faults);
    require_fields_of_settings(faults);
    return faults;
}

bool read_response_times() {
    are_response_times_read = true;
    find_fields_to_read();
    return !is_missing(AL_RESPONSE_TIME) || !is_missing(AL_RESPONSE_TIME_USEC);
}

void validate_al_format() {
    std::vector<LayoutFault> faults = find_layout_faults();
    if (!faults.empty()) {
        throw std::move(faults.front().failure);
    }
    present_field_count = 0;
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        const int position = al_required_field_position[kind];
        if (position == 0) {
            continue;
        }
        max_required_field_position = std::max(max_required_field_position, position);
        present_fields[present_field_count++] = {kind, position - 1};
    }
    find_fields_to_read();
}
