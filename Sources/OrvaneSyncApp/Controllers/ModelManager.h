#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Services/ModelStorage/ModelCatalogue.h"
#include "OrvaneSyncCore/Services/Stems/BanditStemSeparator.h"
#include "Platform/Throttle.h"

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

class ModelDownloader;

/// A model that is not in the catalogue was named.
class ModelNotFound : public std::runtime_error {
  public:
    explicit ModelNotFound(const std::string& id) : std::runtime_error("there is no model '" + id + "'") {}
};

/// The optional models of the user account: the catalogue, and their downloads. Belongs to no work: a
/// download continues when other work is opened. Interface thread.
class ModelManager {
  public:
    explicit ModelManager(OpenWork& work);
    ~ModelManager();

    /// The catalogue as of the last `rebuildCatalog`, with the state of running downloads.
    const std::vector<ModelInfo>& models() const { return models_; }
    /// Null if it is not in the catalogue.
    const ModelInfo* model(const std::string& id) const;
    std::int64_t totalSizeMB() const { return totalSizeMB_; }
    /// The model that separates stems, which the user installs.
    const BanditStemSeparator::Installation& bandit() const { return bandit_; }

    /// Reads the configuration and the disk.
    platform::Task rebuildCatalog();
    /// A failure is written to the model's status. A second call for the same model waits for the first.
    /// Throws ModelNotFound, and Stopped for a download that was cancelled.
    platform::Task download(const std::string& id);
    /// The model's status becomes the error "Download cancelled".
    void cancelDownload(const std::string& id);
    /// Cancels the model's download first. Throws ModelNotFound.
    platform::Task deleteModel(const std::string& id);

  private:
    using Weak = std::weak_ptr<ModelManager>;
    static platform::Task rebuild(Weak weak);
    static platform::Task fetch(Weak weak, std::string id);
    static platform::Task remove(Weak weak, std::string id);
    void setStatus(const std::string& id, ModelStatus status);

    OpenWork& work_;
    std::vector<ModelInfo> models_;
    std::int64_t totalSizeMB_ = 0;
    BanditStemSeparator::Installation bandit_;
    std::map<std::string, platform::Task> downloads_; ///< running ones, by model
    /// Fractions done, by model.
    const std::shared_ptr<platform::Throttle<std::pair<std::string, double>>> shown_;
    // Last members: they are destroyed first, which waits for their work.
    const std::unique_ptr<platform::SerialQueue> disk_, network_;
};

} // namespace orvane
