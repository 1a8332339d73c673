#include "Platform/Models/ModelRuntime.h"

#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Modules.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <utility>

namespace orvane::platform {

namespace {

/// Newer runtimes send usage reports to their makers, unless this forbids it. Set while the program starts:
/// no other thread exists yet that might read the environment.
[[maybe_unused]] const bool sendsNothing = ::setenv("ORT_DISABLE_TELEMETRY", "1", 1) == 0;

// The part of the runtime's C interface that is used: a record of functions, of which only the positions
// matter. The types behind the pointers are the runtime's own.
struct Status;
struct Environment;
struct Session;
struct SessionOptions;
struct RunOptions;
struct Value;
struct MemoryInfo;
struct ShapeInfo;

/// The positions of functions in the record.
enum Place : std::size_t {
    getErrorMessage = 2,
    createEnvironment = 3,
    createSession = 7,
    runSession = 9,
    createSessionOptions = 10,
    createRunOptions = 39,
    setTerminate = 46,
    createTensorWithData = 49,
    tensorData = 51,
    elementType = 60,
    dimensionsCount = 61,
    dimensions = 62,
    elementCount = 64,
    tensorTypeAndShape = 65,
    createCPUMemoryInfo = 69,
    releaseEnvironment = 92,
    releaseStatus = 93,
    releaseMemoryInfo = 94,
    releaseSession = 95,
    releaseValue = 96,
    releaseRunOptions = 97,
    releaseShapeInfo = 99,
    releaseSessionOptions = 100
};
constexpr int floatElements = 1, onlyErrors = 3, arenaAllocator = 1, ordinaryMemory = 0;
constexpr std::uint32_t onnxInterfaceVersion = 1;

using AnyFunction = void (*)();
struct Functions {
    const AnyFunction* table = nullptr;

    template <class... Arguments>
    void call(Place place, Arguments... arguments) const {
        using Function = Status* (*)(Arguments...);
        Status* status = reinterpret_cast<Function>(table[place])(arguments...);
        if (status == nullptr) return;
        const std::string message =
            reinterpret_cast<const char* (*)(const Status*)>(table[getErrorMessage])(status);
        release(releaseStatus, status);
        throw ModelError(message);
    }
    template <class T>
    void release(Place place, T* object) const {
        if (object != nullptr) reinterpret_cast<void (*)(T*)>(table[place])(object);
    }
    template <class T>
    auto owned(T* object, Place place) const {
        return std::unique_ptr<T, std::function<void(T*)>>(object,
                                                           [*this, place](T* one) { release(place, one); });
    }
};
template <class T>
using Owned = std::unique_ptr<T, std::function<void(T*)>>;

/// The record of functions that a library gives.
struct InterfaceBase {
    const AnyFunction* (*getInterface)(std::uint32_t version);
    const char* (*getVersion)();
};

class LoadedModel : public Model {
  public:
    LoadedModel(const Functions& functions, std::shared_ptr<Environment> environment, Owned<Session> session)
        : functions_(functions), environment_(std::move(environment)), session_(std::move(session)) {}

    std::vector<ModelTensor> run(const std::string& inputName, const ModelTensor& input,
                                 std::span<const std::string> outputNames,
                                 const std::stop_token& stop) override {
        assertMayBlock("running a model");
        throwIfStopped(stop);
        MemoryInfo* rawMemory = nullptr;
        functions_.call(createCPUMemoryInfo, arenaAllocator, ordinaryMemory, &rawMemory);
        const auto memory = functions_.owned(rawMemory, releaseMemoryInfo);
        Value* rawInput = nullptr;
        functions_.call(createTensorWithData, static_cast<const MemoryInfo*>(memory.get()),
                        static_cast<void*>(const_cast<float*>(input.values.data())), // only read
                        input.values.size() * sizeof(float), input.shape.data(), input.shape.size(),
                        floatElements, &rawInput);
        const auto value = functions_.owned(rawInput, releaseValue);
        RunOptions* rawOptions = nullptr;
        functions_.call(createRunOptions, &rawOptions);
        const auto options = functions_.owned(rawOptions, releaseRunOptions);

        const std::array<const char*, 1> inputNames{inputName.c_str()};
        const std::array<const Value*, 1> inputs{value.get()};
        std::vector<const char*> names;
        for (const std::string& name : outputNames) names.push_back(name.c_str());
        std::vector<Value*> outputs(names.size(), nullptr);
        {
            const std::stop_callback terminating(stop, [&] {
                try {
                    functions_.call(setTerminate, options.get());
                } catch (const ModelError&) { // then it runs to its end
                }
            });
            try {
                functions_.call(runSession, session_.get(), static_cast<const RunOptions*>(options.get()),
                                inputNames.data(), inputs.data(), inputs.size(), names.data(), names.size(),
                                outputs.data());
            } catch (const ModelError&) {
                throwIfStopped(stop);
                throw;
            }
        }
        std::vector<Owned<Value>> owned;
        for (Value* output : outputs) owned.push_back(functions_.owned(output, releaseValue));
        std::vector<ModelTensor> tensors;
        for (const auto& output : owned) tensors.push_back(tensorOf(output.get()));
        return tensors;
    }

  private:
    ModelTensor tensorOf(Value* value) const {
        ShapeInfo* rawInfo = nullptr;
        functions_.call(tensorTypeAndShape, static_cast<const Value*>(value), &rawInfo);
        const auto info = functions_.owned(rawInfo, releaseShapeInfo);
        const auto* const shape = static_cast<const ShapeInfo*>(info.get());
        int type = 0;
        std::size_t rank = 0, count = 0;
        functions_.call(elementType, shape, &type);
        if (type != floatElements) throw ModelError("an output of the model holds no 32-bit floats");
        functions_.call(dimensionsCount, shape, &rank);
        functions_.call(elementCount, shape, &count);
        ModelTensor tensor;
        tensor.shape.resize(rank);
        functions_.call(dimensions, shape, tensor.shape.data(), rank);
        void* data = nullptr;
        functions_.call(tensorData, value, &data);
        const auto* const values = static_cast<const float*>(data);
        tensor.values.assign(values, values + count);
        return tensor;
    }

    Functions functions_;
    std::shared_ptr<Environment> environment_; ///< outlives the session
    Owned<Session> session_;
};

class OpenRuntime : public ModelRuntime {
  public:
    OpenRuntime(std::string path, std::string version, const Functions& functions)
        : path_(std::move(path)), version_(std::move(version)), functions_(functions) {
        Environment* raw = nullptr;
        functions_.call(createEnvironment, onlyErrors, "OrvaneSync", &raw);
        environment_ = {raw, [functions](Environment* one) { functions.release(releaseEnvironment, one); }};
    }

    std::string path() const override { return path_; }
    std::string version() const override { return version_; }
    std::unique_ptr<Model> load(const std::string& modelPath) override {
        assertMayBlock("loading a model");
        SessionOptions* rawOptions = nullptr;
        functions_.call(createSessionOptions, &rawOptions);
        const auto options = functions_.owned(rawOptions, releaseSessionOptions);
        Session* session = nullptr;
        functions_.call(createSession, static_cast<const Environment*>(environment_.get()), modelPath.c_str(),
                        static_cast<const SessionOptions*>(options.get()), &session);
        return std::make_unique<LoadedModel>(functions_, environment_,
                                             functions_.owned(session, releaseSession));
    }

  private:
    std::string path_, version_;
    Functions functions_;
    std::shared_ptr<Environment> environment_;
};

/// Null for a file that is no such library, or not usable.
std::shared_ptr<ModelRuntime> opened(const std::string& path) {
    void* const entry = modules::entryPoint({&path, 1}, "OrtGetApiBase");
    if (entry == nullptr) return nullptr;
    const InterfaceBase* base = reinterpret_cast<const InterfaceBase* (*)()>(entry)();
    if (base == nullptr) return nullptr;
    const Functions functions{base->getInterface(onnxInterfaceVersion)};
    if (functions.table == nullptr) return nullptr;
    try {
        return std::make_shared<OpenRuntime>(path, base->getVersion(), functions);
    } catch (const ModelError&) {
        return nullptr;
    }
}

} // namespace

std::shared_ptr<ModelRuntime> ModelRuntime::find(std::span<const std::string> folders) {
    assertMayBlock("looking for a library");
    constexpr std::string_view library = "libonnxruntime.so";
    std::vector<std::string> all(folders.begin(), folders.end());
    std::ranges::copy(modules::systemLibraryFolders(), std::back_inserter(all));
    for (const std::string& folder : all) {
        auto names = files::childNames(folder).value_or(std::vector<std::string>());
        std::ranges::sort(names); // the plain name first, then the versioned names
        for (const std::string& name : names)
            if (name.starts_with(library))
                if (auto runtime = opened(folder + "/" + name)) return runtime;
    }
    return nullptr;
}

} // namespace orvane::platform
