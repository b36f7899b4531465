// The files that a run reads besides logs: any bytes have to end in an error line, or in success,
// and what was read is then sound. The fuzzer's bytes are the file's.

#include "base/workspace_directory.h"
#include "tests/properties/properties.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"
#include "tools/config/scenario_file.h"
#include "tools/config/settings_file.h"
#include "tools/driver/paths.h"
#include "tools/load/input_files.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_tables.h"

#include <cstdarg>
#include <cstring>
#include <fcntl.h>

[[noreturn]] void end_run(const char*, const char*, ...) asm("__wrap__Z11fatal_errorPKcS0_z");
FILE* real_fopen(const char* path, const char* mode) asm("__real_fopen64");
FILE* note_opened(const char* path, const char* mode) asm("__wrap_fopen64");

namespace {

struct RunEnded {};

const TemporaryDirectory directory;
FILE* opened = nullptr; // last
int opened_descriptor;

template <typename Run> void run_to_some_end(const Run& run) {
    try {
        run();
    } catch (const RunEnded&) {
        if (opened != nullptr && fcntl(opened_descriptor, F_GETFD) != -1) {
            std::fclose(opened); // the program leaves it open when it ends
        }
    }
}

} // namespace

void end_run(const char*, const char* format, ...) {
    char message[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    throw RunEnded();
}

FILE* note_opened(const char* path, const char* mode) {
    opened = real_fopen(path, mode);
    opened_descriptor = opened == nullptr ? -1 : fileno(opened);
    return opened;
}

void check_settings(Choices& choices) {
    const std::string path = directory.write("settings", choices.rest("", 0));
    al_type = AL_TYPE_APACHE;
    session_mode = SESSION_MODE_COOKIE;
    cookie_name[0] = al_modified_flag = 0;
    consider_response_time = max_required_field_position = 0;
    std::memset(al_required_field_position, 0, sizeof al_required_field_position);
    run_to_some_end([&] {
        read_replay_prof_setting(path.c_str());
        EXPECT_TRUE(session_mode == SESSION_MODE_CLIENT_IP || cookie_name[0] != '\0');
        set_default_field_positions();
        validate_al_format();
        for (int i = 0; i < present_field_count; ++i) {
            const int index = present_fields[i].index;
            EXPECT_TRUE(index >= 0 && index < max_required_field_position);
        }
        EXPECT_LE(max_required_field_position, max_al_fields);
    });
}

void check_scenario(Choices& choices) {
    directory.write("p/s/scenarios/name.conf", choices.rest("", 0));
    directory.path().copy(g_zv_ta_dir, sizeof g_zv_ta_dir);
    std::strcpy(project, "p");
    std::strcpy(sub_proj, "s");
    std::strcpy(scenario, "name");
    g_num_instance = 0;
    run_to_some_end([] {
        read_scenario_file(directory.path("p/s/scenarios/name.conf"));
        process_input_file_list2();
        EXPECT_LE(g_num_instance, num_al_files);
    });
    while (num_al_files > 0) {
        std::free(seq_file_path[--num_al_files].input_file);
    }
}

void check_patterns(Choices& choices) {
    const auto read_file = choices.one_in(2) ? save_filter_url_pattern : save_url_pattern;
    std::string bytes = choices.rest("", 0);
    // The library takes any time and memory for counts and pluses of one another.
    std::erase_if(bytes, [](char c) { return c == '{' || c == '+'; });
    const std::string path = directory.write("patterns", bytes);
    replay_profile = replay_profile_dir = const_cast<char*>("/");
    run_to_some_end([&] {
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
    run_to_some_end([] { expect_list_is_kept(directory.path()); });
}
