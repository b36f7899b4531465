#include "companions/doctor/init/log_times.h"

#include "companions/doctor/init/line_trial.h"
#include "tools/load/input_files.h"

#include <algorithm>
#include <cctype>
#include <fmt/core.h>
#include <map>
#include <string_view>

namespace {

std::string field_text(const std::vector<std::string>& fields, const LogLayout& layout,
                       FieldKind kind) {
    const size_t index = static_cast<size_t>(layout.positions[kind]);
    return index == 0 || index > fields.size() ? "" : fields[index - 1];
}

std::string time_text(const LogLayout& layout, const std::string& line) {
    const std::vector<std::string> fields = split_into_fields(line);
    return layout.is_apache()
               ? field_text(fields, layout, AL_DATE_AND_TIME)
               : field_text(fields, layout, AL_DATE) + " " + field_text(fields, layout, AL_TIME);
}

LogTimes times_of_log(LineTrial& trial, const LogLayout& layout, const LogSample& sample) {
    const std::string* first = nullptr;
    const std::string* last = nullptr;
    LogTimes times;
    for (const std::string& line : sample.lines) {
        if (trial.parse(line) != LineKind::accepted || !trial.is_plausible()) {
            continue;
        }
        const uint64_t seconds = trial.request().time_stamp;
        if (first == nullptr || seconds < times.first.seconds) {
            first = &line;
            times.first.seconds = seconds;
        }
        if (last == nullptr || seconds > times.last.seconds) {
            last = &line;
            times.last.seconds = seconds;
        }
    }
    if (first != nullptr) {
        times.first.text = time_text(layout, *first);
        times.last.text = time_text(layout, *last);
    }
    return times;
}

bool is_zone(std::string_view text) {
    return text.size() == 5 && (text[0] == '+' || text[0] == '-') &&
           std::ranges::all_of(
               text.substr(1),
               [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }) &&
           text.substr(1, 2) <= "14" && text.substr(3) < "60";
}

// Lets the tool group and order the logs. Their places in `samples`, in that order, by instance.
std::map<int, std::vector<size_t>> instances_of(const std::vector<LogSample>& samples) {
    std::map<std::string_view, size_t> places;
    std::vector<std::string> paths;
    paths.reserve(samples.size());
    for (const LogSample& sample : samples) {
        paths.push_back(sample.path);
    }
    num_al_files = 0;
    g_num_instance = 0;
    for (size_t i = 0; i < paths.size() && i < size_t{max_al_files}; ++i) {
        places[paths[i]] = i;
        seq_file_path[num_al_files++] = {paths[i].data(), 0, 0, 0, 0};
    }
    process_input_file_list2();
    std::map<int, std::vector<size_t>> instances;
    for (int i = 0; i < num_al_files; ++i) {
        instances[seq_file_path[i].instance_idx].push_back(places[seq_file_path[i].input_file]);
    }
    num_al_files = 0;
    return instances;
}

} // namespace

std::vector<LogTimes> times_of(const LogLayout& layout, const std::vector<LogSample>& samples) {
    LineTrial trial(layout);
    std::vector<LogTimes> times;
    times.reserve(samples.size());
    for (const LogSample& sample : samples) {
        times.push_back(times_of_log(trial, layout, sample));
    }
    return times;
}

std::string zone_of(const std::vector<LogTimes>& times) {
    for (const LogTimes& log : times) {
        const std::string& text = log.last.text;
        if (text.size() > 5 && is_zone(std::string_view(text).substr(text.size() - 5))) {
            return text.substr(text.size() - 5);
        }
    }
    return "+0000";
}

Findings check_order(const std::vector<LogSample>& samples, const std::vector<LogTimes>& times) {
    Findings findings;
    for (const auto& [instance, logs] : instances_of(samples)) {
        for (size_t i = 1; i < logs.size(); ++i) {
            const uint64_t before = times[logs[i - 1]].first.seconds;
            const uint64_t after = times[logs[i]].first.seconds;
            if (before == 0 || after == 0 || after >= before) {
                continue;
            }
            findings.push_back(
                {"order-of-logs", Severity::warning, samples[logs[i - 1]].path, 0, "",
                 fmt::format("A run reads it before '{}', which is older: logs of one instance are "
                             "read in the order of their names. A request that waits for its "
                             "session finds it only in what is read later.",
                             samples[logs[i]].path),
                 "Where requests wait for a session (SECONDARY_COOKIE), give the logs names in the "
                 "order of time."});
            break;
        }
    }
    return findings;
}
