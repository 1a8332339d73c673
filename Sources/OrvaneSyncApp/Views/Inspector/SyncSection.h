#pragma once

#include "OrvaneDesignKit/EntryField.h"
#include "OrvaneSyncApp/ViewModels/Inspector/SyncPart.h"
#include "OrvaneSyncApp/ViewModels/Inspector/TypedValues.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"

#include <memory>
#include <optional>

namespace orvane::views {

/// The method of the clip's sync, how far its sound was moved, its clap point, and whether the sync is
/// verified.
class SyncSection : public InspectorSection {
  public:
    SyncSection(Desktop& desktop, std::shared_ptr<ReviewViewModel> review);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    void makeOffset();
    void makeAnchor();
    void makeDecisions();
    QString moveTo(const TypedNumber& typed);
    void moveBy(double seconds);
    void showClapCheck();
    void showSearch();
    /// Finds out whether other cameras would be locked with this one.
    void lookForCameras(const SyncGroup& clip);
    void showLockAll();

    const std::shared_ptr<ReviewViewModel> review_;
    std::optional<SyncPart> shown_;
    design::Choice* method_;
    QLabel *methodText_, *begins_, *anchor_, *anchorHint_, *wholeFrames_;
    design::EntryField *frames_, *seconds_;
    QPushButton *goToAnchor_, *putOnFrame_, *clearAnchor_, *updateAnchor_, *searchAnchor_, *clapCheck_,
        *lock_, *lockAll_, *approve_;
    std::optional<std::pair<UUID, std::string>>
        camerasOf_;        ///< the clip whose cameras were looked for, with its names
    bool isAlone_ = false; ///< the take of that clip has no other camera
    platform::Subscription ofEngine_, ofReview_, ofSound_;
};

/// The frame rate of the sensor, and what is exported in addition for an off-speed clip.
class SensorSection : public InspectorSection {
  public:
    explicit SensorSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    void fill(const SensorPart& part);

    std::optional<SensorPart> shown_;
    design::Choice* rate_;
    design::Badge* unconfirmed_;
    QLabel *speed_, *note_;
    QCheckBox *native_, *projectRate_;
};

} // namespace orvane::views
