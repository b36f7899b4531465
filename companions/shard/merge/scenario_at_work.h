#pragma once

#include "base/own_directory.h"
#include "companions/shard/plan/plan.h"
#include "tools/driver/input_backup.h"

// The scenario of a plan while a job works on it: marked, so that no run of the tool and no other
// job works on it, too; with its inputs copied aside as a run does.
class ScenarioAtWork {
  public:
    // Reads the installation as a run does. Fails with the messages of a run, when somebody else
    // works on the scenario, or when its inputs are not those of the plan.
    explicit ScenarioAtWork(const Plan& plan);
    ~ScenarioAtWork() { backup_.remove(); }
    ScenarioAtWork(const ScenarioAtWork&) = delete;
    ScenarioAtWork& operator=(const ScenarioAtWork&) = delete;

    const OwnDirectory& config_dir() const { return config_dir_; }

    // Ends the work as a run does: copies the inputs into the input cache directory, with a record
    // of this job by which later runs know what they may use again, if the results are reusable and
    // the logs are still as they were planned.
    void finish(bool is_reusable);

  private:
    void note_logs() const;

    const Plan& plan_;
    InputBackup backup_;
    OwnDirectory config_dir_;
    FileDescriptor work_mark_;
};
