#include "OrvaneSyncApp/Views/Settings/ModelsPage.h"

#include "OrvaneSyncApp/Views/Translation.h"

#include <QGridLayout>
#include <QPointer>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>

namespace orvane::views {

using namespace design;

namespace {

constexpr std::chrono::milliseconds betweenLooks{250};
constexpr int percent = 100;

Signal signalOf(ModelRow::State state) {
    switch (state) {
    case ModelRow::State::ready:
        return Signal::matched;
    case ModelRow::State::error:
        return Signal::missing;
    default:
        return Signal::none;
    }
}

} // namespace

ModelsPage::ModelsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : SettingsPage(desktop, model, tab), timer_(new QTimer(this)) {
    auto* models = new Section(tr("Optional models"));
    models->add(rows_ = new QVBoxLayout);
    models->add(problem_ = new Remark);
    models->add(diskUsage_ = facts(tr("Looking…")));
    add(models, tr("model download cancel delete disk"));
    auto* stems = new Section(tr("Stems"));
    stems->add(stems_ = new Badge);
    stems->add(stemsProblem_ = facts({}));
    add(stems, tr("Bandit stems speech music effects"));
    auto* builtIn = new Section(tr("Works without a model"));
    builtIn->add(features_ = new QVBoxLayout);
    add(builtIn, tr("built in features"));
    timer_->setInterval(betweenLooks);
    connect(timer_, &QTimer::timeout, this, [this] { look(); });
}

void ModelsPage::open() { look(); }

void ModelsPage::look() {
    desktop().run("models", {}, [self = QPointer(this)](const JSON& answer) {
        if (self) self->show(modelList(answer));
    });
}

void ModelsPage::show(const ModelList& list) {
    if (lines_.size() != list.rows.size()) makeLines(list);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const Line& line = lines_[i];
        const ModelRow& row = list.rows[i];
        const bool isError = row.state == ModelRow::State::error;
        const bool isSetUp = row.state != ModelRow::State::notSetUp;
        line.state->show(signalOf(row.state), isError    ? tr("Error")
                                              : !isSetUp ? tr("Not set up")
                                                         : translated(row.status));
        line.problem->show(signalOf(row.state),
                           isError || !isSetUp ? translatedSentence(row.status) : QString());
        line.progress->setVisible(row.state == ModelRow::State::downloading);
        line.progress->setValue(static_cast<int>(row.progress * percent));
        line.download->setText(translated(row.download));
        line.download->setVisible(!row.download.empty());
        line.cancel->setVisible(row.state == ModelRow::State::downloading);
        line.remove->setVisible(row.state == ModelRow::State::ready);
    }
    diskUsage_->setText(translatedSentence(list.diskUsage));
    stems_->show(list.areStemsReady ? Signal::matched : Signal::none, translatedSentence(list.stems));
    stemsProblem_->setText(translatedSentence(list.stemsProblem));
    stemsProblem_->setVisible(!list.stemsProblem.empty());
    if (list.isDownloading)
        timer_->start();
    else
        timer_->stop();
}

void ModelsPage::makeLines(const ModelList& list) {
    for (QVBoxLayout* old : {rows_, features_})
        while (QLayoutItem* item = old->takeAt(0)) {
            delete item->widget();
            delete item;
        }
    lines_.clear();
    for (const ModelRow& row : list.rows) rows_->addWidget(makeLine(row));
    for (const auto& [name, description] : list.features) {
        features_->addWidget(label(translated(name)));
        features_->addWidget(facts(translated(description)));
    }
}

QWidget* ModelsPage::makeLine(const ModelRow& row) {
    auto* whole = new QWidget;
    auto* grid = new QGridLayout(whole);
    grid->setContentsMargins(0, 0, 0, space::small);
    grid->setColumnStretch(0, 1);
    const QString name = translated(row.name);
    Line line{new Badge,           new Remark, new QProgressBar, button({}), button(tr("Cancel download")),
              button(tr("Delete"))};
    line.progress->setTextVisible(false);
    line.progress->setRange(0, percent);
    line.progress->setAccessibleName(tr("Download of %1").arg(name));
    line.remove->setAccessibleName(tr("Delete %1").arg(name));
    grid->addWidget(label(name), 0, 0);
    grid->addWidget(line.state, 0, 1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* one : {line.download, line.cancel, line.remove}) buttons->addWidget(one);
    grid->addLayout(buttons, 0, 2);
    grid->addWidget(facts(translatedSentence(row.facts)), 1, 0, 1, 3);
    grid->addWidget(facts(translated(row.description)), 2, 0, 1, 3);
    grid->addWidget(line.progress, 3, 0, 1, 3);
    grid->addWidget(line.problem, 4, 0, 1, 3);
    const std::string id = row.id;
    connect(line.download, &QPushButton::clicked, this, [this, id] { run("downloadModel", id); });
    connect(line.cancel, &QPushButton::clicked, this, [this, id] { run("cancelModelDownload", id); });
    connect(line.remove, &QPushButton::clicked, this, [this, id] { run("deleteModel", id); });
    lines_.push_back(line);
    return whole;
}

void ModelsPage::run(std::string_view id, const std::string& model) {
    problem_->show(Signal::none, {});
    JSON arguments = JSON::object();
    arguments.set("id", model);
    // The row itself shows why a download failed.
    const auto again = [self = QPointer(this)] {
        if (self) self->look();
    };
    desktop().run(
        id, std::move(arguments), [again](const JSON&) { again(); }, [again](const QString&) { again(); });
    timer_->start();
}

} // namespace orvane::views
