#pragma once

#include "base/file_state.h"
#include "base/own_directory.h"
#include "cache/manifest.h"
#include "tests/support/test_installation.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// Whole runs that ask the real checker command.

inline constexpr const char* main_pattern = "active|main|POST|1|Order|na|d|body.txt|/order\n";
inline const std::string cache = project_directory + "/ReplayAccessLogs/web/.tmp/";
inline const std::string cache_manifest = cache + "cache_manifest.txt";
inline const std::string cache_answer = cache + "cache_answer.txt";
inline constexpr const char* results[] = {"complete_url.list", "hosts.list", "url.list",
                                          "query_url.list"};

inline std::string backup_path(pid_t pid) {
    return "/tmp/zvr_al_gen_url_list.backup." + std::to_string(pid);
}

class Checker : public testing::Test {
  protected:
    Checker() {
        installation_.use_checker();
        write_logs();
        installation_.add_settings("IGNORE_URL_QUERY_PARAM 1\nINLINE_OBJECT_MODE skip\n");
        installation_.write_patterns(main_pattern);
        installation_.write_profile("body.txt", "order=1");
        remove(cache);
    }

    void write_logs() const {
        installation_.write_logs({combined_line({.url = "/a?x=1"}) + combined_line({.url = "/a?y"}),
                                  combined_line({.url = "/order", .method = "POST"})});
    }

    // Makes a run and returns what the checker answered it, -1 when it did not.
    int answer(const Lines& words = {"-s", "web"}, const Environment& environment = {}) const {
        remove(cache_answer);
        let_files_settle();
        last_run_ = installation_.run_words(words, environment);
        EXPECT_EQ(last_run_.status, 0) << last_run_.output;
        const std::string text = installation_.read(cache_answer);
        return text.empty() ? -1 : std::atoi(text.c_str());
    }

    // A run that reads the logs, and time enough for later changes to have later times.
    void run_in_full() const {
        ASSERT_EQ(answer(), 1);
        usleep(20'000);
    }

    // Answer to a second run, with a change made after a full one.
    int answer_after(const std::function<void()>& change) const {
        run_in_full();
        change();
        return answer();
    }

    void remove(const std::string& path) const {
        std::filesystem::remove_all(installation_.path(path));
    }

    // Expects each change to the cache or the results to prevent their reuse.
    void expect_read_again(const std::vector<std::function<void()>>& changes) const {
        for (size_t i = 0; i < changes.size(); ++i) {
            EXPECT_EQ(answer_after(changes[i]), 1) << i;
            remove(cache);
        }
    }

    void append(const std::string& path, const std::string& text) const {
        installation_.write(path, installation_.read(path) + text);
    }

    void cut_end(const std::string& path, size_t count) const {
        const std::filesystem::path file = installation_.root() / path;
        std::filesystem::resize_file(file, std::filesystem::file_size(file) - count);
    }

    // Lets the manifest say that the last run has left its results as they are now.
    void seal_again() const {
        const OwnDirectory directory(installation_.path(cache));
        std::string fault;
        std::optional<Manifest> manifest = read_sealed_manifest(directory.descriptor(), fault);
        ASSERT_TRUE(manifest) << fault;
        manifest->results = "";
        for (const std::string name : results) {
            struct stat status = {};
            stat(installation_.path(config_directory + "/" + name).c_str(), &status);
            manifest->results += result_line(name, state_text(status));
        }
        EXPECT_TRUE(write_sealed_manifest(directory.descriptor(), *manifest));
    }

    // Makes a change that leaves a file its time of modification, but for some nanoseconds.
    void keep_time(const std::string& path, long nanoseconds,
                   const std::function<void()>& change) const {
        const std::filesystem::path file = installation_.path(path);
        const std::filesystem::file_time_type time = std::filesystem::last_write_time(file);
        change();
        std::filesystem::last_write_time(file, time + std::chrono::nanoseconds(nanoseconds));
    }

    TestInstallation installation_;
    mutable RunResult last_run_;
};
