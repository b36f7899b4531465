#pragma once

#include <set>
#include <string>
#include <string_view>

// Names of logs that are unpacked into one folder. Instances go by folder and by the name up to its
// first '_', so logs that stood in different folders get different texts before a '_', and logs
// that stood in one keep what tells their instances apart.

// A folder's path as a text that can stand before the '_': "var/log/web1" is var-log-web1. Parts
// such as ".." are left out.
std::string folder_label(std::string_view folder);

// The label of what is in an archive: its name without the endings of archives.
std::string archive_label(std::string_view path);

// Joins the texts that are not empty.
std::string join_labels(std::string_view a, std::string_view b);

// The path without what all of the paths begin with, up to a '/'.
std::string distinct_part(const std::string& path, const std::set<std::string>& paths);

// The flat name of a log: the last part of its path, without characters that do not belong into
// names, behind the label. Without the ending of a compressed file, if there is one and
// `is_packed`.
std::string flat_name(std::string_view path, std::string_view label, bool is_packed);
