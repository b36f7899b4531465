#include "companions/report/load_command.h"

#include "base/failure.h"
#include "companions/common/common_options.h"
#include "companions/report/figures_json.h"
#include "companions/report/gather_figures.h"
#include "companions/report/load_output.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace {

struct LoadOptions {
    RunOptions run;
    FigureOptions figures;
    bool is_json = false;
};

void write_out(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        fail("Unable to write to standard output: %s",
             std::generic_category().message(errno).c_str());
    }
}

void tell_load(LoadOptions options) {
    options.figures.queries_per_url = options.is_json ? options.figures.queries_per_url : 0;
    const ScenarioFigures figures = gather_figures(options.run, options.figures);
    if (options.is_json) {
        write_out(figures_as_json(figures) + "\n");
    } else {
        constexpr size_t usual_width = 100;
        write_out(figures_as_text(figures, Style(stdout), terminal_width(stdout, usual_width)));
    }
}

} // namespace

void add_load_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(
        program, "load", "Show the load on the terminal: peak, rates, sessions, percentiles, mix");
    const auto options = std::make_shared<LoadOptions>();
    add_run_options(command, options->run);
    add_json_option(command, options->is_json);
    command.callback([options, &exit_status] {
        tell_load(*options);
        exit_status = 0;
    });
}
