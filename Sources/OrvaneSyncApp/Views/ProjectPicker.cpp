#include "OrvaneSyncApp/Views/ProjectPicker.h"

#include "OrvaneSyncApp/Controllers/LockitController.h"
#include "OrvaneSyncApp/ViewModels/Settings/LockitTexts.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>

namespace orvane::views {

using namespace design;

namespace {
constexpr int pickerWidth = 340;
constexpr int listHeight = 200;
} // namespace

ProjectPicker::ProjectPicker(Desktop& desktop, std::string folder,
                             std::function<void(const Projects&)> loaded, QWidget* parent)
    : QFrame(parent, Qt::Popup), desktop_(desktop), folder_(std::move(folder)), loaded_(std::move(loaded)),
      account_(desktop.context().account()), message_(label(QString())), list_(new QListWidget),
      retry_(button(tr("Retry"), Glyph::refresh)), remove_(button(tr("Remove assignment"))) {
    setAttribute(Qt::WA_DeleteOnClose);
    setProperty("panel", true);
    setFixedWidth(pickerWidth);
    auto* rows = new QVBoxLayout(this);
    rows->addWidget(label(tr("LockitNetwork project of “%1”").arg(text(folder_))));
    rows->addWidget(message_);
    list_->setAccessibleName(tr("Projects of LockitNetwork"));
    list_->setFixedHeight(listHeight);
    list_->hide();
    rows->addWidget(list_);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(remove_);
    buttons->addStretch(1);
    buttons->addWidget(retry_);
    rows->addLayout(buttons);
    auto* prefix = field(tr("Prefix of the metadata"), tr("Prefix of the metadata"));
    const FolderInfo* info = desktop_.sessions().folders().find(folder_);
    if (info != nullptr && info->metadataPrefix) prefix->setText(text(*info->metadataPrefix));
    prefix->setToolTip(tr("Put in front of every mapped metadata value of this folder"));
    rows->addWidget(facts(tr("Prefix of the metadata")));
    rows->addWidget(prefix);
    remove_->setVisible(info != nullptr && info->lockitProjectID);
    connect(prefix, &QLineEdit::editingFinished, this, [this, prefix] {
        JSON arguments = JSON::object();
        arguments.set("forFolder", folder_);
        if (!prefix->text().isEmpty()) arguments.set("prefix", utf8(prefix->text()));
        desktop_.run("setMetadataPrefix", std::move(arguments));
    });
    connect(retry_, &QPushButton::clicked, this, [this] { load(); });
    connect(remove_, &QPushButton::clicked, this, [this] { assign(JSON()); });
    connect(list_, &QListWidget::itemActivated, this, [this](const QListWidgetItem* item) {
        assign(projects_.at(static_cast<std::size_t>(list_->row(item))).uuid);
    });
    connect(list_, &QListWidget::itemClicked, list_, &QListWidget::itemActivated);
    say(tr("Loading…"), false);
    account_->ready().whenDone([self = QPointer(this)](const std::exception_ptr&) {
        if (self) self->load();
    });
}

void ProjectPicker::load() {
    if (!account_->state().isSignedIn && !account_->state().isKeyStoreLocked)
        return say(translatedSentence(projectPicker::notSignedIn), false);
    say(tr("Loading…"), false);
    const auto found = std::make_shared<Projects>();
    LockitController::loadProjects(account_, found)
        .whenDone([self = QPointer(this), found](const std::exception_ptr& raised) {
            if (!self) return;
            try {
                if (raised) std::rethrow_exception(raised);
                self->showProjects(std::move(*found));
            } catch (const std::exception& why) {
                // Without an account, trying again has no use.
                self->say(translatedSentence(why.what()),
                          self->account_->state().isSignedIn || self->account_->state().isKeyStoreLocked);
            } catch (const platform::Stopped&) {
                return;
            }
        });
}

void ProjectPicker::showProjects(Projects projects) {
    projects_ = std::move(projects);
    loaded_(projects_);
    if (projects_.empty()) return say(translatedSentence(projectPicker::noProjects), false);
    say({}, false);
    const FolderInfo* info = desktop_.sessions().folders().find(folder_);
    list_->clear();
    for (const LockitProject& project : projects_) {
        auto* item = new QListWidgetItem(text(project.name), list_);
        if (info != nullptr && info->lockitProjectID == project.uuid) {
            item->setIcon(icon(Glyph::check));
            list_->setCurrentItem(item);
        }
    }
    list_->show();
    list_->setFocus();
    adjustSize();
}

void ProjectPicker::say(const QString& message, bool mayRetry) {
    message_->setText(message);
    message_->setVisible(!message.isEmpty());
    retry_->setVisible(mayRetry);
    list_->hide();
    adjustSize();
}

void ProjectPicker::assign(const JSON& projectID) {
    JSON arguments = JSON::object();
    arguments.set("forFolder", folder_);
    arguments.set("projectID", projectID);
    desktop_.run("setLockitProject", std::move(arguments));
    close();
}

} // namespace orvane::views
