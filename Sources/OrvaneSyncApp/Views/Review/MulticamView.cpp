#include "OrvaneSyncApp/Views/Review/MulticamView.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/ElidedLabel.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Review/CameraAxis.h"
#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/Review/CameraStrip.h"
#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/LevelMeters.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QAction>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int multicamOutlineWidth = 220, camerasWidth = 1220;
constexpr int widestMeters = 48; // of a camera among several
constexpr int colourWidth = 6, colourHeight = 14;

} // namespace

/// One camera: its picture, its levels if it is heard, and its name.
class MulticamView::Cell : public QFrame {
  public:
    /// `number`: from 1. The first nine are the keys that select its sound.
    Cell(const UUID& camera, int number, const QString& label,
         const std::shared_ptr<platform::MainThread>& mainThread, const std::shared_ptr<VideoEngine>& player,
         const std::function<void(const UUID&)>& hear, const std::function<void(const UUID&)>& openClip)
        : id(camera), name(label), engine_(player) {
        setProperty("panel", true);
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(2, 2, 2, 2);
        column->setSpacing(0);
        canvas_ = new PictureCanvas;
        canvas_->setEngine(engine_);
        canvas_->setToolTip(tr("Click: listen to this camera. Double-click: open only this one."));
        auto* over = new QGridLayout(canvas_);
        over->setContentsMargins(0, 0, 0, 0);
        over->addWidget(notRunning_ = new QLabel);
        notRunning_->setAlignment(Qt::AlignCenter);
        notRunning_->setAttribute(Qt::WA_TransparentForMouseEvents);
        notRunning_->setStyleSheet(QStringLiteral("background: %1;").arg(colours().picture.name()));
        notRunning_->hide();
        canvas_->whenClicked = [this, hear] { hear(id); };
        canvas_->whenDoubleClicked = [this, openClip] { openClip(id); };
        auto* picture = new QHBoxLayout;
        picture->setSpacing(2);
        picture->addWidget(canvas_, 1);
        // Every camera has room for meters, so that no picture moves when another camera is heard.
        auto* meters = new LevelMeters(mainThread, engine_);
        meters->setMaximumWidth(widestMeters);
        picture->addWidget(meters);
        column->addLayout(picture, 1);
        auto* row = new QHBoxLayout;
        row->setContentsMargins(space::tight, 0, 0, 0);
        auto* colour = new QLabel; // of its bar on the axis below
        QPixmap filled(colourWidth, colourHeight);
        filled.fill(channelColour(number - 1));
        colour->setPixmap(filled);
        row->addWidget(colour);
        row->addSpacing(space::tight);
        if (number < 10) {
            auto* key = facts(QString::number(number));
            key->setToolTip(tr("The key %1 plays the sound of this camera").arg(number));
            key->setWordWrap(false);
            row->addWidget(key);
            row->addSpacing(space::small);
        }
        auto* shown = new ElidedLabel(Qt::ElideRight);
        shown->setText(name); // a camera counts its clips at the beginning of the name
        shown->setToolTip(name);
        row->addWidget(shown, 1);
        row->addSpacing(space::small);
        timecode_ = facts({});
        timecode_->setFont(timecodeFont());
        timecode_->setWordWrap(false);
        timecode_->setAccessibleName(tr("Timecode of %1").arg(name));
        row->addWidget(timecode_);
        row->addSpacing(space::small);
        heard_ = button(tr("Hear"), Glyph::sound);
        heard_->setCheckable(true); // the colour of a choice, because the two words look alike
        heard_->setFocusPolicy(Qt::TabFocus);
        heard_->setAccessibleName(tr("Hear %1").arg(name));
        connect(heard_, &QPushButton::clicked, this, [this, hear] { hear(id); });
        row->addWidget(heard_);
        column->addLayout(row);
    }
    void showHeard(bool isHeard) {
        heard_->setChecked(isHeard);
        heard_->setText(isHeard ? tr("Heard") : tr("Hear"));
    }
    void showTimecode() { timecode_->setText(text(pictureTimecode(engine_->playhead()))); }
    void showRun(CameraRun run) {
        notRunning_->setVisible(run != CameraRun::running);
        notRunning_->setText(run == CameraRun::notYet ? tr("Not running yet") : tr("No longer running"));
    }
    void setAsksForSize(bool asks) { canvas_->setAsksForSize(asks); }
    const UUID id;
    const QString name;

  private:
    const std::shared_ptr<VideoEngine> engine_;
    QLabel* timecode_;
    PictureCanvas* canvas_;
    QLabel* notRunning_; ///< covers the picture that the player shows outside of the clip
    QPushButton* heard_;
};

MulticamView::MulticamView(Desktop& desktop, ScreenHost host)
    : WorkScreen(desktop, std::move(host)), multicam_(desktop.players().multicam()) {
    setAccessibleName(tr("Multicam"));
    setFocusPolicy(Qt::StrongFocus);
    auto* columns = new QSplitter;
    columns->addWidget(outline_ = new OutlineView(desktop, host_.openReview, host_.showList));
    outline_->openTake = host_.openMulticam;
    outline_->takeKeyboard = [this] { keyboard()->setFocus(); };
    auto* cameras = new QWidget;
    columns->addWidget(cameras);
    columns->setStretchFactor(1, 1);
    columns->setChildrenCollapsible(false);
    columns->setSizes({multicamOutlineWidth, camerasWidth});
    auto* whole = new QHBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(columns);
    auto* column = new QVBoxLayout(cameras);
    column->setContentsMargins(space::small, space::small, space::small, space::small);
    column->setSpacing(space::small);
    auto* top = new QHBoxLayout;
    top->addWidget(take_ = title(tr("Multicam")));
    top->addStretch(1);
    QLabel* hint = new QLabel(translated(MulticamViewModel::hint));
    hint->setFont(factsFont());
    hint->setProperty("facts", true);
    top->addWidget(hint);
    column->addLayout(top);
    auto* pictures = new QWidget;
    grid_ = new QGridLayout(pictures);
    grid_->setContentsMargins(0, 0, 0, 0);
    grid_->setSpacing(space::tight);
    setToastPlace(pictures);
    auto* place = new QGridLayout;
    place->addWidget(pictures, 0, 0);
    place->addLayout(messages_ = new QVBoxLayout, 0, 0, Qt::AlignTop);
    column->addLayout(place, 1);
    auto* transport = new QHBoxLayout;
    transport->setSpacing(1);
    transport->addStretch(1);
    for (const KeyAction key :
         {KeyAction::stepBackward, KeyAction::playPause, KeyAction::stepForward, KeyAction::toggleFullscreen})
        transport->addWidget(transportButton(host_.actions->action(key)));
    transport->addStretch(1);
    column->addLayout(transport);
    column->addWidget(strip_ = new CameraStrip(desktop_, multicam_));
    keys_ = new KeyOverlay(this, [this] {
        return multicamKeyOverview(desktop_.context().shortcuts()->bindings(), cells_.size());
    });
    multicam_->toggleFullscreen = [this] {
        returnsToFullscreen_ = false; // the user decides
        toggleFullscreen();
    };
    multicam_->moveInList = [this](KeyAction action) { go(action == KeyAction::nextGroup ? 1 : -1); };
    multicam_->refuse = [this](KeyAction action) {
        desktop_.sayWhyNot(tr("“%1” is for one camera: a double click on its picture opens it alone.")
                               .arg(translated(label(action))));
    };
    ofBag_ = multicam_->bag().onChange([this] {
        follow();
        if (!isOpen()) noteClips();
    });
}

MulticamView::~MulticamView() {
    multicam_->toggleFullscreen = nullptr;
    multicam_->moveInList = nullptr;
    multicam_->refuse = nullptr;
}

/// A clip of a single camera is opened in the review.
void MulticamView::go(int step) {
    std::vector<UUID> listed; // a filter or a search hides the others
    std::ranges::copy_if(shown_, std::back_inserter(listed),
                         [this](const UUID& id) { return outline_->placeInList(id).has_value(); });
    if (listed.empty()) return;
    const auto place = [this](const UUID& id) { return outline_->placeInList(id)->number; };
    const auto from =
        step > 0 ? std::ranges::max_element(listed, {}, place) : std::ranges::min_element(listed, {}, place);
    auto next = outline_->neighbour(*from, step);
    while (next && std::ranges::find(shown_, *next) != shown_.end()) next = outline_->neighbour(*next, step);
    if (!next) return;
    const auto cameras = MulticamViewModel::camerasFor(desktop_.controller().work(), {*next});
    if (cameras.size() > 1)
        host_.openMulticam(cameras);
    else
        host_.openReview(*next);
}

void MulticamView::toggleFullscreen() {
    if (fullscreen_) {
        fullscreen_.reset();
    } else if (const auto& heard = multicam_->bag().audioSourceMemberID()) {
        const auto& engine = multicam_->bag().engines().at(*heard);
        fullscreen_ =
            std::make_unique<FullscreenManager>(engine, desktop_.controller().work().environment.settings);
        const auto name = [this, id = *heard] {
            const auto cell = std::ranges::find(cells_, id, &Cell::id);
            return cell == cells_.end() ? QString() : (*cell)->name;
        };
        fullscreen_->desktop = FullscreenWindow::desktop(
            engine, {*this, name, [this] { return keys_->now(); }, desktop_.controller()});
        fullscreen_->toggleFullscreen();
        if (!fullscreen_->isShowing()) fullscreen_.reset(); // nothing to show, or no second screen
    }
    const auto& heard = multicam_->bag().audioSourceMemberID();
    for (Cell* cell : cells_) cell->setAsksForSize(!fullscreen_ || cell->id != heard);
}

bool MulticamView::hear(std::size_t camera) {
    if (camera >= cells_.size()) return false;
    hear(cells_[camera]->id);
    return true;
}

void MulticamView::hear(const UUID& camera) {
    returnsToFullscreen_ = false;
    JSON arguments = JSON::object();
    arguments.set("groupID", camera.text());
    desktop_.run("clusterAudioSource", std::move(arguments));
}

bool MulticamView::handleFullscreen(const KeyEvent& event) {
    if (!fullscreen_ || !FullscreenManager::isLeftBy(event)) return false;
    returnsToFullscreen_ = false;
    toggleFullscreen();
    return true;
}

void MulticamView::open(const std::vector<UUID>& groupIDs) {
    JSON::Array ids;
    for (const UUID& id : groupIDs) ids.emplace_back(id.text());
    JSON arguments = JSON::object();
    arguments.set("groupIDs", std::move(ids));
    desktop_.run("clusterLoad", std::move(arguments),
                 [model = multicam_](const JSON&) { void(model->findClaps()); });
}

void MulticamView::leave() { multicam_->close(); }

QLineEdit* MulticamView::search() const { return outline_->search(); }

void MulticamView::follow() {
    std::vector<UUID> members;
    for (const auto& [id, label] : multicam_->bag().memberLabels()) members.push_back(id);
    if (members != shown_) {
        returnsToFullscreen_ = (fullscreen_ || returnsToFullscreen_) && !members.empty();
        shown_ = std::move(members);
        layOut();
        if (!shown_.empty()) showTake();
    }
    const auto& heard = multicam_->bag().audioSourceMemberID();
    for (Cell* cell : cells_) cell->showHeard(heard == cell->id);
    if (std::exchange(heard_, heard) != heard && !shown_.empty()) {
        mark();
        noteClips();
    }
    strip_->follow();
    followPlayhead();
}

void MulticamView::followPlayhead() {
    strip_->followPlayhead();
    const auto shared = sharedPlayhead(multicam_->bag());
    for (Cell* cell : cells_)
        cell->showRun(shared ? cameraRun(multicam_->bag(), cell->id, *shared) : CameraRun::running);
}

void MulticamView::showTake() {
    const auto isListed = [this](const UUID& id) { return outline_->placeInList(id).has_value(); };
    if (std::ranges::none_of(shown_, isListed)) outline_->search()->clear(); // it finds none of them
    const QString name = mark();
    take_->setText(name.isEmpty() ? tr("Multicam") : name);
}

QString MulticamView::mark() {
    const auto listed = std::ranges::find_if(
        shown_, [this](const UUID& id) { return outline_->placeInList(id).has_value(); });
    if (listed == shown_.end()) return {};
    // Cameras of several takes have no common name.
    if (MulticamViewModel::camerasFor(desktop_.controller().work(), {*listed}) == shown_)
        return outline_->selectTake(*listed);
    if (heard_ && outline_->placeInList(*heard_)) outline_->select(*heard_);
    return {};
}

std::vector<UUID> MulticamView::clips() const {
    const auto& heard = multicam_->bag().audioSourceMemberID();
    return isOpen() && heard ? std::vector{*heard} : std::vector<UUID>();
}

void MulticamView::layOut() {
    fullscreen_.reset();
    ofEngines_.clear();
    for (Cell* cell : cells_) {
        grid_->removeWidget(cell);
        cell->hide();
        cell->deleteLater();
    }
    cells_.clear();
    const auto count = static_cast<int>(shown_.size());
    const int across = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(std::max(count, 1)))));
    for (int i = 0; i < std::max(across, grid_->columnCount()); ++i)
        grid_->setColumnStretch(i, i < across ? 1 : 0);
    const auto hearOne = [this](const UUID& id) { hear(id); };
    for (const auto& [id, label] : multicam_->bag().memberLabels()) {
        const auto& engine = multicam_->bag().engines().at(id);
        const SyncGroup* clip = desktop_.controller().work().syncGroups().find(id);
        QString name = translatedSentence(label);
        if (clip != nullptr && label != clip->video.filename)
            name += QStringLiteral("   ") + text(clip->video.filename);
        const auto at = static_cast<int>(cells_.size());
        auto* cell = new Cell(id, at + 1, name, desktop_.mainThread(), engine, hearOne, host_.openReview);
        grid_->addWidget(cell, at / across, at % across);
        cells_.push_back(cell);
        ofEngines_.push_back(engine->onChange([this, cell](VideoEngineField field) {
            if (field == VideoEngineField::playhead || field == VideoEngineField::transport)
                cell->showTimecode();
            if (field == VideoEngineField::transport) {
                if (returnsToFullscreen_ && !fullscreen_ &&
                    cell->id == multicam_->bag().audioSourceMemberID()) {
                    toggleFullscreen(); // does nothing before the camera has a picture
                    returnsToFullscreen_ = !fullscreen_;
                }
                host_.actions->action(KeyAction::playPause)
                    ->setIcon(icon(multicam_->bag().isPlaying() ? Glyph::pause : Glyph::play));
                strip_->follow();
            }
            if (field == VideoEngineField::playhead || field == VideoEngineField::transport) followPlayhead();
        }));
    }
}

} // namespace orvane::views
