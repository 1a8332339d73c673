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

/// A part of the inspector about one clip. Its actions are commands of the table for that clip; if one is
/// refused, the reason is shown at the end of the section.
class InspectorSection : public design::FoldableSection {
  public:
    InspectorSection(Desktop& desktop, const QString& name, const QString& title);

    /// Changes only what differs from what is shown.
    void showClip(const SyncGroup& clip);

  protected:
    virtual void show(const SyncGroup& clip) = 0;

    /// Adds below what was added before.
    void add(QWidget* control);
    void add(QLayout* controls);

    Desktop& desktop() { return desktop_; }
    const UUID& clipID() const { return clipID_; }
    const SyncGroup* clip() const;
    /// The arguments of a command for the clip.
    JSON forClip() const;
    void run(std::string_view id) { run(id, forClip()); }
    platform::Task run(std::string_view id, JSON arguments, Desktop::Done done = {});
    /// The same for a field. Returns why the command was refused, so that the field can show it; empty: it
    /// ran.
    QString runFromField(std::string_view id, JSON arguments);

    /// A button that runs a command for the clip, enabled while the command is enabled for the clip. If
    /// `text` is empty, the button has the command's title. If `act` is set, it is called instead and runs
    /// the command.
    QPushButton* commandButton(std::string_view id, const QString& text = {}, std::function<void()> act = {});
    /// A box that runs a command when it is clicked. The caller keeps it up to date with the clip.
    QCheckBox* commandBox(std::string_view id, const QString& text);

  private:
    Desktop& desktop_;
    UUID clipID_;
    QLabel* problem_;
    std::vector<std::pair<QWidget*, std::string_view>> controls_;
};

/// Adds a row with the name at the left and the value at the right; long words may be broken.
void addFact(QGridLayout* grid, const std::string& name, const std::string& value);
/// The same for a file, of which `FileNames` gave the name.
void addFileFact(QGridLayout* grid, const std::string& name, const std::string& file);
/// The text with places where lines may break within file names.
QString breakable(std::string_view utf8);
/// The same for a file name; a folder in front of it is on its own line, so that the name is broken only
/// where it is wider than a line.
QString breakableFile(std::string_view utf8);
/// Removes everything, so that the layout can be filled again.
void clear(QLayout* layout);

} // namespace orvane::views
