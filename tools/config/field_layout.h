#pragma once

#include "base/failure.h"
#include "base/line_observer.h"

#include <vector>

// Which field of an access-log line holds what: from AL_FIELD lines of the replay settings, or the
// default layout of the log type.

// Kinds of fields: index into the two tables below.
enum FieldKind {
    AL_CLIENT_IP,
    AL_DATE_AND_TIME,
    AL_REQUEST_LINE,
    AL_STATUS_CODE,
    AL_REFERER,
    AL_USER_AGENT,
    AL_REQUEST_COOKIE,
    AL_SET_COOKIE,
    AL_HOST_HEADER,
    AL_CONTENT_TYPE,
    AL_LOCATION,
    AL_DATE,
    AL_TIME,
    AL_METHOD,
    AL_URL,
    AL_QUERY_STRING,
    AL_HTTP_VERSION,
    AL_RESPONSE_TIME,
    AL_RESPONSE_TIME_USEC,
    AL_URL_QUERY,
    al_field_kind_count
};

constexpr int max_al_fields = 25; // fields of an access-log line that are looked at

struct AlFields {
    char name[25]; // keyword in an AL_FIELD line
    int len;       // its length
};
using alFields = AlFields;

extern const alFields al_required_fields[al_field_kind_count];

// A field that the log has.
struct PresentField {
    int kind;
    int index; // into the fields of a split line, from 0
};

// Set while the settings are read, completed by set_default_field_positions and validate_al_format,
// all on the main thread; only read once logs are loaded.
extern short
    al_required_field_position[al_field_kind_count]; // 1 to 25: the n-th field; 0: not in the log
extern int max_required_field_position; // highest position in use; a line with fewer fields is bad
extern int present_field_count;         // fields in the log, the entries in use of the next table
extern PresentField present_fields[al_field_kind_count]; // in the order of their kinds
extern int read_field_count; // of these, the fields that the settings have a use for
extern PresentField read_fields[al_field_kind_count]; // likewise
extern char al_modified_flag;                         // 1 once the settings held an AL_FIELD line

// Applies the text after "AL_FIELD" and its separator: a field keyword, one character, and a
// position. `place` is that of the line.
void set_field_position(const LinePlace& place, const char* text);

// Gives all kinds the positions of the log type's default layout when the settings named none.
void set_default_field_positions();

// Why a layout is refused.
struct LayoutFault {
    Failure failure; // that a run ends with
    FieldKind kind;  // the field that is missing or has a wrong position
};

// All faults of the layout as it stands, in the order in which they are looked for: a position is
// out of range or used twice, or a field is missing that the log type or the settings need.
std::vector<LayoutFault> find_layout_faults();

// Lets the parsers read response times whether the settings have a use for them or not; no result
// depends on it. Returns whether the log has any. To be called after validate_al_format; never in
// the tool.
bool read_response_times();

// Fails with the first of these faults. Sets max_required_field_position, present_fields and
// read_fields.
void validate_al_format();
