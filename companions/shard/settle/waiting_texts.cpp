#include "companions/shard/settle/waiting_texts.h"

#include "base/failure.h"
#include "companions/shard/exchange/frame.h"
#include "companions/shard/exchange/spill_file.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

size_t kept_texts_size = size_t{96} << 20;

namespace {

[[noreturn]] void fail_at_file() {
    fail("Requests that wait cannot be kept in a file. Error = '%s'",
         std::generic_category().message(errno).c_str());
}

} // namespace

void WaitingTexts::put(RequestPlace place, std::string text) {
    Kept kept = {{}, 0, text.size(), size_in_memory_ + text.size() > kept_texts_size};
    if (kept.is_in_file) {
        kept.offset = write(text);
    } else {
        size_in_memory_ += text.size();
        kept.text = std::move(text);
    }
    if (!texts_.emplace(place, std::move(kept)).second) {
        fail_as_damaged();
    }
}

std::string WaitingTexts::take(RequestPlace place) {
    auto kept = texts_.extract(place);
    if (kept.empty()) {
        fail_as_damaged();
    }
    if (kept.mapped().is_in_file) {
        return read(kept.mapped());
    }
    size_in_memory_ -= kept.mapped().size;
    return std::move(kept.mapped().text);
}

// Nothing in the file is wanted any more when its last text has been read.
uint64_t WaitingTexts::write(const std::string& text) {
    if (!file_.is_open()) {
        file_ = open_spill_file();
    }
    if (count_in_file_ == 0) {
        file_size_ = 0;
    }
    if (lseek(file_.get(), static_cast<off_t>(file_size_), SEEK_SET) == -1 ||
        !write_whole(file_.get(), text)) {
        fail_at_file();
    }
    ++count_in_file_;
    return std::exchange(file_size_, file_size_ + text.size());
}

std::string WaitingTexts::read(const Kept& kept) {
    std::string text(kept.size, '\0');
    for (size_t done = 0; done != text.size();) {
        const ssize_t count = pread(file_.get(), text.data() + done, text.size() - done,
                                    static_cast<off_t>(kept.offset + done));
        if (count == 0 || (count == -1 && errno != EINTR)) {
            fail_at_file();
        }
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
    --count_in_file_;
    return text;
}
