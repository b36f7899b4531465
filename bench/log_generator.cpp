#include "log_generator.h"

#include <algorithm>

namespace bench {

namespace {

constexpr std::uint64_t generator_seed = 0x5eed'0000;
constexpr std::time_t first_second = 1'759'708'800; // 2025-10-06 00:00:00 UTC
constexpr std::uint64_t lines_per_second = 40;

// How often things happen, per thousand.
constexpr std::uint64_t bad_lines = 1;
constexpr std::uint64_t crawler_requests = 20;
constexpr std::uint64_t redirects = 30;
constexpr std::uint64_t sessions_that_wait = 150;

// Requests that one thread of the tool can keep waiting at a time.
constexpr std::uint64_t most_waiting = 250'000;
// A prime above most_waiting: stepping by it visits every waiting request once.
constexpr std::uint64_t answer_stride = 1'000'003;

// The page that the shape with one URL asks for, in the catalogue.
constexpr std::size_t only_url = 20;

std::size_t visitors_at_a_time(const GeneratorOptions& options, std::uint64_t lines) {
    if (options.shape == Shape::one_session || options.shape == Shape::session_per_request)
        return 1;
    return static_cast<std::size_t>(std::clamp<std::uint64_t>(lines / 200, 1, 1000));
}

} // namespace

std::uint64_t lines_of_instance(const GeneratorOptions& options, unsigned instance) {
    return options.lines * (instance + 1) / options.instances -
           options.lines * instance / options.instances;
}

LogGenerator::LogGenerator(const GeneratorOptions& options, const UrlCatalogue& catalogue,
                           const ZipfDistribution& popularity, unsigned instance)
    : options_(options), catalogue_(catalogue), popularity_(popularity), instance_(instance),
      random_(generator_seed + instance), writer_(options, catalogue),
      lines_(lines_of_instance(options, instance)),
      next_visit_(options.visit_every_url ? instance : catalogue.size()) {
    visitors_.resize(visitors_at_a_time(options, lines_));
}

void LogGenerator::write_files(const std::vector<std::filesystem::path>& files) {
    for (std::size_t file = 0; file < files.size(); ++file) {
        OutputFile out(files[file]);
        writer_.write_header(out);
        const std::uint64_t end = lines_ * (file + 1) / files.size();
        for (; lines_written_ < end; ++lines_written_)
            write_line(out);
        out.close();
    }
}

void LogGenerator::write_line(OutputFile& out) {
    if (options_.shape == Shape::waiting)
        write_waiting_line(out);
    else if (random_.chance(bad_lines))
        writer_.write_bad_line(out, start_request().time, random_.next());
    else if (random_.chance(crawler_requests))
        write_crawler_line(out);
    else
        write_visitor_line(out);
}

void LogGenerator::write_crawler_line(OutputFile& out) {
    LoggedRequest request = start_request();
    request.url = popular_url();
    writer_.write_request(out, request);
}

void LogGenerator::write_visitor_line(OutputFile& out) {
    VisitorSession& session = next_visitor();
    LoggedRequest request = start_request();
    request.session = &session;
    request.url = session.follows_redirect ? session.redirect_target : next_url();
    session.follows_redirect = false;
    choose_session_cookie(session, request);
    choose_response(session, request);
    writer_.write_request(out, request);
    if (catalogue_[request.url.index].content_type == content_types[0]) {
        session.referer = request.url.index;
        session.has_referer = true;
    }
    --session.requests_left;
}

VisitorSession& LogGenerator::next_visitor() {
    VisitorSession& session = visitors_[random_.below(visitors_.size())];
    if (session.requests_left == 0)
        session = new_visitor();
    return session;
}

VisitorSession LogGenerator::new_visitor() {
    if (options_.shape == Shape::one_session) {
        VisitorSession session = make_session(1);
        session.requests_left = ~0U;
        session.has_session_cookie = true;
        return session;
    }
    VisitorSession session = make_session(1 + instance_ + sessions_started_++ * options_.instances);
    if (options_.shape == Shape::session_per_request) {
        session.requests_left = 1;
        session.has_session_cookie = true;
        return session;
    }
    session.requests_left = 5 + static_cast<std::uint32_t>(random_.below(31));
    if (random_.chance(sessions_that_wait))
        session.waiting_requests = 1 + static_cast<std::uint32_t>(random_.below(3));
    return session;
}

void LogGenerator::choose_session_cookie(VisitorSession& session, LoggedRequest& request) {
    request.sends_session_cookie = session.has_session_cookie;
    if (session.has_session_cookie)
        return;
    if (session.waiting_requests > 0) {
        --session.waiting_requests;
        return;
    }
    request.sets_session_cookie = true;
    session.has_session_cookie = true;
}

void LogGenerator::choose_response(VisitorSession& session, LoggedRequest& request) {
    // A location would take a line with a long URL over the longest line that the tool reads.
    if (options_.shape != Shape::long_urls && random_.chance(redirects)) {
        constexpr std::array<unsigned, 8> statuses = {302, 302, 302, 302, 302, 302, 301, 307};
        constexpr std::array<LocationForm, 4> forms = {
            LocationForm::absolute, LocationForm::absolute, LocationForm::from_root,
            LocationForm::relative};
        request.status = statuses[random_.below(statuses.size())];
        request.location = forms[random_.below(forms.size())];
        request.target = popular_url();
        session.redirect_target = request.target;
        session.follows_redirect = true;
        return;
    }
    if (random_.chance(60))
        request.status = random_.chance(700) ? 304 : 404;
}

// The first half of a round waits; the second half answers in an order of its own, so that
// neither the first nor the last waiting request is always the one that is answered.
void LogGenerator::write_waiting_line(OutputFile& out) {
    if (round_line_ == round_size_ * 2) {
        round_size_ = std::clamp<std::uint64_t>((lines_ - lines_written_) / 2, 1, most_waiting);
        round_line_ = 0;
        round_first_session_ = sessions_started_;
        sessions_started_ += round_size_;
    }
    const bool answers = round_line_ >= round_size_;
    const std::uint64_t position =
        answers ? (round_line_ - round_size_) * answer_stride % round_size_ : round_line_;
    ++round_line_;
    const std::uint64_t number =
        1 + instance_ + (round_first_session_ + position) * options_.instances;
    const VisitorSession session = make_session(number);
    LoggedRequest request = start_request();
    request.session = &session;
    request.url = next_url();
    request.sets_session_cookie = answers;
    writer_.write_request(out, request);
}

LoggedRequest LogGenerator::start_request() {
    LoggedRequest request;
    request.time = first_second + static_cast<std::time_t>(lines_written_ / lines_per_second);
    request.microseconds = 800 + random_.below(240'000);
    request.bytes = 300 + random_.below(90'000);
    return request;
}

UrlUse LogGenerator::popular_url() {
    UrlUse use;
    use.index = options_.shape == Shape::one_url ? std::min(only_url, catalogue_.size() - 1)
                                                 : popularity_.pick(random_);
    use.number = 1 + instance_ + numbers_used_++ * options_.instances;
    return use;
}

UrlUse LogGenerator::next_url() {
    UrlUse use = popular_url();
    if (next_visit_ < catalogue_.size()) {
        use.index = next_visit_;
        next_visit_ += options_.instances;
    }
    return use;
}

} // namespace bench
