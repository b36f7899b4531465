#include "companions/doctor/init/w3c_choice.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "companions/common/log_file.h"
#include "companions/common/progress_bar.h"
#include "companions/doctor/init/line_trial.h"
#include "companions/doctor/init/log_format.h"
#include "companions/doctor/init/w3c_fields.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>
#include <string>

namespace {

constexpr size_t shown_changes = 10;
constexpr size_t max_layouts = 50; // more are no server's

// What all "#Fields:" lines say.
struct W3cFields {
    std::map<std::string, int64_t> requests; // by the names of the fields, for max_layouts of them
    int64_t further_requests = 0;            // with other names
    bool is_of_microsoft = false;
    Findings changes; // places where the names are not those that came before
};

void add_parts(const LogSample& sample, const W3cLog& log, std::string& names, W3cFields& fields) {
    for (const W3cPart& part : log.parts) {
        const bool is_kept =
            fields.requests.size() < max_layouts || fields.requests.contains(part.names);
        (is_kept ? fields.requests[part.names] : fields.further_requests) += part.request_count;
        if (!names.empty() && names != part.names && fields.changes.size() < shown_changes) {
            fields.changes.push_back({"fields-change", Severity::warning, sample.path,
                                      static_cast<int>(part.line_num), part.names, "", ""});
        }
        names = part.names;
    }
}

W3cFields read_all_fields(const std::vector<LogSample>& samples) {
    uint64_t size = 0;
    for (const LogSample& sample : samples) {
        size += sample.size;
    }
    ProgressBar progress("Reading #Fields: lines", size);
    uint64_t done = 0;
    std::string names;
    W3cFields fields;
    for (const LogSample& sample : samples) {
        const FileDescriptor file = open_log_at_once(sample.path);
        if (!file.is_open()) {
            fail("Cannot read log '%s'", sample.path.c_str());
        }
        const W3cLog log = read_w3c_log(file.get(), sample.path);
        fields.is_of_microsoft = fields.is_of_microsoft || log.is_of_microsoft;
        add_parts(sample, log, names, fields);
        progress.update(done += sample.size);
    }
    return fields;
}

// Servers that count seconds write fractions of them.
bool has_fractions(const LogLayout& layout, const std::vector<LogSample>& samples) {
    const size_t position = static_cast<size_t>(layout.positions[AL_RESPONSE_TIME]);
    return position != 0 && std::ranges::any_of(samples, [&](const LogSample& sample) {
               return std::ranges::any_of(sample.lines, [&](const std::string& line) {
                   const std::vector<std::string> fields = split_into_fields(line);
                   return fields.size() >= position &&
                          fields[position - 1].find('.') != std::string::npos;
               });
           });
}

LogLayout layout_of(const std::string& names, bool is_of_microsoft,
                    const std::vector<LogSample>& samples) {
    LogLayout layout = w3c_layout(names, is_of_microsoft);
    if (!has_fractions(layout, samples)) {
        layout.positions[AL_RESPONSE_TIME] = 0;
    }
    return layout;
}

bool is_enough(const LogLayout& layout) {
    return std::ranges::none_of(missing_fields(layout), [](const Finding& finding) {
        return finding.severity == Severity::error;
    });
}

void explain_changes(W3cFields& fields, bool is_shared, int64_t other_requests, W3cChoice& choice) {
    for (Finding& change : fields.changes) {
        change.severity = is_shared ? Severity::note : Severity::warning;
        change.meaning =
            is_shared
                ? "The fields are others than before. Only those that stand in one place "
                  "everywhere are taken, and they are enough."
                : fmt::format("The fields are others than before. A scenario has one layout, and "
                              "{} requests are logged with another one than is taken; they are "
                              "misread or count as bad.",
                              other_requests);
        change.cure = is_shared ? ""
                                : "Split the logs where the fields change, and make a scenario of "
                                  "each kind.";
        choice.findings.push_back(change);
    }
}

} // namespace

bool are_w3c_logs(const std::vector<LogSample>& samples) {
    const auto count = std::ranges::count_if(
        samples, [](const LogSample& sample) { return sample.names_its_fields; });
    return static_cast<size_t>(count) * 2 > samples.size();
}

W3cChoice choose_w3c_layout(const std::vector<LogSample>& samples) {
    W3cFields fields = read_all_fields(samples);
    if (fields.requests.empty()) {
        fail("The #Fields: lines of the logs have gone while they were read");
    }
    std::vector<LogLayout> layouts;
    int64_t requests = fields.further_requests;
    const auto* most = &*fields.requests.begin();
    for (const auto& entry : fields.requests) {
        layouts.push_back(layout_of(entry.first, fields.is_of_microsoft, samples));
        requests += entry.second;
        most = entry.second > most->second ? &entry : most;
    }
    const LogLayout shared = shared_layout(layouts);
    const LogLayout main = layout_of(most->first, fields.is_of_microsoft, samples);
    constexpr int64_t nearly_all =
        20; // one part in so many may be lost for fields that others lack
    const bool is_shared = is_enough(shared) && (shared.reads_like(main) ||
                                                 (requests - most->second) * nearly_all > requests);
    W3cChoice choice = {is_shared ? shared : main, {}};
    explain_changes(fields, is_shared, requests - most->second, choice);
    return choice;
}
