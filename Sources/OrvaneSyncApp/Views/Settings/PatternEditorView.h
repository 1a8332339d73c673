#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Naming/PatternEditor.h"

#include <QWidget>

#include <functional>
#include <string>

class QSpinBox;

namespace orvane::views {

/// Edits a naming pattern: a text field, a button for each token, the counter, and the name that the pattern
/// gives to a clip of the open work.
class PatternEditorView : public QWidget {
  public:
    /// `changed` is called when the pattern should be stored.
    PatternEditorView(Desktop& desktop, std::function<void(const std::string& pattern)> changed,
                      QWidget* parent = nullptr);

    /// Does not change a pattern that is being typed.
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
