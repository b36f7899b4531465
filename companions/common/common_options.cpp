#include "companions/common/common_options.h"

#include "base/failure.h"
#include "companions/common/shown_text.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <fmt/core.h>
#include <limits>
#include <string>
#include <system_error>
#include <vector>

namespace {

int report_failure(const CLI::App& program, std::string_view message, std::string_view advice) {
    fmt::print(stderr, "{}: {}\n{}", program.get_name(), shown_lines(message), advice);
    return failure_status;
}

int report_wrong_usage(const CLI::App& program, const CLI::ParseError& error) {
    // Without a command that it knows, the parser misses one and does not name the other word.
    const std::vector<std::string> unknown = program.remaining();
    const bool no_command = program.get_subcommands().empty() && !unknown.empty();
    return report_failure(
        program,
        no_command ? fmt::format("There is no command or option '{}'", unknown.front())
                   : error.what(),
        fmt::format("Run {} --help, or --help after a command.\n", program.get_name()));
}

// Whether all that was written has reached its file.
bool is_output_whole() {
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

int status_of_output(const CLI::App& program, int status) {
    return is_output_whole() ? status : report_failure(program, "The output cannot be written", "");
}

// The parser of numbers takes -1 for the greatest one, and so it does one that is too great.
std::string fault_of_count(const std::string& text, uint64_t greatest) {
    uint64_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const bool is_count = error == std::errc() && end == text.data() + text.size();
    return is_count && count <= greatest
               ? ""
               : fmt::format("'{}' is not a number from 0 to {}", text, greatest);
}

} // namespace

CLI::Validator count_up_to(uint64_t greatest) {
    return {[greatest](const std::string& text) { return fault_of_count(text, greatest); }, ""};
}

CLI::App& add_command(CLI::App& program, const std::string& name, const std::string& description) {
    CLI::App& command = *program.add_subcommand(name, description);
    add_version(command);
    return command;
}

void add_version(CLI::App& command) {
    const CLI::App* program = &command;
    while (program->get_parent() != nullptr) {
        program = program->get_parent();
    }
    command.set_version_flag("--version", program->get_name() + " " ZVR_VERSION,
                             "Print the version and exit");
}

void add_work_dir_option(CLI::App& command, RunOptions& options) {
    command
        .add_option("--work-dir", options.work_dir,
                    "The installation's directory (default: environment variable ZV_WDIR)")
        ->type_name("DIR");
}

void add_run_options_without_threads(CLI::App& command, RunOptions& options) {
    command
        .add_option("-s,--scenario", options.scenario,
                    "A name in the default workspace, or "
                    "workspace/profile/project/subproject/name")
        ->type_name("NAME")
        ->required();
    command
        .add_option("-r,--replay_profile", options.replay_profile,
                    "Replay profile below replay_profiles (default: that of the scenario)")
        ->type_name("NAME");
    command
        .add_option("-q,--dump_query_url", options.dump_query_url,
                    "0: the run writes no query_url.list")
        ->type_name("N");
    add_work_dir_option(command, options);
}

void add_run_options(CLI::App& command, RunOptions& options) {
    add_run_options_without_threads(command, options);
    command
        .add_option("-t,--num_thread", options.num_thread,
                    "Threads that read logs; 0: by the processors")
        ->type_name("N")
        ->check(count_up_to(std::numeric_limits<int>::max()));
}

void add_json_option(CLI::App& command, bool& is_json) {
    command.add_flag("--json", is_json, "Write JSON for programs instead of text");
}

int run_command_line(CLI::App& program, int argc, char* argv[], const int& status) {
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return status_of_output(program, program.exit(help));
    } catch (const CLI::ParseError& error) {
        return report_wrong_usage(program, error);
    } catch (const Failure& failure) {
        return report_failure(program, failure.message, "");
    } catch (const std::exception& exception) {
        return report_failure(program, exception.what(), "");
    }
    return status_of_output(program, status);
}
