#include "tools/config/settings_file.h"

#include "base/failure.h"
#include "base/logs.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/config/field_layout.h"
#include "tools/config/keyword_text.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr const char* fname = "read_replay_prof_setting";

// Stores the value up to its first blank; a tab or a carriage return belongs to the word.
template <size_t capacity>
void store_word(char (&field)[capacity], const char* keyword, const char* value) {
    const size_t length = std::strcspn(value, " ");
    if (length >= capacity) {
        fail("Value of %s in replay setting file is longer than %zu characters", keyword,
             capacity - 1);
    }
    std::memcpy(field, value, length);
    field[length] = '\0';
}

bool read_flag(const char* value) {
    return std::atoi(value) != 0;
}

void set_default_host(const char* value) {
    store_word(default_host, "DEFAULT_HOST", value);
    DEBUG_LOG(4, fname, "Default host = '%s'", default_host);
}

void set_ignore_query(const char* value) {
    ignore_query_flag = read_flag(value);
    DEBUG_LOG(4, fname, "IGNORE_URL_QUERY_PARAM = %d", ignore_query_flag);
}

void set_auto_redirect(const char* value) {
    auto_redirect_flag = read_flag(value);
    DEBUG_LOG(4, fname, "AUTO_REDIRECT = %d", auto_redirect_flag);
}

void set_inline_mode(const char* value) {
    if (begins_with(value, "skip")) {
        inline_mode = INLINE_MODE_SKIP;
    } else if (begins_with(value, "auto")) {
        inline_mode = INLINE_MODE_AUTO;
    } else if (begins_with(value, "asperlog")) {
        inline_mode = INLINE_MODE_AS_PER_LOG;
    }
}

void set_session_mode(const char* value) {
    session_mode = begins_with(value, "client_ip") ? SESSION_MODE_CLIENT_IP : SESSION_MODE_COOKIE;
}

void set_cookie_name(const char* value) {
    store_word(cookie_name, "COOKIE_NAME", value);
}

void set_ignore_non_session(const char* value) {
    ignore_non_session_urls = read_flag(value);
    DEBUG_LOG(4, fname, "IGNORE_NON_SESSION_URLS = %d", ignore_non_session_urls);
}

void set_log_type(const char* value) {
    if (begins_with(value, "APACHE")) {
        al_type = AL_TYPE_APACHE;
    } else if (begins_with(value, "IIS") || begins_with(value, "WEBLOGIC")) {
        al_type = AL_TYPE_IIS; // both are read with separate fields of the IIS kind
    } else {
        al_type = AL_TYPE_OTHER;
    }
}

void set_new_user_time(const char* value) {
    constexpr int part_count = 3;
    std::string text = value;
    char* parts[part_count];
    int count;
    get_tokens1(text.data(), parts, ":", part_count, &count);
    if (count < part_count) {
        fail("Invalid new user time in replay_setting.dat");
    }
    // Unsigned, so that a nonsensical time wraps instead of being undefined.
    const auto number = [](const char* part) { return static_cast<unsigned>(std::atoi(part)); };
    new_user_time =
        static_cast<int>(number(parts[0]) * 3600 + number(parts[1]) * 60 + number(parts[2]));
}

void set_dump_query(const char* value) {
    dump_query_flag = std::atoi(value);
}

void set_num_thread(const char* value) {
    g_num_thread = std::atoi(value);
}

// A number that turns the cookie on or off, then optionally a blank and the cookie's name.
void set_secondary_cookie(const char* value) {
    secondary_cookie_enable = std::atoi(value);
    const char* blank = std::strchr(value, ' ');
    if (secondary_cookie_enable == 0 || blank == nullptr) {
        return;
    }
    store_word(secondary_cookie, "SECONDARY_COOKIE", skip_blanks(blank));
    DEBUG_LOG(3, fname, "Secondary cookie enabled, name = %s", secondary_cookie);
}

void set_consider_response_time(const char* value) {
    consider_response_time = std::atoi(value);
}

constexpr SettingKeyword setting_keywords[] = {
    {"DEFAULT_HOST", SettingEffect::none, set_default_host},
    {"IGNORE_URL_QUERY_PARAM", SettingEffect::loading, set_ignore_query},
    {"AUTO_REDIRECT", SettingEffect::loading, set_auto_redirect},
    {"INLINE_OBJECT_MODE", SettingEffect::classification, set_inline_mode},
    {"USER_SESSION_KEY", SettingEffect::loading, set_session_mode},
    {"COOKIE_NAME", SettingEffect::loading, set_cookie_name},
    {"IGNORE_NON_SESSION_URLS", SettingEffect::loading, set_ignore_non_session},
    {"AL_FIELD", SettingEffect::loading, set_field_position, true},
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

void apply_setting_line(LineText line) {
    const SettingKeyword* const setting = find_setting_keyword(line.text);
    if (setting != nullptr) {
        const char* value = value_after(line, setting->keyword);
        setting->apply(setting->keeps_blanks ? value : skip_blanks(value));
    }
}

void read_replay_prof_setting(const char* replay_setting_file) {
    TextFile file(replay_setting_file, settings_line_size);
    if (!file.is_open()) {
        fail("Failed to open 'replay_settings.dat' file for profile - %s", replay_profile);
    }
    LineText line;
    while (file.next(line)) {
        apply_setting_line(line);
    }
    if (session_mode == SESSION_MODE_COOKIE && cookie_name[0] == '\0') {
        fail("Cookie name not given in replay setting file");
    }
}
