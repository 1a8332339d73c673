#include "OrvaneSyncApp/Views/Settings/DeveloperPage.h"

#include "OrvaneSyncApp/Views/SystemChecksView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

constexpr int cachesHeight = 170;

QString megabytes(const JSON* bytes) {
    return translatedSentence(megabytesText(bytes == nullptr ? 0 : bytes->number().value_or(0)));
}

QTableWidget* table(const QStringList& columns, const QString& name, int height) {
    auto* made = new QTableWidget(0, static_cast<int>(columns.size()));
    made->setHorizontalHeaderLabels(columns);
    made->setAccessibleName(name);
    made->verticalHeader()->hide();
    made->horizontalHeader()->setStretchLastSection(true);
    made->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    made->setEditTriggers(QAbstractItemView::NoEditTriggers);
    made->setSelectionBehavior(QAbstractItemView::SelectRows);
    made->setShowGrid(false);
    made->setWordWrap(true);
    made->setFixedHeight(height);
    return made;
}

} // namespace

DeveloperPage::DeveloperPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : SettingsPage(desktop, model, tab) {
    add(makeCaches(), tr("caches size clear"));
    add(makeDiagnostics(), tr("diagnostics state subsystem doctor"));
}

QWidget* DeveloperPage::makeCaches() {
    auto* section = new Section(tr("What the caches hold"));
    section->add(caches_ =
                     table({tr("Cache"), tr("Files"), tr("Size"), tr("Folder")}, tr("Caches"), cachesHeight));
    caches_->setObjectName(QStringLiteral("caches"));
    auto* row = new QHBoxLayout;
    row->addWidget(cachesSum_ = facts({}), 1);
    row->addWidget(clear_ = button(tr("Clear Caches")));
    clear_->setToolTip(
        tr("Removes all that can be made again. Sessions, presets, models and the calibration stay."));
    section->add(row);
    section->add(cacheProblem_ = new Remark);
    connect(clear_, &QPushButton::clicked, this, [this] { clearCaches(); });
    return section;
}

QWidget* DeveloperPage::makeDiagnostics() {
    auto* section = new Section(tr("Diagnostics"));
    section->add(checks_ = new SystemChecksView(desktop()));
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(checks_->copyButton());
    row->addWidget(checks_->againButton());
    section->add(row);
    return section;
}

void DeveloperPage::open() {
    lookAtCaches();
    checks_->look();
}

void DeveloperPage::lookAtCaches() {
    desktop().run("caches", {}, [self = QPointer(this)](const JSON& report) {
        if (!self) return;
        const JSON* folders = report.find("folders");
        const JSON::Array* list = folders == nullptr ? nullptr : folders->elements();
        QTableWidget& table = *self->caches_;
        table.setRowCount(list == nullptr ? 0 : static_cast<int>(list->size()));
        for (int row = 0; row < table.rowCount(); ++row) {
            const JSON& one = (*list)[static_cast<std::size_t>(row)];
            const auto textOf = [&](const char* key) {
                const JSON* value = one.find(key);
                return value == nullptr || value->string() == nullptr ? QString() : text(*value->string());
            };
            const JSON* files = one.find("files");
            table.setItem(row, 0, new QTableWidgetItem(textOf("name")));
            auto* count =
                new QTableWidgetItem(QString::number(files == nullptr ? 0 : files->integer().value_or(0)));
            auto* size = new QTableWidgetItem(megabytes(one.find("bytes")));
            for (QTableWidgetItem* number : {count, size})
                number->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            table.setItem(row, 1, count);
            table.setItem(row, 2, size);
            table.setItem(row, 3, new QTableWidgetItem(textOf("path")));
        }
        table.resizeColumnsToContents();
        self->cachesSum_->setText(
            tr("%1 in all; rendered sound takes %2.")
                .arg(megabytes(report.find("bytes")), megabytes(report.find("renderedBytes"))));
        self->clear_->setEnabled(table.rowCount() > 0);
    });
}

void DeveloperPage::clearCaches() {
    clear_->setEnabled(false);
    cacheProblem_->show(Signal::none, {});
    desktop().run(
        "clearCaches", {},
        [self = QPointer(this)](const JSON& answer) {
            if (!self) return;
            self->cacheProblem_->show(Signal::matched,
                                      tr("Removed %1.").arg(megabytes(answer.find("removedBytes"))));
            self->lookAtCaches();
        },
        [self = QPointer(this)](const QString& why) {
            if (!self) return;
            self->cacheProblem_->show(Signal::missing, why);
            self->lookAtCaches();
        });
}

} // namespace orvane::views
