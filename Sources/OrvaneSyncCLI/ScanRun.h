#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCLI/ProgressLine.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// What `scan` and `sync` take alike.
const std::vector<Option>& scanOptions();

/// One controller on a run loop of its own, driven through a scan.
class ScanRun {
  public:
    /// Throws UsageError for folders that make no sense and CommandError for folders that cannot be read.
    ScanRun(Context& context, const Arguments& arguments);

    ImportController& controller() { return *controller_; }
    /// Scans to the end, with progress, and waits for the analysis that the scan may start. Warns of folders
    /// that could not be read.
    void scan();
    /// Says on the progress line what is being done, until the next wait ends.
    void show(std::string_view phase);
    void clearProgress() { progress_.clear(); }
    /// Waits for an operation of the controller; its exception passes through.
    void wait(const platform::Task& operation);

  private:
    Context& context_;
    std::shared_ptr<platform::RunLoop> loop_;
    ProgressLine progress_;
    std::shared_ptr<ImportController> controller_;
    platform::Subscription subscription_;
};

/// The system's reason why a folder or file cannot be read; empty when it can.
std::string whyUnreadable(const std::string& path, bool mustBeFolder);

} // namespace orvane::cli
