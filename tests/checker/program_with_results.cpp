#include "base/file_descriptor.h"
#include "base/file_state.h"
#include "checker/own_run.h"
#include "tools/driver/command_line.h"
#include "tools/driver/input_backup.h"
#include "tools/driver/paths.h"
#include "tools/driver/result_phases.h"
#include "tools/driver/run_inputs.h"
#include "tools/load/read_logs.h"
#include "tools/patterns/pattern_tables.h"
#include "tools/results/complete_url_list.h"
#include "tools/results/hosts_list.h"
#include "tools/results/url_list.h"
#include "tools/urls/query_list.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

// A program that is no run of the tool, but makes the results of one and leaves a record of them:
//
//     program_with_results LOG STATE FILE WORD...
//
// WORD...: the command line of the run that it stands for, in its environment and directory. The
// results are those that are there, written anew. LOG was read in STATE, or, when that is "-", in
// the state in which it is. FILE, unless it is "-", gets a line more after the program has started.
// Prints why there is no record, and then makes no results.

namespace {

// Reads what a run reads before it copies its inputs aside.
void read_inputs_of_run(int argc, char* argv[]) {
    read_work_directory();
    read_command_line(argc, argv);
    set_replay_timezone();
    find_scenario_and_profile();
    load_replay_profile();
    sort_pattern_tables();
}

RunProcess run_stood_for(const std::vector<std::string>& words) {
    RunProcess run = {getpid(), words, {}, std::filesystem::current_path(), words[0]};
    for (const char* name : {"ZV_WDIR", "TZ"}) {
        run.environment[name] = std::getenv(name);
    }
    return run;
}

void note_log(const char* log, const char* state) {
    const FileDescriptor file(open(log, O_RDONLY | O_CLOEXEC));
    const bool is_as_it_is = std::strcmp(state, "-") == 0;
    note_read_log(log, is_as_it_is ? file_state(file.get()).value_or("") : std::string(state));
}

void add_line(const char* file) {
    if (std::strcmp(file, "-") != 0) {
        std::ofstream(file, std::ios::app) << "# more\n";
    }
}

// Returns whether complete_url.list can be read back.
bool write_results_anew(const OwnDirectory& config_dir) {
    std::vector<std::string> queries;
    std::ifstream list(config_directory() + "query_url.list");
    for (std::string line; std::getline(list, line);) {
        queries.push_back(line);
    }
    fill_url_pattern_from_cache(config_dir);
    QueryList query_list(config_dir);
    for (const std::string& query : queries) {
        query_list.add(query);
    }
    query_list.close();
    const bool can_be_read_back = dump_complete_url_list(config_dir);
    write_hosts_list(config_dir);
    classify_urls();
    write_url_list(config_dir);
    return can_be_read_back;
}

} // namespace

int main(int argc, char* argv[]) {
    constexpr int own_words = 4;
    if (argc <= own_words) {
        return 1;
    }
    read_inputs_of_run(argc - own_words, argv + own_words);
    const InputBackup backup;
    add_line(argv[3]);
    const std::string doubt = record_own_run(run_stood_for({argv + own_words, argv + argc}));
    if (!doubt.empty()) {
        std::printf("%s\n", doubt.c_str());
        backup.remove();
        return 0;
    }
    note_log(argv[1], argv[2]);
    const OwnDirectory config_dir = create_config_directory();
    const bool can_be_read_back = write_results_anew(config_dir);
    backup.copy_to_cache(config_dir, can_be_read_back);
    backup.remove();
    return 0;
}
