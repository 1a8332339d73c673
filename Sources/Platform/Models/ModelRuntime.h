#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane::platform {

/// A model that could not be loaded or run. The description is the runtime's.
class ModelError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Numbers in an order in which the last axis varies fastest.
struct ModelTensor {
    std::vector<std::int64_t> shape;
    std::vector<float> values;
};

/// A loaded model. One thread at a time.
class Model {
  public:
    virtual ~Model() = default;
    /// Returns the named outputs of one named input, in the order of the names. Throws ModelError, also for
    /// an output that is missing or does not hold 32-bit floats, and Stopped.
    virtual std::vector<ModelTensor> run(const std::string& inputName, const ModelTensor& input,
                                         std::span<const std::string> outputNames,
                                         const std::stop_token& stop = {}) = 0;
};

/// ONNX Runtime, if this machine has it: a library that the user or the system installed, opened at its first
/// use. Its C interface keeps its order from version to version, so building needs nothing of it. Any thread
/// but the interface thread.
class ModelRuntime {
  public:
    virtual ~ModelRuntime() = default;
    virtual std::string path() const = 0;    ///< of the library
    virtual std::string version() const = 0; ///< such as "1.17.1"
    /// Throws ModelError.
    virtual std::unique_ptr<Model> load(const std::string& modelPath) = 0;

    /// The first usable library, in the folders and then in those of the system; null if there is none.
    static std::shared_ptr<ModelRuntime> find(std::span<const std::string> folders);
};

} // namespace orvane::platform
