#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

class TemporaryDirectory {
  public:
    explicit TemporaryDirectory(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string name = parent / "zvr_test.XXXXXX";
        root_ = mkdtemp(name.data());
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& root() const { return root_; }

    // Files are named by paths relative to it, or by absolute ones; the directory itself ends
    // with "/".
    std::string path(const std::string& name = "") const { return root_ / name; }

    bool exists(const std::string& name) const { return std::filesystem::exists(root_ / name); }

    // Makes the file's directories; returns its path.
    std::string write(const std::string& name, std::string_view text) const {
        std::filesystem::create_directories((root_ / name).parent_path());
        std::ofstream(root_ / name, std::ios::binary) << text;
        return path(name);
    }

    // The empty text when there is no such file.
    std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(root_ / name, std::ios::binary).rdbuf();
        return text.str();
    }

  private:
    std::filesystem::path root_;
};
