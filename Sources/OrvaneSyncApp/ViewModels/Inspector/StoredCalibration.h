#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"

#include <functional>
#include <memory>

namespace orvane {

/// The stored calibration that forecasts use. Read in the background when this is made and after every change
/// of the calibration; until it is read, forecasts are estimates. Interface thread.
class StoredCalibration : public std::enable_shared_from_this<StoredCalibration> {
  public:
    static std::shared_ptr<StoredCalibration> create(ImportController& controller,
                                                     std::function<void()> whenRead);

    const SmartAudioPredictor& predictor() const { return predictor_; }

  private:
    StoredCalibration(const OpenWork& work, std::function<void()> whenRead);
    static platform::Task read(std::weak_ptr<StoredCalibration> weak);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::function<void()> whenRead_;
    SmartAudioPredictor predictor_;
    platform::Subscription following_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
