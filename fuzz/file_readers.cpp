// The files that a run reads besides logs: any bytes have to end in a failure that says why, or in
// success, and what was read is then sound. The fuzzer's bytes are the file's.

#include "base/failure.h"
#include "tests/properties/properties.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"
#include "tools/config/scenario_file.h"
#include "tools/config/settings_file.h"
#include "tools/load/input_files.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_tables.h"

#include <cstring>

namespace {

const TemporaryDirectory directory;

template <typename Read> void read_or_fail(const Read& read) {
    try {
        read();
    } catch (const Failure& failure) {
        EXPECT_NE(failure.message, "");
    }
}

} // namespace

void check_settings(Choices& choices) {
    if (refusal_of_settings(directory.write("settings", choices.rest("", 0))) != "") {
        return;
    }
    EXPECT_TRUE(session_mode == SESSION_MODE_CLIENT_IP || cookie_name[0] != '\0');
    for (int i = 0; i < present_field_count; ++i) {
        const int index = present_fields[i].index;
        EXPECT_TRUE(index >= 0 && index < max_required_field_position);
    }
    EXPECT_LE(max_required_field_position, max_al_fields);
}

void check_scenario(Choices& choices) {
    const std::string path = directory.write("scenario.conf", choices.rest("", 0));
    g_num_instance = 0;
    read_or_fail([&] {
        read_scenario_file(path);
        process_input_file_list2();
        EXPECT_LE(g_num_instance, num_al_files);
    });
    forget_log_files();
}

void check_patterns(Choices& choices) {
    const auto read_file = choices.one_in(2) ? save_filter_url_pattern : save_url_pattern;
    std::string bytes = choices.rest("", 0);
    // The library takes any time and memory for counts and pluses of one another.
    std::erase_if(bytes, [](char c) { return c == '{' || c == '+'; });
    const std::string path = directory.write("patterns", bytes);
    replay_profile = replay_profile_dir = const_cast<char*>("/");
    read_or_fail([&] {
        read_file(path.c_str());
        for (int i = 0; i < total_main_url_pattern; ++i) {
            const UPInfo& entry = main_url_pattern[i];
            EXPECT_LE(strnlen(entry.method, sizeof entry.method), max_method_length);
            EXPECT_TRUE(entry.host != nullptr && entry.txn_name != nullptr);
        }
    });
    forget_patterns();
}

void check_cached_list(Choices& choices) {
    directory.write("complete_url.list", choices.rest("", 0));
    read_or_fail([] { expect_list_is_kept(directory.path()); });
}
