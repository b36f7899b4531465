#include "companions/report/export/listed_targets.h"

#include "base/failure.h"
#include "companions/common/shown_text.h"
#include "companions/report/export/full_urls.h"
#include "companions/report/export/request_url.h"
#include "companions/report/export/url_list_rows.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/paths.h"

#include <unistd.h>
#include <unordered_set>

namespace {

// A "|" that the log had as "&#124;" cannot be told from one that the list has written so.
std::string with_pipes(std::string_view url) {
    constexpr std::string_view escaped = "&#124;";
    std::string text(url);
    for (size_t i = text.find(escaped); i != std::string::npos; i = text.find(escaped, i + 1)) {
        text.replace(i, escaped.size(), "|");
    }
    return text;
}

bool is_cut(const UrlListLine& row) {
    const auto ends_with = [&row](const char* mark) { return row.url.ends_with(mark); };
    return row.query_file_offset >= 0 ||
           (ignore_query_flag != 0 && (ends_with("?*") || ends_with("#*") || ends_with(";*")));
}

class TargetMaker {
  public:
    TargetMaker(const TargetChoice& choice, ExportNotes& notes,
                const std::function<void(LoadTarget&)>& use)
        : choice_(choice), notes_(notes), use_(use), config_dir_(config_directory()),
          full_urls_(config_dir_) {}

    // Returns whether the row is one of those chosen.
    bool add(const UrlListLine& row) {
        if (row.is_filtered ||
            (!choice_.transaction.empty() && row.transaction != choice_.transaction)) {
            return false;
        }
        require_body_file(row);
        if (!is_method(row.method)) {
            notes_.leave_out("whose method is no word", row.count);
        } else if (!row.host.empty() && !is_host(row.host)) {
            notes_.leave_out("whose host is no host name", row.count);
        } else if (is_cut(row)) {
            full_urls_.for_each(
                row, [&](std::string_view url, uint64_t count) { make_target(row, url, count); });
        } else {
            make_target(row, with_pipes(row.url), row.count);
        }
        return true;
    }

    const OwnDirectory& config_dir() const { return config_dir_; }

  private:
    void require_body_file(const UrlListLine& row) {
        const std::string path(row.body_file);
        if (path.empty() || !found_body_files_.insert(path).second) {
            return;
        }
        if (access(path.c_str(), R_OK) != 0) {
            fail("The body file %s of %s %s cannot be read", shown_text(path).c_str(),
                 shown_text(row.method).c_str(), shown_text(row.url).c_str());
        }
    }

    void make_target(const UrlListLine& row, std::string_view logged_url, uint64_t count) {
        const std::optional<RequestPath> path = request_path(logged_url);
        if (!path) {
            notes_.leave_out("whose URL has no path", count);
            return;
        }
        if (path->is_encoded) {
            notes_.change("whose URL has characters that no URL may have: percent-encoded", count);
        }
        LoadTarget target = {.method = std::string(row.method),
                             .url = path->text,
                             .host = std::string(row.host),
                             .transaction = std::string(row.transaction),
                             .body_file = std::string(row.body_file),
                             .count = count};
        add_host(target);
        use_(target);
    }

    void add_host(LoadTarget& target) const {
        if (!choice_.base_url.empty()) {
            target.url = choice_.base_url + target.url;
        } else if (!target.host.empty()) {
            target.url = "http://" + target.host + target.url;
        }
        if (target.host.empty() && !target.url.starts_with('/')) {
            target.host = authority_of(target.url);
        }
    }

    const TargetChoice& choice_;
    ExportNotes& notes_;
    const std::function<void(LoadTarget&)>& use_;
    OwnDirectory config_dir_;
    FullUrls full_urls_;
    std::unordered_set<std::string> found_body_files_;
};

} // namespace

void for_each_listed_target(const TargetChoice& choice, ExportNotes& notes,
                            const std::function<void(LoadTarget&)>& use) {
    TargetMaker maker(choice, notes, use);
    UrlListRows rows(maker.config_dir());
    bool is_any_chosen = false;
    while (const std::optional<std::string_view> line = rows.next()) {
        const std::optional<UrlListLine> row = read_url_list_line(*line);
        if (!row) {
            notes.leave_out("whose row cannot be read: a log has a | in a method or host", 0);
        } else if (maker.add(*row)) {
            is_any_chosen = true;
        }
    }
    if (!is_any_chosen && !choice.transaction.empty()) {
        fail("url.list has no URL of transaction '%s'", shown_text(choice.transaction).c_str());
    }
}
