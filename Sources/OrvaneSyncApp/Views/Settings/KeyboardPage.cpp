#include "OrvaneSyncApp/Views/Settings/KeyboardPage.h"

#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutFiles.h"

#include <QAction>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr int keyWidth = 200;
constexpr int profileWidth = 220;

JSON bindingOf(ShortcutAction action, const std::string& key) {
    JSON arguments = JSON::object();
    arguments.set("action", rawValue(action));
    arguments.set("key", key);
    return arguments;
}

/// What the action does. The help text begins with the standard key, but the user may have chosen another.
QString withoutKey(const QString& help) {
    const QString dash = QStringLiteral(" — ");
    const qsizetype at = help.indexOf(dash);
    if (at < 0) return help;
    const QString what = help.mid(at + dash.size());
    return what.left(1).toUpper() + what.mid(1);
}

QPushButton* tool(Glyph glyph, const QString& name) {
    QPushButton* made = button({}, glyph, Weight::quiet);
    made->setToolTip(name);
    made->setAccessibleName(name);
    QSizePolicy keepsPlace = made->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    made->setSizePolicy(keepsPlace);
    return made;
}

} // namespace

KeyboardPage::KeyboardPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : SettingsPage(desktop, model, tab), center_(desktop.context().shortcuts()), recorder_(center_) {
    add(profileSection_ = makeProfiles(), tr("profile import export reset"), true);
    add(actionSection_ = makeActions(), tr("shortcut key action"));
    observation_ = center_->onChange([this](ShortcutField field) {
        if (field == ShortcutField::bindings) {
            showBindings();
            compare();
        } else {
            showProfiles();
        }
    });
    showBindings();
    showProfiles();
    if (center_->problem()) banner_->show(Signal::doubtful, translatedSentence(*center_->problem()));
}

QWidget* KeyboardPage::makeProfiles() {
    auto* section = new Section(tr("Profiles"));
    section->add(banner_ = new Banner);
    banner_->setObjectName(QStringLiteral("keyboardBanner"));
    auto* load = new QHBoxLayout;
    profiles_ = new Choice;
    profiles_->setAccessibleName(tr("Profile of keys"));
    profiles_->setToolTip(tr("Makes the keys of a profile the current ones"));
    profiles_->setMinimumWidth(profileWidth);
    deleteProfile_ = button(tr("Delete"));
    deleteProfile_->setToolTip(tr("Deletes the profile; the present keys stay"));
    load->addWidget(profiles_);
    load->addWidget(deleteProfile_);
    load->addStretch(1);
    QPushButton* import = button(tr("Import…"));
    QPushButton* write = button(tr("Export…"));
    QPushButton* reset = button(tr("Reset…"), Glyph::undo);
    reset->setObjectName(QStringLiteral("resetShortcuts"));
    for (QPushButton* one : {import, write}) load->addWidget(one);
    section->add(load);
    auto* save = new QHBoxLayout;
    profileName_ = field(tr("Name of the profile"), tr("Name of a new profile"));
    profileName_->setFixedWidth(profileWidth);
    QPushButton* saveProfile = button(tr("Save Profile"));
    saveProfile->setEnabled(false);
    save->addWidget(profileName_);
    save->addWidget(saveProfile);
    save->addStretch(1);
    save->addWidget(reset);
    section->add(save);
    connect(profiles_, &QComboBox::activated, this, [this](int index) {
        if (index > 0) runOnProfile("loadShortcutProfile", profiles_->itemData(index).toString());
    });
    connect(deleteProfile_, &QPushButton::clicked, this, [this] {
        banner_->show(Signal::doubtful,
                      tr("Delete the profile “%1”? It can't be brought back; the present keys stay.")
                          .arg(profiles_->currentData().toString()),
                      tr("Delete"), [this, name = profiles_->currentData().toString()] {
                          runOnProfile("deleteShortcutProfile", name);
                      });
    });
    connect(profileName_, &QLineEdit::textChanged, saveProfile,
            [saveProfile](const QString& name) { saveProfile->setEnabled(!name.trimmed().isEmpty()); });
    const auto saveNamed = [this] {
        if (profileName_->text().trimmed().isEmpty()) return;
        runOnProfile("saveShortcutProfile", profileName_->text());
        profileName_->clear();
    };
    connect(saveProfile, &QPushButton::clicked, this, saveNamed);
    connect(profileName_, &QLineEdit::returnPressed, this, saveNamed);
    connect(reset, &QPushButton::clicked, this, [this] { askForReset(); });
    connect(import, &QPushButton::clicked, this, [this] {
        const QString path =
            QFileDialog::getOpenFileName(this, tr("Import shortcuts"), {}, tr("JSON (*.json)"));
        if (path.isEmpty()) return;
        JSON arguments = JSON::object();
        arguments.set("path", utf8(path));
        run("importShortcuts", std::move(arguments));
    });
    connect(write, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getSaveFileName(
            this, tr("Export shortcuts"), QStringLiteral("shortcuts.json"), tr("JSON (*.json)"));
        if (path.isEmpty()) return;
        JSON arguments = JSON::object();
        arguments.set("output", utf8(path));
        arguments.set("overwrite", true); // the dialog has asked the user
        run("exportShortcuts", std::move(arguments));
    });
    return section;
}

QWidget* KeyboardPage::makeActions() {
    auto* section = new Section(tr("Keys"));
    section->add(facts(tr("Press a key of the table and then the new key. Escape leaves it as it was.")));
    std::optional<ShortcutCategory> last;
    for (const ShortcutRow& row : shortcutRows(center_->bindings())) {
        if (last != category(row.action)) {
            last = category(row.action);
            QLabel* heading = facts(translated(label(*last)));
            headings_.push_back(heading);
            section->add(heading);
        }
        section->add(makeLine(row));
    }
    return section;
}

QWidget* KeyboardPage::makeLine(const ShortcutRow& row) {
    auto* whole = new QWidget;
    auto* grid = new QGridLayout(whole);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(2);
    grid->setColumnStretch(0, 1);
    const QString name = translated(row.label);
    Line line{row.action,
              whole,
              button({}),
              tool(Glyph::cross, tr("Take the key from “%1”").arg(name)),
              tool(Glyph::undo, tr("Reset the key of “%1” to default").arg(name)),
              new Remark,
              button(tr("Take the Key"))};
    line.key->setObjectName(text(rawValue(row.action)));
    line.key->setFixedWidth(keyWidth);
    line.key->setToolTip(tr("Press, then press the new key"));
    line.key->installEventFilter(this);
    line.settle->setObjectName(QStringLiteral("settle ") + text(rawValue(row.action)));
    line.settle->setToolTip(tr("Takes the key from the other action"));
    QLabel* what = label(name);
    what->setToolTip(withoutKey(translatedSentence(row.help)));
    grid->addWidget(what, 0, 0);
    grid->addWidget(line.key, 0, 1, 2, 1, Qt::AlignVCenter);
    grid->addWidget(line.clear, 0, 2, 2, 1, Qt::AlignVCenter);
    grid->addWidget(line.reset, 0, 3, 2, 1, Qt::AlignVCenter);
    grid->addWidget(facts(withoutKey(translatedSentence(row.help))), 1, 0);
    auto* conflict = new QHBoxLayout;
    conflict->addWidget(line.conflict, 1);
    conflict->addWidget(line.settle);
    grid->addLayout(conflict, 2, 0, 1, 4);
    const ShortcutAction action = row.action;
    connect(line.key, &QPushButton::clicked, this, [this, action] { record(action); });
    connect(line.clear, &QPushButton::clicked, this,
            [this, action] { bind(action, Shortcut::unbound.text()); });
    connect(line.reset, &QPushButton::clicked, this,
            [this, action] { bind(action, defaultShortcut(action).text()); });
    connect(line.settle, &QPushButton::clicked, this, [this, action] { settle(action); });
    lines_.push_back(line);
    return whole;
}

void KeyboardPage::showBindings() {
    const std::vector<ShortcutRow> rows = shortcutRows(center_->bindings());
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        Line& line = lines_[i];
        const ShortcutRow& row = rows[i];
        const bool isRecorded = recorder_.recordedAction() == row.action;
        line.key->setText(isRecorded ? tr("Press a key…") : translatedKey(row.key));
        line.key->setAccessibleName(tr("Key of “%1”: %2").arg(translated(row.label), line.key->text()));
        line.clear->setVisible(!row.isUnbound);
        line.reset->setVisible(!row.isDefault);
        QStringList conflicts;
        if (!row.conflict.empty()) conflicts << translatedSentence(row.conflict);
        if (const auto bound = center_->bindings().find(row.action);
            bound != center_->bindings().end() && !row.isDefault)
            if (const QString entry = menuEntryWith(bound->second); !entry.isEmpty())
                conflicts
                    << (keyAction(row.action)
                            ? tr("“%1” of the menu has this key too; in the review this action gets it.")
                            : tr("“%1” of the menu has this key and keeps it; choose another."))
                           .arg(entry);
        line.conflict->show(Signal::doubtful, conflicts.join(QLatin1Char('\n')));
        line.settle->setVisible(!row.conflict.empty());
    }
}

QString KeyboardPage::menuEntryWith(const Shortcut& shortcut) const {
    const QWidget* main = window()->parentWidget();
    const QAction* entry = main == nullptr ? nullptr : entryWithKey(*main, menuKey(shortcut));
    return entry == nullptr ? QString() : entry->text().remove(QLatin1Char('&'));
}

void KeyboardPage::showProfiles() {
    const auto& current = center_->currentProfileName();
    profiles_->clear();
    profiles_->addItem(tr("Choose a profile"));
    for (const std::string& name : center_->availableProfiles()) profiles_->addItem(text(name), text(name));
    const int index = current ? profiles_->findData(text(*current)) : 0;
    profiles_->setCurrentIndex(std::max(index, 0));
    profiles_->setEnabled(profiles_->count() > 1);
    deleteProfile_->setEnabled(profiles_->currentIndex() > 0);
    compare();
}

void KeyboardPage::compare() {
    const auto& current = center_->currentProfileName();
    if (!current) return;
    const auto read = [folder = utf8(QFileInfo(text(center_->bindingsFile())).path()),
                       name = *current]() -> std::optional<ShortcutBindings> {
        try {
            return ShortcutFiles(folder).readProfile(name);
        } catch (const std::exception&) {
            return std::nullopt; // there is no profile to compare with
        }
    };
    inBackground(this, read, [this, name = text(*current)](const std::optional<ShortcutBindings>& kept) {
        if (const int at = profiles_->findData(name); at > 0)
            profiles_->setItemText(at, kept && *kept != center_->bindings() ? tr("%1 (changed)").arg(name)
                                                                            : name);
    });
}

void KeyboardPage::record(ShortcutAction action) {
    banner_->clear();
    recorder_.record(action);
    showBindings();
}

void KeyboardPage::endRecording() {
    // A recording ends only with a key; Escape is the key that changes nothing.
    if (const auto escape = keyEventNamed(Shortcut::SpecialKey::escape, {}, true, false))
        recorder_.handle(*escape);
    showBindings();
}

bool KeyboardPage::eventFilter(QObject* watched, QEvent* event) {
    const auto line = std::ranges::find(lines_, watched, [](const Line& one) { return one.key; });
    if (line == lines_.end() || recorder_.recordedAction() != line->action)
        return SettingsPage::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::ShortcutOverride: // so that no menu takes the key
        event->accept();
        return true;
    case QEvent::KeyPress: {
        const auto pressed = keyEventOf(*static_cast<QKeyEvent*>(event));
        if (!pressed || !recorder_.handle(*pressed)) return true;
        showBindings();
        if (pressed->keyCode != Shortcut::KeyCode::escape && !shortcutFor(*pressed))
            line->conflict->show(
                Signal::missing,
                tr("This key cannot be chosen. Letters, 0 , . + − [ ], Space, Return and the "
                   "arrows can, also with Ctrl, Alt or Shift."));
        return true;
    }
    case QEvent::KeyRelease:
        return true;
    case QEvent::FocusOut:
        endRecording();
        break;
    default:
        break;
    }
    return SettingsPage::eventFilter(watched, event);
}

void KeyboardPage::bind(ShortcutAction action, const std::string& key) {
    run("setShortcut", bindingOf(action, key));
}

void KeyboardPage::settle(ShortcutAction action) {
    for (const ShortcutRow& row : shortcutRows(center_->bindings()))
        if (row.action == action)
            for (const ShortcutAction other : row.sharedWith) bind(other, Shortcut::unbound.text());
}

void KeyboardPage::run(std::string_view id, JSON arguments) {
    banner_->clear();
    const QPointer self(this);
    desktop().run(
        id, std::move(arguments),
        [self](const JSON&) {
            if (self) self->compare(); // a profile may have been overwritten
        },
        [self](const QString& why) {
            if (self) self->banner_->show(Signal::missing, why);
        });
}

void KeyboardPage::runOnProfile(std::string_view id, const QString& name) {
    JSON arguments = JSON::object();
    arguments.set("name", utf8(name));
    run(id, std::move(arguments));
}

void KeyboardPage::askForReset() {
    banner_->show(Signal::doubtful,
                  tr("Reset all shortcuts?") + QLatin1Char('\n') +
                      tr("Restores every action to its default binding. Your saved profiles aren't touched — "
                         "you can re-load one from the Profile menu above."),
                  tr("Reset"), [this] { run("resetShortcuts"); });
}

bool KeyboardPage::showMatching(const QString& words) {
    bool isAnythingLeft = SettingsPage::showMatching(words);
    const std::vector<ShortcutRow> rows = shortcutRows(center_->bindings());
    // If the words are found in the title of the tab, all of its rows are shown.
    const SearchWords searched(utf8(words));
    const bool isAll = searched.areIn(tab().title + "\n" + utf8(translated(tab().title)));
    bool isAnyKeyLeft = false;
    std::size_t heading = 0;
    std::vector<bool> isHeadingShown(headings_.size(), false);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (i > 0 && category(rows[i].action) != category(rows[i - 1].action)) ++heading;
        const QString shown =
            translated(rows[i].label) + QLatin1Char('\n') + translatedSentence(rows[i].help);
        const bool isShown = isAll || matches(rows[i], searched) || searched.areIn(utf8(shown));
        lines_[i].whole->setVisible(isShown);
        isAnyKeyLeft = isAnyKeyLeft || isShown;
        isHeadingShown[heading] = isHeadingShown[heading] || isShown;
    }
    for (std::size_t i = 0; i < headings_.size(); ++i) headings_[i]->setVisible(isHeadingShown[i]);
    actionSection_->setVisible(isAnyKeyLeft);
    return isAnythingLeft || isAnyKeyLeft;
}

} // namespace orvane::views
