#include "OrvaneSyncApp/Views/SessionsPanel.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/ViewModels/Settings/LockitTexts.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/PresetBar.h"
#include "OrvaneSyncApp/Views/ProjectPicker.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QAbstractItemDelegate>
#include <QDateTime>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLocale>
#include <QMenu>
#include <QPointer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <map>

namespace orvane::views {

using namespace design;

namespace {

constexpr int sessionRole = Qt::UserRole;
constexpr int folderRole = Qt::UserRole + 1;
constexpr int badgeColumn = 1;
constexpr int widestBadge = 110; // of its text; the name of the folder is beside it
constexpr int narrowest = 226;   // the texts of the presets need this width

/// In the kept state: the identifier and name of each project, one after the other.
QString lockitProjectsKey() { return QStringLiteral("lockitProjects"); }

JSON sessionArgument(const QString& session) {
    JSON arguments = JSON::object();
    arguments.set("sessionId", utf8(session));
    return arguments;
}

bool isSession(const QTreeWidgetItem* item) { return !item->data(0, sessionRole).isNull(); }
QString sessionOf(const QTreeWidgetItem* item) { return item->data(0, sessionRole).toString(); }
std::string folderOf(const QTreeWidgetItem* item) { return utf8(item->data(0, folderRole).toString()); }

QDateTime localTime(Date date) { return QDateTime::fromMSecsSinceEpoch(date.time_since_epoch().count()); }

/// A short text that distinguishes the session from others with the same name: the time of day if all of them
/// were made on one day, the day if no other one was made on that day, otherwise both.
QString whenMade(const SessionInfo& session, const std::vector<SessionInfo>& all) {
    const QDateTime own = localTime(session.created);
    std::ptrdiff_t namesakes = 0, ofSameDay = 0;
    for (const SessionInfo& other : all) {
        if (other.id == session.id || other.name != session.name) continue;
        ++namesakes;
        if (localTime(other.created).date() == own.date()) ++ofSameDay;
    }
    if (ofSameDay == 0) return QLocale().toString(own.date(), QLocale::ShortFormat);
    if (ofSameDay == namesakes) return QLocale().toString(own.time(), QLocale::ShortFormat);
    return QLocale().toString(own, QLocale::ShortFormat);
}

} // namespace

QString dayText(Date date) { return QLocale().toString(localTime(date), QLocale::ShortFormat); }

/// The tree of sessions. Reports where a session was dropped, but moves no row itself: the rows follow the
/// sessions.
class SessionsPanel::Tree : public QTreeWidget {
  public:
    std::function<void(QTreeWidgetItem* chosen)> deletionAsked;
    /// `folder`: absent if the session was dropped outside of all folders.
    std::function<void(const QString& session, const std::optional<std::string>& folder)> dropped;

    bool isEdited() const { return state() == EditingState; }

  protected:
    bool event(QEvent* event) override {
        // F2, which renames clips elsewhere, here renames the current row.
        if (event->type() == QEvent::ShortcutOverride &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_F2) {
            event->accept();
            return true;
        }
        return QTreeWidget::event(event);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Delete && currentItem() != nullptr)
            deletionAsked(currentItem());
        else
            QTreeWidget::keyPressEvent(event);
    }
    /// Only names can be edited.
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override {
        return QTreeWidget::edit(index.siblingAtColumn(0), trigger, event);
    }
    void dropEvent(QDropEvent* event) override {
        QTreeWidgetItem* target = itemAt(event->position().toPoint());
        if (target != nullptr && isSession(target)) target = target->parent();
        const QList<QTreeWidgetItem*> dragged = selectedItems();
        if (!dragged.isEmpty() && isSession(dragged.first()))
            dropped(sessionOf(dragged.first()),
                    target == nullptr ? std::nullopt : std::optional(folderOf(target)));
        event->setDropAction(Qt::IgnoreAction);
        event->accept();
    }
};

SessionsPanel::SessionsPanel(Desktop& desktop, QWidget* parent)
    : QWidget(parent), desktop_(desktop), tree_(new Tree), empty_(facts({})), problem_(new Remark) {
    restoreProjects();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(space::small, space::small, space::small, space::small);
    setMinimumWidth(narrowest);
    auto* heading = new QHBoxLayout;
    heading->setSpacing(0);
    heading->addWidget(label(tr("Sessions")), 1);
    const auto tool = [&](Glyph glyph, const QString& name) {
        QPushButton* made = button({}, glyph, Weight::quiet);
        made->setAccessibleName(name);
        made->setToolTip(name);
        heading->addWidget(made);
        return made;
    };
    connect(tool(Glyph::folder, tr("New folder")), &QPushButton::clicked, this, [this] { askForFolder(); });
    connect(tool(Glyph::plus, tr("New session")), &QPushButton::clicked, this,
            [this] { desktop_.run("newSession"); });
    rows->addLayout(heading);
    tree_->setHeaderHidden(true);
    tree_->setAccessibleName(tr("Sessions"));
    tree_->setColumnCount(2);
    tree_->header()->setStretchLastSection(false);
    tree_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree_->header()->setSectionResizeMode(badgeColumn, QHeaderView::ResizeToContents);
    tree_->setIndentation(space::medium);
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    tree_->setEditTriggers(QAbstractItemView::EditKeyPressed);
    tree_->setTextElideMode(Qt::ElideMiddle);
    tree_->setDragDropMode(QAbstractItemView::InternalMove);
    tree_->dropped = [this](const QString& session, const std::optional<std::string>& folder) {
        move(session, folder);
    };
    tree_->deletionAsked = [this](const QTreeWidgetItem* item) {
        isSession(item) ? askToDeleteSession(sessionOf(item)) : askToDeleteFolder(folderOf(item));
    };
    empty_->setText(tr("Every scan is kept here and opens again at once, with all that was decided."));
    rows->addWidget(empty_);
    rows->addWidget(tree_, 1);
    rows->addWidget(howToOpen_ = facts({}));
    rows->addWidget(problem_);
    rows->addWidget(new PresetBar(desktop));
    connect(tree_, &QTreeWidget::currentItemChanged, this, [this] { showHowToOpen(); });
    connect(tree_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) { open(item); });
    connect(tree_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) { renamed(item); });
    connect(tree_, &QTreeWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { showMenu(at); });
    connect(
        tree_->itemDelegate(), &QAbstractItemDelegate::closeEditor, this,
        [this] {
            if (isFillAsked_) fill();
        },
        Qt::QueuedConnection);
    observation_ = desktop_.sessions().onChange([this](SessionField) { fill(); });
    fill();
}

void SessionsPanel::fill() {
    // A name that is being typed must not be lost; the list is filled when the editing ends.
    if (tree_->isEdited()) {
        isFillAsked_ = true;
        return;
    }
    isFillAsked_ = false;
    isFilling_ = true;
    const std::vector<SessionInfo> sessions = inOrder();
    std::vector<std::string> shape = desktop_.sessions().places().folderNames();
    for (const SessionInfo& session : sessions)
        shape.push_back(session.id.text() + session.folder.value_or(""));
    // An analysis saves the session after every clip. If the rows were made again in between, a double click
    // that has begun would be lost.
    if (shape != shape_) makeRows(sessions);
    shape_ = std::move(shape);
    // The row of a session that was just opened becomes current. A row that the user chooses later stays
    // current. A new session is open before it is in the list.
    const std::optional<UUID>& open = desktop_.sessions().currentSessionId();
    QTreeWidgetItem* const row = open ? itemWith(sessionRole, text(open->text())) : nullptr;
    if (open != shownOpen_ && (row != nullptr || !open)) {
        tree_->setCurrentItem(row);
        shownOpen_ = open;
    }
    for (const SessionInfo& session : desktop_.sessions().sessions())
        if (QTreeWidgetItem* item = itemWith(sessionRole, text(session.id.text())))
            showSession(session, *item);
    for (const auto& [folder, badge] : badges_) {
        // Resets a name that was refused.
        if (QTreeWidgetItem* item = itemWith(folderRole, text(folder))) item->setText(0, text(folder));
        const QString project = badgeOf(folder);
        badge->setText(badge->fontMetrics()
                           .elidedText(project, Qt::ElideRight, widestBadge)
                           .replace(QLatin1Char('&'), QStringLiteral("&&")));
        badge->setAccessibleName(tr("LockitNetwork project of “%1”: %2").arg(text(folder), project));
        badge->setToolTip(badge->accessibleName() + QLatin1Char('\n') +
                          tr("Project of LockitNetwork, and prefix of the metadata"));
    }
    // The tree does not measure the buttons in its rows by itself.
    if (!badges_.empty()) tree_->resizeColumnToContents(badgeColumn);
    empty_->setVisible(desktop_.sessions().sessions().empty());
    isFilling_ = false;
    showHowToOpen();
}

/// A row that was only selected is not the work on screen, although it is marked more than that one's row.
void SessionsPanel::showHowToOpen() {
    const auto& open = desktop_.sessions().currentSessionId();
    const SessionInfo* shown = open ? desktop_.sessions().session(*open) : nullptr;
    const QTreeWidgetItem* current = tree_->currentItem();
    const bool isOther = shown != nullptr && current != nullptr && isSession(current) &&
                         sessionOf(current) != text(open->text());
    howToOpen_->setVisible(isOther);
    if (isOther)
        howToOpen_->setText(
            tr("“%1” is open. Double click or Return opens “%2”.").arg(text(shown->name), current->text(0)));
}

/// Sessions that were added after the first list come before it. A session that is opened or saved keeps its
/// row, so that the row under the mouse pointer stays the same.
std::vector<SessionInfo> SessionsPanel::inOrder() {
    const std::vector<SessionInfo>& all = desktop_.sessions().sessions();
    std::vector<SessionInfo> ordered;
    for (const SessionInfo& session : all)
        if (std::ranges::find(order_, session.id) == order_.end()) ordered.push_back(session);
    for (const UUID& id : order_)
        if (const SessionInfo* session = desktop_.sessions().session(id)) ordered.push_back(*session);
    order_.clear();
    for (const SessionInfo& session : ordered) order_.push_back(session.id);
    return ordered;
}

void SessionsPanel::makeRows(const std::vector<SessionInfo>& sessions) {
    const QTreeWidgetItem* current = tree_->currentItem();
    const QString chosen = current == nullptr ? QString() : sessionOf(current);
    badges_.clear();
    tree_->clear();
    std::map<std::string, QTreeWidgetItem*> folders;
    for (const std::string& name : desktop_.sessions().places().folderNames())
        folders[name] = addFolder(name);
    for (const SessionInfo& session : sessions) {
        const auto folder = session.folder ? folders.find(*session.folder) : folders.end();
        addSession(session, folder == folders.end() ? nullptr : folder->second);
    }
    if (QTreeWidgetItem* again = chosen.isEmpty() ? nullptr : itemWith(sessionRole, chosen))
        tree_->setCurrentItem(again);
    tree_->setRootIsDecorated(!folders.empty());
}

QTreeWidgetItem* SessionsPanel::addFolder(const std::string& name) {
    auto* item = new QTreeWidgetItem(tree_, {text(name)});
    item->setData(0, folderRole, text(name));
    item->setIcon(0, icon(Glyph::folder));
    item->setFlags((item->flags() | Qt::ItemIsEditable) & ~Qt::ItemIsDragEnabled);
    item->setExpanded(true);
    QPushButton* badge = button({}, Weight::quiet);
    badge->setFont(factsFont());
    badge->setProperty("compact", true); // no higher than a row of text
    badge->setObjectName(QStringLiteral("badge ") + text(name));
    badges_[name] = badge;
    connect(badge, &QPushButton::clicked, this, [this, name, badge] { pickProject(name, badge); });
    tree_->setItemWidget(item, badgeColumn, badge);
    return item;
}

void SessionsPanel::addSession(const SessionInfo& session, QTreeWidgetItem* folder) {
    auto* item = folder == nullptr ? new QTreeWidgetItem(tree_) : new QTreeWidgetItem(folder);
    item->setData(0, sessionRole, text(session.id.text()));
    item->setIcon(0, icon(Glyph::session));
    item->setFlags((item->flags() | Qt::ItemIsEditable) & ~Qt::ItemIsDropEnabled);
}

void SessionsPanel::showSession(const SessionInfo& session, QTreeWidgetItem& item) {
    const auto& all = desktop_.sessions().sessions();
    const bool hasNamesake = std::ranges::count(all, session.name, &SessionInfo::name) > 1;
    item.setFirstColumnSpanned(!hasNamesake);
    item.setText(0, text(session.name));
    item.setText(badgeColumn, hasNamesake ? whenMade(session, all) : QString());
    item.setFont(badgeColumn, factsFont());
    item.setToolTip(0, tr("%1\n%2 clips, %3 locked\nmade %4\nchanged %5")
                           .arg(text(session.name), QString::number(session.groupCount),
                                QString::number(session.lockedCount), dayText(session.created),
                                dayText(session.modified)));
    QFont name = item.font(0);
    name.setBold(desktop_.sessions().currentSessionId() == session.id);
    item.setFont(0, name);
}

QString SessionsPanel::badgeOf(const std::string& folder) {
    const FolderInfo* info = desktop_.sessions().folders().find(folder);
    const std::optional<std::string> project = info == nullptr ? std::nullopt : info->lockitProjectID;
    // The key store is asked only if there is a project to show.
    if (project && !account_) {
        account_ = desktop_.context().account();
        accountObservation_ = account_->onChange([this] { fill(); });
        account_->ready().whenDone([self = QPointer(this)](const std::exception_ptr&) {
            if (self) self->fill();
        });
    }
    return text(folderBadge(project, account_ && account_->state().isSignedIn, projects_));
}

/// The service is asked only when a project is chosen; the stored names are shown on the folders from the
/// start.
void SessionsPanel::keepProjects(const std::vector<LockitProject>& loaded) {
    projects_ = loaded;
    QStringList kept;
    for (const LockitProject& project : projects_) kept << text(project.uuid) << text(project.name);
    keptState::set(lockitProjectsKey(), kept);
}

void SessionsPanel::restoreProjects() {
    const QStringList kept = keptState::value(lockitProjectsKey()).toStringList();
    for (qsizetype i = 0; i + 1 < kept.size(); i += 2)
        projects_.push_back({utf8(kept[i]), utf8(kept[i + 1]), {}, {}, {}});
}

void SessionsPanel::pickProject(const std::string& folder, QWidget* below) {
    auto* picker = new ProjectPicker(
        desktop_, folder,
        [self = QPointer(this)](const ProjectPicker::Projects& loaded) {
            if (self) self->keepProjects(loaded);
        },
        this);
    connect(picker, &QObject::destroyed, this, [self = QPointer(this)] {
        if (self) self->fill();
    });
    picker->move(below->mapToGlobal(QPoint(0, below->height())));
    picker->show();
}

QTreeWidgetItem* SessionsPanel::itemWith(int role, const QString& value) const {
    for (QTreeWidgetItemIterator at(tree_); *at != nullptr; ++at)
        if ((*at)->data(0, role).toString() == value) return *at;
    return nullptr;
}

void SessionsPanel::rename(QTreeWidgetItem* item) {
    if (item != nullptr) tree_->editItem(item);
}

void SessionsPanel::open(QTreeWidgetItem* item) {
    if (item == nullptr || !isSession(item)) return;
    // Opening it again would only lose its undo steps.
    const auto& current = desktop_.sessions().currentSessionId();
    const bool isOpen = current && text(current->text()) == sessionOf(item);
    if (!isOpen)
        desktop_.run("loadSession", sessionArgument(sessionOf(item)), [self = QPointer(this)](const JSON&) {
            if (self && self->whenOpenWorkIsWanted) self->whenOpenWorkIsWanted();
        });
    else if (whenOpenWorkIsWanted)
        whenOpenWorkIsWanted();
}

void SessionsPanel::renamed(QTreeWidgetItem* item) {
    if (isFilling_) return;
    const std::string name = utf8(item->text(0).trimmed());
    if (isSession(item)) {
        JSON arguments = sessionArgument(sessionOf(item));
        arguments.set("name", name);
        if (!name.empty()) return run("renameSession", std::move(arguments));
    } else if (name != folderOf(item)) {
        JSON arguments = JSON::object();
        arguments.set("from", folderOf(item));
        arguments.set("to", name);
        return run(
            "renameFolder", std::move(arguments), [self = QPointer(this), name](const JSON& isRenamed) {
                if (!self || isRenamed.boolean() != false) return;
                self->fill();
                self->problem_->show(Signal::missing,
                                     name.empty() ? tr("A folder needs a name.")
                                                  : tr("There is a folder “%1” already.").arg(text(name)));
            });
    }
    fill();
}

void SessionsPanel::move(const QString& session, const std::optional<std::string>& folder) {
    JSON arguments = sessionArgument(session);
    arguments.setIfPresent("folder", folder);
    run("setSessionFolder", std::move(arguments));
}

void SessionsPanel::run(std::string_view id, JSON arguments, Desktop::Done done) {
    problem_->show(Signal::none, {});
    desktop_.run(id, std::move(arguments), std::move(done), [self = QPointer(this)](const QString& why) {
        if (!self) return;
        self->fill();
        self->problem_->show(Signal::missing, why);
    });
}

void SessionsPanel::showMenu(const QPoint& position) {
    QTreeWidgetItem* item = tree_->itemAt(position);
    QMenu menu(this);
    if (item != nullptr) {
        if (isSession(item))
            addSessionActions(menu, item);
        else
            addFolderActions(menu, item);
        menu.addSeparator();
    }
    menu.addAction(tr("New Folder…"), this, [this] { askForFolder(); });
    menu.exec(tree_->viewport()->mapToGlobal(position));
}

void SessionsPanel::addSessionActions(QMenu& menu, QTreeWidgetItem* item) {
    const QString session = sessionOf(item);
    // The rows may be made again while the menu is open, so the identifier is captured.
    menu.addAction(tr("Open"), this, [this, session] { open(itemWith(sessionRole, session)); });
    menu.addAction(tr("Rename"), this, [this, session] { rename(itemWith(sessionRole, session)); });
    if (const auto id = UUID::fromText(utf8(session)))
        if (const auto name = desktop_.sessions().list().suggestedName(*id))
            menu.addAction(tr("Auto-name: %1").arg(text(*name)), this, [this, session, name] {
                JSON arguments = sessionArgument(session);
                arguments.set("name", *name);
                run("renameSession", std::move(arguments));
            });
    QMenu* into = menu.addMenu(tr("Move to Folder"));
    into->addAction(tr("None"), this, [this, session] { move(session, std::nullopt); });
    for (const std::string& name : desktop_.sessions().places().folderNames())
        into->addAction(text(name), this, [this, session, name] { move(session, name); });
    menu.addSeparator();
    menu.addAction(tr("Delete…"), this, [this, session] { askToDeleteSession(session); });
}

void SessionsPanel::askToDeleteSession(const QString& id) {
    const auto known = UUID::fromText(utf8(id));
    const SessionInfo* session = known ? desktop_.sessions().session(*known) : nullptr;
    if (session == nullptr) return;
    QString decided = tr("%1 locked").arg(session->lockedCount);
    if (desktop_.sessions().currentSessionId() == known)
        if (const auto all = ClipDecisions::of(desktop_.controller()); all.any())
            decided = decisionsText(all);
    if (isAgreed(
            this, tr("Delete session?"),
            tr("“%1” is deleted with its %2 and all decisions about them: %3. The media stay as they are. "
               "This can't be taken back.")
                .arg(text(session->name), translatedSentence(counted(session->groupCount, "clip", "clips")),
                     decided),
            tr("Delete"), tr("Cancel")))
        run("deleteSession", sessionArgument(id));
}

void SessionsPanel::askToDeleteFolder(const std::string& folder) {
    const bool isUsed = std::ranges::any_of(desktop_.sessions().sessions(),
                                            [&](const SessionInfo& one) { return one.folder == folder; });
    if (isUsed) return problem_->show(Signal::doubtful, tr("Move or delete all sessions first"));
    if (!isAgreed(
            this, tr("Delete folder?"),
            tr("“%1” is empty. Its settings and its project of LockitNetwork go with it.").arg(text(folder)),
            tr("Delete"), tr("Cancel")))
        return;
    JSON arguments = JSON::object();
    arguments.set("name", folder);
    run("deleteEmptyFolder", std::move(arguments));
}

void SessionsPanel::addFolderActions(QMenu& menu, QTreeWidgetItem* item) {
    const std::string folder = folderOf(item);
    menu.addAction(tr("Rename"), this, [this, folder] { rename(itemWith(folderRole, text(folder))); });
    menu.addAction(tr("LockitNetwork Project…"), this, [this, folder] { pickProject(folder, tree_); });
    QAction* remove =
        menu.addAction(tr("Delete Empty Folder…"), this, [this, folder] { askToDeleteFolder(folder); });
    remove->setEnabled(item->childCount() == 0);
    if (item->childCount() > 0) {
        menu.setToolTipsVisible(true);
        remove->setToolTip(tr("Move or delete all sessions first"));
    }
}

void SessionsPanel::askForFolder() {
    const QString name = QInputDialog::getText(this, tr("New folder"), tr("Name of the folder"));
    if (name.trimmed().isEmpty()) return;
    JSON arguments = JSON::object();
    arguments.set("name", utf8(name));
    run("createFolder", std::move(arguments), [self = QPointer(this), name](const JSON& isMade) {
        if (self && isMade.boolean() == false)
            self->problem_->show(Signal::missing, tr("There is a folder “%1” already.").arg(name.trimmed()));
    });
}

} // namespace orvane::views
