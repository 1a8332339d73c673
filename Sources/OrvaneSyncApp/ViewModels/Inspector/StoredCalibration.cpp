#include "OrvaneSyncApp/ViewModels/Inspector/StoredCalibration.h"

#include "Platform/OnQueue.h"

#include <utility>

namespace orvane {

std::shared_ptr<StoredCalibration> StoredCalibration::create(ImportController& controller,
                                                             std::function<void()> whenRead) {
    std::shared_ptr<StoredCalibration> made(new StoredCalibration(controller.work(), std::move(whenRead)));
    made->following_ = controller.onChange([weak = std::weak_ptr(made)](ImportField field) {
        if (field == ImportField::calibration) read(weak);
    });
    read(made);
    return made;
}

StoredCalibration::StoredCalibration(const OpenWork& work, std::function<void()> whenRead)
    : mainThread_(work.environment.mainThread), whenRead_(std::move(whenRead)),
      queue_(platform::SerialQueue::create("calibration")) {}

platform::Task StoredCalibration::read(std::weak_ptr<StoredCalibration> weak) {
    auto self = weak.lock();
    if (!self) co_return;
    auto reading = platform::onQueue(*self->queue_, self->mainThread_,
                                     [] { return SmartAudioPredictor::loadingFromDisk(); });
    self.reset();
    SmartAudioPredictor predictor = co_await reading;
    self = weak.lock();
    if (!self) co_return;
    self->predictor_ = std::move(predictor);
    self->whenRead_();
}

} // namespace orvane
