#include "companions/report/page/page_text.h"
#include "tests/companions/report/report_runs.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

namespace {

namespace fs = std::filesystem;

RunResult make_page(const TestInstallation& installation, const std::string& path,
                    Lines words = {}) {
    words.insert(words.begin(), {"-o", path});
    return run_report(installation, "page", words);
}

std::string page_of(const TestInstallation& installation, const Lines& words = {}) {
    const RunResult run = make_page(installation, "report.html", words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    return installation.read("report.html");
}

// What stands in the page between its two parts.
std::string figures_in(const std::string& page) {
    const std::string before(page_before_figures());
    const std::string after(page_after_figures());
    EXPECT_TRUE(page.starts_with(before));
    EXPECT_TRUE(page.ends_with(after));
    EXPECT_GT(page.size(), before.size() + after.size());
    return page.substr(before.size(), page.size() - before.size() - after.size());
}

size_t count_of(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++count;
    }
    return count;
}

// The page without its figures and what its scripts and styles say.
std::string markup() {
    const std::string page = std::string(page_before_figures()) + std::string(page_after_figures());
    std::string left;
    size_t begin = 0;
    for (const char* tag : {"style", "script", "script", "script", "script"}) {
        const size_t start = page.find('>', page.find(std::string("<") + tag, begin)) + 1;
        left += page.substr(begin, start - begin);
        begin = page.find(std::string("</") + tag, start);
    }
    return left + page.substr(begin);
}

class OneRequest : public TestInstallation {
  public:
    OneRequest() {
        write_logs({combined_line({.url = "/a?secret=1"})});
        add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    }
};

void expect_refused(const RunResult& run, const std::string& message) {
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.errors, "zvr_al_report: " + message + "\n");
}

} // namespace

TEST(PageCommand, HoldsTheFiguresOfLoad) {
    const OneRequest installation;
    const nlohmann::json figures = nlohmann::json::parse(figures_in(page_of(installation)));
    EXPECT_EQ(figures, figures_of(installation));
}

TEST(PageCommand, LeavesQueriesOutWhenAsked) {
    const OneRequest installation;
    EXPECT_EQ(count_of(page_of(installation), "secret"), 1U);
    EXPECT_EQ(count_of(page_of(installation, {"--no-queries"}), "secret"), 0U);
    EXPECT_EQ(make_page(installation, "p", {"--no-queries", "--queries", "3"}).status, 3);
}

// Whatever stands in a log, the browser finds no other tag than in the page without it.
TEST(PageCommand, LetsNoTextOfALogEndItsScript) {
    TestInstallation installation;
    std::string log;
    for (const char* url :
         {"/</script><script>", "/<!--", "/]]>", "/\xe2\x80\xa8", "/\xff<", "/'"}) {
        log += combined_line({.url = url});
    }
    installation.write_logs({log});
    const std::string figures = figures_in(page_of(installation));
    EXPECT_EQ(figures.find('<'), std::string::npos);
    EXPECT_TRUE(
        std::all_of(figures.begin(), figures.end(), [](char c) { return c >= ' ' && c <= '~'; }));
    std::string urls;
    const nlohmann::json parsed = nlohmann::json::parse(figures);
    for (const auto& row : parsed["urls"]["rows"]) {
        urls += row[2].get<std::string>();
    }
    EXPECT_NE(urls.find("</script><script>"), std::string::npos);
    EXPECT_NE(urls.find("<!--"), std::string::npos);
    EXPECT_NE(urls.find("]]>"), std::string::npos);
}

TEST(PageCommand, NamesNothingOutsideThePage) {
    const std::string page = markup();
    EXPECT_EQ(count_of(page, "<script"), 4U);
    EXPECT_EQ(count_of(page, "</script>"), 4U);
    EXPECT_EQ(count_of(page, "<style"), 1U);
    const std::regex reference(
        R"(<(link|img|iframe|base|object|embed)\b|<[^>]* (src|style|on[a-z]+)=|href="[^#])");
    std::smatch found;
    EXPECT_FALSE(std::regex_search(page, found, reference)) << found.str();
    const std::string before(page_before_figures());
    EXPECT_EQ(before.find("url("), std::string::npos);
    EXPECT_EQ(before.find("@import"), std::string::npos);
    EXPECT_NE(before.find("default-src 'none'; script-src 'sha256-"), std::string::npos);
    EXPECT_EQ(before.find("unsafe"), std::string::npos);
}

TEST(PageCommand, CarriesTheNoticeOfChartJs) {
    const std::string page(page_before_figures());
    EXPECT_NE(page.find("Chart.js Contributors"), std::string::npos);
    EXPECT_NE(page.find("Praveen &lt;"), std::string::npos);
    EXPECT_NE(page.find("Permission is hereby granted, free of charge"), std::string::npos);
    EXPECT_NE(page_after_figures().find("Chart.js v3"), std::string_view::npos);
}

TEST(PageCommand, ReplacesAPageAndNothingElse) {
    const OneRequest installation;
    installation.write("precious", "kept");
    fs::create_symlink(installation.root() / "precious", installation.root() / "report.html");
    EXPECT_GT(page_of(installation).size(), 1000U);
    EXPECT_EQ(installation.read("precious"), "kept");
    EXPECT_FALSE(fs::is_symlink(installation.root() / "report.html"));

    fs::create_directory(installation.root() / "folder");
    expect_refused(make_page(installation, "folder"), "folder is not a file");
    expect_refused(make_page(installation, "folder/"), "folder/ is not a file");
    expect_refused(make_page(installation, "/dev/null"), "/dev/null is not a file");
    expect_refused(make_page(installation, "none/report.html"),
                   "none/report.html cannot be written: No such file or directory");
}

TEST(PageCommand, LeavesTheOldPageWhereTheNewOneDoesNotFit) {
    OneRequest installation;
    fs::create_directory(installation.root() / "pages");
    installation.write("pages/report.html", "old");
    installation.prepare_process([] { limit_file_size(100'000); });
    expect_refused(make_page(installation, "pages/report.html"),
                   "pages/report.html cannot be written: File too large");
    EXPECT_EQ(installation.files_of("pages"),
              (std::map<std::string, std::string>{{"report.html", "old"}}));
}
