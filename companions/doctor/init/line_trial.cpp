#include "companions/doctor/init/line_trial.h"

#include "companions/doctor/init/cookie_header.h"
#include "tools/config/replay_settings.h"

#include <algorithm>

namespace {

LineParser* parser_of(char type) {
    return type == AL_TYPE_APACHE ? parse_al_line
           : type == AL_TYPE_IIS  ? parse_al_line_iis
                                  : parse_al_line_weblogic;
}

bool is_method(std::string_view method) {
    return !method.empty() && std::ranges::all_of(method, [](char c) {
        return (c >= 'A' && c <= 'Z') || c == '_' || c == '-';
    });
}

} // namespace

LineTrial::LineTrial(const LogLayout& layout)
    : has_cookies_(layout.has(AL_REQUEST_COOKIE)), thread_(std::make_unique<ParsingThread>()) {
    apply_layout(layout_without_sessions(layout), "cookie");
    parser_ = parser_of(al_type);
}

LineKind LineTrial::parse(const std::string& line) {
    line_ = std::make_unique<MarkedLine>(line, field_quote);
    thread_->quotes = &line_->marks();
    parser_(*thread_, &thread_->request, line_->text(), "", 0, 1);
    return thread_->outcome.kind;
}

bool LineTrial::is_plausible() const {
    const alInfo& record = request();
    const std::string_view cookies = record.cookies == nullptr ? "-" : record.cookies;
    return is_method(record.method) && record.response_code >= 100 && record.response_code < 600 &&
           record.url_len > 0 &&
           (!has_cookies_ || cookies == "-" || cookies.empty() || looks_like_cookies(cookies));
}

std::vector<std::string> split_into_fields(const std::string& line) {
    MarkedLine marked(line, field_quote);
    LineText fields[max_al_fields];
    const int count = get_al_fields(marked.text(), marked.marks(), fields, max_al_fields);
    std::vector<std::string> texts;
    texts.reserve(max_al_fields);
    for (int i = 0; i < count; ++i) {
        texts.emplace_back(fields[i].text, fields[i].size);
    }
    return texts;
}

bool looks_like_cookies(std::string_view text) {
    const size_t parts = static_cast<size_t>(std::ranges::count(text, ';')) + 1;
    return cookies_of(text).size() * 2 > parts;
}
