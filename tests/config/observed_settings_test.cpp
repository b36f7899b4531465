#include "tests/properties/properties.h"
#include "tests/support/observed_lines.h"
#include "tools/config/replay_settings.h"

using enum ObservedKind;

TEST(ObservedSettings, AreToldAsTheyAreTaken) {
    const std::string piece(2047, '#'); // of a line, as they are read
    const std::string long_name(1024, 'J');
    const std::vector<ObservedFile> files = {
        {"misspelt keyword, keyword behind a blank",
         "COOKIENAME J\n COOKIE_NAME J\n",
         {{1, unknown_keyword, "", "COOKIENAME J"}, {2, unknown_keyword, "", " COOKIE_NAME J"}}},
        {"comment, empty line, NUL that ends the line before its keyword",
         std::string("#AUTO_REDIRECT 1\n\n\0NUM_THREAD 1\n", 32),
         {{1, comment, "", "#AUTO_REDIRECT 1"}, {2, empty_line, "", ""}, {3, empty_line, "", ""}}},
        {"keyword that begins with another",
         "AUTO_REDIRECT_COUNT 5\n",
         {{1, separator_skipped, "AUTO_REDIRECT", "_COUNT 5"},
          {1, not_a_number, "AUTO_REDIRECT", "COUNT 5"},
          {1, taken, "AUTO_REDIRECT", "COUNT 5"}}},
        {"no value, blanks for a value",
         "auto_redirect\nUSER_SESSION_KEY \t \nDEFAULT_HOST\n",
         {{1, value_missing, "AUTO_REDIRECT", ""},
          {1, taken, "AUTO_REDIRECT", ""},
          {2, value_missing, "USER_SESSION_KEY", ""},
          {2, taken, "USER_SESSION_KEY", ""},
          {3, value_missing, "DEFAULT_HOST", ""},
          {3, taken, "DEFAULT_HOST", ""}}},
        {"word that goes on, word that none knows, the line after which counts for neither",
         "INLINE_OBJECT_MODE autoskip\nINLINE_OBJECT_MODE never\n",
         {{1, text_not_read, "INLINE_OBJECT_MODE", "skip"},
          {1, taken, "INLINE_OBJECT_MODE", "autoskip"},
          {2, value_unknown, "INLINE_OBJECT_MODE", "never"},
          {2, value_kept, "INLINE_OBJECT_MODE", "never"},
          {2, taken, "INLINE_OBJECT_MODE", "never"}}},
        {"words that stand for others",
         "USER_SESSION_KEY ip\nACCESS_LOG_TYPE nginx\nUSER_SESSION_KEY cookie\n",
         {{1, value_unknown, "USER_SESSION_KEY", "ip"},
          {1, taken, "USER_SESSION_KEY", "ip"},
          {2, value_unknown, "ACCESS_LOG_TYPE", "nginx"},
          {2, taken, "ACCESS_LOG_TYPE", "nginx"},
          {3, taken, "USER_SESSION_KEY", "cookie"}}},
        {"numbers that go on, are too large, too small",
         "AUTO_REDIRECT 1x\nDUMP_QUERY_STRING_URL 4294967296\nNUM_THREAD -2\nNUM_THREAD 2\r\n",
         {{1, text_not_read, "AUTO_REDIRECT", "x"},
          {1, taken, "AUTO_REDIRECT", "1x"},
          {2, number_out_of_range, "DUMP_QUERY_STRING_URL", "4294967296"},
          {2, taken, "DUMP_QUERY_STRING_URL", "4294967296"},
          {3, number_out_of_range, "NUM_THREAD", "-2"},
          {3, taken, "NUM_THREAD", "-2"},
          {4, taken, "NUM_THREAD", "2\r"}}},
        {"names with a second word, with a carriage return, with a tab",
         "COOKIE_NAME=J more\nCOOKIE_NAME J\r\nDEFAULT_HOST h\tx\n",
         {{1, separator_skipped, "COOKIE_NAME", "=J more"},
          {1, text_not_read, "COOKIE_NAME", " more"},
          {1, taken, "COOKIE_NAME", "J more"},
          {2, spacing_kept, "COOKIE_NAME", "J\r"},
          {2, taken, "COOKIE_NAME", "J\r"},
          {3, spacing_kept, "DEFAULT_HOST", "h\tx"},
          {3, taken, "DEFAULT_HOST", "h\tx"}}},
        {"cookie that is off, whose name a blank or a tab empties or keeps",
         "SECONDARY_COOKIE 0 trk\nSECONDARY_COOKIE 1 \nSECONDARY_COOKIE 1\ttrk\n",
         {{1, text_not_read, "SECONDARY_COOKIE", " trk"},
          {1, taken, "SECONDARY_COOKIE", "0 trk"},
          {2, value_missing, "SECONDARY_COOKIE", ""},
          {2, taken, "SECONDARY_COOKIE", "1 "},
          {3, text_not_read, "SECONDARY_COOKIE", "\ttrk"},
          {3, taken, "SECONDARY_COOKIE", "1\ttrk"}}},
        {"time of two parts, after which nothing is read",
         "NEW_USER_TIME 1:2:3 h\nNEW_USER_TIME 00:30\nNUM_THREAD 1\n",
         {{1, text_not_read, "NEW_USER_TIME", " h"},
          {1, taken, "NEW_USER_TIME", "1:2:3 h"},
          {2, value_malformed, "NEW_USER_TIME", "00:30"}}},
        {"name that does not fit",
         "COOKIE_NAME " + long_name + "\n",
         {{1, value_too_long, "COOKIE_NAME", long_name}}},
        {"line longer than the buffer, whose second piece begins with a keyword; line that fits",
         piece + "NUM_THREAD 1\n" + piece.substr(1) + "\n",
         {{1, line_cut, "", piece},
          {1, comment, "", piece},
          {2, taken, "NUM_THREAD", "1"},
          {3, comment, "", piece.substr(1)}}},
    };
    expect_told(files, refusal_of_settings);
}

TEST(ObservedSettings, TellWhichPositionsAFieldLineSets) {
    std::vector<ObservedFile> files = {
        // their text after the keyword
        {"plain", " URL=5", {{1, separator_skipped, "URL", "=5"}, {1, value_set, "URL", "5"}}},
        {"name in small letters", " url 5", {{1, value_unknown, "AL_FIELD", "url 5"}}},
        {"two blanks before it", "  URL 5", {{1, value_unknown, "AL_FIELD", " URL 5"}}},
        {"no name", "", {{1, value_missing, "AL_FIELD", ""}}},
        {"no position", " URL", {{1, value_missing, "URL", ""}, {1, value_set, "URL", ""}}},
        {"name that begins with a shorter one",
         " URL_QUERY 6",
         {{1, field_unset, "URL", "URL_QUERY 6"}, {1, value_set, "URL_QUERY", "6"}}},
        {"unknown name that begins with a known one",
         " URLS 6",
         {{1, separator_skipped, "URL", "S 6"}, {1, value_set, "URL", " 6"}}},
        {"position too high",
         " URL 26",
         {{1, number_out_of_range, "URL", "26"}, {1, value_set, "URL", "26"}}},
        {"position that is cut to 25",
         " URL 65561",
         {{1, number_out_of_range, "URL", "65561"}, {1, value_set, "URL", "65561"}}},
        {"two positions",
         " URL 5,6",
         {{1, text_not_read, "URL", ",6"}, {1, value_set, "URL", "5,6"}}},
    };
    for (auto& [oddity, text, told] : files) {
        told.push_back({1, taken, "AL_FIELD", text.substr(text.empty() ? 0 : 1)});
        text = "AL_FIELD" + text + "\n";
    }
    expect_told(files, refusal_of_settings);
}

TEST(ObservedSettings, GoOnBehindABadLineWhereAnObserverAsksForIt) {
    static std::vector<std::string> failures;
    failures.clear();
    line_failure_observer = [](const LinePlace& place, const Failure& failure) {
        failures.push_back(std::to_string(place.line_num) + ": " + failure.message);
        return place.line_num != 4;
    };
    const TemporaryDirectory directory;
    const std::string message = "Invalid new user time in replay_setting.dat";
    EXPECT_EQ(refusal_of_settings(directory.write("settings",
                                                  "NEW_USER_TIME 1\nCOOKIE_NAME J\nNUM_THREAD 3\n"
                                                  "NEW_USER_TIME 2\nNUM_THREAD 4\n")),
              message);
    line_failure_observer = nullptr;
    EXPECT_EQ(failures, (std::vector<std::string>{"1: " + message, "4: " + message}));
    EXPECT_EQ(g_num_thread, 3);
    EXPECT_STREQ(cookie_name, "J");
}
