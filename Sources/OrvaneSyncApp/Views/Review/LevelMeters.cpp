#include "OrvaneSyncApp/Views/Review/LevelMeters.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int widestBar = 10, barGap = 2, clipHeight = 10;
constexpr int mostWidth = 132;
constexpr double lowestDB = -60;      // the range ends at full scale
constexpr int updatesAfterRest = 180; // three seconds, until bars and peaks have fallen

constexpr double scale[] = {0, -12, -24, -36, -48};

QString scaleText(double decibels) {
    return QString::number(decibels).replace(QLatin1Char('-'), QChar(u'−'));
}

double share(double decibels) { return std::clamp(1 - decibels / lowestDB, 0.0, 1.0); }

} // namespace

LevelMeters::LevelMeters(const std::shared_ptr<platform::MainThread>& mainThread,
                         std::shared_ptr<VideoEngine> engine, QWidget* parent)
    : QWidget(parent), engine_(std::move(engine)), provider_(AudioLevelProvider::create(mainThread)) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setAccessibleName(tr("Levels"));
    setFont(factsFont());
    ofEngine_ = engine_->onChange([this](VideoEngineField field) { follow(field); });
    ofLevels_ = provider_->onChange([this] { measure(); });
    follow(VideoEngineField::transport);
}

QSize LevelMeters::sizeHint() const {
    const int channels = std::max(widest_, 2);
    return {scaleWidth() + std::min(channels * (widestBar + barGap) + 2 * space::tight, mostWidth), 120};
}

void LevelMeters::follow(VideoEngineField field) {
    const platform::Player* player = engine_->player();
    if (player == nullptr) {
        provider_->detach();
        if (channels_ != 0) clear();
        channels_ = 0;
        return;
    }
    if (field == VideoEngineField::transport || field == VideoEngineField::sound) {
        channels_ = channelsOf(*player);
        if (!engine_->transport().isLoading) {
            widest_ = std::exchange(isNewClip_, false) ? channels_ : std::max(widest_, channels_);
            updateGeometry();
        }
        update();
    }
    // A step of single frames has sound too.
    if (field == VideoEngineField::picture || field == VideoEngineField::loop) return;
    restUpdates_ = 0;
    if (!provider_->isActive() && player->facts().hasSound) provider_->attach(*player);
}

void LevelMeters::measure() {
    if (!provider_->isActive()) return provider_->detach();
    const platform::Player* player = engine_->player();
    if (player == nullptr) return;
    const std::vector<platform::ChannelPeak> now = measured(*player);
    const int recorded = static_cast<int>(ofRecording_.size()); // none unless these are shown
    if (channels_ != std::max(player->facts().soundChannelCount, recorded))
        follow(VideoEngineField::sound); // another recording
    constexpr double nanoseconds = 1e9;
    held_.update(now, static_cast<double>(player->hostTime().count()) / nanoseconds);
    const auto differs = [](const ChannelLevel& a, const ChannelLevel& b) {
        constexpr float visible = 0.004F; // of the bar
        return std::abs(a.peak - b.peak) > visible || std::abs(a.rms - b.rms) > visible;
    };
    const auto& levels = ofRecording_.empty() ? provider_->levels().channels : ofRecording_;
    if (!std::ranges::equal(levels, levels_, [&](const auto& a, const auto& b) { return !differs(a, b); }) ||
        held_.channels() != painted_) {
        levels_ = levels;
        painted_ = held_.channels();
        update();
    }
    if (engine_->transport().isPlaying || ++restUpdates_ < updatesAfterRest) return;
    provider_->detach();
}

int LevelMeters::channelsOf(const platform::Player& player) const {
    const std::size_t recorded = levelsOfRecording ? levelsOfRecording().size() : 0;
    return std::max(player.facts().soundChannelCount, static_cast<int>(recorded));
}

std::vector<platform::ChannelPeak> LevelMeters::measured(const platform::Player& player) {
    std::vector<platform::ChannelPeak> levels = player.levels();
    auto recorded = levelsOfRecording ? levelsOfRecording() : std::vector<platform::ChannelPeak>();
    if (std::cmp_less_equal(recorded.size(), player.facts().soundChannelCount)) {
        ofRecording_.clear();
        return levels;
    }
    if (std::ranges::none_of(levels, [](const auto& one) { return one.peak > 0; }))
        std::ranges::fill(recorded, platform::ChannelPeak());
    if (ofRecording_.size() > recorded.size()) ofRecording_.clear(); // of another recording
    smooth(ofRecording_, recorded, AudioLevelProvider::smoothing);
    return recorded;
}

void LevelMeters::clear() {
    held_.clear();
    ofRecording_.clear();
    painted_.clear();
    levels_.clear();
    isNewClip_ = true;
    update();
}

void LevelMeters::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Colours& all = colours();
    painter.fillRect(rect(), all.panel);
    if (channels_ <= 0) return;
    const double bar = std::max(pitch() - barGap, 1.0);
    const double top = space::tight + clipHeight + barGap, bottom = height() - space::tight;
    for (int i = 0; i < channels_; ++i) {
        const double left = firstBar() + i * pitch();
        const auto at = static_cast<std::size_t>(i);
        const QRectF whole(left, top, bar, bottom - top);
        painter.fillRect(whole, all.window);
        if (at < levels_.size()) {
            const QColor colour = channelColour(i);
            const auto fill = [&](double level, const QColor& with) {
                QRectF part = whole;
                part.setTop(bottom - level * whole.height());
                painter.fillRect(part, with);
            };
            fill(levels_[at].peak, colour.darker(180));
            fill(levels_[at].rms, colour);
        }
        if (at >= painted_.size()) continue;
        const double peak = share(painted_[at].peakDB);
        if (peak > 0) painter.fillRect(QRectF(left, bottom - peak * whole.height(), bar, 1.5), all.text);
        if (!painted_[at].isClipped) continue;
        const QRectF mark(left, space::tight, bar, clipHeight);
        painter.fillRect(mark, all.missing);
        painter.setPen(all.window);
        if (bar >= widestBar) painter.drawText(mark, Qt::AlignCenter, QStringLiteral("!"));
    }
    for (const double decibels : scale) {
        const double y = bottom - share(decibels) * (bottom - top);
        painter.setPen(all.line);
        painter.drawLine(QPointF(scaleWidth() - space::tight, y), QPointF(scaleWidth() - 1, y));
        painter.drawLine(QPointF(width() - space::tight + 1, y), QPointF(width(), y));
        painter.setPen(all.facts);
        const int line = fontMetrics().height();
        painter.drawText(QRectF(0, y - line / 2.0, scaleWidth() - space::tight - 1, line),
                         Qt::AlignRight | Qt::AlignVCenter, scaleText(decibels));
    }
}

double LevelMeters::pitch() const {
    return std::min((width() - scaleWidth() - 2.0 * space::tight) / std::max(channels_, 1),
                    1.0 * widestBar + barGap);
}

double LevelMeters::firstBar() const {
    return scaleWidth() + (width() - scaleWidth() - channels_ * pitch() + barGap) / 2;
}

int LevelMeters::scaleWidth() const {
    return fontMetrics().horizontalAdvance(scaleText(std::end(scale)[-1])) + 2 * space::tight;
}

int LevelMeters::channelAt(int x) const {
    return std::clamp(static_cast<int>((x - firstBar()) / pitch()), 0, std::max(channels_ - 1, 0));
}

bool LevelMeters::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || channels_ == 0) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const int channel = channelAt(help->x());
    QString words = text(AudioLevels::channelName(channel, channels_));
    const auto at = static_cast<std::size_t>(channel);
    if (at < painted_.size()) {
        words += tr(": peak %1 dBFS").arg(std::max(painted_[at].peakDB, lowestDB), 0, 'f', 1);
        if (!ofRecording_.empty()) words += tr("\nOf the recording. A mix of its channels is played.");
        if (painted_[at].isClipped) words += tr("\nReached full scale. A click takes the mark away.");
    }
    QToolTip::showText(help->globalPos(), words, this);
    return true;
}

void LevelMeters::mousePressEvent(QMouseEvent*) { clear(); }

} // namespace orvane::views
