#include "cache/work_mark.h"
#include "tests/checker/checker_fixture.h"
#include "tests/support/held_stream.h"
#include "tests/support/permissions.h"

#include <csignal>
#include <fstream>
#include <linux/prctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

// What others' processes, and names that they make, can do to a run.

namespace {

// A number among those that the system tells of this process, counted from 1.
unsigned long own_number(size_t field) {
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text, ')'); // the program's name, the second
    for (size_t i = 2; i < field; ++i) {
        file >> text;
    }
    return std::strtoul(text.c_str(), nullptr, 10);
}

// Lets the system show this many zero bytes as the command line of this process.
void show_long_command_line(size_t size) {
    char* const memory = static_cast<char*>(
        mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    prctl_mm_map map = {};
    map.start_code = own_number(26);
    map.end_code = own_number(27);
    map.start_stack = own_number(28);
    map.start_data = own_number(45);
    map.end_data = own_number(46);
    map.start_brk = own_number(47);
    map.brk = reinterpret_cast<unsigned long>(sbrk(0));
    map.env_start = own_number(50);
    map.env_end = own_number(51);
    map.arg_start = reinterpret_cast<unsigned long>(memory);
    map.arg_end = map.arg_start + size;
    map.exe_fd = static_cast<unsigned int>(-1);
    require(prctl(PR_SET_MM, PR_SET_MM_MAP, &map, sizeof map, 0) == 0);
}

void become_other_user() {
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0) {
        require(setgid(nobody) == 0 && setuid(nobody) == 0 && prctl(PR_SET_DUMPABLE, 1) == 0);
    }
}

// Names a backup of a process in as many ways as there are of writing its number.
std::vector<std::string> names_of_backup(pid_t pid, size_t count) {
    std::vector<std::string> names;
    for (size_t zeros = 0; zeros < count; ++zeros) {
        names.push_back("/tmp/zvr_al_gen_url_list.backup." + std::string(zeros, '0') +
                        std::to_string(pid));
    }
    return names;
}

TEST_F(Checker, AProcessOfOthersIsNotReadHoweverMuchItShows) {
    constexpr size_t shown = size_t{64} << 20;
    constexpr size_t name_count = 100;
    const pid_t other = fork();
    if (other == 0) {
        become_other_user();
        show_long_command_line(shown);
        for (const std::string& name : names_of_backup(getpid(), name_count)) {
            std::ofstream file(name);
        }
        raise(SIGSTOP);
        _exit(0);
    }
    int status = 0;
    waitpid(other, &status, WUNTRACED);
    if (!WIFSTOPPED(status)) {
        GTEST_SKIP() << "no process may say where its command line is";
    }
    installation_.prepare_process([] {
        const rlimit two_seconds = {2, 2};
        setrlimit(RLIMIT_CPU, &two_seconds);
    });
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 0);
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    for (const std::string& name : names_of_backup(other, name_count)) {
        fs::remove(name);
    }
}

// A run that has come as far as its first line of progress, and then waits.
class WaitingRun {
  public:
    explicit WaitingRun(TestInstallation& installation) {
        installation.prepare_process([&] { progress_.replace(STDERR_FILENO); });
        process_ = installation.start({"-s", "web", "-c"});
        progress_.take();
        progress_.has_line(-1);
        installation.prepare_process([] {});
    }
    ~WaitingRun() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    WaitingRun(const WaitingRun&) = delete;
    WaitingRun& operator=(const WaitingRun&) = delete;

  private:
    HeldStream progress_;
    pid_t process_;
};

TEST_F(Checker, ARunWhosePlaceLeadsNowhereIsNotInTheWayOfOthers) {
    TestInstallation elsewhere;
    elsewhere.write_logs({combined_line()});
    const WaitingRun lost(elsewhere);
    const fs::path moved = elsewhere.root().string() + ".moved";
    fs::rename(elsewhere.root(), moved);
    fs::create_symlink(elsewhere.root().filename(), elsewhere.root());
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 0);
    append("logs/access_1", "\n"); // to be read again
    {
        const WaitingRun waiting(installation_);
        expect_failure(
            installation_.run(),
            "Url list processing Tool is already running, first close that and run again");
    }
    fs::remove(elsewhere.root());
    fs::rename(moved, elsewhere.root());
}

TEST_F(Checker, ASecondRunIsRefusedWhateverTheCheckerWasShown) {
    run_in_full();
    const OwnDirectory config_dir(installation_.path(config_directory));
    const FileDescriptor mark_of_other = mark_work(config_dir);
    const std::string config = installation_.path(config_directory);
    const std::string ask = ZVR_CHECKER_PATH " \"$@\"; code=$?\n";
    const std::string put_back = "/bin/rm -r " + config + "; /bin/mv kept " + config + "\n";
    for (const std::string& script :
         {ask, "/bin/mv " + config + " kept; /bin/ln -s config " + config + "\n" + ask + put_back,
          "/bin/mv " + config + " kept; /bin/mkdir " + config + "\n" + ask + put_back,
          "/bin/mv " + config + " kept\n" + ask + put_back,
          ask + "code=137\n", // as if somebody had ended it
          ask + "/bin/rm -r /tmp/zvr_al_gen_url_list.backup.$2; code=0\n"}) {
        SCOPED_TRACE(script);
        installation_.write_result("url.list", ""); // nothing to print again
        installation_.write_checker_script(script + "exit $code\n");
        expect_failure(
            installation_.run(),
            "Url list processing Tool is already running, first close that and run again");
        EXPECT_EQ(installation_.result("url.list"), "");
    }
}

TEST_F(Checker, AnotherCheckerDecidesWhetherRunsExcludeEachOther) {
    run_in_full();
    const OwnDirectory config_dir(installation_.path(config_directory));
    const FileDescriptor mark_of_other = mark_work(config_dir);
    installation_.write_checker(1);
    EXPECT_EQ(installation_.run().status, 0);
}

} // namespace
