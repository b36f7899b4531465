#pragma once

#include "tools/parse/field_splitter.h"
#include "tools/parse/parsing_thread.h"
#include "tools/parse/request_record.h"

#include <cstdint>

// The parsers of the three log dialects. Each turns one line, without its line end, into the record
// `al_info_array_t[seq_no]` of the calling thread and splits the line in place. `file_name` and
// `line_num` serve the messages. The line is as get_al_fields needs it, its quotes are in
// `thread`. Returns 0 when the request is accepted; -1 when the line is bad or
// outside the replay period: it is then counted in `thread` and the record is left as it was.
//
// The cookie headers in the record (`cookies`, `set_cookies`) hold until the thread's next line.

using LineParser = int(ParsingThread& thread, alInfo* al_info_array_t, LineText line,
                       const char* file_name, uint64_t seq_no, int64_t line_num);

LineParser parse_al_line;          // Apache and custom formats: bracketed time, quoted request line
LineParser parse_al_line_iis;      // IIS: date, time, method, URL and query are fields of their own
LineParser parse_al_line_weblogic; // WebLogic: the same fields
