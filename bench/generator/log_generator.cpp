#include "bench/generator/log_generator.h"

#include "bench/generator/log_lines.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string>

namespace {

constexpr uint64_t generator_seed = 0x5eed'0000;
constexpr time_t first_second = 1'759'708'800; // 2025-10-06 00:00:00 UTC
constexpr uint64_t lines_per_second = 40;

// How often things happen, per thousand.
constexpr uint64_t bad_lines = 1;
constexpr uint64_t crawler_requests = 20;
constexpr uint64_t redirects = 30;
constexpr uint64_t visitors_that_wait = 150;

// The page that the shape with one URL asks for.
constexpr size_t only_url = 20;

// One visitor of the site, from the first request to the last: a session of the log.
struct Visitor {
    uint64_t number = 0;
    uint64_t requests_left = 0;
    uint64_t waiting_requests = 0; // still to come before a response sets the session cookie
    bool has_session_cookie = false;
    bool follows_redirect = false; // the next request, to redirect_target
    UrlUse redirect_target;
    const SiteUrl* referer = nullptr;
};

uint64_t visitors_at_a_time(const GeneratorOptions& options, uint64_t lines) {
    return options.one_session || options.session_per_request
               ? 1
               : std::clamp<uint64_t>(lines / 200, 1, 1000);
}

// The traffic of one instance in time order, line by line.
class Traffic {
  public:
    Traffic(const GeneratorOptions& options, const Site& site, uint64_t instance, uint64_t lines)
        : options_(options), site_(site), instance_(instance), random_(generator_seed + instance),
          log_lines_(options, site), lines_(lines),
          next_visit_(options.unique > 0 ? instance : site.urls.size()),
          visitors_(visitors_at_a_time(options, lines)) {}

    void add_header(std::string& text) const { log_lines_.add_header(text); }

    void add_line(std::string& text) {
        if (options_.waiting) {
            add_waiting_line(text);
        } else if (random_.chance(bad_lines)) {
            const uint64_t variant = random_.next();
            log_lines_.add_bad_line(text, start_request().time, variant);
        } else if (random_.chance(crawler_requests)) {
            LoggedRequest request = start_request();
            request.url = popular_url();
            log_lines_.add_request(text, request);
        } else {
            add_visitor_line(text);
        }
        ++lines_written_;
    }

  private:
    void add_visitor_line(std::string& text) {
        Visitor& visitor = next_visitor();
        LoggedRequest request = start_request();
        request.visitor = visitor.number;
        request.referer = visitor.referer;
        request.url = visitor.follows_redirect ? visitor.redirect_target : next_url();
        visitor.follows_redirect = false;
        choose_session_cookie(visitor, request);
        choose_response(visitor, request);
        log_lines_.add_request(text, request);
        const SiteUrl& url = site_.urls[request.url.index];
        visitor.referer = url.is_page() ? &url : visitor.referer;
        --visitor.requests_left;
    }

    // The first half of a round waits; the second half answers in an order of its own, so that
    // neither the first nor the last waiting request is always the one that is answered.
    void add_waiting_line(std::string& text) {
        constexpr uint64_t most_waiting = 250'000;    // that one thread of the tool has room for
        constexpr uint64_t answer_stride = 1'000'003; // a prime, so that each is answered once
        if (round_line_ == round_size_ * 2) {
            visitors_started_ += round_size_;
            round_size_ = std::clamp<uint64_t>((lines_ - lines_written_) / 2, 1, most_waiting);
            round_line_ = 0;
        }
        LoggedRequest request = start_request();
        request.sets_session_cookie = round_line_ >= round_size_;
        request.visitor = own_number(
            visitors_started_ + (request.sets_session_cookie
                                     ? (round_line_ - round_size_) * answer_stride % round_size_
                                     : round_line_));
        request.url = next_url();
        log_lines_.add_request(text, request);
        ++round_line_;
    }

    LoggedRequest start_request() {
        LoggedRequest request;
        request.time = first_second + static_cast<time_t>(lines_written_ / lines_per_second);
        request.microseconds = 800 + random_.below(240'000);
        request.bytes = 300 + random_.below(90'000);
        return request;
    }

    Visitor& next_visitor() {
        Visitor& visitor = visitors_[random_.below(visitors_.size())];
        if (visitor.requests_left == 0) {
            visitor = new_visitor();
        }
        return visitor;
    }

    Visitor new_visitor() {
        Visitor visitor;
        visitor.number = options_.one_session ? 1 : own_number(visitors_started_++);
        if (options_.one_session || options_.session_per_request) {
            visitor.requests_left = options_.one_session ? UINT64_MAX : 1;
            visitor.has_session_cookie = true;
            return visitor;
        }
        visitor.requests_left = 5 + random_.below(31);
        visitor.waiting_requests = random_.chance(visitors_that_wait) ? 1 + random_.below(3) : 0;
        return visitor;
    }

    // A number above 0 that no other instance uses.
    uint64_t own_number(uint64_t count) const { return 1 + instance_ + count * options_.instances; }

    static void choose_session_cookie(Visitor& visitor, LoggedRequest& request) {
        request.sends_session_cookie = visitor.has_session_cookie;
        if (visitor.waiting_requests > 0) {
            --visitor.waiting_requests;
            return;
        }
        request.sets_session_cookie = !visitor.has_session_cookie;
        visitor.has_session_cookie = true;
    }

    void choose_response(Visitor& visitor, LoggedRequest& request) {
        // A location would take a line with a long URL over the longest that the tool reads.
        if (!options_.long_urls && random_.chance(redirects)) {
            constexpr std::array<unsigned, 8> statuses = {302, 302, 302, 302, 302, 302, 301, 307};
            constexpr std::array<LocationForm, 4> forms = {
                LocationForm::absolute, LocationForm::absolute, LocationForm::from_root,
                LocationForm::relative};
            request.status = statuses[random_.below(statuses.size())];
            request.location = forms[random_.below(forms.size())];
            request.target = popular_url();
            visitor.redirect_target = request.target;
            visitor.follows_redirect = true;
        } else if (random_.chance(60)) {
            request.status = random_.chance(700) ? 304 : 404;
        }
    }

    UrlUse popular_url() {
        const size_t index = options_.one_url ? std::min(only_url, site_.urls.size() - 1)
                                              : site_.popularity.pick(random_);
        return {index, own_number(numbers_used_++)};
    }

    UrlUse next_url() {
        UrlUse use = popular_url();
        if (next_visit_ < site_.urls.size()) {
            use.index = next_visit_;
            next_visit_ += options_.instances;
        }
        return use;
    }

    const GeneratorOptions& options_;
    const Site& site_;
    uint64_t instance_;
    RandomSource random_;
    LogLines log_lines_;
    uint64_t lines_; // to be written in all
    uint64_t lines_written_ = 0;
    uint64_t visitors_started_ = 0; // before the round, where requests wait
    uint64_t numbers_used_ = 0;
    size_t next_visit_; // index of the next URL, where all have to be asked for
    std::vector<Visitor> visitors_;
    uint64_t round_size_ = 0; // requests that wait, and as many that answer them
    uint64_t round_line_ = 0;
};

} // namespace

uint64_t share(uint64_t total, uint64_t parts, uint64_t part) {
    return total * (part + 1) / parts - total * part / parts;
}

void write_instance(const GeneratorOptions& options, const Site& site, uint64_t instance,
                    const std::vector<std::filesystem::path>& files) {
    constexpr size_t block_size = 1 << 20;
    const uint64_t lines = share(options.lines, options.instances, instance);
    Traffic traffic(options, site, instance, lines);
    for (size_t file = 0; file < files.size(); ++file) {
        std::ofstream out;
        out.exceptions(std::ios::failbit | std::ios::badbit);
        out.open(files[file], std::ios::binary);
        std::string text;
        traffic.add_header(text);
        for (uint64_t left = share(lines, files.size(), file); left > 0; --left) {
            traffic.add_line(text);
            if (text.size() >= block_size || left == 1) {
                out << text;
                text.clear();
            }
        }
        out.close();
    }
}
