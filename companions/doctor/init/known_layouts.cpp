#include "companions/doctor/init/known_layouts.h"

#include "companions/doctor/init/line_trial.h"
#include "companions/doctor/init/log_format.h"
#include "companions/doctor/init/w3c_fields.h"

#include <algorithm>

namespace {

struct ApacheLayout {
    const char* name;
    const char* format;
    int line_fields;
};

constexpr ApacheLayout apache_layouts[] = {
    {"the tool's default, 15 fields",
     R"(%h %l %u %t %D "%r" %>s %b "%{Referer}i" "%{User-Agent}i" "%{Content-Type}o" "%{Cookie}i" "%{Set-Cookie}o" "%{Host}i" "%{Location}o")",
     15},
    {"combined behind the virtual host (vhost_combined)",
     R"(%v:%p %h %l %u %t "%r" %>s %O "%{Referer}i" "%{User-Agent}i")", 10},
    {"common behind the virtual host", R"(%v %h %l %u %t "%r" %>s %b)", 8},
    {"combined (Apache), default of nginx",
     R"(%h %l %u %t "%r" %>s %b "%{Referer}i" "%{User-Agent}i")", 9},
    {"common (Apache)", R"(%h %l %u %t "%r" %>s %b)", 7},
    {"common with the response time before the request", R"(%h %l %u %t %B "%r" %>s %b)", 8},
};

struct W3cNames {
    const char* name;
    const char* fields;
    bool counts_milliseconds;
};

constexpr W3cNames w3c_layouts[] = {
    {"IIS 7 and later",
     "date time s-ip cs-method cs-uri-stem cs-uri-query s-port cs-username c-ip cs(User-Agent) "
     "cs(Referer) sc-status sc-substatus sc-win32-status time-taken",
     true},
    {"IIS 7 without referer",
     "date time s-ip cs-method cs-uri-stem cs-uri-query s-port cs-username c-ip cs(User-Agent) "
     "sc-status sc-substatus sc-win32-status time-taken",
     true},
    {"IIS 6",
     "date time s-sitename s-ip cs-method cs-uri-stem cs-uri-query s-port cs-username c-ip "
     "cs(User-Agent) sc-status sc-substatus sc-win32-status",
     true},
    {"WebLogic extended",
     "c-ip date time cs-method cs-uri sc-status time-taken cs(Cookie) cs(Host)", false},
    {"WebLogic extended, short", "c-ip date time cs-method cs-uri sc-status", false},
};

KnownLayout apache_layout(const ApacheLayout& row) {
    KnownLayout known = {read_log_format(row.format).layout, row.line_fields};
    known.layout.name = row.name;
    // A number is all that is known of a response time, not its unit.
    known.layout.positions[AL_RESPONSE_TIME_USEC] = 0;
    return known;
}

KnownLayout default_of(const char* name, const char* log_type) {
    KnownLayout known = {default_layout(log_type), 0};
    known.layout.name = name;
    known.line_fields = known.layout.field_count();
    return known;
}

} // namespace

std::vector<KnownLayout> known_layouts() {
    std::vector<KnownLayout> layouts;
    for (const ApacheLayout& row : apache_layouts) {
        layouts.push_back(apache_layout(row));
    }
    for (const W3cNames& row : w3c_layouts) {
        const int fields = static_cast<int>(split_into_fields(row.fields).size());
        layouts.push_back({w3c_layout(row.fields, row.counts_milliseconds), fields});
        layouts.back().layout.name = row.name;
    }
    layouts.push_back(default_of("the tool's default for IIS", "IIS"));
    layouts.push_back(default_of("the tool's default for other logs", "OTHER"));
    return layouts;
}
