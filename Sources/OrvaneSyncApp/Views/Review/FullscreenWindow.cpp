#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QAction>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace orvane::views {

/// Shown over the picture for its first seconds.
class FullscreenWindow::Hint : public QWidget {
  public:
    explicit Hint(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        QFont font = design::textFont();
        font.setPixelSize(static_cast<int>(FullscreenManager::hintPoints));
        setFont(font);
        constexpr int pace = 40; // milliseconds
        connect(&timer_, &QTimer::timeout, this, [this] {
            const double opacity = FullscreenManager::hintOpacity(seconds());
            if (opacity != opacity_) update();
            opacity_ = opacity;
            if (opacity > 0) return;
            timer_.stop();
            hide();
        });
        timer_.setInterval(pace);
    }
    /// Shows the hint again if the camera has changed.
    void tell(const QString& name) {
        if (shown_.isValid() && name_ == name) return;
        name_ = name;
        words_ = translated(FullscreenManager::hint);
        if (!name.isEmpty()) words_.prepend(name + QStringLiteral("   ·   "));
        const QFontMetrics metrics(font());
        constexpr int inset = static_cast<int>(FullscreenManager::hintInset);
        const int margin = metrics.averageCharWidth();
        const QRect room(0, 0, parentWidget()->width() - 2 * (inset + margin), parentWidget()->height());
        const QSize size = metrics.boundingRect(room, Qt::TextWordWrap, words_).size();
        setGeometry(inset, inset, size.width() + 2 * margin, size.height() + design::space::small);
        setAccessibleName(words_);
        shown_.start();
        opacity_ = FullscreenManager::hintOpacity(0);
        timer_.start();
        show();
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setOpacity(opacity_);
        // The picture below may be as bright as the words.
        QColor ground = design::colours().picture;
        ground.setAlphaF(groundOpacity);
        painter.fillRect(rect(), ground);
        painter.setPen(design::colours().onSelected);
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, words_);
    }

  private:
    double seconds() const {
        constexpr double milli = 1000;
        return static_cast<double>(shown_.elapsed()) / milli;
    }

    static constexpr float groundOpacity = 0.75F;

    QString name_, words_;
    QElapsedTimer shown_;
    QTimer timer_;
    double opacity_ = FullscreenManager::hintOpacity(0);
};

FullscreenWindow::FullscreenWindow(const std::shared_ptr<VideoEngine>& engine, const QRect& screen,
                                   const Of& of)
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
    canvas->setEngine(engine);
    layout->addWidget(canvas);
    setGeometry(screen);
    auto* hint = new Hint(this);
    hint->tell(of.name());
    hint->raise();
    ofEngine_ = engine->onChange([hint, name = of.name](VideoEngineField field) {
        if (field == VideoEngineField::transport) hint->tell(name());
    });
    ofWork_ = of.work.onChange([hint, name = of.name](ImportField field) {
        if (field == ImportField::syncGroups) hint->tell(name());
    });
    new KeyOverlay(this, of.keys);
    // The keys of menus work in the windows that have the menu entries.
    for (QAction* entry : of.screen.window()->findChildren<QAction*>())
        if (!entry->shortcut().isEmpty()) addAction(entry);
}

bool FullscreenWindow::isOne(const QWidget* window) {
    return dynamic_cast<const FullscreenWindow*>(window) != nullptr;
}

/// A window may be closed by a key that it is handling: it is destroyed after it has returned.
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

FullscreenManager::Desktop FullscreenWindow::desktop(std::shared_ptr<VideoEngine> engine, Of of) {
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
    const auto open = [engine = std::move(engine), of = std::move(of)](std::size_t index) {
        QScreen* screen = QGuiApplication::screens().at(static_cast<qsizetype>(index));
        auto* window = new FullscreenWindow(engine, screen->geometry(), of);
        window->setScreen(screen);
        window->setWindowState(Qt::WindowFullScreen);
        window->show();
        window->activateWindow();
        return std::unique_ptr<FullscreenManager::Window>(std::make_unique<Handle>(window));
    };
    return {screens, open};
}

} // namespace orvane::views
