#include "tools/config/settings_file.h"

#include "base/failure.h"
#include "tests/properties/properties.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_settings.h"

#include <cstring>

std::string refusal_of_settings(const std::string& path) {
    al_type = AL_TYPE_APACHE;
    consider_response_time = g_num_thread = 0;
    session_mode = SESSION_MODE_COOKIE;
    cookie_name[0] = '\0';
    secondary_cookie_enable = 1;
    std::strcpy(secondary_cookie, "akaau");
    auto_redirect_flag = 1;
    std::strcpy(default_host, "127.0.0.1");
    al_modified_flag = 0;
    max_required_field_position = 0;
    std::memset(al_required_field_position, 0, sizeof al_required_field_position);
    try {
        read_replay_prof_setting(path.c_str());
        set_default_field_positions();
        validate_al_format();
    } catch (const Failure& failure) {
        EXPECT_NE(failure.message, "");
        return failure.message;
    }
    return "";
}
