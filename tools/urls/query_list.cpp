#include "tools/urls/query_list.h"

#include "base/failure.h"
#include "base/result_names.h"
#include "tools/config/replay_settings.h"

namespace {

[[noreturn]] void fail_to_write() {
    fail("Failed to write to query_url.list");
}

} // namespace

bool is_query_list_wanted() {
    return dump_query_flag != 0 && ignore_query_flag != 0;
}

QueryList::QueryList(const OwnDirectory& config_dir) {
    const bool succeeded = is_query_list_wanted() ? file_.create(config_dir, query_url_list_name)
                                                  : config_dir.clear(query_url_list_name);
    if (!succeeded) {
        fail("Unable to create 'query_url.list' file");
    }
}

void QueryList::add(std::string_view url) {
    file_.append(url);
    file_.append('\n');
    written_len_ += static_cast<int64_t>(url.size()) + 1;
    if (file_.has_failed()) {
        fail_to_write();
    }
}

void QueryList::close() {
    if (file_.is_open() && !file_.close()) {
        fail_to_write();
    }
}
