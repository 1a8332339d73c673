#include "OrvaneSyncApp/Controllers/ModelManager.h"

#include "OrvaneSyncCore/Services/ModelStorage/ModelDownloader.h"
#include "OrvaneSyncCore/Services/ModelStorage/ModelStorage.h"
#include "Platform/OnQueue.h"

#include <algorithm>
#include <exception>
#include <optional>

namespace orvane {

namespace {

struct ModelsOnDisk {
    std::vector<ModelInfo> models;
    std::int64_t totalSizeMB = 0;
    BanditStemSeparator::Installation bandit;
};

ModelsOnDisk modelsOnDisk(const std::stop_token& stop) {
    return {modelCatalogue(ServiceConfiguration::load()), ModelStorage::totalSizeMB(stop),
            BanditStemSeparator().installation()};
}

} // namespace

ModelManager::ModelManager(OpenWork& work)
    : work_(work), shown_(platform::Throttle<std::pair<std::string, double>>::create(
                       work.environment.mainThread, work.environment.clock, platform::progressInterval,
                       [this](const std::pair<std::string, double>& latest) {
                           if (downloads_.contains(latest.first))
                               setStatus(latest.first, {ModelStatus::Kind::downloading, latest.second, ""});
                       })),
      disk_(platform::SerialQueue::create("models")), network_(platform::SerialQueue::create("downloads")) {}

ModelManager::~ModelManager() {
    for (const auto& [id, download] : downloads_) download.requestStop();
    shown_->close();
}

const ModelInfo* ModelManager::model(const std::string& id) const {
    const auto found = std::ranges::find(models_, id, &ModelInfo::id);
    return found == models_.end() ? nullptr : &*found;
}

void ModelManager::setStatus(const std::string& id, ModelStatus status) {
    const auto found = std::ranges::find(models_, id, &ModelInfo::id);
    if (found == models_.end() || found->status == status) return;
    found->status = std::move(status);
    work_.notify(ImportField::models);
}

platform::Task ModelManager::rebuildCatalog() {
    work_.notices.assertOnMainThread();
    return rebuild(work_.weak(this));
}

platform::Task ModelManager::rebuild(Weak weak) {
    auto self = weak.lock();
    auto looking = platform::onQueue(*self->disk_, self->work_.environment.mainThread, modelsOnDisk);
    self.reset();
    ModelsOnDisk found = co_await looking;
    self = weak.lock();
    if (!self) co_return;
    for (ModelInfo& model : found.models) {
        const ModelInfo* const known = self->model(model.id);
        if (known != nullptr && self->downloads_.contains(model.id)) model.status = known->status;
    }
    self->models_ = std::move(found.models);
    self->totalSizeMB_ = found.totalSizeMB;
    self->bandit_ = std::move(found.bandit);
    self->work_.notify(ImportField::models);
}

platform::Task ModelManager::download(const std::string& id) {
    work_.notices.assertOnMainThread();
    if (const auto running = downloads_.find(id); running != downloads_.end()) return running->second;
    platform::Task downloading = fetch(work_.weak(this), id);
    if (!downloading.isDone()) downloads_.insert_or_assign(id, downloading);
    return downloading;
}

platform::Task ModelManager::fetch(Weak weak, std::string id) {
    // Makes the row again, because the configuration may have changed since it was shown.
    const platform::Task looking = rebuild(weak);
    try {
        co_await looking;
    } catch (const platform::Stopped&) {
        if (const auto own = weak.lock()) {
            own->downloads_.erase(id);
            own->setStatus(id, {ModelStatus::Kind::error, 0, "Download cancelled"});
        }
        throw;
    }
    auto self = weak.lock();
    if (!self) co_return;
    const ModelInfo* const model = self->model(id);
    if (model == nullptr || model->downloadURL.empty()) { // the row then says why
        self->downloads_.erase(id);
        if (model == nullptr) throw ModelNotFound(id);
        co_return;
    }
    auto fetching =
        platform::onQueue(*self->network_, self->work_.environment.mainThread,
                          [wanted = ModelDownload{id, model->downloadURL, model->expectedSHA256.value_or("")},
                           shown = std::weak_ptr(self->shown_)](const std::stop_token& stop) {
                              ModelDownloader().download(
                                  wanted,
                                  [&](double share) {
                                      if (const auto own = shown.lock()) own->post({wanted.id, share});
                                  },
                                  stop);
                          });
    self->setStatus(id, {ModelStatus::Kind::downloading, 0, ""});
    self.reset();
    ModelStatus status{ModelStatus::Kind::ready, 0, ""};
    std::exception_ptr stopped;
    try {
        co_await fetching;
    } catch (const platform::Stopped&) {
        status = {ModelStatus::Kind::error, 0, "Download cancelled"};
        stopped = std::current_exception();
    } catch (const std::exception& error) {
        status = {ModelStatus::Kind::error, 0, error.what()};
    }
    if (self = weak.lock(); self) {
        self->downloads_.erase(id);
        self->shown_->drop();
        self->setStatus(id, status);
        self.reset();
        if (status.kind == ModelStatus::Kind::ready) { // shows the size on the disk as well
            const platform::Task again = rebuild(weak);
            co_await again;
        }
    }
    if (stopped) std::rethrow_exception(stopped);
}

void ModelManager::cancelDownload(const std::string& id) {
    work_.notices.assertOnMainThread();
    if (const auto running = downloads_.find(id); running != downloads_.end()) running->second.requestStop();
}

platform::Task ModelManager::deleteModel(const std::string& id) {
    work_.notices.assertOnMainThread();
    return remove(work_.weak(this), id);
}

platform::Task ModelManager::remove(Weak weak, std::string id) {
    auto self = weak.lock();
    if (const auto running = self->downloads_.find(id); running != self->downloads_.end()) {
        const platform::Task download = running->second;
        download.requestStop();
        self.reset();
        try {
            co_await download;
        } catch (const platform::Stopped&) { // it was asked to stop
        }
    }
    self.reset();
    const platform::Task looking = rebuild(weak);
    co_await looking;
    self = weak.lock();
    if (!self) co_return;
    if (self->model(id) == nullptr) throw ModelNotFound(id);
    // On the same queue as downloads, because a cancelled one may still use its file.
    auto removing = platform::onQueue(*self->network_, self->work_.environment.mainThread,
                                      [id] { ModelStorage::remove(id); });
    self.reset();
    co_await removing;
    const platform::Task again = rebuild(weak);
    co_await again;
}

} // namespace orvane
