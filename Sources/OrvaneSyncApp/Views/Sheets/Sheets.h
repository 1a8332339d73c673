#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"

#include <functional>
#include <vector>

class QWidget;

/// The sheets of the window. Each opens over `parent` and goes when it is closed.
namespace orvane::views {

void showExport(Desktop& desktop, QWidget* parent);
/// Find and replace, padding, prefix and suffix over all clips, or over those that are selected where these
/// are several, with what would come of it.
void showBatchRenamer(Desktop& desktop, QWidget* parent, const std::vector<UUID>& selected = {});
/// Room tone of each scene out of the quiet stretches of its recordings.
void showAtmoBuilder(Desktop& desktop, QWidget* parent);
/// The state of each subsystem.
void showDiagnostics(Desktop& desktop, QWidget* parent);
/// A message with a picture of the window and a report, both of which are shown before anything leaves.
void showFeedback(Desktop& desktop, QWidget* parent);
/// What came of the report that is loaded; nothing without one.
void showReport(Desktop& desktop, QWidget* parent);
/// Applies the decisions of a review table, and says how many clips that changed and of which lines something
/// could not be used.
void applyReviewTable(Desktop& desktop, const QString& path, QWidget* parent);
void showAbout(QWidget* parent);

/// Says which outside services there are, once that is known: entries for others are absent.
void findServices(QWidget* context, std::function<void(const ServiceConfiguration&)> found);

} // namespace orvane::views
