#include "base/left_results.h"

#include "base/file_state.h"

namespace {

std::map<std::string, std::string> states;

} // namespace

void note_left_result(const char* name, int descriptor) {
    states[name] = file_state(descriptor).value_or("unknown");
}

const std::map<std::string, std::string>& left_results() {
    return states;
}
