#include "companions/report/export/full_urls.h"

#include "base/failure.h"
#include "base/result_names.h"
#include "companions/common/shown_text.h"
#include "companions/common/text_map.h"
#include "tools/results/url_list.h"

#include <cstdlib>
#include <deque>

namespace {

constexpr size_t most_kept_urls = 65'536;

// Counts URLs in the order in which they come first.
class UrlCounts {
  public:
    void add(std::string_view url) {
        const auto found = counts_.find(url);
        if (found != counts_.end()) {
            ++found->second;
            return;
        }
        counts_.emplace(urls_.emplace_back(url), 1);
    }

    size_t size() const { return urls_.size(); }

    template <typename Use> void hand_over(const Use& use) {
        for (const std::string& url : urls_) {
            use(url, counts_.at(url));
        }
        counts_.clear();
        urls_.clear();
    }

  private:
    std::deque<std::string> urls_; // stay where they are
    TextMap<uint64_t> counts_;
};

// Whether this is the URL of a row, before its query was replaced by "*".
bool is_full_url_of(std::string_view cut_url, std::string_view url) {
    cut_url.remove_suffix(1);
    if (url.find('|') == std::string_view::npos) {
        return url.starts_with(cut_url);
    }
    std::string escaped;
    replace_pipe_by_ascii(url.data(), url.size(), escaped);
    return escaped.starts_with(cut_url);
}

} // namespace

FullUrls::FullUrls(const OwnDirectory& config_dir)
    : path_(config_dir.path() + query_url_list_name),
      file_(open_stream(config_dir.open_file(query_url_list_name), "r")) {}

FullUrls::~FullUrls() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
    std::free(line_);
}

void FullUrls::for_each(const UrlListLine& row,
                        const std::function<void(std::string_view, uint64_t)>& use) {
    go_to(row);
    UrlCounts urls;
    for (uint64_t i = 0; i < row.count; ++i) {
        urls.add(read_line(row));
        if (urls.size() == most_kept_urls) {
            urls.hand_over(use);
        }
    }
    urls.hand_over(use);
}

// Rows stand mostly in the order of their lines.
void FullUrls::go_to(const UrlListLine& row) {
    if (file_ == nullptr) {
        fail("%s is missing: it has the queries that are cut off in url.list. Run "
             "zvr_al_gen_url_list without --dump_query_url 0 and without DUMP_QUERY_STRING_URL 0",
             path_.c_str());
    }
    if (position_ == row.query_file_offset) {
        return;
    }
    position_ = row.query_file_offset;
    if (position_ < 0 || fseeko(file_, position_ == 0 ? 0 : position_ - 1, SEEK_SET) != 0 ||
        (position_ != 0 && std::getc(file_) != '\n')) {
        fail_to_fit(row);
    }
}

std::string_view FullUrls::read_line(const UrlListLine& row) {
    const ssize_t size = getline(&line_, &line_capacity_, file_);
    if (size < 1 || line_[size - 1] != '\n') {
        fail_to_fit(row);
    }
    position_ += size;
    const std::string_view url(line_, static_cast<size_t>(size) - 1);
    if (!is_full_url_of(row.url, url)) {
        fail_to_fit(row);
    }
    return url;
}

void FullUrls::fail_to_fit(const UrlListLine& row) const {
    fail("%s does not have the queries of %s where url.list says: it is of another run",
         path_.c_str(), shown_text(row.url).c_str());
}
