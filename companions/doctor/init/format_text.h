#pragma once

#include <string>
#include <string_view>

enum class LogServer { apache, nginx };

// A format string as the server takes it, out of what users copy from its configuration.
struct FormatText {
    LogServer server = LogServer::apache;
    std::string text; // without the configuration's quotes and escapes
};

// Takes a LogFormat or log_format directive with its name and options, its string alone, with or
// without the escapes of the configuration, or the name of a format that the servers or Debian
// define. Control characters other than tabs become blanks.
FormatText read_format_text(std::string_view argument);
