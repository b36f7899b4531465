#include "tools/results/hosts_list.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/interned_texts.h"
#include "base/logs.h"
#include "base/result_file.h"
#include "base/result_names.h"
#include "base/text_hash.h"
#include "tools/urls/unique_urls.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

constexpr const char* fname = "main";

// Indices of the first entry of each host; there are far fewer hosts than URLs, so only these are
// sorted.
int find_hosts(int32_t* hosts) {
    InternedTexts known;
    int count = 0;
    for (int32_t i = 0; i < url_pattern_count; ++i) {
        const std::string_view host = url_pattern[i].host_hdr;
        const bool is_new = known.intern(host, hash_text(host)) == static_cast<uint32_t>(count);
        if (is_new) {
            hosts[count++] = i;
        }
    }
    return count;
}

} // namespace

int sort_host_list(int32_t a, int32_t b) {
    return std::strcmp(url_pattern[a].host_hdr, url_pattern[b].host_hdr);
}

void write_hosts_list(const OwnDirectory& config_dir) {
    auto* hosts = static_cast<int32_t*>(allocate_zeroed(
        fname, "hosts list", static_cast<size_t>(url_pattern_count), sizeof(int32_t)));
    DEBUG_LOG(3, fname, "Adding hosts in hosts.list");
    const int count = find_hosts(hosts);
    std::sort(hosts, hosts + count, [](int32_t a, int32_t b) { return sort_host_list(a, b) < 0; });

    const std::string path = config_dir.path() + "/" + hosts_list_name;
    ResultFile file;
    if (!file.create(config_dir, hosts_list_name)) {
        fail("Failed to open file %s", path.c_str());
    }
    for (int i = 0; i < count; ++i) {
        file.append(url_pattern[hosts[i]].host_hdr);
        file.append('\n');
    }
    std::free(hosts);
    if (!file.close()) {
        fail("Failed to write file %s", path.c_str());
    }
    DEBUG_LOG(3, fname, "%d uniq hosts added in hosts.list", count);
}
