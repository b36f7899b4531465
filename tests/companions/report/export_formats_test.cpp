#include "companions/report/export/export_formats.h"

#include "companions/report/export/xml_text.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

Targets these(std::vector<LoadTarget> targets) {
    return [targets = std::move(targets)](const TargetUse& use) {
        for (const LoadTarget& target : targets) {
            use(target);
        }
    };
}

std::string written(const std::function<void(FILE*)>& write) {
    char* text = nullptr;
    size_t size = 0;
    FILE* stream = open_memstream(&text, &size);
    write(stream);
    std::fclose(stream);
    std::string result(text, size);
    std::free(text);
    return result;
}

std::string exported(void (*format)(const Targets&, FILE*), std::vector<LoadTarget> targets) {
    return written([&](FILE* out) { format(these(std::move(targets)), out); });
}

const LoadTarget plain = {"GET", "http://h/a?b", "h", "", "", 2};
const LoadTarget posted = {
    "POST", "http://h/c", "www:81", "T,\"x\"</script>\xe2\x80\xa8", "/d/my body", 1};

std::string notes_text(const ExportNotes& notes) {
    return written([&](FILE* out) { notes.print(out); });
}

bool fits(bool (*format)(LoadTarget&, ExportNotes&), const std::string& method) {
    LoadTarget target = {method, "http://h/", "h", "", "", 3};
    ExportNotes notes;
    const bool is_fitting = format(target, notes);
    EXPECT_EQ(notes_text(notes).find("Left out: 3 requests (1 URL)") == std::string::npos,
              is_fitting);
    return is_fitting;
}

} // namespace

TEST(ExportFormats, CsvQuotesWhatSeparates) {
    EXPECT_EQ(exported(export_csv, {plain, posted}),
              "method,url,host,transaction,body_file,count\r\n"
              "GET,http://h/a?b,h,,,2\r\n"
              "POST,http://h/c,www:81,\"T,\"\"x\"\"</script>\xe2\x80\xa8\",/d/my body,1\r\n");
    LoadTarget lines = plain;
    lines.transaction = "a\r\nb";
    EXPECT_NE(exported(export_csv, {lines}).find(",\"a\r\nb\","), std::string::npos);
}

TEST(ExportFormats, JsonHoldsTheTextsAsTheyAre) {
    LoadTarget bad = plain;
    bad.transaction = "\xff";
    const std::string text = exported(export_json, {plain, posted, bad});
    const nlohmann::json targets = nlohmann::json::parse(text)["targets"];
    ASSERT_EQ(targets.size(), 3U);
    EXPECT_EQ(targets[0], (nlohmann::json{{"method", "GET"},
                                          {"url", "http://h/a?b"},
                                          {"host", "h"},
                                          {"transaction", nullptr},
                                          {"body_file", nullptr},
                                          {"count", 2}}));
    EXPECT_EQ(targets[1]["transaction"], posted.transaction);
    EXPECT_EQ(targets[1]["body_file"], "/d/my body");
    EXPECT_EQ(targets[2]["transaction"], "\\xff");
    EXPECT_EQ(nlohmann::json::parse(exported(export_json, {}))["targets"].size(), 0U);
}

TEST(ExportFormats, VegetaHasEachRequest) {
    const std::string text = exported(export_vegeta, {plain, posted});
    EXPECT_EQ(text.substr(text.find("\n\n") + 2),
              "GET http://h/a?b\nHost: h\n\nGET http://h/a?b\nHost: h\n\n"
              "POST http://h/c\nHost: www:81\nContent-Type: application/x-www-form-urlencoded\n"
              "@/d/my body\n\n");
    EXPECT_TRUE(fits(fits_vegeta, "PROPFIND"));
    EXPECT_FALSE(fits(fits_vegeta, "Get"));
    EXPECT_FALSE(fits(fits_vegeta, "M-SEARCH"));
}

TEST(ExportFormats, SiegeHasEachRequest) {
    const std::string text =
        exported(export_siege, {plain, posted, {"PUT", "http://h/e", "h", "", "", 1}});
    EXPECT_EQ(text.substr(text.find("\nhttp") + 1),
              "http://h/a?b\nhttp://h/a?b\n"
              "http://h/c POST </d/my body\nhttp://h/e PUT\n");
    EXPECT_TRUE(fits(fits_siege, "OPTIONS"));
    EXPECT_FALSE(fits(fits_siege, "HEAD"));
    EXPECT_FALSE(fits(fits_siege, "Get"));
}

TEST(ExportFormats, SiegeSaysWhatItSendsInAnotherForm) {
    LoadTarget target = {"GET", "http://h:81/$(HOST)?$", "www", "", "", 4};
    ExportNotes notes;
    ASSERT_TRUE(fits_siege(target, notes));
    EXPECT_EQ(target.url, "http://h:81/%24(HOST)?%24");
    EXPECT_EQ(
        notes_text(notes),
        "Exported: 0 requests (0 URLs)\n"
        "Changed: 4 requests (1 URL) whose URL has a $, a variable's for siege: percent-encoded\n"
        "Changed: 4 requests (1 URL) with another host than the base URL's, which siege sends\n");
}

TEST(ExportFormats, K6ReadsItsDataFromTheFileBeside) {
    const nlohmann::json data = nlohmann::json::parse(exported(export_k6, {plain, posted, posted}));
    const nlohmann::json& targets = data["targets"];
    ASSERT_EQ(targets.size(), 3U);
    EXPECT_EQ(targets[0], (nlohmann::json{"GET", "http://h/a?b", "h", "", -1, 0}));
    EXPECT_EQ(targets[1],
              (nlohmann::json{"POST", "http://h/c", "www:81", posted.transaction, 0, 2}));
    EXPECT_EQ(targets[2][4], 0) << "the same body file";
    EXPECT_EQ(targets[2][5], 3);
    EXPECT_EQ(data["whole"], (nlohmann::json{{"total", 4}, {"bodyFiles", {"/d/my body"}}}));
    const std::string script =
        written([](FILE* out) { write_k6_script("a'b\"c\xe2\x80\xa8.json", out); });
    EXPECT_NE(script.find("open(\"./a'b\\\"c\\u2028.json\")"), std::string::npos);
    EXPECT_EQ(script.find('@'), std::string::npos);
    EXPECT_FALSE(fits(fits_k6, "Get"));
    EXPECT_TRUE(fits(fits_k6, "M-SEARCH"));
}

TEST(ExportFormats, JMeterReadsItsDataFromTheFileBeside) {
    EXPECT_EQ(exported(export_jmeter, {plain, posted}),
              "GET,http://h/a?b,h,GET http://h/a,0,,2\n"
              "POST,http://h/c,www:81,\"T,\"\"x\"\"</script>\xe2\x80\xa8\",1,/d/my body,1\n");
    const std::string plan = written([](FILE* out) { write_jmeter_plan("a<b>&\".csv", out); });
    EXPECT_NE(plan.find("<stringProp name=\"filename\">a&lt;b&gt;&amp;&quot;.csv</stringProp>"),
              std::string::npos);
    EXPECT_FALSE(fits(fits_jmeter, "PROPFIND"));
    EXPECT_TRUE(fits(fits_jmeter, "PATCH"));
    EXPECT_EQ(xml_text("'\x01]]>"), "&apos;\\x01]]&gt;");
}

TEST(ExportFormats, JMeterSaysWhatItSendsInAnotherForm) {
    ExportNotes notes;
    LoadTarget target = {"GET", "http://h:81/a//b?c//d", "www", "", "", 1};
    EXPECT_TRUE(fits_jmeter(target, notes));
    EXPECT_EQ(notes_text(notes).find("Left out"), std::string::npos);
    EXPECT_NE(notes_text(notes).find("1 request (1 URL) with //"), std::string::npos);
    EXPECT_NE(notes_text(notes).find("1 request (1 URL) in whose header Host"), std::string::npos);
    ExportNotes none;
    LoadTarget same = {"GET", "http://h/a?c//d", "www", "", "", 1};
    EXPECT_TRUE(fits_jmeter(same, none));
    EXPECT_EQ(notes_text(none).find("Changed"), std::string::npos);
}
