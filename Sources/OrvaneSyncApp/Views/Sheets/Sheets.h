#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"

#include <functional>
#include <vector>

class QWidget;

/// The sheets of the window. Each opens over `parent` and is destroyed when it is closed.
namespace orvane::views {

void showExport(Desktop& desktop, QWidget* parent);
/// Find and replace, padding, prefix and suffix for the names of all clips, or of the selected ones if
/// several are selected, with a preview.
void showBatchRenamer(Desktop& desktop, QWidget* parent, const std::vector<UUID>& selected = {});
/// Builds the room tone of each scene from the quiet stretches of its recordings.
void showAtmoBuilder(Desktop& desktop, QWidget* parent);
/// The state of each subsystem.
void showDiagnostics(Desktop& desktop, QWidget* parent);
/// A message with a picture of the window and a report. Both are shown before anything is sent.
void showFeedback(Desktop& desktop, QWidget* parent);
/// The result of the loaded report; does nothing without one.
void showReport(Desktop& desktop, QWidget* parent);
/// Applies the decisions of a review table, and says how many clips changed and which lines could not be used
/// in full.
void applyReviewTable(Desktop& desktop, const QString& path, QWidget* parent);
void showAbout(QWidget* parent);

/// Reads which outside services are configured, and calls `found` with their addresses; those of other
/// services are absent.
void findServices(QWidget* context, std::function<void(const ServiceConfiguration&)> found);

} // namespace orvane::views
