#include "companions/common/shown_text.h"
#include "companions/report/export/export_formats.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// k6 would take minutes to read a script with a long list in it, and seconds for a file of data.
constexpr const char* script = R"(// Each request once: k6 run FILE. Set the users with -e USERS=N.
import http from 'k6/http';
import exec from 'k6/execution';
import { SharedArray } from 'k6/data';

function dataOf(key) {
    return JSON.parse(open(@DATA@))[key];
}

// Method, URL, header Host, transaction, number of the body (-1: none), requests before this target
const targets = new SharedArray('targets', () => dataOf('targets'));
const { total, bodyFiles } = new SharedArray('whole', () => [dataOf('whole')])[0];
const bodies = bodyFiles.map((path) => open(path, 'b'));

export const options = {
    scenarios: {
        targets: {
            executor: 'shared-iterations',
            vus: Math.min(total, Number(__ENV.USERS || 10)),
            iterations: total,
            maxDuration: '24h',
        },
    },
};

function commonDivisor(a, b) {
    return b === 0 ? a : commonDivisor(b, a % b);
}

// Steps of this length come to each request once, and seldom to one target twice in a row.
function stepOf(count) {
    let step = Math.max(1, Math.floor(Math.min(count * 0.618, Number.MAX_SAFE_INTEGER / count)));
    while (commonDivisor(step, count) !== 1) {
        step -= 1;
    }
    return step;
}
const step = stepOf(total);

function targetOf(request) {
    let low = 0;
    let high = targets.length;
    while (high - low > 1) {
        const middle = Math.floor((low + high) / 2);
        if (targets[middle][5] <= request) {
            low = middle;
        } else {
            high = middle;
        }
    }
    return targets[low];
}

export default function () {
    const request = (exec.scenario.iterationInTest * step) % total;
    const [method, url, host, transaction, body] = targetOf(request);
    const headers = { Host: host };
    if (body >= 0) {
        headers['Content-Type'] = '@TYPE@';
    }
    http.request(method, url, body < 0 ? null : bodies[body], {
        headers,
        tags: { name: transaction || url },
    });
}
)";

std::string ascii(const Json& value) {
    return value.dump(-1, ' ', true);
}

void replace(std::string& text, std::string_view mark, std::string_view by) {
    text.replace(text.find(mark), mark.size(), by);
}

// Places of body files, each once.
class Bodies {
  public:
    int number_of(const std::string& path) {
        if (path.empty()) {
            return -1;
        }
        const auto [entry, is_new] = numbers_.try_emplace(path, static_cast<int>(paths_.size()));
        if (is_new) {
            paths_.push_back(path);
        }
        return entry->second;
    }

    const std::vector<std::string>& paths() const { return paths_; }

  private:
    std::vector<std::string> paths_;
    std::map<std::string, int> numbers_; // by path
};

} // namespace

// k6 would write a method in capitals.
bool fits_k6(LoadTarget& target, ExportNotes& notes) {
    const bool has_small_letters = std::any_of(target.method.begin(), target.method.end(),
                                               [](char c) { return c >= 'a' && c <= 'z'; });
    if (has_small_letters) {
        notes.leave_out("whose method is not in capitals, as k6 would send it", target.count);
        return false;
    }
    if (valid_utf8(target.body_file) != target.body_file) {
        notes.leave_out("whose body file has a path that a script cannot name", target.count);
        return false;
    }
    return true;
}

void export_k6(const Targets& targets, FILE* out) {
    uint64_t total = 0;
    Bodies bodies;
    const char* separator = "";
    fmt::print(out, "{{\"targets\": [");
    targets([&](const LoadTarget& target) {
        const Json row = {target.method,
                          target.url,
                          target.host,
                          valid_utf8(target.transaction),
                          bodies.number_of(target.body_file),
                          total};
        fmt::print(out, "{}\n{}", separator, ascii(row));
        separator = ",";
        total += target.count;
    });
    const Json whole = {{"total", total}, {"bodyFiles", bodies.paths()}};
    fmt::print(out, "\n], \"whole\": {}}}\n", ascii(whole));
}

void write_k6_script(const std::string& data_name, FILE* out) {
    std::string text = script;
    replace(text, "@DATA@", ascii(valid_utf8("./" + data_name)));
    replace(text, "@TYPE@", body_content_type);
    fmt::print(out, "{}", text);
}
