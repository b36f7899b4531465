#include "tools/patterns/pattern_files.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/file_exists.h"
#include "base/line_observer.h"
#include "base/logs.h"
#include "tools/config/replay_profile.h"
#include "tools/patterns/pattern_columns.h"
#include "tools/patterns/pattern_lines.h"
#include "tools/patterns/pattern_tables.h"

#include <string>

namespace {

constexpr const char* url_fname = "save_url_pattern";

struct PatternType {
    const char* name; // in the file
    PatternKind kind;
    const char* debug_line;
};

constexpr PatternType pattern_types[] = {
    {main_pattern_type, PATTERN_MAIN, "Pattern found for main url"},
    {"inline", PATTERN_INLINE, "Pattern found for inline url"},
    {"MAIN_WITHOUT_TX", PATTERN_MAIN_WITHOUT_TX, "Pattern found for main_without_tx"},
};

// Path of the post-data file that a main pattern names, relative names within the profile; null for
// "NA".
char* find_post_data_file(const LinePlace& place, const char* field) {
    if (equal_ignoring_case(field, na_string)) {
        return nullptr;
    }
    const std::string path =
        field[0] == '/' ? std::string(field) : std::string(replay_profile_dir) + "/" + field;
    DEBUG_LOG(3, url_fname,
              "Post data file - '%s' found at line num '%d' in 'replay_url_patterns.dat'",
              path.c_str(), place.line_num);
    if (!file_exists(path.c_str())) {
        observe_line(place, ObservedKind::post_data_missing, path);
        fail("Post data File '%s' not found for profile %s", path.c_str(), replay_profile);
    }
    return copy_text("post_data_file", path);
}

void add_url_pattern(const LinePlace& place, PatternKind kind, char* const fields[]) {
    const PatternTable& table = pattern_tables[kind];
    UPInfo& entry = next_pattern(table);
    if (!fill_pattern(
            place, table,
            {fields[URL_PATTERN_PATTERN], fields[URL_PATTERN_METHOD], fields[URL_PATTERN_HOST]},
            entry)) {
        fail("Failed to compile url pattern given at line '%d' in 'replay_url_patterns.dat' "
             "for profile '%s'",
             place.line_num, replay_profile);
    }
    if (kind == PATTERN_MAIN) {
        entry.txn_name = copy_text(table.name, fields[URL_PATTERN_TXN_NAME]);
        entry.post_data_file = find_post_data_file(place, fields[URL_PATTERN_POST_DATA_FILE]);
    }
    ++table.total;
    observe_line(place, ObservedKind::taken, entry.url_ptrn_string);
}

void add_url_pattern_line(const LinePlace& place, LineText line) {
    char* fields[url_pattern_column_count];
    if (!split_pattern_line(place, line, fields, url_pattern_column_count)) {
        fail("Invalid entry at line '%d' in 'replay_url_patterns.dat' for profile '%s'",
             place.line_num, replay_profile);
    }
    if (skip_inactive(place, fields[URL_PATTERN_STATUS])) {
        DEBUG_LOG(3, url_fname, "Inactive pattern entry found , ignoring .");
        return;
    }
    for (const PatternType& type : pattern_types) {
        if (equal_ignoring_case(fields[URL_PATTERN_TYPE], type.name)) {
            DEBUG_LOG(4, url_fname, "%s", type.debug_line);
            add_url_pattern({place.file, place.line_num, type.name}, type.kind, fields);
            return;
        }
    }
    DEBUG_LOG(3, url_fname, "Different type of url pattern found, ignoring.");
    observe_line(place, ObservedKind::unknown_type, fields[URL_PATTERN_TYPE]);
}

constexpr const char* filter_fname = "save_filter_url_pattern";

void add_filter_pattern_line(const LinePlace& place, LineText line) {
    char* fields[filter_pattern_column_count];
    if (!split_pattern_line(place, line, fields, filter_pattern_column_count)) {
        fail("Invalid filter pattern at line '%d' in 'replay_url_filter_patterns.dat' in profile "
             "'%s'",
             place.line_num, replay_profile);
    }
    if (skip_inactive(place, fields[FILTER_PATTERN_STATUS])) {
        return;
    }
    const PatternTable& table = pattern_tables[PATTERN_FILTER];
    const LinePlace filter_place = {place.file, place.line_num, "filter"};
    const char* pattern = fields[FILTER_PATTERN_PATTERN];
    if (!fill_pattern(filter_place, table,
                      {pattern, fields[FILTER_PATTERN_METHOD], fields[FILTER_PATTERN_HOST]},
                      next_pattern(table))) {
        fail("Invalid url pattern at line '%d' in 'replay_url_filter_patterns.dat' in profile '%s'",
             place.line_num, replay_profile);
    }
    ++table.total;
    DEBUG_LOG(4, filter_fname, "filter url pattern '%s' successfully added", pattern);
    observe_line(filter_place, ObservedKind::taken, pattern);
}

} // namespace

void save_url_pattern(const char* url_pattern_file) {
    DEBUG_LOG(3, url_fname, "Processing 'replay_url_patterns.dat' for profile '%s'",
              replay_profile);
    if (!read_pattern_lines(url_pattern_file, add_url_pattern_line)) {
        fail("Failed to open 'replay_url_patterns.dat' for profile '%s'", replay_profile);
    }
    DEBUG_LOG(3, url_fname, "'replay_url_patterns.dat' successfully processed for profile '%s'",
              replay_profile);
    DEBUG_LOG(3, url_fname, "Total inline url pattern = %d added", total_inline_url_pattern);
    DEBUG_LOG(3, url_fname, "Total main url pattern = %d added", total_main_url_pattern);
    DEBUG_LOG(3, url_fname, "Total main without transaction url pattern = %d added",
              total_main_wotx_url_pattern);
}

void save_filter_url_pattern(const char* filter_file) {
    DEBUG_LOG(3, filter_fname, "Processing 'replay_url_filter_patterns.dat' for profile '%s'",
              replay_profile);
    if (!read_pattern_lines(filter_file, add_filter_pattern_line)) {
        fail("Failed to open 'replay_url_filter_patterns.dat' for profile '%s'", replay_profile);
    }
    DEBUG_LOG(3, filter_fname, "total '%d' filter url pattern found.", total_filter_url_pattern);
}
