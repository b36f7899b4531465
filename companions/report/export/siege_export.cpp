#include "companions/report/export/export_formats.h"
#include "companions/report/export/request_url.h"

#include <algorithm>
#include <fmt/core.h>
#include <string_view>

namespace {

constexpr std::string_view methods[] = {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"};

// Characters. siege ends itself at a line of about 9,000.
constexpr size_t longest_url = 8'000;

// siege takes it for the beginning of a variable's name.
bool encode_dollars(std::string& url) {
    bool is_any = false;
    for (size_t i = url.find('$'); i != std::string::npos; i = url.find('$', i)) {
        url.replace(i, 1, "%24");
        is_any = true;
    }
    return is_any;
}

} // namespace

bool fits_siege(LoadTarget& target, ExportNotes& notes) {
    if (std::find(std::begin(methods), std::end(methods), target.method) == std::end(methods)) {
        notes.leave_out("whose method siege does not have", target.count);
        return false;
    }
    if (target.url.size() > longest_url) {
        notes.leave_out("whose URL is too long for siege", target.count);
        return false;
    }
    if (encode_dollars(target.url)) {
        notes.change("whose URL has a $, a variable's for siege: percent-encoded", target.count);
    }
    if (target.host != authority_of(target.url)) {
        notes.change("with another host than the base URL's, which siege sends", target.count);
    }
    return true;
}

// The words behind the URL are siege's own signs for a method and a body.
void export_siege(const Targets& targets, FILE* out) {
    fmt::print(out, "# Each request once by each user: siege -c USERS -r once -f FILE\n"
                    "# In siege.conf: url-escaping = false, parser = false, cache = false\n");
    targets([out](const LoadTarget& target) {
        std::string line = target.url;
        if (target.method != "GET") {
            line += " " + target.method;
        }
        if (!target.body_file.empty()) {
            line += " <" + target.body_file;
        }
        line += '\n';
        for (uint64_t i = 0; i < target.count; ++i) {
            std::fwrite(line.data(), 1, line.size(), out);
        }
    });
}
