#include "companions/doctor/check_settings.h"

#include "base/file_exists.h"
#include "cache/input_copies.h"
#include "companions/doctor/check_layout.h"
#include "companions/doctor/content_form.h"
#include "companions/doctor/input_file.h"
#include "companions/doctor/near_word.h"
#include "companions/doctor/observed_file.h"
#include "companions/doctor/value_findings.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_settings.h"
#include "tools/config/settings_file.h"
#include "tools/driver/paths.h"

#include <fmt/core.h>
#include <map>
#include <optional>

namespace {

const ValueHelp flag = {"0 for off or 1 for on", "0, which is off", {}};

const std::map<std::string, ValueHelp> help_of_keyword = {
    {"DEFAULT_HOST", {"a host", "an empty name", {}}},
    {"IGNORE_URL_QUERY_PARAM", flag},
    {"AUTO_REDIRECT", flag},
    {"INLINE_OBJECT_MODE",
     {"skip, auto or asperlog",
      "nothing, so that the mode stays what it is: skip, unless another line says otherwise",
      {"skip", "auto", "asperlog"}}},
    {"USER_SESSION_KEY", {"cookie or client_ip", "cookie", {"cookie", "client_ip"}}},
    {"COOKIE_NAME", {"the name of the session cookie", "an empty name", {}}},
    {"IGNORE_NON_SESSION_URLS", flag},
    {"AL_FIELD",
     {"AL_FIELD, one blank, the name of a field in capitals, one blank, and its position",
      "no field; the line still turns the default layout off",
      {}}},
    {"ACCESS_LOG_TYPE",
     {"APACHE, IIS or WEBLOGIC",
      "a type of its own, with separate fields for date, time, method and URL",
      {"APACHE", "IIS", "WEBLOGIC"}}},
    {"NEW_USER_TIME", {"hh:mm:ss", "0", {}}},
    {"DUMP_QUERY_STRING_URL", flag},
    {"NUM_THREAD", {"a number, or 0 to go by the processors", "0, which is by the processors", {}}},
    {"SECONDARY_COOKIE", {"0 or 1, and behind a blank the name", "0, which is off", {}}},
    {"CONSIDER_RESPONSE_TIME", flag},
};

const ValueHelp position_help = {"a position from 1 to 25", "0, which is not in the log", {}};

std::vector<std::string> setting_names() {
    std::vector<std::string> names;
    for (const SettingKeyword& setting : all_setting_keywords()) {
        names.emplace_back(setting.keyword);
    }
    return names;
}

std::vector<std::string> field_names() {
    std::vector<std::string> names;
    for (const AlFields& field : al_required_fields) {
        names.emplace_back(field.name);
    }
    return names;
}

// Whether a field has a position that no layout can have.
bool is_refused_position(const std::string& field) {
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        const int position = al_required_field_position[kind];
        if (field == al_required_fields[kind].name && (position < 0 || position > max_al_fields)) {
            return true;
        }
    }
    return false;
}

// Names of fields stand behind AL_FIELD, those of keywords at the start of a line.
const ValueHelp& help_of(const std::string& name) {
    const auto found = help_of_keyword.find(name);
    return found == help_of_keyword.end() ? position_help : found->second;
}

// Returns the keyword that is nearest to what the line begins with, if any is near.
std::string add_unknown_keyword(FileFindings& findings, const ReadLine& line) {
    std::string text = line.outcome.text;
    if (line.number == 1 && text.starts_with(utf8_mark)) {
        text.erase(0, utf8_mark.size());
        if (text.empty() || text[0] == '#') {
            return ""; // the mark, of which there is a finding, has hidden nothing
        }
    }
    const size_t start = text.find_first_not_of(" \t\r");
    if (start == std::string::npos) {
        return "";
    }
    std::string near = nearest_word(first_word(text.substr(start)), setting_names());
    findings.add(Severity::warning, "unknown-keyword", line.number, line.outcome.text,
                 start == 0 ? "No keyword is written so; a run ignores the line."
                            : "A keyword must begin in the first column; a run ignores the line.",
                 near.empty()
                     ? "Take the line out, or put a # before it."
                     : fmt::format("Write {} at the start of the line if that is meant.", near));
    return near;
}

// Looks at the lines one after the other, and remembers what later ones may undo.
class SettingLines {
  public:
    explicit SettingLines(FileFindings& findings, LayoutLines& layout)
        : findings_(findings), layout_(layout) {}

    void look_at(const ReadLine& line) {
        if (line.has(ObservedKind::line_cut)) {
            add_cut_line_finding(findings_, line.number, settings_line_size - 1);
        }
        if (line.outcome.kind == ObservedKind::unknown_keyword) {
            if (add_unknown_keyword(findings_, line) == "COOKIE_NAME") {
                misspelt_cookie_name_ = findings_.last_index();
            }
        } else if (!line.failure.empty()) {
            findings_.add(Severity::error, "value-refused", line.number, text_of(line),
                          line.failure + ": a run fails.",
                          cure_by_words("", help_of(line.outcome.name)));
        } else if (line.outcome.kind == ObservedKind::taken) {
            look_at_value(line);
        }
    }

    // Of the lines that set each keyword last.
    std::map<std::string, int> numbers() const {
        std::map<std::string, int> numbers;
        for (const auto& [keyword, line] : lines_of_keyword_) {
            numbers[keyword] = line.number;
        }
        return numbers;
    }

    // The finding on the last line that seems to be meant for COOKIE_NAME.
    std::optional<size_t> misspelt_cookie_name() const { return misspelt_cookie_name_; }

  private:
    struct EarlierLine {
        int number;
        std::string value;
    };

    static std::string text_of(const ReadLine& line) {
        const bool is_separated = line.has(ObservedKind::separator_skipped);
        return line.outcome.name +
               (is_separated ? line.remarks.front().text : " " + line.outcome.text);
    }

    void look_at_value(const ReadLine& line) {
        for (const LineRemark& remark : line.remarks) {
            add_remark(line, remark);
        }
        layout_.note(line);
        if (line.outcome.name != "AL_FIELD" && !line.has(ObservedKind::value_kept)) {
            find_earlier(line);
        }
    }

    void add_remark(const ReadLine& line, const LineRemark& remark) {
        ValueHelp help = help_of(remark.name);
        if (remark.name == "AL_FIELD") {
            help.words = field_names();
        }
        if (remark.kind == ObservedKind::number_out_of_range && is_refused_position(remark.name)) {
            return; // the layout is at fault, and says so
        }
        // A name that stays unread where the cookie is off was meant to.
        const bool is_switched_off = remark.kind == ObservedKind::text_not_read &&
                                     remark.name == "SECONDARY_COOKIE" &&
                                     secondary_cookie_enable == 0 && line.remarks.size() == 1;
        if (!is_switched_off) {
            add_value_finding(findings_, line.number, text_of(line), remark, help);
        }
    }

    void find_earlier(const ReadLine& line) {
        EarlierLine& earlier = lines_of_keyword_[line.outcome.name];
        if (earlier.number != 0 && earlier.value != line.outcome.text) {
            findings_.add(Severity::warning, "setting-twice", earlier.number,
                          line.outcome.name + " " + earlier.value,
                          fmt::format("Line {} sets {} again; the last line counts.", line.number,
                                      line.outcome.name),
                          "Take one of the lines out.");
        }
        earlier = {line.number, line.outcome.text};
    }

    FileFindings& findings_;
    LayoutLines& layout_;
    std::optional<size_t> misspelt_cookie_name_;
    std::map<std::string, EarlierLine> lines_of_keyword_;
};

// One mistake is one finding: that of the misspelt line becomes the error, where there is one.
void report_refusal(FileFindings& findings, const std::string& failure,
                    std::optional<size_t> misspelt_cookie_name) {
    constexpr const char* id = "settings-refused";
    const std::string meaning = failure + ": a run fails.";
    if (!misspelt_cookie_name) {
        findings.add(Severity::error, id, 0, "", meaning,
                     "Give the line COOKIE_NAME with the name of the session cookie, or "
                     "USER_SESSION_KEY client_ip where sessions go by the client's address.");
        return;
    }
    Finding& finding = findings.at(*misspelt_cookie_name);
    finding.id = id;
    finding.severity = Severity::error;
    finding.meaning += " " + meaning;
}

std::map<std::string, int> read_settings(FileFindings& findings, LayoutLines& layout) {
    SettingLines lines(findings, layout);
    const std::string failure =
        read_observed([&] { read_replay_prof_setting(findings.file().c_str()); },
                      [&](const ReadLine& line) { lines.look_at(line); });
    if (!failure.empty()) {
        report_refusal(findings, failure, lines.misspelt_cookie_name());
    }
    if (g_num_thread < 0) {
        findings.add(Severity::error, "thread-count", 0, std::to_string(g_num_thread),
                     "The number of threads is negative: a run fails.",
                     "Write NUM_THREAD 0, which goes by the processors.");
    }
    return lines.numbers();
}

} // namespace

std::map<std::string, int> check_settings(Findings& findings) {
    FileFindings own(findings, replay_profile_file_path(settings_name));
    if (!file_exists(own.file().c_str())) {
        own.add(Severity::error, "settings-missing", 0, "",
                "The replay profile has no settings file: a run fails.",
                "Put one there, or name another profile with --replay_profile.");
        return {};
    }
    const InputForm form = check_input_file(own);
    if (!form.is_readable || form.is_utf16) {
        return {};
    }
    LayoutLines layout;
    std::map<std::string, int> lines = read_settings(own, layout);
    check_layout(own, layout);
    return lines;
}

std::vector<std::string> explained_keywords() {
    std::vector<std::string> names;
    names.reserve(help_of_keyword.size());
    for (const auto& [name, help] : help_of_keyword) {
        names.push_back(name);
    }
    return names;
}
