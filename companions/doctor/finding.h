#pragma once

#include <string>
#include <utility>
#include <vector>

// Something about the inputs of a scenario that users should know.

enum class Severity {
    error,   // a run would fail, or give nothing
    warning, // a run gives something else than was most likely meant
    note     // good to know
};

struct Finding {
    std::string id; // a word for the kind of finding, as "unknown-keyword", by which programs go
    Severity severity;
    std::string file;    // path; empty: of no file
    int line = 0;        // from 1; 0: of the whole file
    std::string value;   // what the finding is about, as the file has it
    std::string meaning; // what a run makes of it
    std::string cure;    // what to do; empty: nothing has to be done
};

using Findings = std::vector<Finding>;

// Adds findings of one file to a list, which must stay.
class FileFindings {
  public:
    FileFindings(Findings& findings, std::string file)
        : findings_(findings), file_(std::move(file)) {}

    const std::string& file() const { return file_; }

    void add(Severity severity, const char* id, int line, std::string value, std::string meaning,
             std::string cure = "") {
        findings_.push_back(
            {id, severity, file_, line, std::move(value), std::move(meaning), std::move(cure)});
    }

    // Index of the finding that was added last, by which it can be changed.
    size_t last_index() const { return findings_.size() - 1; }
    Finding& at(size_t index) { return findings_[index]; }

  private:
    Findings& findings_;
    std::string file_;
};
