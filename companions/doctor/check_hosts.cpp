#include "companions/doctor/check_hosts.h"

#include "base/failure.h"
#include "base/result_names.h"
#include "base/text_file.h"
#include "companions/doctor/near_word.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>
#include <sys/stat.h>
#include <utility>

namespace {

std::vector<std::string> read_hosts_list(const std::string& config_directory) {
    constexpr off_t longest_list = 1 << 24;
    const std::string path = config_directory + hosts_list_name;
    struct stat status;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > longest_list) {
        return {};
    }
    std::vector<std::string> hosts;
    try {
        TextFile file(path, LineReader::unlimited);
        LineText line;
        while (file.is_open() && file.next(line)) {
            hosts.emplace_back(line.text, line.size);
        }
    } catch (const Failure&) {
        hosts.clear(); // a result that cannot be read says nothing of the inputs
    }
    std::sort(hosts.begin(), hosts.end());
    return hosts;
}

// Of many hosts the nearest would take too long to find.
std::string nearest_host(const std::string& host, const KnownHosts& known) {
    constexpr size_t most_hosts = 1000;
    return known.hosts.size() <= most_hosts ? nearest_word(host, known.hosts) : "";
}

Finding unknown_host(const HostOfPattern& pattern, const KnownHosts& known,
                     const std::string& near) {
    return {"unknown-host",
            known.are_all ? Severity::warning : Severity::note,
            pattern.file,
            pattern.line,
            pattern.host,
            fmt::format("{} such host; hosts are compared letter for letter, with their port.",
                        known.are_of_last_run ? "The last run has found no"
                        : known.are_all       ? "The logs hold no"
                                              : "The samples of the logs hold no"),
            near.empty() ? "Write the host as the log has it, or na for any."
                         : fmt::format("Write {} if that is meant, or na for any host.", near)};
}

} // namespace

KnownHosts choose_known_hosts(const std::string& config_directory, KnownHosts sampled) {
    std::vector<std::string> listed = read_hosts_list(config_directory);
    return listed.empty() ? std::move(sampled) : KnownHosts{std::move(listed), true, true};
}

void check_hosts(Findings& findings, const std::vector<HostOfPattern>& hosts,
                 const KnownHosts& known) {
    if (known.hosts.empty()) {
        return;
    }
    std::map<std::string, std::string> nearest; // of those that are not known
    for (const HostOfPattern& pattern : hosts) {
        if (!std::ranges::binary_search(known.hosts, pattern.host)) {
            const auto [near, is_new] = nearest.emplace(pattern.host, "");
            if (is_new) {
                near->second = nearest_host(pattern.host, known);
            }
            findings.push_back(unknown_host(pattern, known, near->second));
        }
    }
}
