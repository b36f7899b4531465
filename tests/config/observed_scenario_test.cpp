#include "tests/properties/properties.h"
#include "tests/support/observed_lines.h"
#include "tools/config/log_files.h"
#include "tools/config/scenario_file.h"

using enum ObservedKind;

namespace {

// Reads the scenario as a run does that has read none before.
void read_anew(const std::string& path) {
    forget_log_files();
    read_scenario_file(path);
}

} // namespace

TEST(ObservedScenario, IsToldAsItIsTaken) {
    num_al_files = 0; // those of other tests are not on the heap
    const std::string log = "REPLAY_LOG_FILE";
    const std::string period = "REPLAY_PERIOD";
    const std::vector<ObservedFile> files = {
        {"keyword of another program, comment, empty line",
         "GROUP 1\n#REPLAY_LOG_FILE /a x 0 HTTP\n\n",
         {{1, unknown_keyword, "", "GROUP 1"},
          {2, comment, "", "#REPLAY_LOG_FILE /a x 0 HTTP"},
          {3, empty_line, "", ""}}},
        {"logs with nothing to say of them",
         "replay_log_file  /a x 0 HTTP\r\nREPLAY_LOG_FILE /b x 5 POST bodies \n",
         {{1, taken, log, "/a"}, {2, taken, log, "/b"}}},
        {"three columns, after which nothing is read",
         "REPLAY_LOG_FILE /a 5000 HTTP\nREPLAY_LOG_FILE /b x 0 HTTP\n",
         {{1, too_few_columns, log, "/a"}}},
        {"keyword alone", "REPLAY_LOG_FILE\n", {{1, too_few_columns, log, ""}}},
        {"columns that a blank in the path moves",
         "REPLAY_LOG_FILE /my logs/a x 0 HTTPS HTTP\n",
         {{1, not_a_number, log, "x"},
          {1, value_unknown, log, "0"},
          {1, text_not_read, log, "HTTP"},
          {1, taken, log, "/my"}}},
        {"lines in octal, negative, too many",
         "REPLAY_LOG_FILE /a x 0500 https\nREPLAY_LOG_FILE /a x -1 HTTP\n"
         "REPLAY_LOG_FILE /a x 99999999999999999999k HTTP\n",
         {{1, number_not_decimal, log, "0500"},
          {1, value_unknown, log, "https"},
          {1, taken, log, "/a"},
          {2, number_out_of_range, log, "-1"},
          {2, taken, log, "/a"},
          {3, number_out_of_range, log, "99999999999999999999k"},
          {3, text_not_read, log, "k"},
          {3, taken, log, "/a"}}},
        {"ends of the period, one of them open",
         "REPLAY_PERIOD START 3/10/2026 10:00:00\nREPLAY_PERIOD END NA\n",
         {{1, value_set, "START", "3/10/2026 10:00:00"},
          {1, taken, period, "START 3/10/2026 10:00:00"},
          {2, value_kept, "END", "NA"},
          {2, taken, period, "END NA"}}},
        {"end that is none",
         "REPLAY_PERIOD FROM NA\n",
         {{1, value_unknown, period, "FROM NA"},
          {1, value_kept, period, "FROM NA"},
          {1, taken, period, "FROM NA"}}},
        {"day that is none, seconds that are none, half of the day",
         "REPLAY_PERIOD END 2/30/2026 10:00:00\nREPLAY_PERIOD END 2/3/2026 10:00:60\n"
         "REPLAY_PERIOD END 2/3/2026 10:00:00 PM\n",
         {{1, date_out_of_range, "END", "2/30/2026 10:00:00"},
          {1, value_set, "END", "2/30/2026 10:00:00"},
          {1, taken, period, "END 2/30/2026 10:00:00"},
          {2, date_out_of_range, "END", "2/3/2026 10:00:60"},
          {2, value_set, "END", "2/3/2026 10:00:60"},
          {2, taken, period, "END 2/3/2026 10:00:60"},
          {3, text_not_read, "END", " PM"},
          {3, value_set, "END", "2/3/2026 10:00:00 PM"},
          {3, taken, period, "END 2/3/2026 10:00:00 PM"}}},
        {"year of two digits",
         "REPLAY_PERIOD END 2/3/26 10:00:00\n",
         {{1, date_out_of_range, "END", "2/3/26 10:00:00"},
          {1, value_set, "END", "2/3/26 10:00:00"},
          {1, taken, period, "END 2/3/26 10:00:00"}}},
        {"date in another form",
         "REPLAY_PERIOD START 2026-03-10 10:00:00\n",
         {{1, value_malformed, "START", "2026-03-10 10:00:00"}}},
    };
    expect_told(files, read_anew);
    forget_log_files();
}

TEST(ObservedScenario, OfTooManyLogsTellsTheFirstThatIsRefused) {
    num_al_files = 0;
    std::string text;
    for (int i = 0; i <= max_al_files; ++i) {
        text += "REPLAY_LOG_FILE /" + std::to_string(i) + " x 0 HTTP\n";
    }
    const TemporaryDirectory directory;
    const std::vector<Observed> told = told_of(directory.write("scenario", text), read_anew);
    forget_log_files();
    ASSERT_EQ(told.size(), max_al_files + 1u);
    EXPECT_EQ(told.back(), (Observed{1001, too_many_logs, "REPLAY_LOG_FILE", "/1000"}));
}
