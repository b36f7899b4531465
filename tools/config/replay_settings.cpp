#include "tools/config/replay_settings.h"

char al_type = AL_TYPE_APACHE;
int consider_response_time = 0;
int g_num_thread = 0;

char session_mode = SESSION_MODE_COOKIE;
char cookie_name[1024];
int secondary_cookie_enable = 1;
char secondary_cookie[256] = "akaau";
int ignore_non_session_urls = 1;
int new_user_time = 0;

char ignore_query_flag = 0;
int auto_redirect_flag = 1;
int inline_mode = INLINE_MODE_SKIP;
int dump_query_flag = 1;
char default_host[256] = "127.0.0.1";
