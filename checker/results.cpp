#include "checker/results.h"

#include "base/file_state.h"
#include "base/own_file.h"
#include "base/result_names.h"
#include "checker/complete_list.h"
#include "tools/load/line_count.h"
#include "tools/results/url_list.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Results that a run which only classifies anew leaves as they are.
std::vector<std::string> loading_results(const ExpectedResults& expected) {
    std::vector<std::string> names = {complete_url_list_name};
    if (expected.query_list) {
        names.push_back(query_url_list_name);
    }
    if (expected.trace) {
        names.push_back(akaau_trace_name);
    }
    return names;
}

FileDescriptor open_result(const OwnDirectory& config_dir, const std::string& name) {
    return open_own_file(config_dir.descriptor(), name.c_str());
}

// What is wrong with a result to begin with; empty when it stands there as the last run has left
// it.
std::string state_fault(const OwnDirectory& config_dir, const std::string& name,
                        const Manifest& cached) {
    const FileDescriptor file = open_result(config_dir, name);
    if (!file.is_open()) {
        return name + (errno == ENOENT ? " is missing" : " is no regular file of this user");
    }
    struct stat status = {};
    if (fstat(file.get(), &status) != 0 || (status.st_mode & S_IWOTH) != 0) {
        return name + " may be written by all users of the machine";
    }
    const std::optional<std::string> state = file_state(file.get());
    const bool is_untouched = state && has_line(cached.results, result_line(name, *state));
    return is_untouched ? "" : name + " was changed since the last run that ended well";
}

bool has_whole_lines(const FileDescriptor& file) {
    struct stat status;
    char last = '\n';
    return fstat(file.get(), &status) == 0 &&
           (status.st_size == 0 || pread(file.get(), &last, 1, status.st_size - 1) == 1) &&
           last == '\n';
}

bool has_lines(const FileDescriptor& file, const std::string& name, uint64_t count) {
    return has_whole_lines(file) && total_lines_in_open_file(name.c_str(), file.get()) == count;
}

// The summary line knows the number of rows.
bool is_whole_url_list(const FileDescriptor& file) {
    char line[summary_width + 1];
    if (pread(file.get(), line, sizeof line, 0) != sizeof line || line[summary_width] != '\n') {
        return false;
    }
    const std::optional<uint64_t> row_count = row_count_in_summary({line, summary_width});
    return row_count && has_lines(file, url_list_name, url_list_head_lines + *row_count);
}

bool is_whole_hosts_list(const FileDescriptor& file, const CompleteList& complete_list) {
    std::string hosts;
    for (const std::string& host : complete_list.hosts) {
        hosts += host + "\n";
    }
    return read_whole(file, hosts.size()) == hosts;
}

// Name of a result that is not whole; empty when all are.
std::string damaged_result(const OwnDirectory& config_dir, const ExpectedResults& expected) {
    const FileDescriptor complete_list_file = open_result(config_dir, complete_url_list_name);
    const std::optional<CompleteList> complete_list = read_complete_list(complete_list_file);
    const bool is_whole = complete_list && has_whole_lines(complete_list_file) &&
                          complete_list->accounted(expected.non_session_counts);
    if (!is_whole) {
        return complete_url_list_name;
    }
    if (expected.query_list && !has_lines(open_result(config_dir, query_url_list_name),
                                          query_url_list_name, complete_list->query_line_count)) {
        return query_url_list_name;
    }
    if (!is_whole_hosts_list(open_result(config_dir, hosts_list_name), *complete_list)) {
        return hosts_list_name;
    }
    return is_whole_url_list(open_result(config_dir, url_list_name)) ? "" : url_list_name;
}

bool is_there(const OwnDirectory& directory, const std::string& name) {
    struct stat status;
    return fstatat(directory.descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace

std::string result_fault(const OwnDirectory& config_dir, const Manifest& cached,
                         const ExpectedResults& expected) {
    std::vector<std::string> names = loading_results(expected);
    names.insert(names.end(), {hosts_list_name, url_list_name});
    for (const std::string& name : names) {
        std::string fault = state_fault(config_dir, name, cached);
        if (!fault.empty()) {
            return fault;
        }
    }
    if (!expected.query_list && is_there(config_dir, query_url_list_name)) {
        return std::string(query_url_list_name) + " is there although no run has written it";
    }
    if (!expected.trace && is_there(config_dir, akaau_trace_name)) {
        return std::string(akaau_trace_name) + " is there although no run has written it";
    }
    const std::string damaged = damaged_result(config_dir, expected);
    return damaged.empty() ? "" : damaged + " is not whole";
}

std::string kept_results(const Manifest& cached, const ExpectedResults& expected) {
    std::string lines;
    std::istringstream text(cached.results);
    const std::vector<std::string> names = loading_results(expected);
    for (std::string line; std::getline(text, line);) {
        const std::string name = line.substr(0, line.find(' '));
        if (std::find(names.begin(), names.end(), name) != names.end()) {
            lines += line + "\n";
        }
    }
    return lines;
}
