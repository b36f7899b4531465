#include "base/failure.h"
#include "companions/common/installation.h"
#include "companions/doctor/check_command.h"
#include "companions/doctor/findings_output.h"
#include "tests/companions/properties/companion_properties.h"
#include "tests/properties/properties.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"

#include <cstdlib>
#include <vector>

namespace {

using Words = std::vector<std::string>;

const std::string project = "workspace/admin/default/quarvel/default/default";

// Files of an installation, and of what their lines are made.
struct InputForm {
    std::string path;
    Words starts;
    Words parts;
};

const InputForm forms[] = {
    {project + "/replay_profiles/web/replay_settings.dat",
     {"", "#", "AL_FIELD ", "al_field URL", "AUTO_REDIRECT", "COOKIE_NAME ", "NEW_USER_TIME ",
      "NUM_THREAD ", "SECONDARY_COOKIE ", "USER_SESSION_KEY ", "ACCESS_LOG_TYPE ", "COKIE_NAME",
      "IGNORE_URL_QUERY_PARAM 1", "AL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\n"},
     {"1", "-7", " ", "\t", "x", ":", "1:2:3", "IIS", "client_ip", "STATUS_CODE 6", "_QUERY", "\r",
      "99999999999", "CLIENT_IP 1", "\x1b[2J", "\xff", "\xef\xbb\xbf"}},
    {project + "/scenarios/web.conf",
     {"", "#", "TNAME ", "REPLAY_LOG_FILE ", "REPLAY_LOG_FILE /dev/null x 0", "REPLAY_PERIOD ",
      "REPLAY_PERIOD START 1/2/2026 10:00:0"},
     {"1", "-7", " ", "\t", "x ", "HTTPS", "POST", "END", "NA", "12/31/2026 23:59:59", "0x1", "\r",
      "/etc/passwd x 0 HTTP", "/ x 0 HTTP", "\x1b[2J"}},
    {project + "/replay_profiles/web/replay_url_patterns.dat",
     {"", "#", "status", "active|main|na|-|T|na|-|na|", "active|inline|na|-|T|h|-|-|",
      "off|x|x|x|x|x|x|x|", "active|other|x|x|x|x|x|x|"},
     {"/a", "*", "|", "||", "(", ")", "[a]", "?", ".", "\\", "\r", "GET", "\x1b[2J", "b?x=1"}},
    {project + "/replay_profiles/web/replay_url_filter_patterns.dat",
     {"", "#", "status", "active|na|-|na|", "off|x|x|x|"},
     {"/a", "*", "|", "[", "\\?", "\r", " ", "GET", "\x1b[2J"}},
    {"sys/replay_settings.default", {"", "GMT_OFFSET"}, {" ", "+", "-", "05", "30", "\x1b[2J"}},
    {project + "/ReplayAccessLogs/web/config/hosts.list", {"h", "H"}, {".", "a", "\x1b[2J"}},
};

std::string lines_of(Choices& choices, const InputForm& form) {
    std::string text;
    for (size_t lines = choices.below(8); lines > 0; --lines) {
        text += choices.of(form.starts);
        for (size_t parts = choices.below(5); parts > 0; --parts) {
            text += choices.of(form.parts);
        }
        text += choices.one_in(8) ? "" : "\n";
    }
    return text;
}

// One of the files is any bytes.
void write_inputs(Choices& choices, const TemporaryDirectory& installation) {
    const InputForm* const wild = choices.one_in(3) ? &choices.of(forms) : nullptr;
    for (const InputForm& form : forms) {
        if (&form != wild) {
            installation.write(form.path, lines_of(choices, form));
        }
    }
    if (wild != nullptr) {
        std::string bytes = choices.rest(std::string_view("\0\xff\xfe\n|a*[(\\?", 11), 60);
        // The library takes any time and memory for counts and pluses of one another.
        std::erase_if(bytes, [](char c) { return c == '{' || c == '+'; });
        installation.write(wild->path, bytes);
    }
}

// As a process begins.
void forget_all() {
    std::free(replay_profile);
    std::free(replay_profile_dir);
    static char none[] = "none";
    replay_profile = none;
    refusal_of_settings(none); // puts the settings back
    ignore_query_flag = 0;
    inline_mode = INLINE_MODE_SKIP;
    ignore_non_session_urls = 1;
    forget_log_files();
    forget_patterns();
    g_num_instance = 0;
    start_time_stamp = end_time_stamp = 0;
    time_filter_flag = 0;
    replay_profile = replay_profile_dir = nullptr;
}

// No control characters, of one byte or in UTF-8 of two.
bool is_fit_for_terminal(const std::string& text) {
    unsigned char last = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool is_control = (byte < ' ' && c != '\n') || byte == 0x7f;
        const bool ends_control = last == 0xc2 && byte >= 0x80 && byte <= 0x9f;
        if (is_control || ends_control) {
            return false;
        }
        last = byte;
    }
    return true;
}

std::string printed(const Findings& findings) {
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    print_findings(stream, findings);
    print_json(stream, findings_as_json(findings));
    std::fclose(stream);
    const std::string all(text, size);
    std::free(text);
    return all;
}

std::string failure_of_run(const RunOptions& options) {
    try {
        read_installation(options);
    } catch (const Failure& failure) {
        return failure.message;
    }
    return "";
}

} // namespace

void check_checked_inputs(Choices& choices) {
    static const TemporaryDirectory installation;
    write_inputs(choices, installation);
    RunOptions options;
    options.scenario = "web";
    options.work_dir = installation.path();
    forget_all();
    const Findings findings = check_scenario_inputs(options);
    EXPECT_TRUE(is_fit_for_terminal(printed(findings))) << printed(findings);
    for (const Finding& finding : findings) {
        EXPECT_FALSE(finding.id.empty() || finding.meaning.empty());
    }
    forget_all();
    const std::string failure = failure_of_run(options);
    EXPECT_TRUE(failure.empty() || exit_status_of(findings) == 2) << failure;
    forget_all();
}
