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

/// A model was named that is not in the catalogue.
class ModelNotFound : public std::runtime_error {
  public:
    explicit ModelNotFound(const std::string& id) : std::runtime_error("there is no model '" + id + "'") {}
};

/// The optional models of the user account: which there are, and their downloads. Belongs to no work: a
/// download goes on when other work is opened. Interface thread.
class ModelManager {
  public:
    explicit ModelManager(OpenWork& work);
    ~ModelManager();

    /// As the last `rebuildCatalog` has found them, with the downloads under way.
    const std::vector<ModelInfo>& models() const { return models_; }
    /// Null for one that is not in the catalogue.
    const ModelInfo* model(const std::string& id) const;
    std::int64_t totalSizeMB() const { return totalSizeMB_; }
    /// The model that separates stems, which the user installs by hand.
    const BanditStemSeparator::Installation& bandit() const { return bandit_; }

    /// Looks at the configuration and the disk.
    platform::Task rebuildCatalog();
    /// A failure stands in the model's status. A second call for a model waits for the first. Throws
    /// ModelNotFound, and Stopped for a download that was cancelled.
    platform::Task download(const std::string& id);
    /// The row ends as an error, "Download cancelled".
    void cancelDownload(const std::string& id);
    /// Cancels its download first. Throws ModelNotFound.
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
    std::map<std::string, platform::Task> downloads_; ///< under way, by model
    /// Shares that are done, by model.
    const std::shared_ptr<platform::Throttle<std::pair<std::string, double>>> shown_;
    // Last: they are waited for before all else goes.
    const std::unique_ptr<platform::SerialQueue> disk_, network_;
};

} // namespace orvane
