#pragma once

#include "OrvaneDesignKit/EntryField.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"

#include <optional>

class QVBoxLayout;

namespace orvane::views {

/// Why the clip may not have the right sound, with what helps as buttons. Hidden without a doubt.
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

/// What the clip is called and what of it goes out.
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

/// What files, recorder and imported lists say.
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

/// What people wrote about the take, and what stands on its slate.
class NotesSection : public InspectorSection {
  public:
    explicit NotesSection(Desktop& desktop);

  protected:
    void show(const SyncGroup& clip) override;

  private:
    std::optional<NotesPart> shown_;
    QVBoxLayout* rows_;
    QLabel *slate_, *proposal_;
    QPushButton *detect_, *accept_;
};

} // namespace orvane::views
