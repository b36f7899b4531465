#include "checker/inputs.h"

#include "base/failure.h"
#include "base/own_file.h"
#include "cache/input_copies.h"
#include "checker/file_contents.h"
#include "checker/named_files.h"
#include "checker/settled_state.h"
#include "tools/config/replay_settings.h"
#include "tools/config/settings_file.h"
#include "tools/load/thread_count.h"
#include "tools/parse/replay_zone.h"
#include "tools/urls/query_list.h"

namespace fs = std::filesystem;

namespace {

std::string joined(const std::string& a, const std::string& b) {
    return a + " " + b;
}

// All but comments, empty lines and the keywords that are known to have no say in it.
bool may_decide_loading(LineText line) {
    if (line.size == 0 || line.text[0] == '#') {
        return false;
    }
    const SettingKeyword* const keyword = find_setting_keyword(line.text);
    return keyword == nullptr || keyword->effect == SettingEffect::loading;
}

class Collector {
  public:
    Collector(const RunProcess& run, const RunPlace& place, const FileDescriptor& backup)
        : run_(run), place_(place), backup_(backup) {}

    Inputs collect() {
        inputs_.manifest.config_directory = place_.config_directory;
        require_unchanged_since_start();
        collect_loading();
        collect_classification();
        return inputs_;
    }

  private:
    void add_loading(const std::string& line) { inputs_.manifest.loading += line + "\n"; }

    void add_classification(const std::string& line) {
        inputs_.manifest.classification += line + "\n";
    }

    void doubt(const std::string& reason) {
        if (inputs_.doubt.empty()) {
            inputs_.doubt = reason;
        }
    }

    // The run has read most of its inputs before they were copied, and reads the scenario after
    // that. The copies are what it reads only when nobody has written to the files meanwhile.
    void require_unchanged_since_start() {
        const std::optional<int64_t> start = earliest_start_time(run_.pid);
        const fs::path files[] = {place_.scenario_file, place_.replay_profile_dir / settings_name,
                                  place_.replay_profile_dir / url_patterns_name,
                                  place_.replay_profile_dir / filter_patterns_name,
                                  defaults_file()};
        for (const fs::path& file : files) {
            if (!start || change_time(file).value_or(0) >= *start) {
                doubt(file.string() + " was changed after the run had started, or just before");
            }
        }
    }

    fs::path defaults_file() const { return place_.work_dir / "sys/replay_settings.default"; }

    void collect_loading() {
        add_loading(joined("version", ZVR_VERSION));
        add_loading(joined("program", state_of(run_.program)));
        add_loading(joined("scenario", digest_of(scenario_file_name(place_.scenario))));
        collect_logs();
        collect_settings();
        collect_time_zones();
        add_loading(joined("num_thread", std::to_string(place_.num_thread)));
        if (g_num_thread == 0) { // the tool then goes by the processors
            add_loading(joined("processors", std::to_string(zvr_get_num_cpu())));
        }
        add_loading(joined("dump_query_url", place_.dump_query_url ? "1" : "0"));
        add_loading(joined("akaau_trace", place_.akaau_trace ? "1" : "0"));
        inputs_.results.trace = place_.akaau_trace;
    }

    void collect_logs() {
        std::vector<std::string> logs;
        if (!read_scenario_logs(copy_of(scenario_file_name(place_.scenario)), logs)) {
            doubt("the copy of the scenario cannot be read");
        }
        for (const std::string& log : logs) {
            const fs::path path = run_.directory / log;
            inputs_.manifest.loading += log_line(path, state_of(path));
        }
    }

    void collect_settings() {
        dump_query_flag = place_.dump_query_url;
        g_num_thread = place_.num_thread;
        LinePlace line_place = {settings_name, 0};
        const auto take = [&](LineText line) {
            ++line_place.line_num;
            if (may_decide_loading(line)) {
                add_loading(joined("setting", std::string(line.text, line.size)));
            }
            apply_setting_line(line_place, line);
        };
        try {
            if (!read_lines(copy_of(settings_name), settings_line_size, take)) {
                doubt("the copy of the settings cannot be read");
            }
        } catch (const Failure& failure) { // the run has found no fault in what it has read
            doubt("the copy of the settings is another one: " + failure.message);
        }
        inputs_.results.query_list = is_query_list_wanted();
        inputs_.results.non_session_counts = ignore_non_session_urls == 0;
    }

    void collect_time_zones() {
        inputs_.manifest.loading += zone_line(get_timezone_from_default_setting(place_.work_dir));
        const std::string* zone = run_.variable("TZ");
        add_loading(zone == nullptr ? "no TZ" : joined("TZ", *zone));
        const fs::path file = zone_file(zone);
        if (!file.empty()) {
            add_loading(joined(joined("zone file", file), state_of(file)));
        }
    }

    // Where the C library looks for the rules of the zone.
    fs::path zone_file(const std::string* zone) const {
        if (zone == nullptr) {
            return "/etc/localtime";
        }
        const std::string* directory = run_.variable("TZDIR");
        const std::string name = zone->starts_with(':') ? zone->substr(1) : *zone;
        return name.empty()
                   ? fs::path()
                   : fs::path(directory == nullptr ? "/usr/share/zoneinfo" : *directory) / name;
    }

    void collect_classification() {
        // Paths of post-data files in url.list begin as these are written.
        add_classification(joined("ZV_WDIR", *run_.variable("ZV_WDIR")));
        add_classification(joined("replay_profile", place_.replay_profile));
        for (const char* name : {settings_name, url_patterns_name, filter_patterns_name}) {
            add_classification(joined(name, digest_of(name)));
        }
        std::vector<std::string> files;
        if (!read_post_data_files(copy_of(url_patterns_name), files)) {
            doubt("the copy of the URL patterns cannot be read");
        }
        for (const std::string& file : files) {
            const fs::path path = place_.replay_profile_dir / file;
            add_classification(joined(joined("post-data file", path), state_of(path)));
        }
    }

    FileDescriptor copy_of(const std::string& name) const {
        return open_own_file(backup_.get(), name.c_str());
    }

    std::string state_of(const fs::path& path) {
        const std::optional<std::string> state = settled_file_state(path);
        if (!state) {
            doubt(path.string() + " is just being changed or is no regular file");
        }
        return state.value_or("unknown");
    }

    std::string digest_of(const std::string& name) {
        const std::optional<std::string> digest = file_digest(copy_of(name));
        if (!digest) {
            doubt("the copy of " + name + " cannot be read");
        }
        return digest.value_or("unknown");
    }

    const RunProcess& run_;
    const RunPlace& place_;
    const FileDescriptor& backup_;
    Inputs inputs_;
};

} // namespace

Inputs read_inputs(const RunProcess& run, const RunPlace& place, const FileDescriptor& backup) {
    return Collector(run, place, backup).collect();
}
