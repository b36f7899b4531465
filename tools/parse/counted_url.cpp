#include "tools/parse/counted_url.h"

#include "tools/config/replay_settings.h"

#include <cstring>

void find_counted_url(alInfo& request) {
    if (ignore_query_flag == 0) {
        return;
    }
    const int separator = static_cast<int>(std::strcspn(request.url, "?#;"));
    if (separator != request.url_len) {
        request.ignore_query_flag = 1;
        request.url_len = separator + 1;
    }
}

void replace_query_by_star(alInfo& request) {
    request.url[request.url_len] = '*';
    request.url[request.url_len + 1] = '\0';
}
