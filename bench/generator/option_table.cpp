#include "bench/generator/option_table.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <getopt.h>
#include <stdexcept>
#include <string_view>

namespace {

struct SetTarget {
    std::string_view argument;

    void operator()(bool* target) const { *target = true; }
    void operator()(std::string* target) const { *target = argument; }
    void operator()(uint64_t* target) const {
        const char* end = argument.data() + argument.size();
        const auto [stop, error] = std::from_chars(argument.data(), end, *target);
        if (error != std::errc() || stop != end) {
            throw std::runtime_error("not a number: " + std::string(argument));
        }
    }
};

bool is_switch(const OptionRow& row) {
    return std::holds_alternative<bool*>(row.target);
}

[[noreturn]] void print_usage(FILE* out, const char* program, const std::vector<OptionRow>& rows) {
    std::fprintf(out, "Usage: %s [options]\n", program);
    for (const OptionRow& row : rows) {
        std::fprintf(out, "  --%-20s %s %s\n", row.name, is_switch(row) ? " " : "=", row.help);
    }
    std::exit(out == stdout ? 0 : 2); // NOLINT(concurrency-mt-unsafe): one thread
}

} // namespace

void read_options(int argc, char* argv[], const std::vector<OptionRow>& rows) {
    constexpr int help_letter = 'h';
    constexpr int first_row = 256; // above all letters
    std::vector<option> options = {{"help", no_argument, nullptr, help_letter}};
    for (const OptionRow& row : rows) {
        options.push_back({row.name, is_switch(row) ? no_argument : required_argument, nullptr,
                           first_row + static_cast<int>(&row - rows.data())});
    }
    options.push_back({});
    int found;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
    while ((found = getopt_long(argc, argv, "", options.data(), nullptr)) >= first_row) {
        const OptionRow& row = rows[static_cast<size_t>(found - first_row)];
        std::visit(SetTarget{is_switch(row) ? "" : optarg}, row.target);
    }
    if (found != -1 || optind != argc) {
        print_usage(found == help_letter ? stdout : stderr, argv[0], rows);
    }
}
