#include "OrvaneSyncApp/Views/PresetBar.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

JSON named(std::string_view key, const std::string& name) {
    JSON arguments = JSON::object();
    arguments.set(key, name);
    return arguments;
}

QPushButton* tool(Glyph glyph, const QString& name) {
    QPushButton* made = button({}, glyph, Weight::quiet);
    made->setAccessibleName(name);
    made->setToolTip(name);
    return made;
}

/// The key of the preset that was applied last while no folder was open, for the next start.
QString presetPlace() { return QStringLiteral("preset"); }

} // namespace

PresetBar::PresetBar(Desktop& desktop, QWidget* parent)
    : QWidget(parent), desktop_(desktop), presets_(new Choice),
      active_(utf8(keptState::value(presetPlace()).toString())) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(space::tight);
    auto* heading = new QHBoxLayout;
    heading->setSpacing(0);
    heading->addWidget(label(tr("Preset")), 1);
    QPushButton* save = tool(Glyph::plus, tr("Save the present settings as a preset"));
    heading->addWidget(save);
    heading->addWidget(rename_ = tool(Glyph::rename, tr("Rename the preset")));
    heading->addWidget(delete_ = tool(Glyph::cross, tr("Delete the preset")));
    rows->addLayout(heading);
    presets_->setAccessibleName(tr("Preset of settings"));
    presets_->setToolTip(
        tr("Makes the settings of a preset the current ones, and stores them with the session's folder"));
    presets_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    rows->addWidget(presets_);
    nameRow_ = new QWidget;
    auto* nameRow = new QHBoxLayout(nameRow_);
    nameRow->setContentsMargins(0, 0, 0, 0);
    nameRow->addWidget(name_ = field(tr("Name of the preset"), tr("Name of the preset")), 1);
    nameRow->addWidget(take_ = button(tr("Save")));
    take_->setAccessibleName(tr("Take the name"));
    nameRow_->hide();
    rows->addWidget(nameRow_);
    rows->addWidget(problem_ = new Remark);
    connect(save, &QPushButton::clicked, this, [this] { askForName(false); });
    connect(rename_, &QPushButton::clicked, this, [this] { askForName(true); });
    connect(delete_, &QPushButton::clicked, this, [this] {
        if (!isAgreed(this, tr("Delete preset?"),
                      tr("“%1” can't be brought back. The current settings do not change.").arg(chosen()),
                      tr("Delete"), tr("Cancel")))
            return;
        run("deletePreset", named("name", utf8(chosen())), [self = QPointer(this)](const JSON&) {
            if (self) self->list();
        });
    });
    connect(take_, &QPushButton::clicked, this, [this] { takeName(); });
    connect(name_, &QLineEdit::returnPressed, this, [this] { takeName(); });
    connect(name_, &QLineEdit::textChanged, this,
            [this](const QString& name) { take_->setEnabled(!name.trimmed().isEmpty()); });
    connect(presets_, &QComboBox::activated, this, [this] {
        if (!chosen().isEmpty()) apply(chosen());
        show();
    });
    observation_ = desktop_.sessions().onChange([this](SessionField field) {
        if (field == SessionField::folderInfos || field == SessionField::currentSessionId) show();
    });
    // Settings change on any thread, and many at once.
    settingsObservation_ =
        desktop_.settings().onChange([self = QPointer(this), main = desktop_.mainThread()](const auto&) {
            main->post([self] {
                if (self) self->compare();
            });
        });
    show();
    list();
}

QString PresetBar::chosen() const { return presets_->currentData().toString(); }

void PresetBar::list() {
    run("presets", {}, [self = QPointer(this)](const JSON& found) {
        if (!self) return;
        self->names_.clear();
        if (const JSON::Array* all = found.elements())
            for (const JSON& name : *all)
                if (name.string() != nullptr) self->names_.push_back(*name.string());
        self->show();
    });
}

void PresetBar::show() {
    const auto folder = desktop_.sessions().places().folderOfOpenSession();
    const FolderInfo* info = folder ? desktop_.sessions().folders().find(*folder) : nullptr;
    const std::string active =
        folder ? (info != nullptr ? info->activePresetName.value_or("") : "") : active_;
    presets_->clear();
    presets_->addItem(names_.empty() ? tr("No preset is saved") : tr("No preset"));
    for (const std::string& name : names_) presets_->addItem(text(name), text(name));
    const auto at = std::ranges::find(names_, PresetManager::listedName(active));
    presets_->setCurrentIndex(at == names_.end() ? 0 : static_cast<int>(at - names_.begin()) + 1);
    presets_->setEnabled(!names_.empty());
    rename_->setEnabled(!chosen().isEmpty());
    delete_->setEnabled(!chosen().isEmpty());
    compare();
}

void PresetBar::compare() {
    const QString name = chosen();
    if (name.isEmpty()) return;
    if (std::exchange(isComparing_, true)) {
        isCompareAsked_ = true;
        return;
    }
    // If something changes while the file is read, it is compared again afterwards.
    const auto done = [self = QPointer(this), name](bool isInForce) {
        if (!self) return;
        self->isComparing_ = false;
        if (const int at = self->presets_->findData(name); at > 0)
            self->presets_->setItemText(at, isInForce ? name : tr("%1 (changed)").arg(name));
        if (std::exchange(self->isCompareAsked_, false)) self->compare();
    };
    desktop_.run(
        "presetInForce", named("name", utf8(name)),
        [done](const JSON& isInForce) { done(isInForce.boolean() == true); },
        [done](const QString&) { done(true); }); // there is no preset to compare with
}

void PresetBar::apply(const QString& name) {
    run("loadPreset", named("name", utf8(name)), [self = QPointer(this), name = utf8(name)](const JSON&) {
        if (self) self->applied(name);
    });
}

/// The settings are also stored in the open session's folder, because opening a session restores the settings
/// of its folder.
void PresetBar::applied(const std::string& name) {
    active_ = name;
    keptState::set(presetPlace(), text(name));
    if (const auto folder = desktop_.sessions().places().folderOfOpenSession()) {
        JSON arguments = named("forFolder", *folder);
        arguments.set("presetName", name);
        run("setActivePreset", std::move(arguments), {});
    }
    desktop_.sessions().places().captureSettings();
    show();
}

void PresetBar::askForName(bool isRename) {
    isRename_ = isRename;
    take_->setText(isRename ? tr("Rename") : tr("Save"));
    name_->setText(isRename ? chosen() : QString());
    take_->setEnabled(isRename);
    nameRow_->show();
    name_->setFocus();
    name_->selectAll();
}

void PresetBar::takeName() {
    const std::string name = utf8(name_->text().trimmed());
    if (name.empty()) return;
    const auto done = [self = QPointer(this), name](const JSON&) {
        if (!self) return;
        self->nameRow_->hide();
        self->applied(name);
        self->list();
    };
    if (!isRename_) return run("savePreset", named("name", name), done);
    JSON arguments = named("from", utf8(chosen()));
    arguments.set("to", name);
    run("renamePreset", std::move(arguments), done);
}

void PresetBar::run(std::string_view id, JSON arguments, Desktop::Done done) {
    problem_->show(Signal::none, {});
    desktop_.run(id, std::move(arguments), std::move(done), [self = QPointer(this)](const QString& why) {
        if (self) self->problem_->show(Signal::missing, why);
    });
}

} // namespace orvane::views
