#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace orvane::views {

/// Above the picture, for its first seconds.
class FullscreenWindow::Hint : public QWidget {
  public:
    Hint(const QString& name, QWidget* parent) : QWidget(parent) {
        if (!name.isEmpty()) words_.prepend(name + QStringLiteral("   ·   "));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        QFont font = design::textFont();
        font.setPixelSize(static_cast<int>(FullscreenManager::hintPoints));
        setFont(font);
        const QFontMetrics metrics(font);
        constexpr int inset = static_cast<int>(FullscreenManager::hintInset);
        setGeometry(inset, inset, metrics.horizontalAdvance(words_) + metrics.averageCharWidth(),
                    metrics.height());
        shown_.start();
        constexpr int pace = 40; // milliseconds
        connect(&timer_, &QTimer::timeout, this, [this] {
            const double opacity = FullscreenManager::hintOpacity(seconds());
            if (opacity != opacity_) update();
            opacity_ = opacity;
            if (opacity > 0) return;
            timer_.stop();
            hide();
        });
        timer_.start(pace);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setOpacity(opacity_);
        painter.setPen(design::colours().onSelected);
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, words_);
    }

  private:
    double seconds() const {
        constexpr double milli = 1000;
        return static_cast<double>(shown_.elapsed()) / milli;
    }

    QString words_ = translated(FullscreenManager::hint);
    QElapsedTimer shown_;
    QTimer timer_;
    double opacity_ = FullscreenManager::hintOpacity(0);
};

FullscreenWindow::FullscreenWindow(std::shared_ptr<VideoEngine> engine, const QRect& screen,
                                   const QString& name)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setWindowTitle(tr("Picture"));
    setCursor(Qt::BlankCursor);
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, design::colours().picture);
    setPalette(black);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* canvas = new PictureCanvas;
    canvas->setEngine(std::move(engine));
    layout->addWidget(canvas);
    setGeometry(screen);
    (new Hint(name, this))->raise();
}

bool FullscreenWindow::isOne(const QWidget* window) {
    return dynamic_cast<const FullscreenWindow*>(window) != nullptr;
}

/// A window may be closed by a key that it is handling: it is destroyed when it has returned.
class FullscreenWindow::Handle : public FullscreenManager::Window {
  public:
    explicit Handle(FullscreenWindow* window) : window_(window) {}
    ~Handle() override {
        window_->hide();
        window_->deleteLater();
    }

  private:
    FullscreenWindow* window_;
};

FullscreenManager::Desktop FullscreenWindow::desktop(std::shared_ptr<VideoEngine> engine,
                                                     std::function<QString()> name) {
    const auto screens = [] {
        std::vector<Screen> found;
        for (const QScreen* screen : QGuiApplication::screens()) {
            const QString model = screen->model().isEmpty() ? screen->name() : screen->model();
            found.push_back({utf8(model), static_cast<double>(screen->geometry().width()),
                             static_cast<double>(screen->geometry().height()),
                             screen == QGuiApplication::primaryScreen()});
        }
        return found;
    };
    const auto open = [engine = std::move(engine), name = std::move(name)](std::size_t index) {
        QScreen* screen = QGuiApplication::screens().at(static_cast<qsizetype>(index));
        auto* window = new FullscreenWindow(engine, screen->geometry(), name());
        window->setScreen(screen);
        window->setWindowState(Qt::WindowFullScreen);
        window->show();
        window->activateWindow();
        return std::unique_ptr<FullscreenManager::Window>(std::make_unique<Handle>(window));
    };
    return {screens, open};
}

} // namespace orvane::views
