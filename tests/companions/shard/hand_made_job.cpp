#include "tests/companions/shard/hand_made_job.h"

#include "base/file_descriptor.h"
#include "companions/shard/exchange/frame.h"
#include "companions/shard/plan/plan_file.h"

#include <algorithm>
#include <fcntl.h>
#include <map>
#include <memory>
#include <set>

namespace {

const std::string plan_name = "job/plan.json";

// Keys that divide the blocks among so many ranges.
std::string range_keys(const std::string& blocks, const std::string& plan_id, size_t ranges) {
    const FileDescriptor file(open(blocks.c_str(), O_RDONLY));
    FrameReader reader(file.get(), plan_id, StreamEnd::bare);
    std::set<std::string> firsts;
    while (const std::optional<Frame> frame = reader.next()) {
        if (frame->kind == FrameKind::rows) {
            firsts.insert(frame->label.at("first").get<std::string>());
        }
    }
    std::string keys;
    const size_t step = firsts.size() / ranges + 1;
    size_t number = 0;
    for (const std::string& first : firsts) {
        keys += ++number % step == 0 ? (keys.empty() ? "" : ",") + first : "";
    }
    return keys;
}

// Puts the frames of each range into a file of its own; returns the numbers of the ranges.
std::set<size_t> share_out(const TestInstallation& installation, const std::string& plan_id) {
    const FileDescriptor file(open((installation.root() / "job/cut").c_str(), O_RDONLY));
    FrameReader reader(file.get(), plan_id, StreamEnd::marked);
    std::map<size_t, FileDescriptor> files;
    while (const std::optional<Frame> frame = reader.next()) {
        const size_t range = frame->label.at("range");
        FileDescriptor& to = files[range];
        if (!to.is_open()) {
            const std::string path = installation.write("job/range." + std::to_string(range), "");
            to = FileDescriptor(open(path.c_str(), O_WRONLY | O_APPEND));
        }
        FrameWriter(to.get(), plan_id).write(frame->kind, frame->label, frame->payload);
    }
    std::set<size_t> ranges;
    for (const auto& [range, opened] : files) {
        ranges.insert(range);
    }
    return ranges;
}

void join(const TestInstallation& installation, const std::string& files, const std::string& to) {
    installation.run_program("/bin/sh", {"-c", "cd job && cat " + files + " > " + to},
                             {{"PATH", "/usr/bin:/bin"}});
}

} // namespace

RunResult run_stage(const TestInstallation& installation, const std::string& words,
                    const std::string& inputs, const std::string& output) {
    const std::string command = "cd job && cat " + (inputs.empty() ? "/dev/null" : inputs) +
                                " | " ZVR_SHARD_PATH " " + words +
                                (output.empty() ? "" : " > " + output);
    return installation.run_program("/bin/sh", {"-c", command}, {{"PATH", "/usr/bin:/bin"}});
}

RunResult run_job(const TestInstallation& installation, const JobShape& shape) {
    std::filesystem::remove_all(installation.root() / "job");
    std::filesystem::create_directories(installation.root() / "job");
    RunResult run =
        installation.run_program(ZVR_SHARD_PATH, {"plan", "-s", "web", "--pieces",
                                                  std::to_string(shape.pieces), "-o", plan_name});
    if (run.status != 0) {
        return run;
    }
    const auto stage = [&](const std::string& words, const std::string& inputs,
                           const std::string& output) {
        run = run_stage(installation, words, inputs, output);
        return run.status == 0;
    };
    const Plan plan = read_plan(installation.root() / plan_name);
    std::string loaded;
    for (size_t i = 0; i < plan.pieces.size(); ++i) {
        const std::string number = std::to_string(i);
        if (!stage("load --plan plan.json " + number, "", "load." + number)) {
            return run;
        }
        loaded += "load." + number + " ";
    }
    if (!stage("settle --plan plan.json", loaded, "settled")) {
        return run;
    }
    installation.write("job/blocks", "");
    join(installation, loaded + "settled", "blocks");
    const std::string keys = range_keys(installation.root() / "job/blocks", plan.id, shape.ranges);
    if (!stage("cut --plan plan.json" + (keys.empty() ? "" : " --keys " + keys), "blocks", "cut")) {
        return run;
    }
    std::string tables;
    for (const size_t range : share_out(installation, plan.id)) {
        const std::string number = std::to_string(range);
        if (!stage("collapse --plan plan.json --settled settled --bare", "range." + number,
                   "tables." + number)) {
            return run;
        }
        tables += " tables." + number;
    }
    stage("merge --plan plan.json", "settled" + tables, "");
    return run;
}
