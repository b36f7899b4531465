#include "tools/config/field_layout.h"

#include "tests/properties/properties.h"

namespace {

std::string refusal_of(const std::string& settings) {
    const TemporaryDirectory directory;
    return refusal_of_settings(
        directory.write("replay_settings.dat", "USER_SESSION_KEY client_ip\n" + settings));
}

// A layout of the separate fields in which only the URL is missing.
const std::string separate = "ACCESS_LOG_TYPE iis6\nAL_FIELD CLIENT_IP 1\nAL_FIELD STATUS_CODE 2\n"
                             "AL_FIELD DATE 3\nAL_FIELD TIME 4\nAL_FIELD METHOD 5\n";

} // namespace

TEST(FieldLayout, IsRefusedForItsFirstFault) {
    const std::string no_url = "Url, Query and Url_Query field is missing, Either (URL + Qyery) or "
                               "(URL_QUERY) should be given";
    const std::string no_status = "Status code field is missing from access log format";
    const std::string too_high =
        "Field position for STATUS_CODE is more than max access log fields 25";
    const std::string timed_request = "AL_FIELD DATE_AND_TIME 4\nAL_FIELD REQUEST_LINE 5\n";
    const struct {
        std::string oddity;
        std::string settings;
        std::string message;
    } rows[] = {
        {"no time", "AL_FIELD STATUS_CODE 7\n",
         "Date and Time field is missing from access log format."},
        {"no request line", "AL_FIELD DATE_AND_TIME 4\n",
         "Request Line field is missing from access log format."},
        {"no status code", timed_request, no_status},
        {"sessions by an address that is missing", timed_request + "AL_FIELD STATUS_CODE 6\n",
         "Session mode is CLient ip and Client ip is missing from access log format"},
        {"sessions by a cookie that is missing",
         "USER_SESSION_KEY x\nCOOKIE_NAME J\n" + timed_request,
         "Session mode is Cookie and Request Cookie Field is missing from access log format"},
        {"response time that the default layout lacks", "CONSIDER_RESPONSE_TIME 1\n",
         "CONSIDER_RESPONSE_TIME keyword is enabled but response time field is missing."},
        {"position above the highest", "AL_FIELD STATUS_CODE 26\n", too_high},
        {"negative position", "AL_FIELD STATUS_CODE -1\n", too_high},
        {"position negative in sixteen bits", "AL_FIELD STATUS_CODE 32769\n", too_high},
        {"position on a line of its own",
         separate + "AL_FIELD URL_QUERY 6\nAL_FIELD STATUS_CODE\n2\n", no_status},
        {"position twice, then one too high",
         "AL_FIELD LOCATION 3\nAL_FIELD REFERER 3\nAL_FIELD TIME 99\n",
         "Field position for REFERER and LOCATION are same in 'replay_setting.dat'"},
        {"log type without a value", "ACCESS_LOG_TYPE\nAL_FIELD DATE 3\nAL_FIELD TIME 4\n",
         "Http Method field is missing from access log format."},
        {"URL without its query", separate + "AL_FIELD URL 6\n", no_url},
        {"URL_QUERY that takes back the URL",
         separate + "AL_FIELD URL 6\nAL_FIELD QUERY_STRING 7\nAL_FIELD URL_QUERY 0\n", no_url},
        {"DATE_AND_TIME that takes back the date",
         separate + "AL_FIELD URL_QUERY 6\nAL_FIELD DATE_AND_TIME 8\n",
         "Date field is missing from access log format."},
    };
    for (const auto& [oddity, settings, message] : rows) {
        EXPECT_EQ(refusal_of(settings), message) << oddity;
    }
}

TEST(FieldLayout, TakesThePositionsAsTheyAreWritten) {
    const struct {
        std::string oddity;
        std::string settings;
        FieldKind kind;
        int position;
        int present;
    } rows[] = {
        {"none, of Apache", "ACCESS_LOG_TYPE apache2\n", AL_LOCATION, 15, 11},
        {"none, of no known type", "ACCESS_LOG_TYPE other\n", AL_URL_QUERY, 6, 14},
        {"the highest", separate + "AL_FIELD URL_QUERY 25\n", AL_URL_QUERY, 25, 6},
        {"tab and sign as separators", separate + "al_field\tURL=6\nAL_FIELD QUERY_STRING \t 7\n",
         AL_QUERY_STRING, 7, 7},
        {"URL in two ways", separate + "AL_FIELD URL_QUERY 6\nAL_FIELD URL 7\n", AL_URL, 7, 7},
        {"response time in small units",
         separate + "AL_FIELD URL_QUERY 6\nCONSIDER_RESPONSE_TIME 1\n"
                    "AL_FIELD RESPONSE_TIME_USEC 8\n",
         AL_RESPONSE_TIME_USEC, 8, 7},
        {"25 in sixteen bits", separate + "AL_FIELD URL_QUERY 65561\n", AL_URL_QUERY, 25, 6},
        {"6 in thirty-two bits", separate + "AL_FIELD URL_QUERY 4294967302\n", AL_URL_QUERY, 6, 6},
    };
    for (const auto& [oddity, settings, kind, position, present] : rows) {
        EXPECT_EQ(refusal_of(settings), "") << oddity;
        EXPECT_EQ(al_required_field_position[kind], position) << oddity;
        EXPECT_EQ(present_field_count, present) << oddity;
    }
}

TEST(FieldLayout, HasAllItsFaultsFoundWhereTheyAreAskedFor) {
    EXPECT_NE(refusal_of("AL_FIELD LOCATION 3\nAL_FIELD REFERER 3\nAL_FIELD TIME 99\n"
                         "CONSIDER_RESPONSE_TIME 1\n"),
              "");
    std::vector<FieldKind> kinds;
    for (const LayoutFault& fault : find_layout_faults()) {
        kinds.push_back(fault.kind);
    }
    EXPECT_EQ(kinds,
              (std::vector<FieldKind>{AL_LOCATION, AL_TIME, AL_DATE_AND_TIME, AL_REQUEST_LINE,
                                      AL_STATUS_CODE, AL_CLIENT_IP, AL_RESPONSE_TIME}));
}
