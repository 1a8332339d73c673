#include "OrvaneSyncApp/Views/DemoShoot.h"

#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Modules.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <utility>

namespace orvane::views::DemoShoot {

namespace {

QString maker() {
    for (const std::string& folder : platform::modules::programFolders()) {
        const QFileInfo tool(QDir(text(folder)).filePath(QStringLiteral("orvane_make_shoot")));
        if (tool.isExecutable()) return tool.filePath();
    }
    return {};
}

} // namespace

void whenAvailable(QObject* context, std::function<void()> then) {
    inBackground(context, maker, [then = std::move(then)](const QString& program) {
        if (!program.isEmpty()) then();
    });
}

namespace {

const QString toolName = QStringLiteral("demoShoot");
constexpr const char* isCancelled = "isCancelled";

using Progress = std::function<void(const QString& step)>;
using Done = std::function<void(const QString& folder, const QString& failure)>;

void start(QObject* context, const QString& program, const QString& folder, Progress progress, Done done) {
    auto* tool = new QProcess(context);
    tool->setObjectName(toolName);
    QObject::connect(tool, &QProcess::readyReadStandardOutput, context,
                     [tool, progress = std::move(progress)] {
                         const QStringList lines =
                             QString::fromUtf8(tool->readAllStandardOutput()).split(QLatin1Char('\n'));
                         if (lines.size() > 1) progress(lines[lines.size() - 2]);
                     });
    const auto end = [tool, folder, done = std::move(done)](const QString& failure) {
        tool->deleteLater();
        const bool isMade = failure.isEmpty() && !tool->property(isCancelled).toBool();
        done(isMade ? folder : QString(), failure);
    };
    QObject::connect(tool, &QProcess::finished, context, [tool, end](int status, QProcess::ExitStatus how) {
        const bool isMade = how == QProcess::NormalExit && status == 0;
        end(isMade || tool->property(isCancelled).toBool()
                ? QString()
                : QObject::tr("The demo shoot could not be made: %1")
                      .arg(QString::fromUtf8(tool->readAllStandardError()).trimmed()));
    });
    QObject::connect(tool, &QProcess::errorOccurred, context, [tool, end](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(QObject::tr("The demo shoot could not be made: %1").arg(tool->errorString()));
    });
    tool->start(program, {folder});
}

} // namespace

void cancel(QObject* context) {
    auto* tool = context->findChild<QProcess*>(toolName, Qt::FindDirectChildrenOnly);
    if (tool == nullptr) return;
    tool->setProperty(isCancelled, true);
    tool->kill();
}

void make(QObject* context, Progress progress, Done done) {
    struct Place {
        QString folder, maker;
        bool isMade = false;
    };
    inBackground(
        context,
        [] {
            const QDir data(text(AppStorageHelper::applicationSupportDirectory()));
            const QString folder = data.filePath(QStringLiteral("Demo Shoot"));
            // The report is the last file that is written, so if it exists the folder is complete.
            return Place{folder, maker(),
                         QFileInfo::exists(QDir(folder).filePath(QStringLiteral("DAY1.csv")))};
        },
        [context, progress = std::move(progress), done = std::move(done)](const Place& place) {
            if (place.isMade) return done(place.folder, {});
            start(context, place.maker, place.folder, progress, done);
        });
}

} // namespace orvane::views::DemoShoot
