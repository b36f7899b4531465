#include "companions/shard/plan/plan_file.h"

#include "base/failure.h"
#include "companions/common/output_file.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <xxhash.h>

namespace {

using Json = nlohmann::ordered_json;

constexpr int indentation = 1;

Json json_of_bytes(const std::string& bytes) {
    constexpr unsigned char first_of_two_bytes = 0x80;
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < first_of_two_bytes) {
            text.push_back(c);
        } else {
            text.push_back(static_cast<char>(0xc0 | byte >> 6));
            text.push_back(static_cast<char>(0x80 | (byte & 0x3f)));
        }
    }
    return text;
}

std::string bytes_of_json(const Json& json) {
    const std::string& text = json.get_ref<const std::string&>();
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool is_two_bytes = byte >= 0xc0 && i + 1 < text.size();
        const auto second = static_cast<unsigned char>(is_two_bytes ? text[++i] : 0);
        bytes.push_back(static_cast<char>(is_two_bytes ? (byte << 6 | (second & 0x3f)) : byte));
    }
    return bytes;
}

Json json_of_log(const PlannedLog& log) {
    return {{"path", json_of_bytes(log.path)},
            {"size", log.size},
            {"line_budget", log.line_budget},
            {"is_body_file", log.is_body_file},
            {"instance", log.instance},
            {"samples", log.samples},
            {"state", log.state}};
}

PlannedLog log_of_json(const Json& json) {
    return {.path = bytes_of_json(json.at("path")),
            .size = json.at("size"),
            .line_budget = json.at("line_budget"),
            .is_body_file = json.at("is_body_file"),
            .instance = json.at("instance"),
            .samples = json.at("samples"),
            .state = json.at("state")};
}

Json json_of_plan(const Plan& plan) {
    Json json = {{"zvr_al_shard_plan", plan_format},
                 {"id", plan.id},
                 {"version", plan.version},
                 {"directory", json_of_bytes(plan.directory)},
                 {"work_dir", json_of_bytes(plan.work_dir)},
                 {"scenario", json_of_bytes(plan.scenario)},
                 {"replay_profile", json_of_bytes(plan.replay_profile)},
                 {"dump_query_url", plan.dump_query_url},
                 {"input_hashes", plan.input_hashes},
                 {"settings", json_of_bytes(plan.settings)},
                 {"replay_timezone", plan.replay_timezone},
                 {"has_zone", plan.has_zone},
                 {"zone", json_of_bytes(plan.zone)},
                 {"zone_rules", plan.zone_rules},
                 {"start_time_stamp", plan.start_time_stamp},
                 {"end_time_stamp", plan.end_time_stamp},
                 {"is_time_filtered", plan.is_time_filtered},
                 {"log_piece_size", plan.log_piece_size}};
    for (const PlannedLog& log : plan.logs) {
        json["logs"].push_back(json_of_log(log));
    }
    for (const PieceOfWork& piece : plan.pieces) {
        json["pieces"].push_back(
            {{"first", piece.first}, {"end", piece.end}, {"bytes", piece.bytes}});
    }
    return json;
}

Plan plan_of_json(const Json& json) {
    Plan plan = {.id = json.at("id"),
                 .version = json.at("version"),
                 .directory = bytes_of_json(json.at("directory")),
                 .work_dir = bytes_of_json(json.at("work_dir")),
                 .scenario = bytes_of_json(json.at("scenario")),
                 .replay_profile = bytes_of_json(json.at("replay_profile")),
                 .dump_query_url = json.at("dump_query_url"),
                 .input_hashes = json.at("input_hashes"),
                 .settings = bytes_of_json(json.at("settings")),
                 .replay_timezone = json.at("replay_timezone"),
                 .has_zone = json.at("has_zone"),
                 .zone = bytes_of_json(json.at("zone")),
                 .zone_rules = json.at("zone_rules"),
                 .start_time_stamp = json.at("start_time_stamp"),
                 .end_time_stamp = json.at("end_time_stamp"),
                 .is_time_filtered = json.at("is_time_filtered"),
                 .logs = {},
                 .log_piece_size = json.at("log_piece_size"),
                 .pieces = {}};
    for (const Json& log : json.value("logs", Json::array())) {
        plan.logs.push_back(log_of_json(log));
    }
    for (const Json& piece : json.value("pieces", Json::array())) {
        plan.pieces.push_back({piece.at("first"), piece.at("end"), piece.at("bytes")});
    }
    return plan;
}

void refuse_other_program(const Json& json, const std::string& path) {
    if (json.at("zvr_al_shard_plan") != plan_format || json.at("version") != ZVR_VERSION) {
        fail("%s is the plan of version %s of this program, this is version %s", path.c_str(),
             json.at("version").get<std::string>().c_str(), ZVR_VERSION);
    }
}

// Of all that the plan says, however it is laid out.
uint64_t hash_of(const Json& json) {
    const std::string text = json.dump();
    return XXH3_64bits(text.data(), text.size());
}

bool is_as_written(Json& json) {
    const Json hash = json.at("hash");
    json.erase("hash");
    return hash == hash_of(json);
}

} // namespace

void write_plan(const Plan& plan, const std::string& path) {
    Json json = json_of_plan(plan);
    json["hash"] = hash_of(json);
    OutputFile(path).write({json.dump(indentation), "\n"});
}

Plan read_plan(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        fail("There is no plan %s", path.c_str());
    }
    try {
        Json json = Json::parse(file);
        refuse_other_program(json, path);
        if (is_as_written(json)) {
            return plan_of_json(json);
        }
    } catch (const Json::exception&) { // not as it was written either
    }
    fail("%s is no whole plan of a job", path.c_str());
}
