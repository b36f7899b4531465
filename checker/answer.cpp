#include "checker/answer.h"

#include "checker/backups.h"
#include "checker/file_state.h"
#include "checker/inputs.h"
#include "checker/results.h"
#include "checker/run_place.h"
#include "checker/run_process.h"

#include <fstream>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

bool has_same_inputs(const RunPlace& place, const fs::path& backup,
                     const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!have_same_bytes(backup / name, place.input_cache_directory / name)) {
            return false;
        }
    }
    return true;
}

// What a line is about, without the state that differs.
std::string subject(const std::string& line) {
    return line.substr(0, line.find(" size "));
}

Answer compare(const RunPlace& place, const Inputs& now, const fs::path& backup) {
    if (!now.doubt.empty()) {
        return {Reuse::nothing, now.doubt};
    }
    const std::optional<Manifest> cached =
        read_manifest(place.input_cache_directory / manifest_name);
    if (!cached || cached->config_directory != now.manifest.config_directory) {
        return {Reuse::nothing, "no run that has ended well is on record here"};
    }
    if (cached->loading != now.manifest.loading) {
        return {Reuse::nothing,
                "not as in the last run: " +
                    subject(first_difference(cached->loading, now.manifest.loading))};
    }
    const std::string fault = result_fault(place, *cached, now.results);
    if (!fault.empty()) {
        return {Reuse::nothing, fault};
    }
    const std::vector<std::string> names = input_names(place);
    if (!has_same_inputs(place, backup, {names[0]})) {
        return {Reuse::nothing, "the scenario is not that of the last run"};
    }
    if (cached->classification != now.manifest.classification) {
        return {Reuse::complete_list,
                "not as in the last run, though the logs are: " +
                    subject(first_difference(cached->classification, now.manifest.classification))};
    }
    if (!has_same_inputs(place, backup, names)) {
        return {Reuse::nothing, "the copies of the last inputs are incomplete"};
    }
    return {Reuse::everything, "nothing has changed since the last run"};
}

// All users of the installation may share it, as they do the results.
void make_input_cache(const fs::path& directory) {
    const mode_t mask = umask(0);
    std::error_code ignored;
    fs::create_directories(directory, ignored);
    umask(mask);
}

// A run that fails halfway must leave nothing that calls its leavings results.
void forget_last_run(const RunPlace& place) {
    std::error_code ignored;
    fs::remove(place.input_cache_directory / manifest_name, ignored);
    for (const std::string& name : input_names(place)) {
        fs::remove(place.input_cache_directory / name, ignored);
    }
}

// For those who wonder why a run has, or has not, read the logs.
void write_answer(const Answer& answer, const RunPlace& place) {
    const fs::path file = place.input_cache_directory / answer_name;
    std::error_code ignored;
    fs::remove(file, ignored);
    std::ofstream(file) << static_cast<int>(answer.reuse) << ": " << answer.reason << '\n';
}

void record(const Answer& answer, const RunPlace& place, Inputs& inputs, const fs::path& backup) {
    if (answer.reuse == Reuse::complete_list) {
        inputs.manifest.kept_results = describe_kept_results(place, inputs.results);
    }
    if (answer.reuse != Reuse::everything) {
        make_input_cache(place.input_cache_directory);
        forget_last_run(place);
    }
    if (inputs.doubt.empty()) {
        write_manifest(backup / manifest_name, inputs.manifest);
    }
    write_answer(answer, place);
}

} // namespace

Answer answer_run(const std::string& profile_argument, pid_t pid) {
    const std::string process = "process " + std::to_string(pid);
    const std::optional<RunProcess> run = find_run(pid);
    if (!run) {
        return {Reuse::nothing, process + " is not a run of zvr_al_gen_url_list of this user"};
    }
    const std::optional<RunPlace> place = locate_run(*run);
    if (!place || profile_argument != "/" + place->replay_profile + ".conf") {
        return {Reuse::nothing, process + " does not work on " + profile_argument};
    }
    const std::optional<fs::path> backup = own_backup_directory(pid);
    if (!backup) {
        return {Reuse::nothing, process + " has no backup of its inputs"};
    }
    const std::optional<pid_t> other = find_other_run(pid, place->config_directory);
    if (other) {
        return {Reuse::refused,
                "process " + std::to_string(*other) + " works on the same scenario"};
    }
    Inputs inputs = read_inputs(*run, *place, *backup);
    Answer answer = compare(*place, inputs, *backup);
    if (is_ancestor(pid)) {
        record(answer, *place, inputs, *backup);
    }
    return answer;
}
