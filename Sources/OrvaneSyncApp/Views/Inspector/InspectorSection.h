#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/FlowLayout.h"
#include "OrvaneDesignKit/FoldableSection.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QCheckBox>

#include <string_view>
#include <utility>
#include <vector>

class QGridLayout;

namespace orvane::views {

/// A part of the inspector about one clip. What it does are commands of the table for that clip; why one was
/// refused stands at its end.
class InspectorSection : public design::FoldableSection {
  public:
    InspectorSection(Desktop& desktop, const QString& name, const QString& title);

    /// Touches only what reads otherwise than before.
    void showClip(const SyncGroup& clip);

  protected:
    virtual void show(const SyncGroup& clip) = 0;

    /// Below what was added before.
    void add(QWidget* control);
    void add(QLayout* controls);

    Desktop& desktop() { return desktop_; }
    const UUID& clipID() const { return clipID_; }
    const SyncGroup* clip() const;
    /// The arguments of a command for the clip.
    JSON forClip() const;
    void run(std::string_view id) { run(id, forClip()); }
    void run(std::string_view id, JSON arguments, Desktop::Done done = {});
    /// The same from a field; gives why it was refused at once, for the field to show.
    QString runFromField(std::string_view id, JSON arguments);

    /// A button that runs a command for the clip, enabled while the command can do anything to it. Without a
    /// text it bears the command's title. `act`, where there is one, runs it.
    QPushButton* commandButton(std::string_view id, const QString& text = {}, std::function<void()> act = {});
    /// A box that runs a command when it is clicked; whoever made it keeps it as the clip is.
    QCheckBox* commandBox(std::string_view id, const QString& text);

  private:
    Desktop& desktop_;
    UUID clipID_;
    QLabel* problem_;
    std::vector<std::pair<QWidget*, std::string_view>> controls_;
};

/// Names at the left, what they name at the right; long words may break.
void addFact(QGridLayout* grid, const std::string& name, const std::string& value);
/// The text with places to break at within file names.
QString breakable(std::string_view utf8);
/// Takes everything out, for filling it again.
void clear(QLayout* layout);

} // namespace orvane::views
