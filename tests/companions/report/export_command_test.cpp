#include "tests/companions/report/report_runs.h"

#include "cache/work_mark.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {

using Counts = std::map<std::string, long>; // by method and URL

struct Export {
    RunResult run;
    nlohmann::json targets;

    Counts counts() const {
        Counts counts;
        for (const nlohmann::json& target : targets) {
            counts[target["method"].get<std::string>() + " " + target["url"].get<std::string>()] +=
                target["count"].get<long>();
        }
        return counts;
    }
};

Export export_json(const TestInstallation& installation, Lines words = {}) {
    words.insert(words.end(), {"--format", "json"});
    Export result = {run_report(installation, "export", words), {}};
    if (result.run.status == 0) {
        result.targets = nlohmann::json::parse(result.run.output)["targets"];
    }
    return result;
}

void expect_refusal(const TestInstallation& installation, const std::string& cause,
                    const Lines& words = {}) {
    const Export refused = export_json(installation, words);
    EXPECT_EQ(refused.run.status, 3);
    EXPECT_NE(refused.run.errors.find(cause), std::string::npos) << refused.run.errors;
}

// Queries are cut, there are a filter, an inline object, two transactions and a body file.
class ExportCommand : public testing::Test {
  protected:
    ExportCommand() {
        installation.add_settings("IGNORE_URL_QUERY_PARAM 1\nINLINE_OBJECT_MODE asperlog\n");
        installation.write_profile("body.txt", "a=1\n");
        installation.write_patterns("active|main|GET|1|Find|na|d|na|/find\\?*\n"
                                    "active|main|POST|2|Order|na|d|body.txt|/order\n"
                                    "active|inline|na|3|na|na|d|na|/i/*\n");
        installation.write_filters("active|na|1|na|/health\n");
        log({"/find?q=2", "/find?q=1", "/find?q=2", "/find?a|b", "/plain", "/plain", "/health",
             "/i/x.png"},
            {"/order", "/order"});
    }

    void log(const Lines& gets, const Lines& posts) const {
        std::string text;
        for (const std::string& url : gets) {
            text += combined_line({.url = url});
        }
        for (const std::string& url : posts) {
            text += combined_line({.url = url, .method = "POST"});
        }
        installation.write_logs({text});
    }

    void run_tool() const { ASSERT_EQ(installation.run().status, 0); }

    TestInstallation installation;
};

} // namespace

TEST_F(ExportCommand, EachUrlIsExportedAsOftenAsItCounts) {
    run_tool();
    const Export all = export_json(installation);
    EXPECT_EQ(all.counts(), (Counts{{"GET /find?q=2", 2},
                                    {"GET /find?q=1", 1},
                                    {"GET /find?a%7Cb", 1},
                                    {"GET /plain", 2},
                                    {"GET /i/x.png", 1},
                                    {"POST /order", 2}}));
    EXPECT_NE(all.run.errors.find("Exported: 9 requests (6 URLs)\n"), std::string::npos)
        << all.run.errors;
    EXPECT_NE(all.run.errors.find("Changed: 1 request (1 URL) "), std::string::npos)
        << all.run.errors;
}

TEST_F(ExportCommand, TransactionsBodiesAndHostsStayWithTheirUrls) {
    run_tool();
    const Export orders =
        export_json(installation, {"--only-transaction", "Order", "--base-url", "http://t:81/"});
    ASSERT_EQ(orders.targets.size(), 1U);
    EXPECT_EQ(orders.targets[0]["url"], "http://t:81/order");
    EXPECT_EQ(orders.targets[0]["host"], "t:81");
    EXPECT_EQ(orders.targets[0]["transaction"], "Order");
    EXPECT_EQ(orders.targets[0]["body_file"], installation.path(profile_directory + "/body.txt"));
    expect_refusal(installation, "no URL of transaction 'Fnid'", {"--only-transaction", "Fnid"});
}

TEST_F(ExportCommand, HostsOfTheLogAreKept) {
    installation.add_settings("AL_FIELD HOST_HEADER 8\n");
    installation.write_logs({combined_line({.more = "- \"www.example.com\""}) +
                             combined_line({.url = "/b", .more = "- \"evil/x@y\""})});
    run_tool();
    const Export direct = export_json(installation);
    EXPECT_EQ(direct.counts(), (Counts{{"GET http://www.example.com/a", 1}})) << direct.run.errors;
    EXPECT_NE(direct.run.errors.find("Left out: 1 request (1 URL) whose host is no host name"),
              std::string::npos);
    const Export elsewhere = export_json(installation, {"--base-url", "https://t"});
    EXPECT_EQ(elsewhere.targets[0]["url"], "https://t/a");
    EXPECT_EQ(elsewhere.targets[0]["host"], "www.example.com");
}

TEST_F(ExportCommand, FormatsThatSendNeedAHost) {
    run_tool();
    const RunResult none = run_report(installation, "export", {"--format", "siege"});
    EXPECT_EQ(none.status, 3);
    EXPECT_NE(none.errors.find("Left out: 9 requests (6 URLs) whose host is not in the logs"),
              std::string::npos)
        << none.errors;
    const RunResult sent =
        run_report(installation, "export", {"--format", "siege", "--base-url", "http://t"});
    EXPECT_EQ(sent.status, 0);
    EXPECT_NE(sent.output.find("\nhttp://t/plain\nhttp://t/plain\n"), std::string::npos)
        << sent.output;
}

TEST_F(ExportCommand, ResultsThatDoNotFitAreRefused) {
    expect_refusal(installation, "There are no results");
    run_tool();
    {
        const OwnDirectory config_dir(installation.path(config_directory));
        const FileDescriptor mark = mark_work(config_dir);
        expect_refusal(installation, "A run is writing the results");
    }
    let_files_settle();
    installation.write_filters("active|na|1|na|/healthy\n");
    expect_refusal(installation, "are older than");
    run_tool();
    log({"/new"}, {});
    expect_refusal(installation, "are older than");
}

TEST_F(ExportCommand, ResultsOfAnotherProfileAreRefused) {
    const std::string other = "replay_profiles/default/default/other";
    std::filesystem::create_directories(installation.path("replay_profiles/default/default"));
    std::filesystem::copy(installation.path(profile_directory), installation.path(other));
    installation.write(other + "/replay_url_filter_patterns.dat", "active|na|1|na|/plain\n");
    let_files_settle();
    run_tool();
    expect_refusal(installation, "another replay profile", {"-r", "other"});
    EXPECT_EQ(export_json(installation).run.status, 0);
    ASSERT_EQ(installation.run({"-r", "other"}).status, 0);
    expect_refusal(installation, "replay_url_filter_patterns.dat as it is");
    EXPECT_EQ(export_json(installation, {"-r", "other"}).counts().count("GET /plain"), 0U);
}

TEST_F(ExportCommand, QueriesThatAreNotThereAreRefused) {
    run_tool();
    const std::string list = config_directory + "/query_url.list";
    const std::string queries = installation.read(list);
    for (const std::string& other :
         {queries.substr(1), "x" + queries, queries.substr(0, queries.size() / 2), std::string()}) {
        installation.write(list, other);
        expect_refusal(installation, "it is of another run");
    }
    std::filesystem::remove(installation.path(list));
    expect_refusal(installation, "query_url.list is missing");
    EXPECT_EQ(export_json(installation, {"--only-transaction", "Order"}).run.status, 0);
    ASSERT_EQ(installation.run({"-q", "0"}).status, 0);
    expect_refusal(installation, "query_url.list is missing");
}

TEST_F(ExportCommand, AListThatIsCutOffIsRefused) {
    run_tool();
    const std::string list = installation.result("url.list");
    const size_t last_row = list.rfind('\n', list.size() - 2) + 1;
    installation.write_result("url.list", list.substr(0, last_row));
    expect_refusal(installation, "is not complete");
    installation.write_result("url.list", "");
    expect_refusal(installation, "is not complete");
}

TEST_F(ExportCommand, AMissingBodyFileIsRefused) {
    run_tool();
    std::string list = installation.result("url.list");
    list.replace(list.find("body.txt"), 8, "gone.txt");
    installation.write_result("url.list", list);
    expect_refusal(installation, "gone.txt of POST /order cannot be read");
    EXPECT_EQ(export_json(installation, {"--only-transaction", "Find"}).run.status, 0);
    std::filesystem::remove(installation.path(profile_directory + "/body.txt"));
    expect_refusal(installation, "body.txt' not found");
}

TEST_F(ExportCommand, AFileIsWrittenWholeOrNotAtAll) {
    run_tool();
    installation.write("out", "before");
    const auto export_to = [this](const std::string& format, const std::string& file) {
        return run_report(installation, "export",
                          {"--format", format, "-o", file, "--base-url", "http://t"});
    };
    std::filesystem::rename(installation.path(profile_directory + "/body.txt"),
                            installation.path("body"));
    EXPECT_EQ(export_to("csv", "out").status, 3);
    EXPECT_EQ(installation.read("out"), "before");
    std::filesystem::rename(installation.path("body"),
                            installation.path(profile_directory + "/body.txt"));
    EXPECT_EQ(export_to("csv", "out").status, 0);
    EXPECT_EQ(installation.read("out").rfind("method,url,", 0), 0U);
    EXPECT_EQ(export_to("jmeter", "plan.jmx").status, 0);
    EXPECT_NE(installation.read("plan.jmx").find(">plan.jmx.csv<"), std::string::npos);
    EXPECT_NE(installation.read("plan.jmx.csv").find("POST,http://t/order,t,Order,1,"),
              std::string::npos);
    EXPECT_EQ(run_report(installation, "export", {"--format", "jmeter"}).status, 3);
}

TEST_F(ExportCommand, OutputThatDoesNotFitIsNamed) {
    Lines urls;
    for (int i = 0; i < 1'000; ++i) {
        urls.push_back("/page" + std::to_string(i));
    }
    log(urls, {});
    run_tool();
    installation.write("out", "before");
    for (const char* format : {"csv", "json", "siege", "k6"}) {
        installation.prepare_process([] { limit_file_size(8'192); });
        const RunResult file = run_report(
            installation, "export", {"--format", format, "-o", "out", "--base-url", "http://t"});
        EXPECT_EQ(file.status, 3);
        EXPECT_TRUE(
            file.errors.find("out cannot be written: File too large") != std::string::npos ||
            file.errors.find("out.json cannot be written: File too large") != std::string::npos)
            << file.errors;
        EXPECT_EQ(installation.read("out"), "before");
    }
    installation.prepare_process([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    const RunResult output = run_report(installation, "export", {"--format", "csv"});
    EXPECT_EQ(output.status, 3);
    EXPECT_NE(output.errors.find("Standard output cannot be written to"), std::string::npos)
        << output.errors;
}

TEST_F(ExportCommand, EmptyOptionsAreRefused) {
    run_tool();
    for (const char* option : {"-o", "--base-url", "--only-transaction"}) {
        const RunResult run = run_report(installation, "export", {"--format", "csv", option, ""});
        EXPECT_EQ(run.status, 3) << option;
        EXPECT_EQ(run.output, "") << option;
        EXPECT_NE(run.errors.find("must not be empty"), std::string::npos) << run.errors;
    }
}

TEST_F(ExportCommand, MoreQueriesThanAreKeptStillCount) {
    std::string text;
    for (int i = 0; i < 70'000; ++i) {
        text += combined_line({.url = "/find?q=" + std::to_string(i % 69'000)});
    }
    installation.write_logs({text});
    run_tool();
    const Counts counts = export_json(installation).counts();
    EXPECT_EQ(counts.size(), 69'000U);
    EXPECT_EQ(counts.at("GET /find?q=0"), 2);
    EXPECT_EQ(counts.at("GET /find?q=1000"), 1);
    EXPECT_EQ(counts.at("GET /find?q=68999"), 1);
}
