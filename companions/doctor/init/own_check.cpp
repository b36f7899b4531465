#include "companions/doctor/init/own_check.h"

#include <cerrno>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

std::vector<std::string> words_of(const RunOptions& options) {
    std::vector<std::string> words = {"zvr_al_doctor", "check", "--json", "--scenario",
                                      options.scenario};
    if (!options.replay_profile.empty()) {
        words.insert(words.end(), {"--replay_profile", options.replay_profile});
    }
    words.insert(words.end(), {"--num_thread", std::to_string(options.num_thread),
                               "--dump_query_url", std::to_string(options.dump_query_url)});
    return words;
}

// In the new process; ZV_WDIR is that of this one.
[[noreturn]] void become(std::vector<std::string> words, int output) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    dup2(output, STDOUT_FILENO);
    execv("/proc/self/exe", arguments.data());
    _exit(failure_status);
}

std::string read_to_end(int descriptor) {
    std::string text;
    char block[4096];
    ssize_t size;
    while ((size = read(descriptor, block, sizeof block)) != 0) {
        if (size > 0) {
            text.append(block, static_cast<size_t>(size));
        } else if (errno != EINTR) {
            break;
        }
    }
    return text;
}

// What the new process writes; nothing when it cannot be started.
std::string run_check(const RunOptions& options) {
    int ends[2];
    if (pipe(ends) != 0) {
        return "";
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        become(words_of(options), ends[1]);
    }
    close(ends[1]);
    std::string output = child == -1 ? "" : read_to_end(ends[0]);
    close(ends[0]);
    while (child != -1 && waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
    }
    return output;
}

Severity severity_of(const std::string& name) {
    return name == "error"     ? Severity::error
           : name == "warning" ? Severity::warning
                               : Severity::note;
}

Finding finding_of(const nlohmann::json& json) {
    return {json.at("id"),    severity_of(json.at("severity")),
            json.at("file"),  json.at("line"),
            json.at("value"), json.at("meaning"),
            json.at("cure")};
}

} // namespace

Findings findings_of_own_check(const RunOptions& options) {
    Findings findings;
    try {
        const nlohmann::json json = nlohmann::json::parse(run_check(options));
        for (const nlohmann::json& finding : json.at("findings")) {
            findings.push_back(finding_of(finding));
        }
    } catch (const nlohmann::json::exception&) {
        return {{"check-failed", Severity::error, "", 0, options.scenario,
                 "The new scenario could not be checked.", "Run zvr_al_doctor check."}};
    }
    return findings;
}
