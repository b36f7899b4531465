#pragma once

// Settings of the replay profile, from replay_settings.dat. Each holds the initial value given here
// until its keyword is read; all are written on the main thread before logs are loaded and only
// read afterwards.

constexpr char SESSION_MODE_CLIENT_IP = 0; // a session is a client address
constexpr char SESSION_MODE_COOKIE = 1;    // a session is a value of the session cookie

constexpr char AL_TYPE_APACHE = 0;
constexpr char AL_TYPE_IIS = 1;
constexpr char AL_TYPE_OTHER = 2;

constexpr int INLINE_MODE_SKIP = 1;
constexpr int INLINE_MODE_AUTO = 2;
constexpr int INLINE_MODE_AS_PER_LOG = 3;

// How logs are read.
extern char al_type;               // AL_TYPE_..., 0; ACCESS_LOG_TYPE
extern int consider_response_time; // 0; non-zero: time stamps are moved back by the response time
extern int g_num_thread; // worker threads, 0: by processors; option num_thread, NUM_THREAD

// How a request finds its session.
extern char session_mode;           // SESSION_MODE_..., 1; USER_SESSION_KEY
extern char cookie_name[1024];      // session cookie, empty; COOKIE_NAME
extern int secondary_cookie_enable; // 1; non-zero: look for the secondary cookie; SECONDARY_COOKIE
extern char secondary_cookie[256];  // its name, "akaau"; SECONDARY_COOKIE
extern int ignore_non_session_urls; // 1: requests without a session do not count
extern int new_user_time;           // seconds, 0; NEW_USER_TIME; nothing depends on it

// How unique URLs are made and written.
extern char ignore_query_flag; // 0; 1: URLs are cut at their query; IGNORE_URL_QUERY_PARAM
extern int auto_redirect_flag; // 1: requests that follow a redirect do not count; AUTO_REDIRECT
extern int inline_mode;        // INLINE_MODE_..., 1; INLINE_OBJECT_MODE
extern int dump_query_flag;    // 1: write query_url.list when URLs are cut; option dump_query_url,
                               // DUMP_QUERY_STRING_URL
extern char default_host[256]; // "127.0.0.1"; DEFAULT_HOST; nothing depends on it
