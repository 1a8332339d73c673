#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Models/FileURL.h"
#include "Platform/OnQueue.h"
#include "Platform/Task.h"

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace orvane {

/// The system's reason why a folder or file cannot be read; empty when it can.
std::string whyUnreadable(const std::string& path, bool mustBeFolder);
/// Why a file can't be read as a report, judged without parsing it; empty if it may be one.
std::string whyNoReport(const std::string& path);

namespace commands {

// The absolute location of a path that a caller gave. Throws Error if it cannot be read. The disk or share
// may take any time to answer, so use these within `lookUp`.
FileURL readableFile(const std::string& path);
FileURL readableFolder(const std::string& path);
/// The same for a file that may be a report.
FileURL readableReport(const std::string& path);

template <class Look>
platform::Task onDocumentsQueue(const OpenWork& work, Look look,
                                std::shared_ptr<std::invoke_result_t<Look&>> found) {
    auto looking = platform::onQueue(*work.documents, work.environment.mainThread,
                                     [look = std::move(look)](const std::stop_token&) { return look(); });
    *found = co_await looking;
}

/// Runs `look`, which owns all that it uses, on the queue of the documents, and then the task that `then`
/// makes from the controller and the result. Stops with the work; a `look` that does not return is not waited
/// for.
template <class Look, class Then>
platform::Task lookUp(std::weak_ptr<ImportController> weak, Look look, Then then) {
    auto controller = weak.lock();
    if (!controller) co_return;
    const auto found = std::make_shared<std::invoke_result_t<Look&>>();
    const platform::Task looking =
        controller->run(onDocumentsQueue(controller->work(), std::move(look), found));
    controller.reset();
    co_await looking;
    controller = weak.lock();
    if (!controller) co_return;
    const platform::Task rest = then(std::move(controller), std::move(*found));
    co_await rest;
}

} // namespace commands

} // namespace orvane
