#include "companions/doctor/init/copied_log.h"

#include "base/failure.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <unistd.h>

namespace {

constexpr mode_t mode = 0666; // less the mask

[[noreturn]] void fail_to_write(const OwnDirectory& directory, const std::string& name) {
    fail("Cannot write '%s/%s': %s", directory.path().c_str(), name.c_str(),
         std::generic_category().message(errno).c_str());
}

} // namespace

CopiedLog::CopiedLog(const OwnDirectory& directory, const std::string& name, SizeBudget& budget)
    : directory_(directory), name_(name), working_name_("." + name + ".part"), budget_(budget),
      file_(directory.create(working_name_.c_str(), mode)) {
    if (!file_.is_open()) {
        fail_to_write(directory_, name_);
    }
}

CopiedLog::~CopiedLog() {
    if (!is_kept_) {
        directory_.remove(working_name_.c_str());
    }
}

void CopiedLog::append(std::string_view text) {
    if (text.empty()) {
        return;
    }
    if (text.size() > budget_.left) {
        fail("The unpacked logs would take more than %llu bytes; --unpack-limit allows more",
             static_cast<unsigned long long>(budget_.limit));
    }
    budget_.left -= text.size();
    if (!write_whole(file_.get(), text)) {
        fail_to_write(directory_, name_);
    }
    last_character_ = text.back();
}

void CopiedLog::keep() {
    if (last_character_ != '\n') {
        append("\n");
    }
    const int directory = directory_.descriptor();
    if (!file_.close() ||
        renameat(directory, working_name_.c_str(), directory, name_.c_str()) != 0) {
        fail_to_write(directory_, name_);
    }
    is_kept_ = true;
}
