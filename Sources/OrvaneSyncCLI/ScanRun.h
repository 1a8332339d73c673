#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCLI/ProgressLine.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// The options that both `scan` and `sync` take.
const std::vector<Option>& scanOptions();

/// The files that these options name for reading.
RunInputs inputsOf(const Arguments& arguments);

/// One controller on its own run loop, driven through a scan.
class ScanRun {
  public:
    enum class Folders { ofArguments, ofProject };
    /// Throws UsageError for folders that contradict each other and CommandError for folders that cannot be
    /// read. A project has its own folders. Loads the report, and warns of one that cannot be read.
    ScanRun(Context& context, const Arguments& arguments, Folders folders = Folders::ofArguments);

    ImportController& controller() { return *controller_; }
    /// The warnings so far, for JSON to repeat.
    const std::vector<std::string>& warnings() const { return warnings_; }
    /// Scans to the end, with progress. Warns of what could not be found, and of rates that are hardly right.
    /// Then applies the review's and the arguments' decisions; null: no review. Finally waits for the
    /// analysis that the settings request.
    enum class Analysis { asStored, none };
    void scan(Analysis analysis = Analysis::asStored, const std::vector<ReviewLine>* review = nullptr);
    /// Shows on the progress line what is being done, until the next wait ends.
    void show(std::string_view phase);
    void clearProgress() { progress_.clear(); }
    /// The same with the folders and edits of a project file. Throws FileError, ProjectError, and
    /// CommandError when the folders are not there.
    void open(const std::string& projectFile);
    /// Waits for an operation of the controller; its exception passes through.
    void wait(const platform::Task& operation);
    /// Prints to standard error, and keeps it for JSON to repeat.
    void warn(std::string message);

  private:
    void readOptions(const Arguments& arguments);
    void loadReport(const std::string& path);
    void apply(const std::vector<ReviewLine>& review);
    /// Settles ambiguous clips with their first recordings, with a warning for each.
    void chooseFirst();
    void warnOfTheScan();

    Context& context_;
    std::shared_ptr<platform::RunLoop> loop_;
    ProgressLine progress_;
    std::shared_ptr<ImportController> controller_;
    platform::Subscription subscription_;
    std::vector<std::string> warnings_;
    bool choosesFirst_ = false;
    bool isQuiet_ = false;
};

} // namespace orvane::cli
