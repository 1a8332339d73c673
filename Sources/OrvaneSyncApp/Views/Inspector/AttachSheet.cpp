#include "OrvaneSyncApp/Views/Inspector/AttachSheet.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

AttachSheet::AttachSheet(const std::vector<Attachable>& recordings, QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Attach a recording"));
    resize(520, 440);
    auto* column = new QVBoxLayout(this);
    column->addWidget(label(text(RecordingsPart::choosePrompt)));
    column->addWidget(search_ = searchField(tr("Search recordings"), tr("Name")));
    column->addWidget(list_ = new QListWidget, 1);
    list_->setAccessibleName(tr("Recordings"));
    list_->setUniformItemSizes(true);
    for (const Attachable& one : recordings) {
        list_->addItem(text(one.label));
        ids_.push_back(one.audioID);
    }
    if (recordings.empty())
        column->addWidget(
            facts(tr("All recordings of this shoot lie under the clip. Attach a file instead.")));
    auto* buttons = new QHBoxLayout;
    QPushButton* file = button(tr("From File…"));
    buttons->addWidget(file);
    buttons->addStretch(1);
    QPushButton* cancel = button(tr("Cancel"));
    buttons->addWidget(cancel);
    QPushButton* attach = button(tr("Attach"), Weight::primary);
    attach->setDefault(true);
    buttons->addWidget(attach);
    column->addLayout(buttons);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& words) { filter(words); });
    connect(list_, &QListWidget::itemActivated, this, [this] { choose(); });
    connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
    connect(attach, &QPushButton::clicked, this, [this] { choose(); });
    connect(file, &QPushButton::clicked, this, [this] {
        reject();
        whenFileWanted();
    });
    const auto enable = [this, attach] { attach->setEnabled(!list_->selectedItems().isEmpty()); };
    connect(list_, &QListWidget::itemSelectionChanged, attach, enable);
    enable();
    search_->setFocus();
}

void AttachSheet::filter(const QString& words) {
    const QStringList all = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int row = 0; row < list_->count(); ++row) {
        QListWidgetItem* item = list_->item(row);
        const bool isFound = std::ranges::all_of(
            all, [&](const QString& word) { return item->text().contains(word, Qt::CaseInsensitive); });
        item->setHidden(!isFound);
        if (!isFound) item->setSelected(false);
    }
    if (!list_->selectedItems().isEmpty()) return;
    // Return takes what is found first.
    for (int row = 0; row < list_->count(); ++row)
        if (!list_->item(row)->isHidden()) return list_->setCurrentRow(row);
}

void AttachSheet::choose() {
    const int row = list_->selectedItems().isEmpty() ? -1 : list_->row(list_->selectedItems().front());
    if (row < 0) return;
    const UUID id = ids_.at(static_cast<std::size_t>(row));
    accept();
    whenChosen(id);
}

} // namespace orvane::views
