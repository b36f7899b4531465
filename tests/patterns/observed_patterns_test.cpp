#include "tests/properties/properties.h"
#include "tests/support/observed_lines.h"
#include "tools/config/replay_profile.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_regex.h"

using enum ObservedKind;

namespace {

// Reads pattern files as a run does that has read none before.
void expect_told_by(void (*read)(const char*), const std::vector<ObservedFile>& files) {
    static char profile[] = "/nonexistent";
    replay_profile = replay_profile_dir = profile;
    expect_told(files, [&](const std::string& path) {
        forget_patterns();
        read(path.c_str());
    });
    forget_patterns();
}

} // namespace

TEST(ObservedPatterns, OfUrlsAreToldAsTheyAreTaken) {
    const std::string piece(4095, '#'); // of a line, as they are read
    expect_told_by(
        save_url_pattern,
        {{"column header where it can be and where it cannot",
          "Status|x\nStatus|Type|c|d|e|f|g|h|i\n",
          {{1, column_header, "", "Status|x"}, {2, inactive, "", "Status"}}},
         {"one of each type",
          "active|main|na|-|T|na|-|na|/a\nACTIVE|Inline|GET|-|-|na|-|-|/b*\n"
          "active|main_without_tx|na|-|-|na|-|-|/c\n",
          {{1, taken, "main", "/a"},
           {2, taken, "inline", "/b*"},
           {3, taken, "MAIN_WITHOUT_TX", "/c"}}},
         {"inactive, misspelt, of no known type",
          "inactive|main|na|-|T|na|-|na|/a\nactive |main|na|-|T|na|-|na|/a\n"
          "active|page|na|-|T|na|-|na|/a\n",
          {{1, inactive, "", "inactive"},
           {2, inactive, "", "active "},
           {3, unknown_type, "", "page"}}},
         {"comment, empty line, column that is empty, which leaves one too few",
          "#active|main\n\nactive|main|na||T|na|-|na|/a\nactive|main|na|-|T|na|-|na|/a\n",
          {{1, comment, "", "#active|main"},
           {2, empty_line, "", ""},
           {3, empty_column, "", "active|main|na||T|na|-|na|/a"},
           {3, too_few_columns, "", "active"}}},
         {"nothing but delimiters",
          "||||||||\n",
          {{1, empty_column, "", "||||||||"}, {1, too_few_columns, "", "||||||||"}}},
         {"column that is empty, for which another makes up",
          "active|main|na||T|na|-|na|na|/a\n",
          {{1, empty_column, "", "active|main|na||T|na|-|na|na|/a"}, {1, taken, "main", "/a"}}},
         {"pattern with a delimiter in it, line that ends in one",
          "active|inline|na|-|-|na|-|-|/a|/b\nactive|inline|na|-|-|na|-|-|/a|\n",
          {{1, text_not_read, "", "/b"}, {1, taken, "inline", "/a"}, {2, taken, "inline", "/a"}}},
         {"carriage return that the pattern has to match, method that is cut",
          "active|inline|ABCDEFGHIJKLMNOPQ|-|-|na|-|-|/a\r\n",
          {{1, text_cut, "inline", "ABCDEFGHIJKLMNOPQ"},
           {1, spacing_kept, "inline", "/a\r"},
           {1, taken, "inline", "/a\r"}}},
         {"pattern that does not compile",
          "active|main|na|-|T|na|-|na|/a(\nactive|main|na|-|T|na|-|na|/a\n",
          {{1, pattern_not_compiled, "main", "/a("}}},
         {"file that is not there",
          "active|main|na|-|T|na|-|body|/a\n",
          {{1, post_data_missing, "main", "/nonexistent/body"}}},
         {"line longer than the buffer",
          piece + "|main\n",
          {{1, line_cut, "", piece},
           {1, comment, "", piece},
           {2, empty_column, "", "|main"},
           {2, too_few_columns, "", "|main"}}}});
}

TEST(ObservedPatterns, ThatFilterAreToldAsTheyAreTaken) {
    expect_told_by(
        save_filter_url_pattern,
        {{"header, inactive, active",
          "STATUS\noff|na|-|na|/a\nactive|na|-|na|/a\n",
          {{1, column_header, "", "STATUS"}, {2, inactive, "", "off"}, {3, taken, "filter", "/a"}}},
         {"too few columns", "active|na|-|/a\n", {{1, too_few_columns, "", "active"}}},
         {"columns of the other file, the fifth of which is the pattern",
          "active|main|na|-|T|na|-|na|/a\n",
          {{1, text_not_read, "", "na"}, {1, taken, "filter", "T"}}},
         {"pattern that does not compile",
          "active|na|-|na|[\n",
          {{1, pattern_not_compiled, "filter", "["}}}});
}

TEST(ObservedPatterns, ThatDoNotCompileHaveAReasonOfTheLibrary) {
    EXPECT_EQ(why_not_compiled("/a[0-9]{1,}*"), "");
    EXPECT_EQ(why_not_compiled("/a("), "Unmatched ( or \\(");
    EXPECT_EQ(why_not_compiled(std::string(1023, '*').c_str()), "");
    EXPECT_EQ(why_not_compiled(std::string(1024, '*').c_str()),
              "longer than 2047 characters, each star counted as two");
}
