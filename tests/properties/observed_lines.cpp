#include "tests/support/observed_lines.h"

#include "base/failure.h"
#include "tests/properties/properties.h"
#include "tools/config/field_layout.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"
#include "tools/config/scenario_file.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_tables.h"

#include <algorithm>
#include <sstream>

namespace {

char profile[] = "profile";

std::string settings_read_from(const std::string& path) {
    std::ostringstream read;
    read << refusal_of_settings(path) << '|' << int{session_mode} << cookie_name << '|'
         << int{al_type} << inline_mode << auto_redirect_flag << '|' << g_num_thread << '|'
         << secondary_cookie_enable << secondary_cookie << '|' << new_user_time;
    for (const short position : al_required_field_position) {
        read << '|' << position;
    }
    return read.str();
}

std::string scenario_read_from(const std::string& path) {
    std::ostringstream read;
    num_al_files = 0;
    start_time_stamp = end_time_stamp = 0;
    time_filter_flag = 0;
    try {
        read_scenario_file(path);
    } catch (const Failure& failure) {
        read << failure.message;
    }
    read << '|' << start_time_stamp << '|' << end_time_stamp << '|' << int{time_filter_flag};
    for (int i = 0; i < num_al_files; ++i) {
        const InputFileInfo& file = seq_file_path[i];
        read << '|' << file.input_file << '|' << file.num_req << '|' << int{file.body_flag}
             << int{file.ssl_flag};
    }
    forget_log_files();
    return read.str();
}

template <void (*save)(const char*)> std::string patterns_read_from(const std::string& path) {
    std::ostringstream read;
    replay_profile = replay_profile_dir = profile;
    try {
        save(path.c_str());
    } catch (const Failure& failure) {
        read << failure.message;
    }
    for (const PatternTable& table : pattern_tables) {
        for (int i = 0; i < table.total; ++i) {
            const UPInfo& entry = table.entries[i];
            read << '|' << entry.txn_name << '|' << entry.host << '|' << entry.method << '|'
                 << entry.url_ptrn_string;
        }
    }
    forget_patterns();
    return read.str();
}

// A file of lines that begin alike, with what they may go on with.
struct FileForm {
    std::string (*read_from)(const std::string& path); // what reading has left behind
    std::vector<std::string> starts;
    std::vector<std::string> parts;
};

const FileForm forms[] = {
    {settings_read_from,
     {"", "#", "x", "AL_FIELD ", "AUTO_REDIRECT", "COOKIE_NAME ", "INLINE_OBJECT_MODE ",
      "NEW_USER_TIME ", "NUM_THREAD ", "SECONDARY_COOKIE ", "USER_SESSION_KEY ",
      "ACCESS_LOG_TYPE "},
     {"1", "-7", " ", "\t", "x", ":", "1:2:3", "auto", "IIS", "client_ip", "URL", "_QUERY", "DATE",
      "99999999999", "\r"}},
    {scenario_read_from,
     {"", "#", "x", "REPLAY_LOG_FILE ", "REPLAY_LOG_FILE /a x 0", "REPLAY_PERIOD ",
      "REPLAY_PERIOD START 1/2/2026 10:00:0"},
     {"1", "-7", " ", "\t", "x ", "HTTPS", "POST", "END", "NA", "12/31/2026 23:59:59", "0x1",
      "\r"}},
    {patterns_read_from<save_url_pattern>,
     {"", "#", "status", "active|main|na|-|T|na|-|na|", "active|inline|na|-|T|na|-|-|",
      "off|x|x|x|x|x|x|x|", "active|other|x|x|x|x|x|x|"},
     {"/a", "*", "|", "||", "(", "\r", " ", "GET"}},
    {patterns_read_from<save_filter_url_pattern>,
     {"", "#", "status", "active|na|-|na|", "off|x|x|x|"},
     {"/a", "*", "|", "||", "(", "\r", " ", "GET"}},
};

std::string random_file(Choices& choices, const FileForm& form) {
    std::string text;
    for (size_t lines = 1 + choices.below(6); lines > 0; --lines) {
        text += choices.of(form.starts);
        for (size_t parts = choices.below(5); parts > 0; --parts) {
            text += choices.of(form.parts);
        }
        text += '\n';
    }
    return text;
}

// Each line has one outcome, which is the last that is told of it; the last line is that of the
// file, or one for which the reader fails.
void expect_one_outcome_each(const std::vector<Observed>& told, std::ptrdiff_t line_count) {
    int line_num = 1;
    bool is_refused = false;
    for (const Observed& observed : told) {
        EXPECT_EQ(observed.line_num, line_num) << observed;
        EXPECT_FALSE(is_refused) << observed;
        line_num += observed.kind <= ObservedKind::post_data_missing ? 1 : 0;
        is_refused = observed.kind >= ObservedKind::value_too_long &&
                     observed.kind <= ObservedKind::post_data_missing;
    }
    EXPECT_TRUE(is_refused || line_num == line_count + 1) << line_num;
}

} // namespace

void forget_log_files() {
    while (num_al_files > 0) {
        std::free(seq_file_path[--num_al_files].input_file);
    }
}

void check_observed_lines(Choices& choices) {
    static const TemporaryDirectory directory;
    const FileForm& form = choices.of(forms);
    const std::string text = random_file(choices, form);
    SCOPED_TRACE(text);
    const std::string path = directory.write("file", text);
    const std::string read = form.read_from(path);
    LinesObserved observer;
    EXPECT_EQ(form.read_from(path), read);
    expect_one_outcome_each(observer.take(), std::count(text.begin(), text.end(), '\n'));
}
