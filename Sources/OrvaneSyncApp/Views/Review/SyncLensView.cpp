#include "OrvaneSyncApp/Views/Review/SyncLensView.h"

#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int gap = 2;
constexpr int captionHeight = 20;
constexpr int clapHeight = 18;      ///< of the line above the sound with the word for the clap
constexpr double soundShare = 0.25; ///< of the height
constexpr int pictures = static_cast<int>(SyncLensPlan::pictureCount);

} // namespace

SyncLensView::SyncLensView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)),
      lens_(SyncLens::create(desktop.mainThread())), pictures_(new QWidget(this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Sync lens"));
    setFont(factsFont());
    setToastPlace(pictures_); // a message over the sound would hide the clap
    pictures_->setAttribute(Qt::WA_TransparentForMouseEvents);
    ofLens_ = lens_->onChange([this] { update(); });
    ofReview_ = review_->onChange([this] { look(); });
    ofWork_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::syncGroups) look();
    });
    ofEngine_ = review_->engine()->onChange([this](VideoEngineField field) {
        if (field == VideoEngineField::transport) look();
        if (field != VideoEngineField::playhead || review_->engine()->isSkimming()) return;
        // While it plays, the lens stays on the clap, and after that until the next move.
        review_->engine()->transport().isPlaying ? rest_.reset() : look();
    });
}

void SyncLensView::setFreeTop(int points) {
    if (std::exchange(freeTop_, points) == points) return;
    placePictures();
    update();
}

void SyncLensView::placePictures() {
    pictures_->setGeometry(pictureRect(0).united(pictureRect(pictures - 1)));
}

bool SyncLensView::canShow() const {
    const auto& id = review_->groupID();
    const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
    const VideoEngine& engine = *review_->engine();
    return clip != nullptr && engine.transport().isLoaded &&
           syncLensPlan(*clip, review_->clapSeconds(), engine.playhead());
}

bool SyncLensView::isPlayheadMoved() {
    const VideoEngine& engine = *review_->engine();
    const Rest now{*review_->groupID(), review_->clapSeconds().value_or(0), shownFrame(engine.playhead())};
    if (!rest_ || rest_->clip != now.clip || rest_->clapSeconds != now.clapSeconds ||
        engine.transport().isPlaying)
        rest_ = now;
    return rest_->frame != now.frame;
}

void SyncLensView::look() {
    if (!isVisible()) return;
    const auto& id = review_->groupID();
    const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
    const VideoEngine& engine = *review_->engine();
    const auto plan = clip != nullptr && engine.transport().isLoaded
                          ? syncLensPlan(*clip, review_->clapSeconds(), engine.playhead(), isPlayheadMoved())
                          : std::nullopt;
    if (!plan) {
        rest_.reset();
        lens_->clear();
        return update();
    }
    const double ratio = devicePixelRatioF();
    const QRect first = pictureRect(0);
    lens_->show(*plan,
                {static_cast<int>(std::lround(first.width() * ratio)),
                 static_cast<int>(std::lround((first.height() + freeTop_) * ratio))},
                static_cast<std::size_t>(std::max(soundRect().width(), 1)));
}

void SyncLensView::resizeEvent(QResizeEvent*) {
    placePictures();
    look();
}
void SyncLensView::showEvent(QShowEvent*) { look(); }
void SyncLensView::hideEvent(QHideEvent*) {
    rest_.reset();
    lens_->clear();
}

QRect SyncLensView::soundRect() const {
    const int height = static_cast<int>(this->height() * soundShare);
    return {0, this->height() - height, width(), height};
}

QRect SyncLensView::pictureRect(int index) const {
    const int left = width() * index / pictures, right = width() * (index + 1) / pictures;
    return {left, freeTop_, right - left - (index + 1 < pictures ? gap : 0),
            soundRect().top() - clapHeight - captionHeight - freeTop_};
}

void SyncLensView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Colours& all = colours();
    painter.fillRect(rect(), all.picture);
    if (!lens_->plan()) return;
    const SyncLens::Seen& seen = lens_->seen();
    const SyncLensPlan& plan = lens_->seenPlan() ? *lens_->seenPlan() : *lens_->plan();
    for (int i = 0; i < pictures; ++i) {
        const QRect place = pictureRect(i);
        const auto& picture = seen.pictures.at(static_cast<std::size_t>(i));
        if (picture) {
            // Above its caption: it moves for a message over the top only if it is as high as its place.
            const QImage image = imageOf(*picture);
            const int height = std::min(place.height(), place.width() * image.height() / image.width());
            paintFitted(painter, place.adjusted(0, place.height() - height, 0, 0), image);
        } else {
            painter.setPen(all.facts);
            painter.drawText(place, Qt::AlignCenter,
                             lens_->isLoading() ? tr("Reading…") : tr("No picture here"));
        }
        const bool isMiddle = i == 1;
        const QRect caption(place.left(), place.bottom() + 1, place.width(), captionHeight);
        painter.fillRect(caption, isMiddle ? all.selected : all.panel);
        painter.setPen(isMiddle ? all.onSelected : all.facts);
        painter.drawText(caption, Qt::AlignCenter,
                         translatedSentence(syncLensCaption(plan, static_cast<std::size_t>(i))));
    }
    paintSound(painter);
    paintClap(painter, plan);
}

void SyncLensView::paintSound(QPainter& painter) const {
    const Colours& all = colours();
    const SyncLens::Seen& seen = lens_->seen();
    const QRect place = soundRect();
    painter.fillRect(place, all.window);
    painter.setPen(all.line);
    for (int i = 1; i < pictures; ++i) {
        const int x = pictureRect(i).left();
        painter.drawLine(x, place.top(), x, place.bottom());
    }
    if (seen.sound.empty()) {
        painter.setPen(all.facts);
        painter.drawText(place, Qt::AlignCenter,
                         lens_->isLoading() ? tr("Reading…")
                                            : tr("No sound here. Attach a recording to compare with."));
    } else {
        const double middle = place.center().y() + 0.5;
        // Scaled to the loudest moment: only positions matter here.
        float loudest = 1e-4F;
        for (const SyncLens::Column& column : seen.sound)
            loudest = std::max({loudest, column.highest, -column.lowest});
        const double scale = (place.height() / 2.0 - 3) / loudest;
        const double width = static_cast<double>(place.width()) / static_cast<double>(seen.sound.size());
        const QColor colour = channelColour(0);
        for (std::size_t i = 0; i < seen.sound.size(); ++i) {
            const SyncLens::Column& column = seen.sound[i];
            const double top = middle - column.highest * scale, bottom = middle - column.lowest * scale;
            painter.fillRect(QRectF(place.left() + static_cast<double>(i) * width, top, width,
                                    std::max(bottom - top, 1.0)),
                             colour);
        }
    }
}

void SyncLensView::paintClap(QPainter& painter, const SyncLensPlan& plan) const {
    const Colours& all = colours();
    const QRect place = soundRect();
    const double length = plan.endSeconds() - plan.startSeconds();
    const double x = place.left() + place.width() * (plan.clapSeconds - plan.startSeconds()) / length;
    // The word is above the sound, so that it hides no sound.
    const QRect above(place.left(), place.top() - clapHeight, place.width(), clapHeight);
    painter.fillRect(above, all.panel);
    painter.setPen(all.text);
    const QRect words = above.adjusted(space::tight, 0, -space::tight, 0);
    if (x < place.left()) return painter.drawText(words, Qt::AlignVCenter | Qt::AlignLeft, tr("← Clap"));
    if (x > place.right()) return painter.drawText(words, Qt::AlignVCenter | Qt::AlignRight, tr("Clap →"));
    painter.fillRect(QRectF(x - 0.75, above.top(), 1.5, place.bottom() + 1 - above.top()), all.text);
    painter.drawText(QRectF(x + space::tight, above.top(), above.right() - x, above.height()),
                     Qt::AlignVCenter | Qt::AlignLeft, tr("Clap"));
}

} // namespace orvane::views
