#include "checker/results.h"

#include "checker/complete_list.h"
#include "checker/file_state.h"
#include "tools/load/line_count.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* complete_list_name = "complete_url.list";
constexpr const char* query_list_name = "query_url.list";
constexpr const char* trace_name = "akaau.trace";
constexpr const char* hosts_list_name = "hosts.list";
constexpr const char* url_list_name = "url.list";

// Results that a run which only classifies anew leaves as they are.
std::vector<std::string> loading_results(const ExpectedResults& expected) {
    std::vector<std::string> names = {complete_list_name};
    if (expected.query_list) {
        names.push_back(query_list_name);
    }
    if (expected.trace) {
        names.push_back(trace_name);
    }
    return names;
}

std::string kept_line(const std::string& name, const std::string& state) {
    return name + " " + state + "\n";
}

// Results are written between the making of the manifest and its copying into the cache, and not
// touched after that. Those that were kept are still in the state that they had then.
bool is_of_cached_run(const fs::path& result, const Manifest& cached, int64_t cached_at) {
    const std::string name = result.filename();
    if (("\n" + cached.kept_results).find("\n" + name + " ") != std::string::npos) {
        const std::string state = file_state(result).value_or("");
        return ("\n" + cached.kept_results).find("\n" + kept_line(name, state)) !=
               std::string::npos;
    }
    const int64_t changed = change_time(result).value_or(0);
    return cached.created <= changed && changed <= cached_at;
}

bool has_whole_lines(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        return false;
    }
    file.seekg(-1, std::ios::end);
    return file.fail() || file.get() == '\n'; // seeking fails in an empty file
}

bool has_lines(const fs::path& path, uint64_t count) {
    return has_whole_lines(path) && zvr_get_total_lines_in_file(path.c_str()) == count;
}

// The summary line knows the number of rows, which follow it and the column line.
bool is_whole_url_list(const fs::path& path) {
    constexpr size_t summary_width = 511;
    constexpr std::string_view key = ";TotalUrlPattern=";
    std::ifstream file(path, std::ios::binary);
    std::string summary;
    if (!std::getline(file, summary) || summary.size() != summary_width) {
        return false;
    }
    const size_t found = summary.find(key);
    return summary.starts_with("Total=") && found != std::string::npos &&
           has_lines(path, std::stoull("0" + summary.substr(found + key.size())) + 2);
}

bool is_whole_hosts_list(const fs::path& path, const CompleteList& complete_list) {
    std::string hosts;
    for (const std::string& host : complete_list.hosts) {
        hosts += host + "\n";
    }
    std::ifstream file(path, std::ios::binary);
    return file.is_open() && std::string(std::istreambuf_iterator<char>(file), {}) == hosts;
}

std::string content_fault(const fs::path& directory, const ExpectedResults& expected) {
    const std::optional<CompleteList> complete_list =
        read_complete_list(directory / complete_list_name);
    const bool is_whole = complete_list && has_whole_lines(directory / complete_list_name) &&
                          complete_list->accounted(expected.non_session_counts);
    if (!is_whole) {
        return complete_list_name;
    }
    if (expected.query_list &&
        !has_lines(directory / query_list_name, complete_list->query_line_count)) {
        return query_list_name;
    }
    if (!is_whole_hosts_list(directory / hosts_list_name, *complete_list)) {
        return hosts_list_name;
    }
    return is_whole_url_list(directory / url_list_name) ? "" : url_list_name;
}

bool is_there(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

} // namespace

std::string result_fault(const RunPlace& place, const Manifest& cached,
                         const ExpectedResults& expected) {
    const fs::path& directory = place.config_directory;
    const int64_t cached_at = change_time(place.input_cache_directory / manifest_name).value_or(0);
    std::vector<std::string> names = loading_results(expected);
    names.insert(names.end(), {hosts_list_name, url_list_name});
    for (const std::string& name : names) {
        if (!is_there(directory / name)) {
            return name + " is missing";
        }
        if (!is_of_cached_run(directory / name, cached, cached_at)) {
            return name + " was changed since the last run that ended well";
        }
    }
    if (!expected.query_list && is_there(directory / query_list_name)) {
        return std::string(query_list_name) + " is there although no run has written it";
    }
    if (!expected.trace && is_there(directory / trace_name)) {
        return std::string(trace_name) + " is there although no run has written it";
    }
    const std::string damaged = content_fault(directory, expected);
    return damaged.empty() ? "" : damaged + " is not whole";
}

std::string describe_kept_results(const RunPlace& place, const ExpectedResults& expected) {
    std::string lines;
    for (const std::string& name : loading_results(expected)) {
        const std::optional<std::string> state = file_state(place.config_directory / name);
        if (!state) {
            return "";
        }
        lines += kept_line(name, *state);
    }
    return lines;
}
