#pragma once

#include "OrvaneDesignKit/EntryField.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"

#include <optional>

class QVBoxLayout;

namespace orvane::views {

/// Why the clip has no sound or may have the wrong sound, with buttons for the cures. Hidden if there is no
/// doubt.
class DoubtsSection : public InspectorSection {
  public:
    explicit DoubtsSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    void take(const CureStep& step);

    std::optional<DoubtsPart> shown_;
    QVBoxLayout* rows_;
};

/// The names of the clip, and what the export takes of it.
class NameSection : public InspectorSection {
  public:
    explicit NameSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    void preview(const QString& name);

    std::optional<NamePart> shown_;
    design::EntryField* name_;
    QLabel* exported_;
    QCheckBox *isPickup_, *isExcluded_, *isOutOfMulticam_;
};

/// The metadata from files, the recorder and imported lists.
class MetadataSection : public InspectorSection {
  public:
    explicit MetadataSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    std::optional<MetadataPart> shown_;
    QVBoxLayout* rows_;
    QPushButton *clearReport_, *clearLockit_;
};

/// The notes that people wrote about the take, and what is written on its slate.
class NotesSection : public InspectorSection {
  public:
    explicit NotesSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    bool isSearching() const { return search_ && !search_->isDone(); }
    /// Searches for the slate of the clip; while a search runs, stops it.
    void searchOrStop();
    void showSearch();

    std::optional<NotesPart> shown_;
    QVBoxLayout* rows_;
    QLabel *slate_, *proposal_;
    QPushButton *detect_, *accept_;
    std::optional<platform::Task> search_; ///< for a slate; the newest one of this section
};

} // namespace orvane::views
