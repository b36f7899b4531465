#include "tools/patterns/pattern_files.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/file_exists.h"
#include "base/logs.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/config/replay_profile.h"
#include "tools/patterns/pattern_regex.h"
#include "tools/patterns/pattern_tables.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <strings.h>

namespace {

constexpr size_t line_size = 4096;

bool equal_ignoring_case(const char* a, const char* b) {
    return strcasecmp(a, b) == 0;
}

// Lines of a pattern file without comments, empty lines and the column header, which only line 1
// can be.
class PatternLines {
  public:
    explicit PatternLines(const std::string& path) : file_(path, line_size) {}

    bool is_open() const { return file_.is_open(); }

    bool next(LineText& line) {
        while (file_.next(line)) {
            ++line_num_;
            const bool is_header = line_num_ == 1 && strncasecmp(line.text, "status", 6) == 0;
            if (line.size != 0 && line.text[0] != '#' && !is_header) {
                return true;
            }
        }
        return false;
    }

    int line_num() const { return line_num_; }

  private:
    TextFile file_;
    int line_num_ = 0;
};

// Hands every line of the file to `add_line`, with its number. Returns false when the file cannot
// be opened.
bool read_patterns(const char* path, void (*add_line)(char* line, int line_num)) {
    PatternLines lines(path);
    LineText line;
    while (lines.is_open() && lines.next(line)) {
        add_line(line.text, lines.line_num());
    }
    return lines.is_open();
}

// A table that patterns are added to, under the name that its growth is reported with.
struct GrowingTable {
    const char* name;
    UPInfo*& entries;
    int& total;
    int& max;
    bool has_transactions =
        false; // of main patterns, which also name transactions and post-data files
};

// The entry after the last one, zeroed.
UPInfo& next_entry(GrowingTable& table) {
    constexpr int growth = 1000;
    if (table.total == table.max) {
        table.entries = static_cast<UPInfo*>(grow_table(table.name, table.entries, table.total,
                                                        table.total + growth, sizeof(UPInfo)));
        table.max += growth;
    }
    return table.entries[table.total];
}

void set_method(UPInfo& entry, const char* field) {
    const char* method = equal_ignoring_case(field, na_string) ? na_string : field;
    std::snprintf(entry.method, sizeof entry.method, "%s", method);
}

char* shared_na() {
    return const_cast<char*>(na_string);
}

char* host_text(const char* table_name, const char* field) {
    return equal_ignoring_case(field, na_string) ? shared_na() : copy_text(table_name, field);
}

constexpr const char* url_fname = "save_url_pattern";

// Fields of a line of replay_url_patterns.dat; those not named are not read.
enum UrlPatternField {
    field_status = 0,
    field_type = 1,
    field_method = 2,
    field_txn_name = 4,
    field_host = 5,
    field_post_data_file = 7,
    field_pattern = 8,
    url_pattern_field_count = 9
};

GrowingTable main_table() {
    return {"main_url_pattern", main_url_pattern, total_main_url_pattern, max_main_url_pattern,
            true};
}

GrowingTable inline_table() {
    return {"inline_url_pattern", inline_url_pattern, total_inline_url_pattern,
            max_inline_url_pattern};
}

GrowingTable main_wotx_table() {
    return {"main_wotx_url_pattern", main_wotx_url_pattern, total_main_wotx_url_pattern,
            max_main_wotx_url_pattern};
}

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

void add_url_pattern(GrowingTable table, char* const fields[], int line_num) {
    UPInfo& entry = next_entry(table);
    entry.url_ptrn_string = copy_text(table.name, fields[field_pattern]);
    if (zvr_compile_regex(fields[field_pattern], 1, &entry.url_ptrn_regex) != 0) {
        fail("Failed to compile url pattern given at line '%d' in 'replay_url_patterns.dat' "
             "for profile '%s'",
             line_num, replay_profile);
    }
    set_method(entry, fields[field_method]);
    entry.host = host_text(table.name, fields[field_host]);
    entry.txn_name = shared_na();
    if (table.has_transactions) {
        entry.txn_name = copy_text(table.name, fields[field_txn_name]);
        entry.post_data_file = find_post_data_file(fields[field_post_data_file], line_num);
    }
    ++table.total;
}

void add_url_pattern_line(char* line, int line_num) {
    char* fields[url_pattern_field_count];
    int count;
    get_tokens1(line, fields, "|", url_pattern_field_count, &count);
    if (count < url_pattern_field_count) {
        fail("Invalid entry at line '%d' in 'replay_url_patterns.dat' for profile '%s'", line_num,
             replay_profile);
    }
    if (!equal_ignoring_case(fields[field_status], "active")) {
        DEBUG_LOG(3, url_fname, "Inactive pattern entry found , ignoring .");
        return;
    }
    if (equal_ignoring_case(fields[field_type], "main")) {
        DEBUG_LOG(4, url_fname, "Pattern found for main url");
        add_url_pattern(main_table(), fields, line_num);
    } else if (equal_ignoring_case(fields[field_type], "inline")) {
        DEBUG_LOG(4, url_fname, "Pattern found for inline url");
        add_url_pattern(inline_table(), fields, line_num);
    } else if (equal_ignoring_case(fields[field_type], "MAIN_WITHOUT_TX")) {
        DEBUG_LOG(4, url_fname, "Pattern found for main_without_tx");
        add_url_pattern(main_wotx_table(), fields, line_num);
    } else {
        DEBUG_LOG(3, url_fname, "Different type of url pattern found, ignoring.");
    }
}

constexpr const char* filter_fname = "save_filter_url_pattern";

// Fields of a line of replay_url_filter_patterns.dat; the one not named is not read.
enum FilterPatternField {
    filter_status = 0,
    filter_method = 1,
    filter_host = 3,
    filter_pattern = 4,
    filter_pattern_field_count = 5
};

void add_filter_pattern_line(char* line, int line_num) {
    char* fields[filter_pattern_field_count];
    int count;
    get_tokens1(line, fields, "|", filter_pattern_field_count, &count);
    if (count < filter_pattern_field_count) {
        fail("Invalid filter pattern at line '%d' in 'replay_url_filter_patterns.dat' in profile "
             "'%s'",
             line_num, replay_profile);
    }
    if (!equal_ignoring_case(fields[filter_status], "active")) {
        return;
    }
    GrowingTable table = {"filter_url_pattern", filter_url_pattern, total_filter_url_pattern,
                          max_filter_url_pattern};
    UPInfo& entry = next_entry(table);
    if (zvr_compile_regex(fields[filter_pattern], 1, &entry.url_ptrn_regex) != 0) {
        fail("Invalid url pattern at line '%d' in 'replay_url_filter_patterns.dat' in profile '%s'",
             line_num, replay_profile);
    }
    DEBUG_LOG(4, filter_fname, "filter url pattern '%s' successfully added",
              fields[filter_pattern]);
    entry.url_ptrn_string = copy_text(table.name, fields[filter_pattern]);
    set_method(entry, fields[filter_method]);
    entry.host = host_text(table.name, fields[filter_host]);
    entry.txn_name = shared_na();
    ++table.total;
}

} // namespace

void save_url_pattern(const char* url_pattern_file) {
    DEBUG_LOG(3, url_fname, "Processing 'replay_url_patterns.dat' for profile '%s'",
              replay_profile);
    if (!read_patterns(url_pattern_file, add_url_pattern_line)) {
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
    if (!read_patterns(filter_file, add_filter_pattern_line)) {
        fail("Failed to open 'replay_url_filter_patterns.dat' for profile '%s'", replay_profile);
    }
    DEBUG_LOG(3, filter_fname, "total '%d' filter url pattern found.", total_filter_url_pattern);
}
