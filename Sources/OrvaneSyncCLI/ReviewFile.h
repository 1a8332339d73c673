#pragma once

#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"
#include "OrvaneSyncCLI/Arguments.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

/// The table that a command's `--review` names.
class ReviewFile {
  public:
    /// Throws UsageError and OutputRefused, before any work.
    explicit ReviewFile(const Arguments& arguments);

    explicit operator bool() const { return path_.has_value(); }
    const std::optional<std::string>& path() const { return path_; }
    /// Requires a path. Throws as `writeReviewFile`.
    void write(const std::vector<ReviewLine>& lines, const ImportController& controller) const;
    /// One line for people.
    std::string text() const;

    static std::vector<Option> withOptions(std::vector<Option> options);

  private:
    std::optional<std::string> path_;
    RunInputs inputs_;
    OutputPermission permission_;
};

} // namespace orvane::cli
