#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

const std::string accepted;
const std::string no_url = "Url, Query and Url_Query field is missing, Either (URL + Qyery) or "
                           "(URL_QUERY) should be given";
const std::string no_status = "Status code field is missing from access log format";
const std::string too_high = "Field position for STATUS_CODE is more than max access log fields 25";
const std::string iis = "ACCESS_LOG_TYPE iis6\nAL_FIELD CLIENT_IP 1\nAL_FIELD STATUS_CODE 2\n"
                        "AL_FIELD DATE 3\nAL_FIELD TIME 4\nAL_FIELD METHOD 5\n";

TEST(Layout, IsAcceptedOrRefusedForItsFirstFault) {
    const std::pair<std::string, std::string> rows[] = {
        // settings, message
        {"AL_FIELD STATUS_CODE 7\n", "Date and Time field is missing from access log format."},
        {"AL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\n", no_status},
        {"AL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\nAL_FIELD STATUS_CODE 6\n",
         "Session mode is CLient ip and Client ip is missing from access log format"},
        {"USER_SESSION_KEY x\nCOOKIE_NAME J\nAL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\n",
         "Session mode is Cookie and Request Cookie Field is missing from access log format"},
        {"CONSIDER_RESPONSE_TIME 1\n",
         "CONSIDER_RESPONSE_TIME keyword is enabled but response time field is missing."},
        {"AL_FIELD STATUS_CODE 26\n", too_high},
        {"AL_FIELD STATUS_CODE -1\n", too_high},
        {"AL_FIELD STATUS_CODE 32769\n", too_high}, // negative in sixteen bits
        {iis + "AL_FIELD URL_QUERY 6\nAL_FIELD STATUS_CODE\n2\n", no_status},
        {"AL_FIELD LOCATION 3\nAL_FIELD REFERER 3\nAL_FIELD TIME 99\n",
         "Field position for REFERER and LOCATION are same in 'replay_setting.dat'"},
        {"ACCESS_LOG_TYPE\nAL_FIELD DATE 3\nAL_FIELD TIME 4\n",
         "Http Method field is missing from access log format."},
        {iis + "AL_FIELD URL 6\n", no_url},
        {iis + "AL_FIELD URL 6\nAL_FIELD QUERY_STRING 7\nAL_FIELD URL_QUERY 0\n", no_url},
        {iis + "AL_FIELD URL_QUERY 6\nAL_FIELD DATE_AND_TIME 8\n",
         "Date field is missing from access log format."},
        {"ACCESS_LOG_TYPE apache2\n", accepted},
        {iis + "AL_FIELD URL_QUERY 25\n", accepted},
        {iis + "al_field\tURL=6\nAL_FIELD QUERY_STRING \t 7\n", accepted},
        {iis + "AL_FIELD URL_QUERY 6\nAL_FIELD URL 7\nCONSIDER_RESPONSE_TIME 1\n"
               "AL_FIELD RESPONSE_TIME_USEC 8\n",
         accepted},
        {iis + "AL_FIELD URL_QUERY 65561\n", accepted},      // 25 in sixteen bits
        {iis + "AL_FIELD URL_QUERY 4294967302\n", accepted}, // 6
    };
    for (const auto& [settings, message] : rows) {
        SCOPED_TRACE(settings);
        TestInstallation installation;
        installation.write_settings("USER_SESSION_KEY client_ip\n" + settings);
        const RunResult run = installation.run();
        const bool is_accepted = message == accepted;
        EXPECT_EQ(run.output, is_accepted ? summary_line({}) : RunResult::error_line(message));
        EXPECT_EQ(run.status, is_accepted ? 0 : 255);
    }
}
