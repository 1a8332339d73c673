#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane::fcpxml {

/// Why records could not be turned into a document.
class FCPXMLError : public std::runtime_error {
  public:
    enum class Kind { invalidAttribute, uninitializedAttribute };

    static FCPXMLError invalidAttribute(std::string_view name, const std::optional<std::string>& value,
                                        std::string_view reason);
    static FCPXMLError uninitializedAttribute(std::string_view type, std::string_view name);

    Kind kind() const { return kind_; }

  private:
    FCPXMLError(Kind kind, const std::string& description) : std::runtime_error(description), kind_(kind) {}
    Kind kind_;
};

} // namespace orvane::fcpxml
