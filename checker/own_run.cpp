#include "checker/own_run.h"

#include "checker/backups.h"
#include "checker/inputs.h"
#include "checker/run_directories.h"
#include "checker/run_place.h"

#include <exception>
#include <optional>

namespace {

std::string write_own_manifest(const RunProcess& run, const RunPlace& place,
                               const FileDescriptor& backup) {
    if (!backup.is_open()) {
        return "there is no backup of the inputs";
    }
    try {
        const Inputs inputs = read_inputs(run, place, backup);
        if (!inputs.doubt.empty()) {
            return inputs.doubt;
        }
        return write_manifest(backup.get(), inputs.manifest) ? ""
                                                             : "the manifest cannot be written";
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

} // namespace

std::string record_own_run(const RunProcess& run) {
    const std::optional<RunPlace> place = locate_run(run);
    if (!place) {
        return "no run has this command line and environment";
    }
    RunDirectories directories;
    make_directories(*place, directories);
    forget_last_run(*place, directories.input_cache);
    return write_own_manifest(run, *place, open_own_backup(run.pid));
}
