#pragma once

#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

/// The options of all commands that write a document.
const std::vector<Option>& documentOptions();

/// The path and the kind of the document that a command writes.
class DocumentOutput {
  public:
    /// `inputs`: files that the command line names for reading; those that the controller reads are added
    /// when the document is written. Throws UsageError, and OutputRefused for a place that cannot take the
    /// document: a long scan must not fail at its end because a folder is missing.
    DocumentOutput(Context& context, const Arguments& arguments, RunInputs inputs = {});

    ExportController::Options document;
    /// Warnings that were printed before; JSON repeats them.
    std::vector<std::string> warnedAlready;
    /// The mode that was requested of Smart Audio; absent if the command does not know one.
    std::optional<SmartAudioMode> smartAudioMode;

    /// Printed for people after what was written.
    std::string lastLine;

    /// Restored work is not matched by the options of the command.
    Matching matching = Matching::canChange;

    /// Exports the open work and prints what was written. `written` is called before anything is printed.
    /// Throws as the export does, OutputRefused and FileError.
    void write(
        const ImportController& controller, const std::function<void()>& written = [] {}) const;

  private:
    Context& context_;
    std::string output_;
    RunInputs inputs_;
    OutputPermission permission_;
    std::optional<fcpxml::FCPXMLVersion> version_;
    bool asJSON_;
    bool isNameChosen_;
};

} // namespace orvane::cli
