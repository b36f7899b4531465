#include "tools/config/settings_file.h"

#include "base/failure.h"
#include "base/input_file.h"
#include "base/logs.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/config/field_layout.h"
#include "tools/config/keyword_text.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"
#include "tools/config/value_remarks.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr const char* fname = "read_replay_prof_setting";

// Stores the value up to its first blank; a tab or a carriage return belongs to the word.
template <size_t capacity> void store_word(char (&field)[capacity], const SettingLine& line) {
    const std::string_view word(line.value, std::strcspn(line.value, " "));
    if (word.size() >= capacity) {
        observe_line(line.place, ObservedKind::value_too_long, word);
        fail("Value of %s in replay setting file is longer than %zu characters",
             std::string(line.place.name).c_str(), capacity - 1);
    }
    std::memcpy(field, word.data(), word.size());
    field[word.size()] = '\0';
    if (word.empty()) {
        observe_line(line.place, ObservedKind::value_missing, word);
    }
    remark_on_spacing(line.place, word);
    remark_on_rest(line.place, word.data() + word.size());
}

int read_number(const LinePlace& place, const char* text, int lowest = INT_MIN) {
    remark_on_number(place, text, 10, lowest, INT_MAX);
    return std::atoi(text);
}

bool read_flag(const SettingLine& line) {
    return read_number(line.place, line.value) != 0;
}

// Whether the value begins with the word, which is enough to be taken for it.
bool is_word(const SettingLine& line, std::string_view word) {
    if (!begins_with(line.value, word)) {
        return false;
    }
    remark_on_rest(line.place, line.value + word.size());
    return true;
}

void set_default_host(const SettingLine& line) {
    store_word(default_host, line);
    DEBUG_LOG(4, fname, "Default host = '%s'", default_host);
}

void set_ignore_query(const SettingLine& line) {
    ignore_query_flag = read_flag(line);
    DEBUG_LOG(4, fname, "IGNORE_URL_QUERY_PARAM = %d", ignore_query_flag);
}

void set_auto_redirect(const SettingLine& line) {
    auto_redirect_flag = read_flag(line);
    DEBUG_LOG(4, fname, "AUTO_REDIRECT = %d", auto_redirect_flag);
}

void set_inline_mode(const SettingLine& line) {
    if (is_word(line, "skip")) {
        inline_mode = INLINE_MODE_SKIP;
    } else if (is_word(line, "auto")) {
        inline_mode = INLINE_MODE_AUTO;
    } else if (is_word(line, "asperlog")) {
        inline_mode = INLINE_MODE_AS_PER_LOG;
    } else {
        remark_on_unknown(line.place, line.value);
        observe_line(line.place, ObservedKind::value_kept, line.value);
    }
}

void set_session_mode(const SettingLine& line) {
    session_mode = is_word(line, "client_ip") ? SESSION_MODE_CLIENT_IP : SESSION_MODE_COOKIE;
    if (session_mode == SESSION_MODE_COOKIE && !is_word(line, "cookie")) {
        remark_on_unknown(line.place, line.value);
    }
}

void set_cookie_name(const SettingLine& line) {
    store_word(cookie_name, line);
}

void set_ignore_non_session(const SettingLine& line) {
    ignore_non_session_urls = read_flag(line);
    DEBUG_LOG(4, fname, "IGNORE_NON_SESSION_URLS = %d", ignore_non_session_urls);
}

void set_log_type(const SettingLine& line) {
    if (is_word(line, "APACHE")) {
        al_type = AL_TYPE_APACHE;
    } else if (is_word(line, "IIS") || is_word(line, "WEBLOGIC")) {
        al_type = AL_TYPE_IIS; // both are read with separate fields of the IIS kind
    } else {
        al_type = AL_TYPE_OTHER;
        remark_on_unknown(line.place, line.value);
    }
}

void set_new_user_time(const SettingLine& line) {
    constexpr int part_count = 3;
    std::string text = line.value;
    char* parts[part_count];
    int count;
    get_tokens1(text.data(), parts, ":", part_count, &count);
    if (count < part_count) {
        observe_line(line.place, ObservedKind::value_malformed, line.value);
        fail("Invalid new user time in replay_setting.dat");
    }
    // Unsigned, so that a nonsensical time wraps instead of being undefined.
    const auto number = [&](const char* part) {
        return static_cast<unsigned>(read_number(line.place, part));
    };
    new_user_time =
        static_cast<int>(number(parts[0]) * 3600 + number(parts[1]) * 60 + number(parts[2]));
}

void set_dump_query(const SettingLine& line) {
    dump_query_flag = read_number(line.place, line.value);
}

void set_num_thread(const SettingLine& line) {
    g_num_thread = read_number(line.place, line.value, 0);
}

// A number that turns the cookie on or off, then optionally a blank and the cookie's name.
void set_secondary_cookie(const SettingLine& line) {
    const std::string number(line.value, std::strcspn(line.value, " "));
    secondary_cookie_enable = read_number(line.place, number.c_str());
    const char* name = line.value + number.size();
    if (secondary_cookie_enable == 0 || *name == '\0') {
        remark_on_rest(line.place, name);
        return;
    }
    store_word(secondary_cookie, {line.place, skip_blanks(name)});
    DEBUG_LOG(3, fname, "Secondary cookie enabled, name = %s", secondary_cookie);
}

void set_consider_response_time(const SettingLine& line) {
    consider_response_time = read_number(line.place, line.value);
}

void set_field(const SettingLine& line) {
    set_field_position(line.place, line.value);
}

constexpr SettingKeyword setting_keywords[] = {
    {"DEFAULT_HOST", SettingEffect::none, set_default_host},
    {"IGNORE_URL_QUERY_PARAM", SettingEffect::loading, set_ignore_query},
    {"AUTO_REDIRECT", SettingEffect::loading, set_auto_redirect},
    {"INLINE_OBJECT_MODE", SettingEffect::classification, set_inline_mode},
    {"USER_SESSION_KEY", SettingEffect::loading, set_session_mode},
    {"COOKIE_NAME", SettingEffect::loading, set_cookie_name},
    {"IGNORE_NON_SESSION_URLS", SettingEffect::loading, set_ignore_non_session},
    {"AL_FIELD", SettingEffect::loading, set_field, true},
    {"ACCESS_LOG_TYPE", SettingEffect::loading, set_log_type},
    {"NEW_USER_TIME", SettingEffect::none, set_new_user_time},
    {"DUMP_QUERY_STRING_URL", SettingEffect::loading, set_dump_query},
    {"NUM_THREAD", SettingEffect::loading, set_num_thread},
    {"SECONDARY_COOKIE", SettingEffect::loading, set_secondary_cookie},
    {"CONSIDER_RESPONSE_TIME", SettingEffect::loading, set_consider_response_time},
};

} // namespace

std::span<const SettingKeyword> all_setting_keywords() {
    return setting_keywords;
}

const SettingKeyword* find_setting_keyword(const char* line) {
    for (const SettingKeyword& setting : setting_keywords) {
        if (begins_with(line, setting.keyword)) {
            return &setting;
        }
    }
    return nullptr;
}

void apply_setting_line(LinePlace place, LineText line) {
    if (skip_comment(place, line)) {
        return;
    }
    const SettingKeyword* const setting = find_setting_keyword(line.text);
    if (setting == nullptr) {
        observe_line(place, ObservedKind::unknown_keyword, line.text);
        return;
    }
    place.name = setting->keyword;
    remark_on_separator(place, line.text + setting->keyword.size());
    const char* value = value_after(line, setting->keyword);
    value = setting->keeps_blanks ? value : skip_blanks(value);
    setting->apply({place, value});
    observe_line(place, ObservedKind::taken, value);
}

void read_replay_prof_setting(const char* replay_setting_file) {
    TextFile file(open_input_file(replay_setting_file), replay_setting_file, settings_line_size);
    LinePlace place = {replay_setting_file, 0};
    if (!file.is_open()) {
        observe_line(place, ObservedKind::file_not_opened, "");
        fail("Failed to open 'replay_settings.dat' file for profile - %s", replay_profile);
    }
    LineText line;
    while (file.next(line)) {
        ++place.line_num;
        remark_on_length(place, line, settings_line_size);
        read_observed_line(place, [&] { apply_setting_line(place, line); });
    }
    if (session_mode == SESSION_MODE_COOKIE && cookie_name[0] == '\0') {
        fail("Cookie name not given in replay setting file");
    }
}
