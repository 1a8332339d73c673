#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <QFrame>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QListWidget;

namespace orvane::views {

/// A popup that chooses the project of LockitNetwork and the metadata prefix of a folder of sessions.
class ProjectPicker : public QFrame {
  public:
    using Projects = std::vector<LockitProject>;
    /// `loaded` gets the projects of the account when they have arrived.
    ProjectPicker(Desktop& desktop, std::string folder, std::function<void(const Projects&)> loaded,
                  QWidget* parent = nullptr);

  private:
    void load();
    void showProjects(Projects projects);
    void say(const QString& message, bool mayRetry);
    void assign(const JSON& projectID);

    Desktop& desktop_;
    const std::string folder_;
    const std::function<void(const Projects&)> loaded_;
    const std::shared_ptr<LockitOAuthService> account_;
    Projects projects_;
    QLabel* message_;
    QListWidget* list_;
    QPushButton* retry_;
    QPushButton* remove_;
};

} // namespace orvane::views
