#include "tests/properties/properties.h"

namespace {

struct Property {
    const char* name;
    void (*check)(Choices& choices);
    uint32_t seed;
    int rounds;
};

constexpr Property properties[] = {
    {"ClassificationAgreesWithTheLibrarysExpressions", check_classification, 100, 160},
    {"ClientAddressIsMadeOfTheNumbersInItsText", check_client_address, 2, 20000},
    {"CompleteUrlListIsReadBackAsItWasWritten", check_complete_url_list, 14, 60},
    {"FieldSplitterAgreesWithAPlainSplitter", check_field_splitter, 11, 20000},
    {"LineReaderGivesTheLinesOfALineByLineReader", check_line_reader, 3, 40},
    {"LogsAreLoadedAlikeInPiecesAndInOrder", check_log_loader, 5, 200},
    {"ObserversAreToldOnceOfEachLineAndChangeNothing", check_observed_lines, 7, 2000},
    {"PatternMatchingAgreesWithTheLibrarysExpressions", check_pattern_matching, 1, 4000},
    {"TimestampsAgreeWithTheLibraryInEveryZone", check_timestamps, 4, 24},
    {"UnaccountedRequestsKeepTheSlotsOfAPlainArray", check_unaccounted_requests, 6, 8},
};

class Properties : public testing::TestWithParam<Property> {};

} // namespace

TEST_P(Properties, Hold) {
    run_in_child([] {
        Choices choices(GetParam().seed);
        for (int round = 0; round < GetParam().rounds && !HasFailure(); ++round) {
            SCOPED_TRACE("round " + std::to_string(round));
            GetParam().check(choices);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Any, Properties, testing::ValuesIn(properties),
                         [](const auto& row) { return row.param.name; });
