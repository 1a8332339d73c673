#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize usual{1020, 720};
constexpr QSize windowFrame{0, 40}; ///< of the window manager's frame
constexpr int tabsWidth = 210;
const QString lastTab = QStringLiteral("settingsTab");

} // namespace

SettingsWindow::SettingsWindow(Desktop& desktop, QWidget* parent)
    : QDialog(parent), desktop_(desktop), model_(desktop.context().settings, [&desktop] {
          return commonestMaterial(desktop.controller().smartAudio().state().results);
      }) {
    setWindowTitle(tr("Settings"));
    resize(usual.boundedTo(screen()->availableGeometry().size() - windowFrame));
    auto* side = new QVBoxLayout;
    side->addWidget(search_ = searchField(tr("Search the settings"), tr("Search")));
    tabs_ = new QListWidget;
    tabs_->setAccessibleName(tr("Groups of settings"));
    tabs_->setFixedWidth(tabsWidth);
    tabs_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    tabs_->setSpacing(1);
    search_->setFixedWidth(tabsWidth);
    side->addWidget(tabs_, 1);
    pages_ = new QStackedWidget;
    for (const SettingTab& tab : settingTabs()) {
        if (!hasPage(tab)) continue;
        settingTabs_.push_back({&tab});
        auto* item = new QListWidgetItem(translated(tab.title), tabs_);
        item->setSizeHint({0, 2 * space::medium});
    }
    nothing_ = new EmptyState(Glyph::search, tr("No setting found"), tr("Try another word, or fewer."));
    pages_->addWidget(nothing_);

    auto* columns = new QHBoxLayout;
    columns->addLayout(side);
    columns->addWidget(pages_, 1);
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(columns, 1);
    auto* close = button(tr("Done"), Weight::primary);
    rows->addWidget(close, 0, Qt::AlignRight);
    connect(close, &QPushButton::clicked, this, [this] { accept(); });
    connect(search_, &QLineEdit::textChanged, this, [this] { showMatching(); });
    connect(tabs_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0) return;
        Tab& tab = settingTabs_[static_cast<std::size_t>(row)];
        pages_->setCurrentWidget(&pageOf(tab));
        if (!std::exchange(tab.isOpened, true)) tab.page->open();
    });
    // With Shift, the window system may report Tab as another key.
    for (const auto& [key, step] :
         {std::pair(Qt::CTRL | Qt::Key_Tab, 1), std::pair(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab, -1),
          std::pair(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab, -1)})
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this,
                [this, by = step] { goToTab(by); });
    listen();
    tabs_->setCurrentRow(std::clamp(design::keptState::value(lastTab, 0).toInt(), 0, tabCount() - 1));
    makePagesLater();
}

SettingsWindow::~SettingsWindow() {
    if (tabs_->currentRow() >= 0) design::keptState::set(lastTab, tabs_->currentRow());
}

int SettingsWindow::tabCount() const { return static_cast<int>(settingTabs_.size()); }

SettingsPage& SettingsWindow::pageOf(Tab& tab) {
    if (tab.page == nullptr) pages_->addWidget(tab.page = makeSettingsPage(desktop_, model_, *tab.described));
    return *tab.page;
}

void SettingsWindow::makePagesLater() {
    // A timer and not posted work, which would be done before the events that wait.
    desktop_.mainThread()->after({}, [this, alive = std::weak_ptr(isRefreshScheduled_)] {
        if (alive.expired()) return;
        const auto missing = std::ranges::find(settingTabs_, nullptr, &Tab::page);
        if (missing == settingTabs_.end()) return;
        pageOf(*missing);
        if (!search_->text().isEmpty()) showMatching();
        makePagesLater();
    });
}

void SettingsWindow::goToTab(int step) {
    const int count = tabCount();
    for (int i = 1; i <= count; ++i) {
        const int row = (tabs_->currentRow() + count + i * step % count) % count;
        if (tabs_->item(row)->isHidden()) continue; // hidden by the search
        return showTab(row);
    }
}

void SettingsWindow::showTab(int index) { tabs_->setCurrentRow(index); }

void SettingsWindow::showTab(SettingPage page) {
    showTab(static_cast<int>(
        std::ranges::find(settingTabs_, page, [](const Tab& tab) { return tab.described->page; }) -
        settingTabs_.begin()));
}

void SettingsWindow::listen() {
    // Called on the thread that changed the setting; many changes may come at once, such as those of a
    // preset.
    observation_ = desktop_.settings().onChange([this, alive = std::weak_ptr(isRefreshScheduled_),
                                                 mainThread = desktop_.mainThread()](const std::string&) {
        mainThread->post([this, alive] {
            if (alive.lock()) refreshSoon();
        });
    });
    workObservation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::smartAudio && !desktop_.controller().smartAudio().state().isAnalyzing)
            refreshSoon();
    });
}

void SettingsWindow::refreshSoon() {
    if (std::exchange(*isRefreshScheduled_, true)) return;
    desktop_.mainThread()->post([this, alive = std::weak_ptr(isRefreshScheduled_)] {
        const auto scheduled = alive.lock();
        if (!scheduled) return;
        *scheduled = false;
        for (const Tab& tab : settingTabs_)
            if (tab.page != nullptr) tab.page->refresh();
    });
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
    const bool clears = event->key() == Qt::Key_Escape && search_->hasFocus() && !search_->text().isEmpty();
    clears ? search_->clear() : QDialog::keyPressEvent(event);
}

void SettingsWindow::showMatching() {
    int first = -1;
    bool isCurrentLeft = false;
    const int current = tabs_->currentRow();
    for (int row = 0; row < tabCount(); ++row) {
        SettingsPage* page = settingTabs_[static_cast<std::size_t>(row)].page;
        const bool isLeft = page == nullptr ? search_->text().isEmpty() : page->showMatching(search_->text());
        tabs_->item(row)->setHidden(!isLeft);
        if (isLeft && first < 0) first = row;
        isCurrentLeft = isCurrentLeft || (isLeft && row == current);
    }
    const bool isAnyMissing = std::ranges::find(settingTabs_, nullptr, &Tab::page) != settingTabs_.end();
    if (first < 0) {
        if (!isAnyMissing) pages_->setCurrentWidget(nothing_);
        return;
    }
    if (!isCurrentLeft) tabs_->setCurrentRow(first);
    pages_->setCurrentWidget(settingTabs_[static_cast<std::size_t>(tabs_->currentRow())].page);
}

} // namespace orvane::views
