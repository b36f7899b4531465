#include "companions/doctor/init/w3c_fields.h"

#include "tests/unit_helpers.h"

TEST(W3cFields, AreNamedByTheirLineAlone) {
    EXPECT_EQ(w3c_field_names("#Fields: date time\r"), "date time");
    EXPECT_EQ(w3c_field_names("#fields:\tdate"), "date");
    EXPECT_EQ(w3c_field_names("#Fields:"), "");
    EXPECT_EQ(w3c_field_names("#Date: 2026-03-10"), "");
    EXPECT_EQ(w3c_field_names("Fields: date"), "");
}

TEST(W3cFields, HaveThePlacesOfTheirNames) {
    const LogLayout layout = w3c_layout(
        "date time cs-method cs-uri-stem cs-uri-query c-ip cs(Cookie) sc-status time-taken cs-host",
        false);
    EXPECT_EQ(layout.positions[AL_DATE], 1);
    EXPECT_EQ(layout.positions[AL_URL], 4);
    EXPECT_EQ(layout.positions[AL_QUERY_STRING], 5);
    EXPECT_EQ(layout.positions[AL_REQUEST_COOKIE], 7);
    EXPECT_EQ(layout.positions[AL_RESPONSE_TIME], 9);
    EXPECT_EQ(layout.positions[AL_HOST_HEADER], 10);
    EXPECT_EQ(w3c_layout("date time-taken", true).positions[AL_RESPONSE_TIME], 0);
}

TEST(W3cFields, AUrlWithoutAFieldForItsQueryIsAllThatThereIs) {
    const LogLayout layout = w3c_layout("date time cs-method cs-uri-stem sc-status", true);
    EXPECT_EQ(layout.positions[AL_URL], 0);
    EXPECT_EQ(layout.positions[AL_URL_QUERY], 4);
}

TEST(W3cFields, BeyondTheToolsLimitAreNotTaken) {
    std::string names;
    for (int i = 0; i < max_al_fields; ++i) {
        names += "x-" + std::to_string(i) + " ";
    }
    EXPECT_EQ(w3c_layout(names + "c-ip", true).field_count(), 0);
}

TEST(W3cFields, AreReadWithTheRequestsThatFollowEachLine) {
    FILE* const file = file_of("#Software: Microsoft Internet Information Services 10.0\r\n"
                               "#Fields: date time\r\n"
                               "1 2\r\n"
                               "\r\n"
                               "#Fields: time date\r\n"
                               "2 1\r\n2 1\r\n");
    const W3cLog log = read_w3c_log(fileno(file), "log");
    std::fclose(file);
    ASSERT_EQ(log.parts.size(), 2U);
    EXPECT_TRUE(log.is_of_microsoft);
    EXPECT_EQ(log.parts[0].request_count, 1);
    EXPECT_EQ(log.parts[1].line_num, 5);
    EXPECT_EQ(log.parts[1].names, "time date");
    EXPECT_EQ(log.parts[1].request_count, 2);
}

TEST(W3cFields, SharedOnesStandInOnePlaceEverywhere) {
    const LogLayout shared = shared_layout(
        {w3c_layout("date time c-ip sc-status", true), w3c_layout("date time sc-status", true)});
    EXPECT_EQ(shared.positions[AL_TIME], 2);
    EXPECT_EQ(shared.positions[AL_STATUS_CODE], 0);
    EXPECT_EQ(shared.positions[AL_CLIENT_IP], 0);
}
