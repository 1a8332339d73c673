#pragma once

#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"

#include <optional>

class QVBoxLayout;

namespace orvane::views {

/// The recordings that overlap the clip: choose, confirm, attach, remove.
class RecordingsSection : public InspectorSection {
  public:
    explicit RecordingsSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    void fill(const RecordingsPart& part);
    QWidget* recordingRow(const RecordingsPart& part, std::size_t index);
    void addKeys();
    /// Decides the clip's match for the recording at that index.
    void use(std::size_t index);
    void choose(std::size_t index); ///< by its key; says why if it does nothing
    /// Searches the clap of what was attached to the clip. If that is not under the picture, says what to do.
    Desktop::Done whenAttached();
    void chooseFromPool();
    void chooseFile();

    std::optional<RecordingsPart> shown_;
    UUID shownClip_;
    QLabel* prompt_;
    QVBoxLayout* rows_;
    QPushButton *confirm_, *attach_, *attachFile_, *detach_;
    QCheckBox* isSilent_;
};

} // namespace orvane::views
