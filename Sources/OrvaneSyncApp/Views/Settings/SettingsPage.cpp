#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Settings/CalibrationPage.h"
#include "OrvaneSyncApp/Views/Settings/DeveloperPage.h"
#include "OrvaneSyncApp/Views/Settings/KeyboardPage.h"
#include "OrvaneSyncApp/Views/Settings/MetadataPage.h"
#include "OrvaneSyncApp/Views/Settings/ModelsPage.h"
#include "OrvaneSyncApp/Views/Settings/RolesPage.h"
#include "OrvaneSyncApp/Views/Settings/SettingRowView.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <string_view>

namespace orvane::views {

using namespace design;

namespace {

/// Translated, because users search in the language of the window.
QString shownTexts(const SettingTab& tab, const SettingSection& section, const SettingRow& row) {
    return QStringList{translated(tab.title), translated(section.title), translated(row.label),
                       translated(row.hint)}
        .join(QLatin1Char(' '));
}

} // namespace

SettingsPage::SettingsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : desktop_(desktop), model_(model), tab_(tab) {
    auto* content = new QWidget;
    column_ = new QVBoxLayout(content);
    column_->setSpacing(space::medium);
    column_->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(scroll);
    for (const SettingSection& section : tab.sections)
        if (section.form == SettingSection::Form::rows) addRows(section);
}

void SettingsPage::addRows(const SettingSection& section) {
    auto* box = new Section(translated(section.title));
    Part part{box, {}, {}, &section};
    auto* rows = new QVBoxLayout;
    rows->setSpacing(space::small);
    for (const SettingRow& row : section.rows) {
        auto* view = new SettingRowView(desktop_, model_, row);
        rows->addWidget(view);
        part.rows.push_back(view);
    }
    box->add(rows);
    column_->insertWidget(column_->count() - 1, box);
    parts_.push_back(std::move(part));
}

void SettingsPage::add(QWidget* section, const QString& searched, bool isFirst) {
    column_->insertWidget(isFirst ? 0 : column_->count() - 1, section);
    parts_.push_back({section, translated(tab_.title) + QLatin1Char(' ') + searched, {}, nullptr});
}

bool SettingsPage::showMatching(const QString& words) {
    const SearchWords searched(utf8(words));
    bool isAnythingLeft = false;
    for (const Part& part : parts_) {
        bool isShown = part.described == nullptr && searched.areIn(utf8(part.searched));
        for (SettingRowView* row : part.rows) {
            const bool matches = SettingsModel::matches(tab_, *part.described, row->row(), searched) ||
                                 searched.areIn(utf8(shownTexts(tab_, *part.described, row->row())));
            row->setVisible(matches);
            isShown = isShown || matches;
        }
        part.section->setVisible(isShown);
        isAnythingLeft = isAnythingLeft || isShown;
    }
    return isAnythingLeft;
}

void SettingsPage::refresh() {
    for (const Part& part : parts_)
        for (SettingRowView* row : part.rows) row->refresh();
}

bool hasPage(const SettingTab& tab) {
    return tab.page != SettingPage::models ||
           std::ranges::find(commands::allCommands(), std::string_view("models"), &commands::Command::id) !=
               commands::allCommands().end();
}

SettingsPage* makeSettingsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab) {
    switch (tab.page) {
    case SettingPage::roles:
        return new RolesPage(desktop, model, tab);
    case SettingPage::metadata:
        return new MetadataPage(desktop, model, tab);
    case SettingPage::keyboard:
        return new KeyboardPage(desktop, model, tab);
    case SettingPage::models:
        return new ModelsPage(desktop, model, tab);
    case SettingPage::calibration:
        return new CalibrationPage(desktop, model, tab);
    case SettingPage::developer:
        return new DeveloperPage(desktop, model, tab);
    default:
        return new SettingsPage(desktop, model, tab);
    }
}

} // namespace orvane::views
