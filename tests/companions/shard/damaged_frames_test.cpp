#include "base/failure.h"
#include "base/file_descriptor.h"
#include "companions/shard/plan/plan_file.h"
#include "tests/companions/properties/companion_properties.h"
#include "tests/companions/shard/frames_in_file.h"
#include "tests/companions/shard/hand_made_job.h"
#include "tests/companions/shard/random_scenario.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/mman.h>

namespace {

const std::string old_results = "of an earlier run\n";

// A scenario whose job has been run in several pieces and ranges: its streams are in "job".
class DamagedJob : public testing::Test {
  protected:
    DamagedJob() {
        for (uint32_t seed = 0; tables_.size() < 2; ++seed) {
            Choices choices(seed);
            write_random_scenario(choices, installation_);
            run_job(installation_, {4, 3});
            tables_ = table_streams();
        }
        installation_.write(config_directory + "/url.list", old_results);
    }

    std::string stream(const std::string& name) const { return installation_.read("job/" + name); }

    std::vector<Frame> frames(const std::string& name) const {
        const FileDescriptor file(open((installation_.root() / "job" / name).c_str(), O_RDONLY));
        const Plan plan = read_plan(installation_.root() / "job/plan.json");
        FrameReader reader(file.get(), plan.id, StreamEnd::bare);
        std::vector<Frame> all;
        while (std::optional<Frame> frame = reader.next()) {
            all.push_back(std::move(*frame));
        }
        return all;
    }

    // The frames as a stream of their own.
    void write_frames(const std::string& name, const std::vector<Frame>& all) const {
        const std::string path = installation_.write("job/" + name, "");
        const FileDescriptor file(open(path.c_str(), O_WRONLY | O_APPEND));
        const Plan plan = read_plan(installation_.root() / "job/plan.json");
        FrameWriter to(file.get(), plan.id);
        for (const Frame& frame : all) {
            to.write(frame.kind, frame.label, frame.payload);
        }
        to.end();
    }

    // One line, and nothing of what stood there is touched.
    void expect_refusal(const std::string& stage, const std::string& inputs,
                        const std::string& reason) const {
        const RunResult run = run_stage(installation_, stage + " --plan plan.json", inputs,
                                        stage == "merge" ? "" : "refused");
        EXPECT_EQ(run.status, 3);
        std::string line = run.errors;
        const std::string ready = "ready\n";
        line.erase(0, line.starts_with(ready) ? ready.size() : 0);
        EXPECT_NE(line.find(reason), std::string::npos) << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_EQ(line.find("exception"), std::string::npos) << line;
        EXPECT_EQ(installation_.result("url.list"), old_results);
    }

    // The streams that collapsing has put out, in the order of ranges.
    std::vector<std::string> table_streams() const {
        std::vector<std::string> names;
        for (const auto& [name, content] : installation_.files_of("job")) {
            if (name.starts_with("tables.")) {
                names.push_back(name);
            }
        }
        return names;
    }

    std::string all_tables() const {
        std::string names;
        for (const std::string& name : tables_) {
            names += " " + name;
        }
        return names;
    }

    TestInstallation installation_;

    std::vector<std::string> tables_;
};

// Reads all frames of a text; returns what is wrong.
std::string fault_of(const std::string& text, const std::string& plan_id) {
    const FileDescriptor file(memfd_create("frames", MFD_CLOEXEC));
    EXPECT_TRUE(write_whole(file.get(), text));
    lseek(file.get(), 0, SEEK_SET);
    try {
        FrameReader reader(file.get(), plan_id, StreamEnd::marked);
        while (reader.next()) {
        }
        return "";
    } catch (const Failure& failure) {
        return failure.message;
    }
}

} // namespace

TEST_F(DamagedJob, NoByteOfAFrameCanBeAnotherOne) {
    const std::string id = read_plan(installation_.root() / "job/plan.json").id;
    for (const std::string& name :
         {std::string("load.0"), std::string("settled"), std::string("cut"), tables_[0]}) {
        const std::string whole = stream(name);
        ASSERT_EQ(fault_of(whole, id), "");
        const size_t step = 1 + whole.size() / 400;
        for (size_t at = 0; at < whole.size(); at += at < 300 ? 1 : step) {
            std::string other = whole;
            other[at] = static_cast<char>(other[at] ^ (1 << at % 8));
            EXPECT_NE(fault_of(other, id), "") << name << " " << at;
            EXPECT_NE(fault_of(whole.substr(0, at), id), "") << name << " " << at;
        }
    }
}

TEST_F(DamagedJob, NoByteOfThePlanCanBeAnotherOne) {
    const std::string whole = stream("plan.json");
    const auto without_blanks = [](std::string text) {
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
        return text;
    };
    for (size_t at = 0; at < whole.size(); at += 5) {
        std::string other = whole;
        other[at] = static_cast<char>(other[at] ^ (1 << at % 8));
        const std::string path = installation_.write("job/other.json", other);
        try {
            write_plan(read_plan(path), path);
            EXPECT_EQ(without_blanks(installation_.read("job/other.json")), without_blanks(whole));
        } catch (const Failure&) {
            SUCCEED();
        }
    }
}

TEST_F(DamagedJob, StagesRefuseWhatIsMissingOrTwice) {
    expect_refusal("settle", "load.0", "are missing");
    expect_refusal("settle", "load.1 load.0", "come where");
    expect_refusal("merge", "settled", "ended early");
    expect_refusal("merge", all_tables(), "ended early");
    expect_refusal("merge", "settled settled" + all_tables(), "twice");
    expect_refusal("merge", "settled" + all_tables() + all_tables(), "order");
    expect_refusal("collapse --settled settled", "load.0 load.0", "came twice");
    expect_refusal("collapse --settled load.0", "load.0", "not each there once");
}

TEST_F(DamagedJob, MergingRefusesRangesAndTablesInAnotherOrder) {
    expect_refusal("merge", "settled " + tables_[1] + " " + tables_[0], "order");
    const std::vector<Frame> frames_of_range = frames(tables_.back());
    ASSERT_EQ(frames_of_range.front().kind, FrameKind::urls);
    Frame again = frames_of_range.front();
    again.label["table"] = 1;
    write_frames("other", {again, frames_of_range.back()});
    expect_refusal("merge", "settled other", "not in their order");
    again.label["table"] = 0;
    again.label["is_last"] = false;
    write_frames("other", {again, frames_of_range.back()});
    expect_refusal("merge", "settled other", "not in their order");
    write_frames("other", {frames_of_range.back()});
    expect_refusal("merge", "settled other", "not in their order");
}

TEST_F(DamagedJob, LabelsOfAnotherFormAreNamedDamage) {
    for (const char* const name : {"instance", "first", "end"}) {
        std::vector<Frame> loaded = frames("load.0");
        std::erase_if(loaded, [](const Frame& frame) { return frame.kind != FrameKind::events; });
        loaded.front().label[name] = "1";
        write_frames("other", loaded);
        expect_refusal("settle", "other", "damaged");
    }
    std::vector<Frame> collapsed = frames(tables_[0]);
    collapsed.back().label["rows"] = -1;
    write_frames("other", collapsed);
    expect_refusal("merge", "settled other", "damaged");
}

TEST(ExchangedPayloads, AreReadInTheirOrderOrRefused) {
    for (uint32_t seed = 0; seed < 20'000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Choices choices(seed);
        check_exchanged_payloads(choices);
    }
}
