#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <vector>

class QVBoxLayout;

namespace orvane::views {

class SettingRowView;

/// One tab of the settings: the rows of the catalogue, and the controls that only this tab has.
class SettingsPage : public QWidget {
  public:
    /// The model outlives the page.
    SettingsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);

    /// Shows only the rows that match the words; without words all. Returns whether any row is shown.
    virtual bool showMatching(const QString& words);
    /// Called after a change of the store.
    virtual void refresh();
    /// Called when the page is shown for the first time; work that takes long begins here.
    virtual void open() {}

  protected:
    Desktop& desktop() { return desktop_; }
    const SettingTab& tab() const { return tab_; }
    /// Adds a section below the others, or above all rows if `isFirst`. `searched`: the texts that the search
    /// finds it by.
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

/// Whether the table of commands contains the commands that the tab needs.
bool hasPage(const SettingTab& tab);
/// Makes the page of a tab, with its rows and its own controls.
SettingsPage* makeSettingsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);

} // namespace orvane::views
