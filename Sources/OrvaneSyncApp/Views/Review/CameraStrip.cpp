#include "OrvaneSyncApp/Views/Review/CameraStrip.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orvane::views {

using namespace design;

namespace {

constexpr int rowHeight = 26, rulerHeight = 22, cameraNameWidth = 120, rowGap = 2;
constexpr int screenPace = 16; ///< milliseconds

} // namespace

CameraStrip::CameraStrip(Desktop& desktop, std::shared_ptr<MulticamViewModel> multicam, QWidget* parent)
    : QWidget(parent), desktop_(desktop), multicam_(std::move(multicam)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFont(factsFont());
    setAccessibleName(tr("Cameras on the time of their sound"));
    setToolTip(tr("A click goes there with all cameras."));
    connect(&pace_, &QTimer::timeout, this, [this] { followPlayhead(); });
}

QSize CameraStrip::sizeHint() const {
    const auto rows = static_cast<int>(std::max<std::size_t>(axis_.cameras.size(), 1));
    return {600, rulerHeight + rows * (rowHeight + rowGap) + space::tight};
}

void CameraStrip::follow() {
    axis_ = CameraAxis::of(multicam_->bag(), desktop_.controller().work().syncGroups());
    rows_ = {};
    updateGeometry();
    update();
}

void CameraStrip::followPlayhead() {
    const bool isPlaying = multicam_->bag().isPlaying();
    if (isPlaying && !pace_.isActive()) pace_.start(screenPace);
    if (!isPlaying) pace_.stop();
    const double x = playheadX();
    if (x == shownX_) return;
    const auto column = [&](double at) {
        update(QRect(static_cast<int>(std::floor(at)) - 1, 0, 4, height()));
    };
    column(shownX_);
    column(x);
    shownX_ = x;
}

QRect CameraStrip::axisRect() const { return rect().adjusted(cameraNameWidth, 0, -space::small, 0); }

double CameraStrip::playheadX() const {
    const auto at = sharedPlayhead(multicam_->bag());
    return at ? axisRect().left() + axis_.x(*at, axisRect().width()) : -1;
}

void CameraStrip::paintEvent(QPaintEvent*) {
    const Colours& all = colours();
    const double ratio = devicePixelRatioF();
    if (rows_.isNull()) {
        rows_ = QPixmap(size() * ratio);
        rows_.setDevicePixelRatio(ratio);
        rows_.fill(all.window);
        QPainter painter(&rows_);
        painter.setFont(font());
        const QRect axis = axisRect();
        const double length = axis_.endSeconds - axis_.startSeconds;
        const double perSecond = length > 0 ? axis.width() / length : 0;
        const double step = perSecond > 0
                                ? TimelineRuler::legibleInterval(
                                      std::max(TimelineRuler::rulerInterval(length, axis.width()), 1.0),
                                      perSecond)
                                : 0; // labels are whole seconds
        double freeFrom = 0;         // behind the label before
        for (double at = step > 0 ? std::ceil(axis_.startSeconds / step) * step : 1;
             step > 0 && at <= axis_.endSeconds; at += step) {
            const double x = axis.left() + axis_.x(at, axis.width());
            painter.setPen(all.line);
            painter.drawLine(QPointF(x, rulerHeight - 5), QPointF(x, height()));
            painter.setPen(all.facts);
            const QString label = text(TimelineRuler::labelText(at));
            // The last label is drawn before its tick if there is no room after it.
            const int labelWidth = painter.fontMetrics().horizontalAdvance(label) + space::tight;
            const double labelX = x + labelWidth > width() ? x - labelWidth : x + space::tight;
            if (labelX < freeFrom) continue;
            painter.drawText(QPointF(labelX, rulerHeight - 7), label);
            freeFrom = labelX + labelWidth + space::small;
        }
        const auto& heard = multicam_->bag().audioSourceMemberID();
        int y = rulerHeight;
        int number = 0;
        for (const CameraAxis::Camera& camera : axis_.cameras) {
            const bool isHeard = heard == camera.id;
            painter.setPen(isHeard ? all.text : all.facts);
            const QRect name(space::small, y, cameraNameWidth - space::medium, rowHeight);
            painter.drawText(name, Qt::AlignVCenter | Qt::AlignLeft,
                             elidedFile(painter.fontMetrics(), inPartOrder(translatedSentence(camera.label)),
                                        name.width()));
            const double left = axis.left() + axis_.x(camera.startSeconds, axis.width());
            const double right = axis.left() + axis_.x(camera.endSeconds, axis.width());
            const QRectF bar(left, y, std::max(right - left, 1.0), rowHeight);
            painter.fillRect(bar, channelColour(number++).darker(isHeard ? 130 : 220));
            y += rowHeight + rowGap;
        }
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, rows_);
    shownX_ = playheadX();
    if (shownX_ >= 0) painter.fillRect(QRectF(shownX_ - 0.5, 0, 1.5, height()), all.text);
}

void CameraStrip::resizeEvent(QResizeEvent*) { rows_ = {}; }

void CameraStrip::go(double x) {
    if (axis_.cameras.empty()) return;
    JSON arguments = JSON::object();
    arguments.set("seconds", axis_.seconds(x - axisRect().left(), axisRect().width()));
    desktop_.run("clusterSeek", std::move(arguments));
}

void CameraStrip::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) go(event->position().x());
}
void CameraStrip::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons().testFlag(Qt::LeftButton)) go(event->position().x());
}

} // namespace orvane::views
