#include "OrvaneSyncApp/Views/DropFrame.h"

#include "OrvaneDesignKit/Theme.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

namespace orvane::views {

using namespace design;

namespace {

QStringList pathsOf(const QDropEvent& event) {
    QStringList paths;
    for (const QUrl& url : event.mimeData()->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

} // namespace

DropFrame::DropFrame(QWidget* parent) : QWidget(parent) {
    parent->setAcceptDrops(true);
    parent->installEventFilter(this);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

bool DropFrame::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::DragEnter) {
        auto& entered = static_cast<QDragEnterEvent&>(*event);
        if (const QStringList paths = pathsOf(entered); !paths.isEmpty()) {
            entered.acceptProposedAction();
            show(describe(paths));
        }
        return true;
    }
    const bool isDrop = event->type() == QEvent::Drop;
    if (!isDrop && event->type() != QEvent::DragLeave) return QWidget::eventFilter(watched, event);
    hide();
    if (isDrop) drop(pathsOf(static_cast<QDropEvent&>(*event)));
    return true;
}

void DropFrame::show(const QString& text) {
    text_ = text;
    setAccessibleName(text);
    setGeometry(parentWidget()->rect());
    raise();
    setVisible(true);
    update();
}

void DropFrame::paintEvent(QPaintEvent*) {
    constexpr int border = 3;
    QPainter painter(this);
    const QRect inner = rect().adjusted(space::small, space::small, -space::small, -space::small);
    painter.setPen(QPen(colours().selected, border));
    painter.drawRect(inner);
    QRect words = painter.fontMetrics().boundingRect(inner, Qt::AlignCenter | Qt::TextWordWrap, text_);
    words.adjust(-space::medium, -space::small, space::medium, space::small);
    painter.fillRect(words, colours().raised);
    painter.setPen(colours().text);
    painter.drawText(words, Qt::AlignCenter | Qt::TextWordWrap, text_);
}

} // namespace orvane::views
