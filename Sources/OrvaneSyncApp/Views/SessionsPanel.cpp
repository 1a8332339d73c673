#include "OrvaneSyncApp/Views/SessionsPanel.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <map>

namespace orvane::views {

using namespace design;

namespace {

constexpr int idRole = Qt::UserRole;
constexpr int folderRole = Qt::UserRole + 1;

QString dayText(Date date) {
    const auto time = QDateTime::fromMSecsSinceEpoch(date.time_since_epoch().count());
    return QLocale().toString(time, QLocale::ShortFormat);
}

JSON sessionArgument(const QTreeWidgetItem* item) {
    JSON arguments = JSON::object();
    arguments.set("sessionId", utf8(item->data(0, idRole).toString()));
    return arguments;
}

} // namespace

SessionsPanel::SessionsPanel(Desktop& desktop, QWidget* parent)
    : QWidget(parent), desktop_(desktop), tree_(new QTreeWidget), empty_(facts({})) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(space::small, space::small, space::small, space::small);
    auto* heading = new QHBoxLayout;
    heading->addWidget(label(tr("Sessions")), 1);
    auto* add = button({}, Glyph::plus, Weight::quiet);
    add->setAccessibleName(tr("New session"));
    add->setToolTip(tr("New session"));
    heading->addWidget(add);
    rows->addLayout(heading);
    tree_->setHeaderHidden(true);
    tree_->setAccessibleName(tr("Sessions"));
    tree_->setColumnCount(1);
    tree_->setIndentation(space::medium);
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    tree_->setEditTriggers(QAbstractItemView::EditKeyPressed);
    tree_->setTextElideMode(Qt::ElideMiddle);
    rows->addWidget(tree_, 1);
    empty_->setText(tr("Every scan is kept here and opens again at once, with all that was decided."));
    rows->addWidget(empty_);
    connect(add, &QPushButton::clicked, this, [this] { desktop_.run("newSession"); });
    connect(tree_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) { open(item); });
    connect(tree_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) { renamed(item); });
    connect(tree_, &QTreeWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { showMenu(at); });
    observation_ = desktop_.sessions().onChange([this](SessionField) { fill(); });
    fill();
}

void SessionsPanel::fill() {
    isFilling_ = true;
    tree_->clear();
    std::map<std::string, QTreeWidgetItem*> folders;
    for (const std::string& name : desktop_.sessions().folderNames()) {
        auto* item = new QTreeWidgetItem(tree_, {text(name)});
        item->setData(0, folderRole, text(name));
        item->setIcon(0, icon(Glyph::folder));
        item->setExpanded(true);
        folders[name] = item;
    }
    for (const SessionInfo& session : desktop_.sessions().sessions()) {
        const auto folder = session.folder ? folders.find(*session.folder) : folders.end();
        auto* item =
            folder == folders.end() ? new QTreeWidgetItem(tree_) : new QTreeWidgetItem(folder->second);
        item->setText(0, text(session.name));
        item->setData(0, idRole, text(session.id.text()));
        item->setIcon(0, icon(Glyph::session));
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setToolTip(0, tr("%1\n%2 clips, %3 locked\nchanged %4")
                                .arg(text(session.name))
                                .arg(session.groupCount)
                                .arg(session.lockedCount)
                                .arg(dayText(session.modified)));
        if (desktop_.sessions().currentSessionId() == session.id) {
            QFont bold = item->font(0);
            bold.setBold(true);
            item->setFont(0, bold);
        }
    }
    tree_->setRootIsDecorated(!folders.empty());
    empty_->setVisible(desktop_.sessions().sessions().empty());
    isFilling_ = false;
}

void SessionsPanel::open(QTreeWidgetItem* item) {
    if (!item->data(0, idRole).isNull()) desktop_.run("loadSession", sessionArgument(item));
}

void SessionsPanel::renamed(QTreeWidgetItem* item) {
    if (isFilling_ || item->data(0, idRole).isNull()) return;
    JSON arguments = sessionArgument(item);
    arguments.set("name", utf8(item->text(0)));
    desktop_.run("renameSession", std::move(arguments));
}

void SessionsPanel::showMenu(const QPoint& position) {
    QTreeWidgetItem* item = tree_->itemAt(position);
    QMenu menu(this);
    if (item != nullptr && !item->data(0, idRole).isNull()) {
        menu.addAction(tr("Open"), this, [this, item] { open(item); });
        menu.addAction(tr("Rename"), this, [this, item] { tree_->editItem(item); });
        QMenu* into = menu.addMenu(tr("Move to Folder"));
        const auto move = [this, item](const JSON& folder) {
            JSON arguments = sessionArgument(item);
            arguments.set("folder", folder);
            desktop_.run("setSessionFolder", std::move(arguments));
        };
        into->addAction(tr("None"), this, [move] { move(JSON()); });
        for (const std::string& name : desktop_.sessions().folderNames())
            into->addAction(text(name), this, [move, name] { move(JSON(name)); });
        menu.addSeparator();
        menu.addAction(tr("Delete…"), this, [this, item] {
            // It cannot be taken back, so it is asked for.
            const auto answer = QMessageBox::question(
                this, tr("Delete session"),
                tr("Delete the session “%1” with all its decisions? The media stay as they are.")
                    .arg(item->text(0)));
            if (answer == QMessageBox::Yes) desktop_.run("deleteSession", sessionArgument(item));
        });
    } else if (item != nullptr) {
        const std::string folder = utf8(item->data(0, folderRole).toString());
        QAction* remove = menu.addAction(tr("Delete Empty Folder"), this, [this, folder] {
            JSON arguments = JSON::object();
            arguments.set("name", folder);
            desktop_.run("deleteEmptyFolder", std::move(arguments));
        });
        remove->setEnabled(item->childCount() == 0);
    }
    menu.addSeparator();
    menu.addAction(tr("New Folder…"), this, [this] {
        const QString name = QInputDialog::getText(this, tr("New folder"), tr("Name of the folder"));
        if (name.trimmed().isEmpty()) return;
        JSON arguments = JSON::object();
        arguments.set("name", utf8(name));
        desktop_.run("createFolder", std::move(arguments));
    });
    menu.exec(tree_->viewport()->mapToGlobal(position));
}

} // namespace orvane::views
