#pragma once

#include "OrvaneDesignKit/EntryField.h"
#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"
#include "OrvaneSyncApp/ViewModels/Inspector/StoredCalibration.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"

#include <memory>
#include <optional>
#include <vector>

class QVBoxLayout;

namespace orvane::views {

/// The channels of the clip's recording: what each contains, whether the analysis may use it, and whether it
/// is exported.
class ChannelsSection : public InspectorSection {
  public:
    explicit ChannelsSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    /// Rows are kept while the number of channels is the same, so that they keep the focus.
    struct Row {
        QWidget* panel;
        QLabel *name, *kind, *share;
        QCheckBox *isAllowed, *isActive;
        QPushButton* solo;
    };
    Row makeRow(int track);
    void fill(Row& row, const ChannelsPart::Channel& channel);
    void runForTrack(std::string_view id, int track);
    void analyse();
    void analyse(bool overwrites);

    std::optional<ChannelsPart> shown_;
    UUID shownClip_;
    QLabel *summary_, *music_;
    QVBoxLayout* rowLayout_;
    std::vector<Row> rows_;
    QPushButton* analyse_;
    QWidget* question_;
};

/// The loudness of the clip, the target, and the gain that results.
class LoudnessSection : public InspectorSection {
  public:
    explicit LoudnessSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    QString setGain(const QString& typed);
    void setGain(double gain);

    std::optional<LoudnessPart> shown_;
    std::shared_ptr<StoredCalibration> calibration_;
    QLabel *source_, *preset_, *target_, *forecast_, *warning_, *estimation_;
    design::EntryField* gain_;
    QPushButton* reset_;
};

} // namespace orvane::views
