#include "companions/doctor/known_hosts.h"

#include "base/failure.h"
#include "base/result_names.h"
#include "base/text_file.h"

#include <algorithm>
#include <sys/stat.h>

std::vector<std::string> read_known_hosts(const std::string& config_directory) {
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
