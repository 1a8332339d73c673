#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <vector>

class QVBoxLayout;

namespace orvane::views {

class SettingRowView;

/// One tab of the settings: the rows of the catalogue, and what else belongs there.
class SettingsPage : public QWidget {
  public:
    /// The model outlives the page.
    SettingsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);

    /// Leaves only what the words match, all without words; says whether anything is left.
    virtual bool showMatching(const QString& words);
    /// The store has changed.
    virtual void refresh();
    /// It comes to the front for the first time: what takes long begins now.
    virtual void open() {}

  protected:
    Desktop& desktop() { return desktop_; }
    const SettingTab& tab() const { return tab_; }
    /// Puts a section below the others, above all rows with `isFirst`. `searched` is what the search finds it
    /// by.
    void add(QWidget* section, const QString& searched, bool isFirst = false);

  private:
    struct Part {
        QWidget* section;
        QString searched;
        std::vector<SettingRowView*> rows;
        const SettingSection* described = nullptr;
    };
    void addRows(const SettingSection& section);

    Desktop& desktop_;
    const SettingsModel& model_;
    const SettingTab& tab_;
    QVBoxLayout* column_;
    std::vector<Part> parts_;
};

/// Whether the table of commands has what the tab is for.
bool hasPage(const SettingTab& tab);
/// The page of a tab with all that belongs there.
SettingsPage* makeSettingsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);

} // namespace orvane::views
