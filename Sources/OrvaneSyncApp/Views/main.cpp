#include "OrvaneDesignKit/AppIcon.h"
#include "OrvaneDesignKit/FirstPaint.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/Gallery.h"
#include "OrvaneSyncApp/Views/Leaving.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/Notifier.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/ScreenSeries.h"
#include "OrvaneSyncApp/Views/SingleInstance.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WatchedApplication.h"
#include "OrvaneSyncCore/Services/Persistence/StandardSettings.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"
#include "OrvaneSyncCore/Services/Stems/StemCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "Platform/FileSettingsStore.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Interrupt.h"
#include "Platform/KeyRepeat.h"
#include "Platform/Log.h"
#include "Platform/MainThread.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>

namespace {

using namespace orvane;

#ifndef NDEBUG
void logBlocking(const char* what, const char* work) {
    platform::logError(std::string("The window waits for ") + what + " in " + work);
}
#endif

bool isAmongArguments(int argc, char** argv, std::initializer_list<std::string_view> names) {
    return std::any_of(argv + 1, argv + argc,
                       [&](const char* argument) { return std::ranges::count(names, argument) > 0; });
}

/// Without a display, Qt crashes the program. The help needs none.
bool hasDisplay(int argc, char** argv) {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (!qEnvironmentVariableIsEmpty(variable)) return true;
    if (isAmongArguments(argc, argv, {"-platform", "--platform"})) return true;
    if (!isAmongArguments(argc, argv, {"-h", "--help", "--help-all", "-v", "--version"})) return false;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return true;
}

/// What was requested on the command line.
struct Start {
    QStringList named{};               ///< folders, or one project; absolute paths
    std::optional<QString> pictures{}; ///< the folder for the pictures of all screens; absent: no pictures
    QString language{};                ///< empty: that of the desktop
    bool isGallery = false;
    bool isMeasured = false; ///< the program ends when its window has been painted
};

/// Ends the program after the help, the version, or the message about a wrong argument.
Start readArguments(const QCoreApplication& application) {
    QCommandLineParser arguments;
    arguments.setApplicationDescription(QStringLiteral(
        "The window of OrvaneSync: folders with camera files and sound recordings in, one "
        "FCPXML document out.\nFolders that are named are scanned at once; without any, the newest "
        "session opens as it was left. The demo shoot of "
        "./demo.sh: orvanesync-app demo/shoot\nWhere a window is open already, it takes what is "
        "named here."));
    arguments.addHelpOption();
    arguments.addVersionOption();
    const QCommandLineOption pictures(QStringLiteral("screenshot"),
                                      QStringLiteral("Write a picture of each screen into DIR and end."),
                                      QStringLiteral("DIR"));
    arguments.addOption(pictures);
    const QCommandLineOption language(
        QStringLiteral("language"),
        QStringLiteral("The language of the window: %1. Without it, the desktop's.")
            .arg(views::languages().join(QStringLiteral(", "))),
        QStringLiteral("CODE"));
    arguments.addOption(language);
    const QCommandLineOption gallery(QStringLiteral("gallery"),
                                     QStringLiteral("Show all controls that the windows are made of."));
    arguments.addOption(gallery);
    QCommandLineOption start(QStringLiteral("measure-start"));
    start.setFlags(QCommandLineOption::HiddenFromHelp); // for the benchmark
    arguments.addOption(start);
    arguments.addPositionalArgument(QStringLiteral("folders"), QStringLiteral("Folders, or one project."),
                                    QStringLiteral("[FOLDER...|PROJECT]"));
    arguments.process(application);
    Start read{.pictures =
                   arguments.isSet(pictures) ? std::optional(arguments.value(pictures)) : std::nullopt,
               .language = arguments.value(language),
               .isGallery = arguments.isSet(gallery),
               .isMeasured = arguments.isSet(start)};
    for (const QString& path : arguments.positionalArguments())
        read.named << QFileInfo(path).absoluteFilePath();
    return read;
}

views::Desktop::Dependencies dependenciesOf(const Start& start) {
    views::Desktop::Dependencies dependencies;
    dependencies.mainThread = views::qtMainThread();
    std::shared_ptr<platform::FileSettingsStore> settings = openStandardSettings();
    settings->followOthers();
    dependencies.settings = settings;
    // If a scan and an analysis are pictured, they must read their files.
    if (!start.pictures) {
        dependencies.probeCache = ProbeCache::shared();
        dependencies.analyses = AnalysisCache::shared();
    }
    dependencies.waveformCache = WaveformCache::shared();
    dependencies.renderedAudio = RenderedAudioStore::shared(settings);
    dependencies.stems = StemCache::bySettings(*settings, dependencies.renderedAudio);
    dependencies.openPlayers = [thread = dependencies.mainThread, clock = dependencies.clock] {
        return std::shared_ptr(platform::PlayerSystem::create(thread, clock));
    };
    return dependencies;
}

/// Saves all decisions before the program ends, so that nothing is lost.
void keepWork(QGuiApplication& application, views::Desktop& desktop, views::Leaving& leaving) {
    QObject::connect(&application, &QGuiApplication::applicationStateChanged, &application,
                     [&desktop](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive) {
                             desktop.sessions().becomeActive();
                             desktop.context().shortcuts()->refreshed();
                         } else {
                             desktop.sessions().resignActive();
                         }
                     });
    QApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application, [&desktop, &leaving] {
        // An analysis would change clip after clip, each of them to be saved.
        desktop.controller().work().running.requestStop();
        leaving.begin();
    });
}

/// Opens in the window what this start asked for, and later what other starts send.
void beginWork(views::MainWindow& window, views::SingleInstance& only, const Start& start) {
    if (!start.named.isEmpty())
        window.openPaths(start.named);
    else if (!start.pictures)
        window.openNewestSession();
    if (start.pictures) return views::writeScreens(window, *start.pictures, [] { QCoreApplication::quit(); });
    only.listen([&window](const QStringList& paths) {
        window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
        window.show();
        window.raise();
        window.activateWindow();
        window.openPaths(paths);
    });
}

int showGallery() {
    const std::unique_ptr<QWidget> controls(views::makeGallery());
    controls->show();
    return QApplication::exec();
}

int showWindow(QApplication& application, const Start& start) {
    // Two windows must not use the same sessions. Pictures can be made while another window is open.
    views::SingleInstance only;
    if (!start.pictures && only.sendToFirst(start.named)) return 0;
    views::Desktop desktop(dependenciesOf(start));
    views::MainWindow window(desktop);
    if (start.isMeasured) new design::FirstPaint(window, [] { QCoreApplication::quit(); });
    window.show();
    const views::Notifier notifier(desktop, window);
    beginWork(window, only, start);
    bool isUnsaved = false;
    views::Leaving leaving(desktop, window, [&] {
        isUnsaved = desktop.sessions().lastSaveError() || !desktop.sessions().unsaved().empty();
        QCoreApplication::quit();
    });
    keepWork(application, desktop, leaving);
    const int status = QApplication::exec();
    design::keptState::finish();
    // A normal end would wait for the disk that does not answer.
    if (isUnsaved) std::_Exit(1);
    if (platform::SerialQueue::hasAbandonedWork()) std::_Exit(status);
    return status;
}

int runProgram(int argc, char** argv) {
    platform::failRefusedWrites();
    platform::endWithoutMemory();
    if (!hasDisplay(argc, argv)) {
        std::fputs("error: there is no display to open a window on. Start it in a desktop session, or use "
                   "'orvanesync', which does the same on the command line; --screenshot also runs with "
                   "QT_QPA_PLATFORM=offscreen.\n",
                   stderr);
        return 1;
    }
#ifdef NDEBUG
    QApplication application(argc, argv);
#else
    platform::watchInterfaceWork({logBlocking, nullptr});
    views::WatchedApplication application(argc, argv);
#endif
    QCoreApplication::setOrganizationName(QStringLiteral("Orvane Tandrel"));
    QCoreApplication::setApplicationName(QStringLiteral("OrvaneSync"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));
    design::applyTheme(application);
    // On other window systems, the event itself says whether a key press is a repetition.
    if (const auto* x11 = application.nativeInterface<QNativeInterface::QX11Application>())
        platform::askForDetectableKeyRepeat(x11->display());
    const Start start = readArguments(application);
    views::installLanguage(application, start.language);
    QGuiApplication::setDesktopFileName(QStringLiteral("orvanesync"));
    QApplication::setWindowIcon(design::appIcon());
    return start.isGallery ? showGallery() : showWindow(application, start);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return runProgram(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
}
