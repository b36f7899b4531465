#include "companions/common/shown_text.h"
#include "companions/doctor/findings_output.h"
#include "companions/doctor/init/log_paths.h"
#include "companions/doctor/init/scenario_plan.h"
#include "tests/companions/properties/layout_properties.h"
#include "tests/properties/properties.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_settings.h"
#include "tools/config/scenario_file.h"

namespace {

constexpr const char* line_parts[] = {
    "10.0.0.1",
    "2001:db8::1",
    "-",
    "[10/Oct/2000:13:55:36 -0700]",
    "\"GET /a?x=1 HTTP/1.1\"",
    "200",
    "302",
    "17",
    "0.25",
    "\"http://www.example.com/\"",
    "\"sid=S1; lang=de\"",
    "\"\x1b[2J=1; sid=2\"",
    "\"sid=S2; Path=/; HttpOnly\"",
    "\"www.example.com\"",
    "2000-10-10",
    "13:55:36",
    "GET",
    "/a",
    "\x1b]0;x\x07",
    "\xff",
    "\"",
    "[",
};

constexpr const char* whole_lines[] = {
    "10.0.0.1 - - [10/Oct/2000:13:55:36 -0700] \"GET /a HTTP/1.1\" 200 17 \"-\" \"Mozilla/5.0\"",
    "10.0.0.2 - - [10/Oct/2000:13:55:36 -0700] \"GET /b HTTP/1.1\" 302 17 \"-\" \"x\" "
    "\"sid=\x1b[2J\" "
    "\"/c\"",
    "www:80 10.0.0.2 - - [10/Oct/2000:13:55:36 -0700] \"GET /b HTTP/1.1\" 302 17",
    "#Fields: date time cs-method cs-uri-stem cs-uri-query c-ip sc-status cs(Cookie)",
    "#Fields: c-ip date time cs-method cs-uri sc-status \x1b[2J",
    "#Software: Microsoft Internet Information Services 10.0",
    "2000-10-10 13:55:36 GET /a - 10.0.0.1 200 sid=1;+lang=de",
    "10.0.0.1 2000-10-10 13:55:36 GET /a?b 200",
    "",
};

std::string some_line(Choices& choices) {
    if (!choices.one_in(4)) {
        return choices.of(whole_lines);
    }
    std::string line;
    for (size_t count = choices.below(16); count > 0; --count) {
        line += std::string(choices.of(line_parts)) + " ";
    }
    return line;
}

std::string some_log(Choices& choices) {
    std::string log;
    for (size_t count = choices.below(6); count > 0; --count) {
        const std::string line = some_line(choices) + "\n";
        for (size_t times = 1 + choices.below(9); times > 0; --times) {
            log += line;
        }
    }
    return choices.one_in(4) ? log + choices.rest("\"[] -=;/\x1b\xff\n1a", 60) : log;
}

// There is nothing left in it to be made visible.
void expect_fit_for_terminal(const std::string& text) {
    EXPECT_EQ(text, shown_lines(text));
}

std::string printed(const InitReport& report) {
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    print_report(stream, report);
    print_json(stream, report_as_json(report));
    std::fclose(stream);
    const std::string all(text, size);
    std::free(text);
    return all;
}

// The tool reads what is planned.
void expect_taken(const TemporaryDirectory& directory, const ScenarioPlan& plan) {
    const std::string settings = settings_text(plan);
    expect_fit_for_terminal(settings);
    EXPECT_EQ(refusal_of_settings(directory.write("settings", settings)), "") << settings;
    EXPECT_EQ(session_mode == SESSION_MODE_CLIENT_IP,
              plan.session.key == SessionKey::client_address);
    if (plan.session.key == SessionKey::cookie) {
        EXPECT_EQ(cookie_name, plan.session.cookie);
    }
    expect_fit_for_terminal(scenario_text(plan));
    forget_log_files();
    read_scenario_file(directory.write("scenario", scenario_text(plan)));
    ASSERT_EQ(num_al_files, 1);
    EXPECT_EQ(seq_file_path[0].input_file, plan.logs[0]);
    forget_log_files();
}

} // namespace

void check_log_layouts(Choices& choices) {
    static const TemporaryDirectory directory;
    std::vector<LogSample> samples = {
        read_log_sample(directory.write("a.log", some_log(choices)), 100)};
    InitReport report = {"web\x1b[2J", choose_layout(samples, "")};
    report.findings = report.layout.findings;
    if (report.layout.layout) {
        plan_scenario(samples, report);
        expect_taken(directory, report.plan);
    }
    expect_fit_for_terminal(printed(report));
}
