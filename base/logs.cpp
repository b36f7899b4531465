#include "base/logs.h"

#include "base/new_file.h"

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <unistd.h>

int debug_on = 0;
int debug_level = 0;
FILE* debug_fp = nullptr;
const char tool_name[20] = "zvr_al_gen_url_list";

namespace {

constexpr size_t max_message_size = 102400; // longest message with its terminator
constexpr int failure_status = -1;

// Where the messages for one stream are made, one at a time. A thread's stack may be too small for
// it, and when memory has run out there must be room to say so.
struct MessageRoom {
    std::mutex mutex; // held until the message is written
    char text[max_message_size];
};

MessageRoom error_room;
MessageRoom debug_room;

void write_error_line(const char* format, va_list arguments) {
    const std::lock_guard lock(error_room.mutex);
    std::vsnprintf(error_room.text, max_message_size, format, arguments);
    std::printf("ZVR_GUI_ERROR:%s\n", error_room.text);
    std::fflush(stdout);
}

} // namespace

void error_log(const char*, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write_error_line(format, arguments);
    va_end(arguments);
}

void fatal_error(const char* format, ...) {
    static std::atomic_flag reported = ATOMIC_FLAG_INIT;
    while (reported.test_and_set()) {
        pause(); // another thread is ending the process
    }
    va_list arguments;
    va_start(arguments, format);
    write_error_line(format, arguments);
    va_end(arguments);
    end_process(failure_status);
}

void end_process(int status) {
    std::fflush(nullptr);
    _exit(status);
}

void debug_log(int level, const char* fname, const char* format, ...) {
    if (!debug_wanted(level)) {
        return;
    }
    const std::lock_guard lock(debug_room.mutex);
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(debug_room.text, max_message_size, format, arguments);
    va_end(arguments);
    char date_time[date_time_size];
    std::fprintf(debug_fp, "%s|%s|%s|%s\n", get_cur_date_time(date_time), tool_name, fname,
                 debug_room.text);
}

const char* get_cur_date_time(char* time_string) {
    static thread_local char own_buffer[date_time_size];
    char* text = time_string != nullptr ? time_string : own_buffer;
    const time_t now = std::time(nullptr);
    tm local;
    if (now == -1 || localtime_r(&now, &local) == nullptr) {
        std::snprintf(text, date_time_size, "Error|Error");
        return text;
    }
    std::snprintf(text, date_time_size, "%02d/%02d/%02d %02d:%02d:%02d", local.tm_mon + 1,
                  local.tm_mday, (local.tm_year + 1900) % 2000, local.tm_hour, local.tm_min,
                  local.tm_sec);
    return text;
}

void open_debug_log(const char* work_dir, int level) {
    close_debug_log();
    const std::string path = std::string(work_dir) + "/webapps/zivrano/logs";
    const FileDescriptor directory(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    debug_fp = open_stream(create_new_file(directory.get(), "zivrano_replay_debug.log", 0666), "w");
    if (debug_fp == nullptr) {
        error_log("main", "Failed to open debug log file, debug will be off.");
        return;
    }
    debug_on = 1;
    debug_level = level;
}

void close_debug_log() {
    debug_on = 0;
    if (debug_fp == nullptr) {
        return;
    }
    std::fclose(debug_fp);
    debug_fp = nullptr;
}
