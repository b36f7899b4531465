#include "tools/patterns/pattern_files.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/file_exists.h"
#include "base/logs.h"
#include "base/tokenizers.h"
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
char* find_post_data_file(const char* field, int line_num) {
    if (equal_ignoring_case(field, na_string)) {
        return nullptr;
    }
    const std::string path =
        field[0] == '/' ? std::string(field) : std::string(replay_profile_dir) + "/" + field;
    DEBUG_LOG(3, url_fname,
              "Post data file - '%s' found at line num '%d' in 'replay_url_patterns.dat'",
              path.c_str(), line_num);
    if (!file_exists(path.c_str())) {
        fail("Post data File '%s' not found for profile %s", path.c_str(), replay_profile);
    }
    return copy_text("post_data_file", path);
}

void add_url_pattern(PatternKind kind, char* const fields[], int line_num) {
    const PatternTable& table = pattern_tables[kind];
    UPInfo& entry = next_pattern(table);
    if (!fill_pattern(
            table,
            {fields[URL_PATTERN_PATTERN], fields[URL_PATTERN_METHOD], fields[URL_PATTERN_HOST]},
            entry)) {
        fail("Failed to compile url pattern given at line '%d' in 'replay_url_patterns.dat' "
             "for profile '%s'",
             line_num, replay_profile);
    }
    if (kind == PATTERN_MAIN) {
        entry.txn_name = copy_text(table.name, fields[URL_PATTERN_TXN_NAME]);
        entry.post_data_file = find_post_data_file(fields[URL_PATTERN_POST_DATA_FILE], line_num);
    }
    ++table.total;
}

void add_url_pattern_line(char* line, int line_num) {
    char* fields[url_pattern_column_count];
    int count;
    get_tokens1(line, fields, "|", url_pattern_column_count, &count);
    if (count < url_pattern_column_count) {
        fail("Invalid entry at line '%d' in 'replay_url_patterns.dat' for profile '%s'", line_num,
             replay_profile);
    }
    if (!is_active(fields[URL_PATTERN_STATUS])) {
        DEBUG_LOG(3, url_fname, "Inactive pattern entry found , ignoring .");
        return;
    }
    for (const PatternType& type : pattern_types) {
        if (equal_ignoring_case(fields[URL_PATTERN_TYPE], type.name)) {
            DEBUG_LOG(4, url_fname, "%s", type.debug_line);
            add_url_pattern(type.kind, fields, line_num);
            return;
        }
    }
    DEBUG_LOG(3, url_fname, "Different type of url pattern found, ignoring.");
}

constexpr const char* filter_fname = "save_filter_url_pattern";

void add_filter_pattern_line(char* line, int line_num) {
    char* fields[filter_pattern_column_count];
    int count;
    get_tokens1(line, fields, "|", filter_pattern_column_count, &count);
    if (count < filter_pattern_column_count) {
        fail("Invalid filter pattern at line '%d' in 'replay_url_filter_patterns.dat' in profile "
             "'%s'",
             line_num, replay_profile);
    }
    if (!is_active(fields[FILTER_PATTERN_STATUS])) {
        return;
    }
    const PatternTable& table = pattern_tables[PATTERN_FILTER];
    const char* pattern = fields[FILTER_PATTERN_PATTERN];
    if (!fill_pattern(table, {pattern, fields[FILTER_PATTERN_METHOD], fields[FILTER_PATTERN_HOST]},
                      next_pattern(table))) {
        fail("Invalid url pattern at line '%d' in 'replay_url_filter_patterns.dat' in profile '%s'",
             line_num, replay_profile);
    }
    ++table.total;
    DEBUG_LOG(4, filter_fname, "filter url pattern '%s' successfully added", pattern);
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
