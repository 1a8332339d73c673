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

/// What all commands take that write a document.
const std::vector<Option>& documentOptions();

/// Where the document of a command goes, and what kind of document it is to be.
class DocumentOutput {
  public:
    /// `inputs`: what the command line names to be read; what the controller reads is added when the document
    /// is written. Throws UsageError, and OutputRefused for a place that cannot take the document: a long
    /// scan must not end at a folder that is not there.
    DocumentOutput(Context& context, const Arguments& arguments, RunInputs inputs = {});

    ExportController::Options document;
    /// Warnings that were printed before; JSON repeats them.
    std::vector<std::string> warnedAlready;
    /// The one that was asked of Smart Audio; absent where the command knows of none.
    std::optional<SmartAudioMode> smartAudioMode;

    /// Printed for people behind what was written.
    std::string lastLine;

    /// Work that was kept is not matched by the options of the command.
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
