#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Sheets/AtmoBuilderModel.h"
#include "OrvaneSyncApp/ViewModels/Sheets/SegmentPlayer.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/FileURL.h"

#include <QHeaderView>
#include <QPointer>
#include <QProgressBar>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize atmoSize{760, 620};
constexpr int stretchPlayColumn = 4;
constexpr int progressParts = 1000;
constexpr int mostListHeight = 190;
constexpr int candidateRole = Qt::UserRole;

/// One scene: its stretches, the length of the tone, and the button that builds it.
class ScenePanel : public Section {
  public:
    ScenePanel(Desktop& desktop, AtmoBuilderModel& model, std::size_t scene, SegmentPlayer& player)
        : Section(tr("Scene %1").arg(text(model.scenes()[scene].key))), desktop_(desktop), model_(model),
          scene_(scene), player_(player) {
        list_ = new QTreeWidget;
        list_->setAccessibleName(tr("Quiet stretches of scene %1").arg(text(one().key)));
        list_->setHeaderLabels({tr("Recording"), tr("Starts"), tr("Length"), tr("Level"), tr("Listen")});
        list_->setRootIsDecorated(false);
        list_->header()->setStretchLastSection(false);
        list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        for (const AtmoCandidate& candidate : one().candidates) {
            auto* row = new QTreeWidgetItem(
                list_, {text(candidate.url.lastPathComponent()), text(AtmoBuilderModel::startText(candidate)),
                        text(AtmoBuilderModel::lengthText(candidate)),
                        translatedSentence(AtmoBuilderModel::levelText(candidate)), QString()});
            row->setData(0, candidateRole, text(candidate.id.text()));
            row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            row->setToolTip(0, text(candidate.url.pathText()));
            for (const int number : {1, 2, 3})
                row->setTextAlignment(number, Qt::AlignRight | Qt::AlignVCenter);
            row->setToolTip(stretchPlayColumn, tr("Play or stop this stretch (Space)"));
        }
        add(list_);
        connect(list_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* row, int column) {
            if (isFilling_ || column != 0) return;
            model_.setSelected(scene_, idOf(*row), row->checkState(0) == Qt::Checked);
            show();
        });
        connect(list_, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* row, int column) {
            if (column == stretchPlayColumn) listen(*row);
        });

        auto* choose = new QHBoxLayout;
        auto* all = button(tr("Select all"));
        auto* none = button(tr("Clear"));
        auto* play = button(tr("Listen"), Glyph::play);
        play->setToolTip(tr("Plays the stretch that is marked, or stops it"));
        choose->addWidget(all);
        choose->addWidget(none);
        choose->addWidget(play);
        choose->addWidget(sum_ = facts({}), 1);
        add(choose);
        connect(all, &QPushButton::clicked, this, [this] {
            model_.selectAll(scene_);
            show();
        });
        connect(none, &QPushButton::clicked, this, [this] {
            model_.clear(scene_);
            show();
        });
        connect(play, &QPushButton::clicked, this, [this] {
            if (auto* row = list_->currentItem() ? list_->currentItem() : list_->topLevelItem(0))
                listen(*row);
        });

        auto* build = new QHBoxLayout;
        build->addWidget(label(tr("Target")));
        auto* target = new SliderField(tr("Length of the room tone"),
                                       {static_cast<int>(AtmoController::shortestTarget),
                                        static_cast<int>(AtmoController::longestTarget),
                                        static_cast<int>(AtmoBuilderModel::targetStep)},
                                       tr("s"), [this](int seconds) { model_.setTarget(scene_, seconds); });
        target->setValue(static_cast<int>(one().targetSeconds));
        build->addWidget(target, 1);
        generate_ = button(tr("Generate"), Weight::primary);
        build->addWidget(generate_);
        add(build);
        add(status_ = facts({}));
        connect(generate_, &QPushButton::clicked, this, [this] {
            if (isWorking())
                building_->requestStop();
            else
                generate();
        });
        show();
    }
    std::function<void(const QString&)> whenRefused;

    /// Marks the stretch that is playing.
    void showPlaying() {
        for (int i = 0; i < list_->topLevelItemCount(); ++i) {
            QTreeWidgetItem& row = *list_->topLevelItem(i);
            const bool plays = player_.playingID() == idOf(row);
            row.setIcon(stretchPlayColumn, icon(plays ? Glyph::pause : Glyph::play));
        }
    }

  protected:
    /// The list gets the height of its rows here, because they have the theme's sizes only from now on.
    void showEvent(QShowEvent* event) override {
        Section::showEvent(event);
        const int rows = list_->topLevelItemCount() * std::max(0, list_->sizeHintForRow(0));
        list_->setFixedHeight(std::min(mostListHeight, list_->header()->sizeHint().height() + rows +
                                                           2 * list_->frameWidth() + space::tight));
    }

  private:
    const AtmoBuilderModel::Scene& one() const { return model_.scenes()[scene_]; }
    static UUID idOf(const QTreeWidgetItem& row) {
        return UUID::fromText(utf8(row.data(0, candidateRole).toString())).value();
    }
    void listen(const QTreeWidgetItem& row) {
        const UUID id = idOf(row);
        const auto found = std::ranges::find(one().candidates, id, &AtmoCandidate::id);
        if (found == one().candidates.end()) return;
        if (!player_.toggle(
                {found->id, found->url.path, found->channelIndex, found->startSample, found->endSample}))
            if (whenRefused) whenRefused(tr("Nothing can be played: this machine has no player for sound."));
    }
    void show() {
        isFilling_ = true;
        for (int i = 0; i < list_->topLevelItemCount(); ++i) {
            QTreeWidgetItem& row = *list_->topLevelItem(i);
            row.setCheckState(0, one().selection.contains(idOf(row)) ? Qt::Checked : Qt::Unchecked);
        }
        isFilling_ = false;
        sum_->setText(tr("%1 of %2 stretches, %3 s")
                          .arg(one().selection.size())
                          .arg(one().candidates.size())
                          .arg(one().chosenSeconds(), 0, 'f', 1));
        generate_->setText(isWorking() ? tr("Stop") : tr("Generate"));
        generate_->setEnabled(isWorking() || one().canGenerate());
        status_->setText(isWorking() ? tr("Building…") : translatedSentence(one().status));
        status_->setVisible(!status_->text().isEmpty());
        showPlaying();
    }
    bool isWorking() const { return one().state == AtmoBuilderModel::Scene::State::generating; }
    void generate() {
        auto order = model_.begin(scene_);
        if (!order) return;
        const auto result = std::make_shared<AtmoResult>();
        building_ = desktop_.controller().atmo().buildAtmo(std::move(*order), result);
        show();
        building_->whenDone([self = QPointer(this), result](const std::exception_ptr& raised) {
            if (!self) return;
            try {
                if (raised) std::rethrow_exception(raised);
                self->model_.succeeded(self->scene_, result->audioURL.lastPathComponent());
            } catch (const std::exception& why) {
                self->model_.failed(self->scene_, why.what());
            } catch (const platform::Stopped&) {
                self->model_.failed(self->scene_, "stopped");
            }
            self->show();
        });
    }

    Desktop& desktop_;
    AtmoBuilderModel& model_;
    const std::size_t scene_;
    SegmentPlayer& player_;
    QTreeWidget* list_;
    QLabel* sum_;
    QPushButton* generate_;
    QLabel* status_;
    std::optional<platform::Task> building_;
    bool isFilling_ = false;
};

class AtmoSheet : public Sheet {
  public:
    AtmoSheet(Desktop& desktop, QWidget* parent)
        : Sheet(tr("Build Room Tone"), parent), desktop_(desktop),
          player_([&desktop] { return desktop.players().players(); }) {
        resize(atmoSize);
        pages_ = new QStackedWidget;
        auto* waiting =
            new EmptyState(Glyph::waveform, tr("Listening"), translated(AtmoBuilderModel::scanningText));
        bar_ = new QProgressBar;
        bar_->setRange(0, progressParts);
        bar_->setTextVisible(false);
        bar_->setFixedWidth(atmoSize.width() / 2);
        bar_->setAccessibleName(tr("Progress of the search"));
        waiting->add(bar_);
        waiting->add(count_ = facts({}));
        count_->setFixedWidth(bar_->width());
        count_->setAlignment(Qt::AlignHCenter);
        auto* stop = button(tr("Stop"));
        connect(stop, &QPushButton::clicked, this, [this] { scan_->requestStop(); });
        waiting->add(stop);
        pages_->addWidget(waiting);
        add(pages_, 1);
        addClose(tr("Done"))->setObjectName(QStringLiteral("done"));
        player_.whenChanged = [this] {
            for (ScenePanel* panel : panels_) panel->showPlaying();
        };
        observation_ = desktop.controller().onChange([this](ImportField field) {
            if (field != ImportField::atmo) return;
            const SmartAudioProgress& progress = desktop_.controller().atmo().state().progress;
            bar_->setValue(static_cast<int>(progress.fraction * progressParts));
            count_->setText(progress.total > 0
                                ? tr("Scene %1 of %2").arg(progress.current).arg(progress.total)
                                : QString());
        });
        scan();
    }
    ~AtmoSheet() override { scan_->requestStop(); }

  private:
    void scan() {
        const QPointer self(this);
        scan_ = desktop_.run(
            "scanAtmoCandidates", {},
            [self](const JSON&) {
                if (self) self->showScenes();
            },
            [self](const QString& why) {
                if (self) self->showNothing(why);
            });
        scan_->whenDone([self](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const platform::Stopped&) {
                if (self)
                    self->showNothing(tr("Open this sheet again to search from the beginning."),
                                      tr("The search was stopped"));
            } catch (const std::exception&) {
                return; // already shown as refused
            }
        });
    }
    void showNothing(const QString& why, const QString& what = tr("No quiet stretch was found")) {
        pages_->addWidget(new EmptyState(Glyph::waveform, what, why));
        pages_->setCurrentIndex(1);
    }
    void showScenes() {
        const auto& found = desktop_.controller().atmo().candidates();
        if (found) model_ = std::make_unique<AtmoBuilderModel>(*found);
        if (!model_ || model_->isEmpty()) return showNothing(translated(AtmoBuilderModel::nothingFoundText));
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        column->setSpacing(space::medium);
        for (std::size_t i = 0; i < model_->scenes().size(); ++i) {
            panels_.push_back(new ScenePanel(desktop_, *model_, i, player_));
            panels_.back()->whenRefused = [this](const QString& why) {
                outcome().show(Signal::missing, why);
            };
            column->addWidget(panels_.back());
        }
        column->addStretch(1);
        auto* scroll = new QScrollArea;
        scroll->setWidget(content);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll->setAccessibleName(tr("Scenes"));
        pages_->addWidget(scroll);
        pages_->setCurrentIndex(1);
    }

    Desktop& desktop_;
    SegmentPlayer player_;
    std::unique_ptr<AtmoBuilderModel> model_;
    QStackedWidget* pages_;
    QProgressBar* bar_;
    QLabel* count_;
    std::vector<ScenePanel*> panels_;
    std::optional<platform::Task> scan_;
    platform::Subscription observation_;
};

} // namespace

void showAtmoBuilder(Desktop& desktop, QWidget* parent) { (new AtmoSheet(desktop, parent))->present(); }

} // namespace orvane::views
