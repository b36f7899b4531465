#include "companions/doctor/init/packed_logs.h"

#include "base/failure.h"
#include "companions/doctor/init/unpacked_names.h"
#include "tests/companions/doctor/packed_files.h"
#include "tests/support/test_installation.h"
#include "tests/unit_helpers.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;

namespace {

using Files = std::map<std::string, std::string>;

// A folder of packed logs, and one into which they are unpacked.
class PackedLogs : public testing::Test {
  protected:
    UnpackedLogs unpack(uint64_t max_size = 1'000'000, bool may_replace = false) {
        std::vector<std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(directory_.path("in"))) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path());
            }
        }
        std::ranges::sort(files);
        return unpack_logs(files, {directory_.path("out"), max_size, may_replace});
    }

    std::string failure_of_unpacking(uint64_t max_size = 1'000'000) {
        try {
            unpack(max_size);
        } catch (const Failure& failure) {
            return failure.message;
        }
        return "";
    }

    // Hidden ones, too.
    Files files() const {
        Files files;
        for (const auto& entry : fs::recursive_directory_iterator(directory_.path())) {
            const std::string path = fs::relative(entry.path(), directory_.root());
            if (!entry.is_directory() && path.rfind("in/", 0) != 0) {
                files[path] = directory_.read(path);
            }
        }
        return files;
    }

    TemporaryDirectory directory_;
};

} // namespace

TEST_F(PackedLogs, OfEveryFormAreUnpackedWithALineFeedAtTheirEnd) {
    for (const char* filter : {"gzip", "bzip2", "xz", "zstd"}) {
        fs::remove_all(directory_.path("in"));
        fs::remove_all(directory_.path("out"));
        directory_.write("in/access.log.2.gz", compressed("one\ntwo", filter));
        EXPECT_EQ(unpack().paths, Lines{directory_.path("out/access.log.2")});
        EXPECT_EQ(files(), (Files{{"out/access.log.2", "one\ntwo\n"}})) << filter;
    }
}

TEST_F(PackedLogs, KeepTheirInstances) {
    directory_.write("in/web1/access_1.log.gz", compressed("a\n", "gzip"));
    directory_.write("in/web1/access_2.log", "b\n");
    directory_.write("in/web2/access_1.log.gz", compressed("c\n", "gzip"));
    unpack();
    EXPECT_EQ(files(), (Files{{"out/web1-access_1.log", "a\n"},
                              {"out/web1-access_2.log", "b\n"},
                              {"out/web2-access_1.log", "c\n"}}));
}

TEST_F(PackedLogs, OfAnArchiveStayInTheFolder) {
    const std::vector<MadeEntry> entries = {
        {"../../outside.log", "a\n"},
        {"/etc/absolute.log", "b\n"},
        {"web1/access.log", "c\n"},
        {"web2/access.log", "d\n"},
        {"web_3/.hidden \x1b[2J", "e\n"},
        {"web1/link.log", "", "/etc/passwd"},
        {"web1/hard.log", "", "", "web1/access.log"},
        {"web1/pipe", "", "", "", true},
        {"same.log", "f\n"},
        {"same.log", "g\n"},
    };
    directory_.write("in/logs.tar.gz", made_tar(entries, "gzip"));
    const UnpackedLogs unpacked = unpack();
    EXPECT_EQ(files(), (Files{{"out/outside.log", "a\n"},
                              {"out/etc_absolute.log", "b\n"},
                              {"out/web1_access.log", "c\n"},
                              {"out/web2_access.log", "d\n"},
                              {"out/web-3_log.hidden---2J", "e\n"},
                              {"out/same.log", "f\n"},
                              {"out/same.log-2", "g\n"}}));
    ASSERT_EQ(unpacked.findings.size(), 1U); // of two links and a pipe
    EXPECT_EQ(unpacked.findings[0].value, "web1/link.log");
    EXPECT_NE(unpacked.findings[0].meaning.find("2 more"), std::string::npos);
}

TEST_F(PackedLogs, WithinOthersAreUnpackedToo) {
    const std::string inner = compressed("a\n", "gzip");
    directory_.write("in/logs.zip", made_zip({{"web1/access.log.2.gz", inner}, {"b.log", "b\n"}}));
    unpack();
    EXPECT_EQ(files(), (Files{{"out/web1_access.log.2", "a\n"}, {"out/b.log", "b\n"}}));
}

// Two blocks of NUL bytes end a tar.
TEST_F(PackedLogs, ThatBeginWithNulBytesAreNoEmptyArchives) {
    const std::string log = std::string(2048, '\0') + "\na\n";
    directory_.write("in/a.log.gz", compressed(log, "gzip"));
    EXPECT_EQ(unpack().paths, Lines{directory_.path("out/a.log")});
    EXPECT_EQ(files(), (Files{{"out/a.log", log}}));
}

TEST_F(PackedLogs, WithLongNamesGetShorterOnes) {
    const std::string folder(150, 'f');
    const std::string name(240, 'n');
    directory_.write("in/logs.tar", made_tar({{folder + "1/" + name + ".1", "a\n"},
                                              {folder + "2/" + name + ".1", "b\n"},
                                              {folder + "2/" + name + ".2", "c\n"},
                                              {folder + "2/" + name + "\n.2", "d\n"}}));
    const UnpackedLogs unpacked = unpack();
    EXPECT_EQ(unpacked.paths.size(), 4U);
    std::set<std::string> instances;
    for (const std::string& path : unpacked.paths) {
        const std::string name_of_log = fs::path(path).filename();
        EXPECT_LT(name_of_log.size(), 210U);
        instances.insert(name_of_log.substr(0, name_of_log.find('_')));
    }
    EXPECT_EQ(instances.size(), 2U); // one for each folder
}

TEST_F(PackedLogs, LeaveNothingHalfWhenTheyAreTooLong) {
    directory_.write("in/a.log.gz", compressed(std::string(2000, 'x') + "\n", "gzip"));
    EXPECT_NE(failure_of_unpacking(1000).find("--unpack-limit"), std::string::npos);
    EXPECT_EQ(files(), Files{});
}

TEST_F(PackedLogs, LeaveNothingHalfOnAFullDisk) {
    directory_.write("in/a.log.gz", compressed(std::string(20'000, 'x') + "\n", "gzip"));
    run_in_child([this] {
        std::signal(SIGXFSZ, SIG_IGN); // as the command does
        limit_file_size(10'000);
        EXPECT_NE(failure_of_unpacking(), "");
    });
    EXPECT_EQ(files(), Files{});
}

TEST_F(PackedLogs, LeaveNothingHalfWhenTheyAreDamaged) {
    std::string bytes = made_tar({{"a.log", "a\n"}, {"b.log", std::string(50'000, 'b')}});
    directory_.write("in/logs.tar", bytes.substr(0, 10'000));
    const UnpackedLogs unpacked = unpack();
    ASSERT_EQ(unpacked.findings.size(), 1U);
    EXPECT_EQ(unpacked.findings[0].id, "damaged-archive");
    EXPECT_EQ(files(), (Files{{"out/a.log", "a\n"}}));
}

TEST_F(PackedLogs, AreNotReplacedUnlessThatIsAskedFor) {
    directory_.write("in/a.log.gz", compressed("new\n", "gzip"));
    directory_.write("out/a.log", "old\n");
    EXPECT_NE(failure_of_unpacking().find("--force"), std::string::npos);
    EXPECT_EQ(files(), (Files{{"out/a.log", "old\n"}}));
    unpack(1'000'000, true);
    EXPECT_EQ(files(), (Files{{"out/a.log", "new\n"}}));
}

TEST(UnpackedNames, TellFoldersApart) {
    const std::set<std::string> folders = {"/logs/web1", "/logs/web2"};
    EXPECT_EQ(distinct_part("/logs/web1", folders), "web1");
    EXPECT_EQ(distinct_part("/logs", {"/logs"}), "");
    const std::set<std::string> nested = {"/logs", "/logs/web1"};
    EXPECT_EQ(folder_label(distinct_part("/logs", nested)), "");
    EXPECT_EQ(folder_label(distinct_part("/logs/web1", nested)), "web1");
    EXPECT_EQ(folder_label("../var_1/./log/"), "var-1-log");
}

TEST(UnpackedNames, KeepWhatTellsInstancesApart) {
    EXPECT_EQ(flat_name("/logs/access.log.1.gz", "", true), "access.log.1");
    EXPECT_EQ(flat_name("access.log", "web1", false), "web1_access.log");
    EXPECT_EQ(flat_name("ssl_access.log", "web1", false), "web1-ssl_access.log");
    EXPECT_EQ(archive_label("/logs/web_1.tar.gz"), "web-1");
    EXPECT_EQ(archive_label("logs.tgz"), "logs");
}
