#pragma once

// Names of the results, files of the configuration directory.

constexpr const char* complete_url_list_name = "complete_url.list";
constexpr const char* query_url_list_name = "query_url.list";
constexpr const char* akaau_trace_name = "akaau.trace";
constexpr const char* hosts_list_name = "hosts.list";
constexpr const char* url_list_name = "url.list";
