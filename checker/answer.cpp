#include "checker/answer.h"

#include "base/own_directory.h"
#include "base/own_file.h"
#include "cache/input_copies.h"
#include "cache/work_mark.h"
#include "checker/backups.h"
#include "checker/file_contents.h"
#include "checker/inputs.h"
#include "checker/results.h"
#include "checker/run_directories.h"
#include "checker/run_place.h"
#include "checker/run_process.h"
#include "tools/driver/result_cache.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <sstream>
#include <utility>

namespace {

constexpr const char* answer_name = "cache_answer.txt"; // the last answer with its reason

std::vector<std::string> sorted_lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

// What the first line is about that stands in only one of two texts, without the state in it.
std::string first_difference(const std::string& before, const std::string& now) {
    const std::vector<std::string> before_lines = sorted_lines(before);
    const std::vector<std::string> now_lines = sorted_lines(now);
    std::vector<std::string> differing;
    std::set_symmetric_difference(now_lines.begin(), now_lines.end(), before_lines.begin(),
                                  before_lines.end(), std::back_inserter(differing));
    return differing.empty() ? "" : differing[0].substr(0, differing[0].find(" size "));
}

bool has_same_input(const RunDirectories& directories, const std::string& name) {
    return have_same_bytes(open_own_file(directories.backup.get(), name.c_str()),
                           open_own_file(directories.input_cache.descriptor(), name.c_str()));
}

bool has_same_inputs(const RunDirectories& directories, const std::string& scenario) {
    const auto names = input_names(scenario);
    return std::all_of(names.begin(), names.end(),
                       [&](const std::string& name) { return has_same_input(directories, name); });
}

// Why the logs must be read; empty when complete_url.list still holds.
std::string loading_fault(const RunPlace& place, const RunDirectories& directories,
                          const Inputs& now, const Manifest& cached) {
    if (cached.config_directory != now.manifest.config_directory) {
        return "the last run on record worked in " + cached.config_directory;
    }
    if (cached.loading != now.manifest.loading) {
        return "not as in the last run: " + first_difference(cached.loading, now.manifest.loading);
    }
    std::string fault = result_fault(directories.config, cached, now.results);
    if (!fault.empty()) {
        return fault;
    }
    return has_same_input(directories, scenario_file_name(place.scenario))
               ? ""
               : "the scenario is not that of the last run";
}

Answer compare(const RunPlace& place, const RunDirectories& directories, const Inputs& now,
               const Manifest& cached) {
    const std::string fault = loading_fault(place, directories, now, cached);
    if (!fault.empty()) {
        return {Reuse::nothing, fault};
    }
    if (cached.classification != now.manifest.classification) {
        return {Reuse::complete_list,
                "not as in the last run, though the logs are: " +
                    first_difference(cached.classification, now.manifest.classification)};
    }
    if (!has_same_inputs(directories, place.scenario)) {
        return {Reuse::nothing, "the copies of the last inputs are incomplete"};
    }
    return {Reuse::everything, "nothing has changed since the last run"};
}

// Adds to the manifest which of the results the run takes over.
Answer decide(const RunPlace& place, const RunDirectories& directories, Inputs& now) {
    if (!now.doubt.empty()) {
        return {Reuse::nothing, now.doubt};
    }
    if (!directories.input_cache.is_open()) {
        return {Reuse::nothing, "there is no input cache directory of this user"};
    }
    std::string fault;
    const std::optional<Manifest> cached =
        read_sealed_manifest(directories.input_cache.descriptor(), fault);
    if (!cached) {
        return {Reuse::nothing, fault};
    }
    Answer answer = compare(place, directories, now, *cached);
    if (answer.reuse == Reuse::complete_list) {
        now.manifest.results = kept_results(*cached, now.results);
    }
    return answer;
}

// For those who wonder why a run has, or has not, read the logs.
void write_answer(const Answer& answer, const OwnDirectory& input_cache) {
    const FileDescriptor file = input_cache.create(answer_name, 0600);
    write_whole(file.get(),
                std::to_string(static_cast<int>(answer.reuse)) + ": " + answer.reason + "\n");
}

// A run whose result is printed again needs its backup no more, and leaves it behind: in the way of
// a later run with its process id.
void record(const Answer& answer, const RunProcess& run, const RunPlace& place,
            const RunDirectories& directories, const Inputs& inputs) {
    if (answer.reuse == Reuse::everything) {
        remove_backup(run.pid, directories.backup);
    } else {
        forget_last_run(place, directories.input_cache);
        if (inputs.doubt.empty()) {
            write_manifest(directories.backup.get(), inputs.manifest);
        }
    }
    write_answer(answer, directories.input_cache);
}

// A run that asks for itself has not marked its own work yet.
std::optional<Answer> refuse(const RunPlace& place, const OwnDirectory& config_dir, pid_t pid,
                             bool asks_itself) {
    const bool is_marked = asks_itself && is_work_marked(config_dir);
    const std::optional<pid_t> other = find_other_run(pid, place.config_directory);
    if (other) {
        return Answer{Reuse::refused,
                      "process " + std::to_string(*other) + " works on the same scenario"};
    }
    if (is_marked) {
        return Answer{Reuse::refused, "a run of another user or in another container works on the "
                                      "same scenario"};
    }
    return std::nullopt;
}

// Why the question is none that can be answered; empty when it is one.
std::string question_fault(const std::string& profile_argument, pid_t pid, const RunPlace& place,
                           const FileDescriptor& backup) {
    const std::string process = "process " + std::to_string(pid);
    if (profile_argument != checker_argument(place.replay_profile)) {
        return process + " does not work on " + profile_argument;
    }
    return backup.is_open() ? "" : process + " has no backup of its inputs";
}

// What goes wrong must not look like an answer that lets anything be used again.
Answer decide_safely(const RunProcess& run, const RunPlace& place,
                     const RunDirectories& directories, Inputs& inputs) {
    try {
        inputs = read_inputs(run, place, directories.backup);
        return decide(place, directories, inputs);
    } catch (const std::exception& failure) {
        inputs.doubt = failure.what();
        return {Reuse::nothing, inputs.doubt};
    }
}

Answer answer_and_record(const RunProcess& run, const RunPlace& place, FileDescriptor backup,
                         const std::string& fault) {
    const bool asks_itself = is_ancestor(run.pid);
    RunDirectories directories = {OwnDirectory(place.config_path), {}, std::move(backup)};
    const std::optional<Answer> refusal = refuse(place, directories.config, run.pid, asks_itself);
    if (refusal) {
        return *refusal;
    }
    directories.input_cache = directories.config.beside(input_cache_name);
    if (asks_itself) {
        make_directories(place, directories);
    }
    Inputs inputs = {{}, {}, fault};
    Answer answer = fault.empty() ? decide_safely(run, place, directories, inputs)
                                  : Answer{Reuse::nothing, fault};
    if (asks_itself) {
        record(answer, run, place, directories, inputs);
    }
    return answer;
}

} // namespace

Answer answer_run(const std::string& profile_argument, pid_t pid) {
    FileDescriptor backup = open_own_backup(pid);
    if (backup.is_open() && is_ancestor(pid) && !ask_for_exclusion(backup)) {
        return {Reuse::refused, "the backup of the inputs cannot be written to"};
    }
    const std::optional<RunProcess> run = find_run(pid);
    const std::optional<RunPlace> place = run ? locate_run(*run) : std::nullopt;
    if (!place) {
        return {Reuse::nothing, "process " + std::to_string(pid) +
                                    " is not a run of zvr_al_gen_url_list of this user"};
    }
    const std::string fault = question_fault(profile_argument, pid, *place, backup);
    return answer_and_record(*run, *place, std::move(backup), fault);
}
