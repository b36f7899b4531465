#include "tools/driver/left_results.h"

#include "cache/file_state.h"
#include "cache/manifest.h"

#include <map>

namespace {

std::map<std::string, std::string> states; // by name

} // namespace

void note_left_result(const char* name, int descriptor) {
    states[name] = file_state(descriptor).value_or("unknown");
}

std::string left_result_lines() {
    std::string lines;
    for (const auto& [name, state] : states) {
        lines += result_line(name, state);
    }
    return lines;
}
