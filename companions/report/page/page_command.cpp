#include "companions/report/page/page_command.h"

#include "companions/common/common_options.h"
#include "companions/common/output_file.h"
#include "companions/report/figures_json.h"
#include "companions/report/gather_figures.h"
#include "companions/report/page/page_text.h"

#include <memory>
#include <string>

namespace {

struct PageOptions {
    RunOptions run;
    FigureOptions figures;
    std::string output; // path
    bool leaves_queries_out = false;
};

void write_page(PageOptions options) {
    if (options.leaves_queries_out) {
        options.figures.queries_per_url = 0;
    }
    const OutputFile page(options.output); // what is wrong with it is said before the logs are read
    const std::string figures = figures_as_json(gather_figures(options.run, options.figures));
    page.write({page_before_figures(), figures, page_after_figures()});
}

void add_query_options(CLI::App& command, PageOptions& options) {
    CLI::Option* number =
        command
            .add_option("--queries", options.figures.queries_per_url,
                        "The most frequent queries of each URL that the page shows")
            ->type_name("N")
            ->capture_default_str();
    command
        .add_flag("--no-queries", options.leaves_queries_out,
                  "Show no query, for a page that is passed on")
        ->excludes(number);
}

} // namespace

void add_page_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(
        program, "page", "Write the load as one page for a browser, which needs no network");
    const auto options = std::make_shared<PageOptions>();
    add_run_options(command, options->run);
    command.add_option("-o,--output", options->output, "The page")->type_name("FILE")->required();
    add_query_options(command, *options);
    command.callback([options, &exit_status] {
        write_page(*options);
        exit_status = 0;
    });
}
