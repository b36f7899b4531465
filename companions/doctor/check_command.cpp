#include "companions/doctor/check_command.h"

#include "base/failure.h"
#include "companions/common/installation.h"
#include "companions/doctor/findings_output.h"

#include <cstdio>
#include <memory>

namespace {

struct CheckOptions {
    RunOptions run;
    bool is_json = false;
};

int check(const CheckOptions& options) {
    const Findings findings = check_scenario_inputs(options.run);
    if (options.is_json) {
        nlohmann::json json = findings_as_json(findings);
        json["scenario"] = options.run.scenario;
        print_json(stdout, json);
    } else {
        print_findings(stdout, findings);
    }
    return exit_status_of(findings);
}

} // namespace

void add_check_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(program, "check",
                                    "Look at everything that a run would read, and say what is "
                                    "wrong and what to do; changes nothing");
    const auto options = std::make_shared<CheckOptions>();
    add_run_options(command, options->run);
    add_json_option(command, options->is_json);
    command.callback([options, &exit_status] { exit_status = check(*options); });
}

Findings check_scenario_inputs(const RunOptions& options) {
    try {
        read_installation(options);
    } catch (const Failure& failure) {
        return {{"run-fails", Severity::error, "", 0, "", failure.message, ""}};
    }
    return {};
}
