#include "tests/companions/report/plain_logs.h"
#include "tests/companions/report/report_runs.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class SampleLoad : public testing::TestWithParam<std::string> {
  protected:
    SampleLoad() {
        fs::copy(source_path("examples/installation"), installation_.root(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }

    TestInstallation installation_;
};

} // namespace

TEST_P(SampleLoad, IsWhatPlainCodeFindsInTheLogs) {
    const std::vector<PlainVisit> visits = visits_of_sample(GetParam());
    for (const char* threads : {"1", "3"}) {
        const nlohmann::json figures = figures_of(installation_, {"-t", threads}, GetParam());
        EXPECT_EQ(number(figures["funnel"]["counted"]), static_cast<long>(visits.size()));
        expect_load(figures, visits);
        EXPECT_EQ(figures, figures_of(installation_, {"-t", "2"}, GetParam()));
    }
}

TEST_P(SampleLoad, HasTheSummaryAndRowsOfTheRun) {
    const nlohmann::json figures = figures_of(installation_, {}, GetParam());
    const nlohmann::json& funnel = figures["funnel"];
    EXPECT_TRUE(funnel["adds_up"].get<bool>());
    const std::string expected = "examples/expected/" + GetParam() + "/";
    const Lines output = lines_of(installation_.read(source_path(expected + "stdout")));
    EXPECT_EQ(funnel["summary"], output.back());
    const Lines list = lines_of(installation_.read(source_path(expected + "url.list")));
    EXPECT_EQ(figures["urls"]["rows"].size(), list.size() - 2);
}

INSTANTIATE_TEST_SUITE_P(All, SampleLoad, testing::Values("shop", "news", "intranet", "desk"),
                         [](const auto& scenario) { return scenario.param; });
