#include "OrvaneSyncCLI/ReviewFile.h"

#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "Platform/Text.h"

#include <utility>

namespace orvane::cli {

ReviewFile::ReviewFile(const Arguments& arguments)
    : path_(arguments.value("--review")),
      inputs_(inputsOf(arguments)), permission_{.replacesOthers = arguments.has("--force")} {
    if (path_ && (path_->empty() || *path_ == "-")) throw UsageError("--review needs the name of a file");
    const std::string ending = path_ ? FileURL{*path_}.lowercasedExtension() : "";
    if (ending == "fcpxml" || ending == "xml")
        throw UsageError("--review takes a table, and '" + *path_ +
                         "' is named as a document; write OUT.tsv");
    if (path_) OutputGuard(OutputKind::table, inputs_, permission_).check(*path_);
}

void ReviewFile::write(const std::vector<ReviewLine>& lines, const ImportController& controller) const {
    RunInputs inputs = inputs_;
    inputs.add(inputsOf(controller)());
    writeReviewFile(*path_, lines, std::move(inputs), permission_);
}

std::string ReviewFile::text() const {
    return "Wrote " + platform::text::printable(*path_) +
           ": decide there, then take it back with sync --apply.\n";
}

std::vector<Option> ReviewFile::withOptions(std::vector<Option> options) {
    options.push_back(
        {"--review", "OUT.tsv", "write a table of the clips, to decide about them in a spreadsheet"});
    options.push_back(
        {"--force", "", "replace a file that is no such table; never media, never what is read"});
    return options;
}

} // namespace orvane::cli
