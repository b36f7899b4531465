#include "companions/shard/plan/apply_plan.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "base/regular_file.h"
#include "companions/shard/plan/log_samples.h"
#include "tools/config/field_layout.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/config/settings_file.h"
#include "tools/load/input_files.h"
#include "tools/load/log_pieces.h"
#include "tools/parse/replay_zone.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t host_name_size = 256;

std::string host_name() {
    char name[host_name_size] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "this host";
}

// By their reader, which takes a file.
void apply_settings(const std::string& settings) {
    const FileDescriptor file(memfd_create("replay_settings.dat", MFD_CLOEXEC));
    if (!file.is_open() || !write_whole(file.get(), settings)) {
        fail("The settings of the plan cannot be kept in memory");
    }
    read_replay_prof_setting(("/proc/self/fd/" + std::to_string(file.get())).c_str());
    set_default_field_positions();
    validate_al_format();
}

void require_same_zone(const Plan& plan) {
    if (hash_zone_rules() != plan.zone_rules) {
        fail("%s: time zone '%s' has other rules than on the host of the plan", host_name().c_str(),
             plan.has_zone ? plan.zone.c_str() : "of the host");
    }
}

void apply_logs(const std::vector<PlannedLog>& logs) {
    for (const PlannedLog& log : logs) {
        seq_file_path[num_al_files++] = {.input_file = strdup(log.path.c_str()),
                                         .body_flag = log.is_body_file,
                                         .ssl_flag = 0,
                                         .num_req = log.line_budget,
                                         .instance_idx = log.instance};
    }
    g_num_instance = logs.empty() ? 0 : logs.back().instance + 1;
}

void check_log(const PlannedLog& log) {
    const char* const path = log.path.c_str();
    const FileDescriptor file = open_regular_file(path);
    struct stat status;
    if (!file.is_open() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        fail("%s: %s cannot be read", host_name().c_str(), path);
    }
    if (static_cast<uint64_t>(status.st_size) < log.size ||
        hash_log_samples(file.get(), log.size, path) != log.samples) {
        fail("%s: %s is not the log of the plan", host_name().c_str(), path);
    }
}

} // namespace

// NOLINTBEGIN(concurrency-mt-unsafe): no thread has been started
void apply_zone(const Plan& plan) {
    if (plan.has_zone) {
        setenv("TZ", plan.zone.c_str(), 1);
    } else {
        unsetenv("TZ");
    }
}
// NOLINTEND(concurrency-mt-unsafe)

void apply_plan(const Plan& plan) {
    dump_query_flag = plan.dump_query_url;
    apply_settings(plan.settings);
    apply_zone(plan);
    require_same_zone(plan);
    replay_timezone = plan.replay_timezone;
    start_time_stamp = plan.start_time_stamp;
    end_time_stamp = plan.end_time_stamp;
    time_filter_flag = plan.is_time_filtered;
    log_piece_size = plan.log_piece_size;
    apply_logs(plan.logs);
}

void check_logs(const Plan& plan, const std::vector<size_t>& logs) {
    for (const size_t log : logs) {
        if (!plan.logs.at(log).is_body_file) {
            check_log(plan.logs[log]);
        }
    }
}
