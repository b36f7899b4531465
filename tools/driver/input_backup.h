#pragma once

#include "base/own_directory.h"

#include <string>

// The copies of its four input files that a run puts aside when it starts, in a directory of its
// own for each process id. The checker command compares them with those of the last full run, which
// the input cache directory keeps.
class InputBackup {
  public:
    // Makes the directory and copies the files. Fails when one of these cannot be done. The
    // directory is locked as long as this object lives and the process runs, so that others can
    // tell it from what earlier runs have left behind.
    InputBackup();

    // Whether the checker has asked this run to refuse to work beside another one. One that has
    // removed the directory has, too: the run goes on in spite of its answer.
    bool is_exclusive() const;

    // Copies what is in the directory into the input cache directory beside `config_dir`, at last
    // the checker's manifest, sealed with the states in which this run leaves its results. When the
    // results are not reusable there is no manifest, so that nobody uses them again. A failure is
    // an error line, and the run goes on.
    void copy_to_cache(const OwnDirectory& config_dir, bool is_reusable) const;

    // Removes the directory.
    void remove() const;

  private:
    void copy_files(std::initializer_list<std::string> files) const;
    bool copy_inputs_to(const OwnDirectory& cache) const;
    bool seal_manifest_in(const OwnDirectory& cache) const;

    std::string path_;
    FileDescriptor directory_; // holds the lock
};
