#include "companions/shard/cut/cut_command.h"

#include "companions/shard/cut/cut_rows.h"
#include "companions/shard/exchange/range_key.h"
#include "companions/shard/stage_options.h"

#include <memory>
#include <string>
#include <vector>

namespace {

struct CutOptions {
    StageOptions stage;
    std::vector<std::string> keys;
};

std::vector<std::string> keys_of_hex(const std::vector<std::string>& texts) {
    std::vector<std::string> keys;
    keys.reserve(texts.size());
    for (const std::string& text : texts) {
        keys.push_back(key_of_hex(text));
    }
    return keys;
}

} // namespace

void add_cut_command(CLI::App& program, int& status) {
    CLI::App& command =
        add_command(program, "cut", "Cut blocks of requests so that none crosses a range's bounds");
    const auto options = std::make_shared<CutOptions>();
    add_plan_option(command, options->stage);
    add_bare_option(command, options->stage);
    command
        .add_option("--keys", options->keys,
                    "Where ranges begin, but for the first: keys of rows, ascending")
        ->type_name("KEY,...")
        ->delimiter(',');
    command.callback([options, &status] {
        const Plan plan = enter_plan(options->stage);
        FrameReader from = standard_input(options->stage, plan);
        FrameWriter to = standard_output(plan);
        cut_rows(from, keys_of_hex(options->keys), to);
        to.end();
        status = 0;
    });
}
