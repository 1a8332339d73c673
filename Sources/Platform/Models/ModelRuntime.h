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

/// Numbers in the order in which the last axis runs fastest.
struct ModelTensor {
    std::vector<std::int64_t> shape;
    std::vector<float> values;
};

/// A loaded model. One thread at a time.
class Model {
  public:
    virtual ~Model() = default;
    /// Gives the named outputs of one named input, in the order of the names. Throws ModelError, also for an
    /// output that is missing or holds no 32-bit floats, and Stopped.
    virtual std::vector<ModelTensor> run(const std::string& inputName, const ModelTensor& input,
                                         std::span<const std::string> outputNames,
                                         const std::stop_token& stop = {}) = 0;
};

/// ONNX Runtime, where this machine has it: a library that the user or the system installed, opened when it
/// is first asked for. Its C interface keeps its order from version to version, so nothing of it is needed to
/// build. Any thread but the interface thread.
class ModelRuntime {
  public:
    virtual ~ModelRuntime() = default;
    virtual std::string path() const = 0;    ///< of the library
    virtual std::string version() const = 0; ///< such as "1.17.1"
    /// Throws ModelError.
    virtual std::unique_ptr<Model> load(const std::string& modelPath) = 0;

    /// The first library that can be used, in the folders and then in those of the system; null where there
    /// is none.
    static std::shared_ptr<ModelRuntime> find(std::span<const std::string> folders);
};

} // namespace orvane::platform
