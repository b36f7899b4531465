#include "companions/doctor/check_zone.h"

#include "base/file_exists.h"
#include "companions/doctor/observed_file.h"
#include "tools/driver/paths.h"
#include "tools/parse/replay_zone.h"

#include <cstdlib>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/core.h>
#include <optional>
#include <regex.h>
#include <sys/stat.h>

namespace {

bool matches(const std::string& text, const std::string& pattern) {
    regex_t regex;
    regcomp(&regex, pattern.c_str(), REG_EXTENDED | REG_NOSUB);
    const bool is_match = regexec(&regex, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&regex);
    return is_match;
}

bool is_regular_file(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The line that a run goes by; none when there is no such line or no file.
std::optional<ReadLine> read_offset_line(const std::string& path) {
    std::optional<ReadLine> found;
    if (file_exists(path.c_str())) {
        read_observed([] { get_timezone_from_default_setting(g_wdir); },
                      [&](const ReadLine& line) { found = line; });
    }
    return found;
}

// "+0530" for 19800 seconds east of UTC.
std::string offset_text(int64_t seconds_east) {
    const int64_t minutes = std::abs(seconds_east) / 60;
    return fmt::format("{}{:02}{:02}", seconds_east < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

void check_offset(FileFindings& findings, const ReadLine& line) {
    if (!matches(line.outcome.text, "^[ \t]+[-+](0[0-9]|1[0-4])[0-5][0-9][ \t\r]*$")) {
        findings.add(Severity::warning, "unknown-zone", line.number,
                     line.outcome.name + line.outcome.text,
                     fmt::format("This is not a zone as it has to be written; it counts as {}.",
                                 offset_text(-replay_timezone)),
                     "Write a sign, two digits of hours and two of minutes, as +0530 or -0800; "
                     "+ is east of UTC.");
    }
}

// TZ, or what the system has instead.
std::string own_zone() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread changes the environment
    const char* const zone = std::getenv("TZ");
    return zone == nullptr ? "" : zone;
}

void check_own_zone(Findings& findings) {
    const std::string zone = own_zone();
    if (!zone.empty() && !is_known_zone(zone)) {
        findings.push_back({"unknown-zone", Severity::warning, "", 0, "TZ=" + zone,
                            "The system knows no zone of this name and takes UTC for it.",
                            "Set TZ to a name of /usr/share/zoneinfo, as Europe/Rome."});
    }
}

} // namespace

bool is_known_zone(const std::string& zone) {
    const std::string abbreviation = "([A-Za-z]{3,}|<[-+A-Za-z0-9]{3,}>)";
    const std::string rule = "^" + abbreviation + "[-+]?[0-9]{1,2}(:[0-9:]*)?(" + abbreviation +
                             "[-+:0-9]*(,[-+.,/:MJ0-9]*)?)?$";
    const std::string name = zone.substr(zone.starts_with(':') ? 1 : 0);
    const std::string path = name.starts_with('/') ? name : "/usr/share/zoneinfo/" + name;
    return is_regular_file(path) || matches(name, rule) || name == "UTC" || name == "GMT";
}

std::string replay_zone_file() {
    return std::string(g_wdir) + "/sys/replay_settings.default";
}

int check_zone(Findings& findings) {
    FileFindings own(findings, replay_zone_file());
    check_own_zone(findings);
    const std::optional<ReadLine> line = read_offset_line(own.file());
    if (line) {
        check_offset(own, *line);
        return line->number;
    }
    own.add(Severity::note, "local-zone", 0, own_zone().empty() ? "" : "TZ=" + own_zone(),
            fmt::format("The installation names no zone, so the replay period is in the local one "
                        "of who starts the run: {}{}.",
                        offset_text(-replay_timezone),
                        daylight != 0 ? ", without regard to summer time" : ""),
            "Give the line GMT_OFFSET with a sign, hours and minutes, as +0530.");
    return 0;
}

std::string shown_moment(unsigned long time_stamp) {
    // The scale is that of the process's local calendar, whose clock the replay's zone reads.
    const auto time = static_cast<time_t>(time_stamp);
    tm clock = {};
    localtime_r(&time, &clock);
    tm same_clock = clock;
    const time_t utc = timegm(&same_clock) + replay_timezone;
    tm utc_clock = {};
    gmtime_r(&utc, &utc_clock);
    const std::string text_in_utc = fmt::format("{:%Y-%m-%d %H:%M:%S} UTC", utc_clock);
    return replay_timezone == 0 ? text_in_utc
                                : fmt::format("{:%Y-%m-%d %H:%M:%S} {} ({})", clock,
                                              offset_text(-replay_timezone), text_in_utc);
}
