#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Naming/PatternEditor.h"

#include <QWidget>

#include <functional>
#include <string>

class QSpinBox;

namespace orvane::views {

/// A naming pattern: its line, a button for each token, the counter, and what the pattern makes of a clip of
/// the open work.
class PatternEditorView : public QWidget {
  public:
    /// `changed`: when the pattern is to be stored.
    PatternEditorView(Desktop& desktop, std::function<void(const std::string& pattern)> changed,
                      QWidget* parent = nullptr);

    /// Leaves a pattern alone that is being typed.
    void show(const std::string& pattern);

  private:
    QWidget* makeTokens();
    QWidget* makeCounter();
    void insert(std::string_view token);
    void showPreview();

    Desktop& desktop_;
    const std::function<void(const std::string&)> changed_;
    PatternEditor editor_;
    QLineEdit* line_;
    QLabel* preview_;
    platform::Subscription observation_;
};

} // namespace orvane::views
