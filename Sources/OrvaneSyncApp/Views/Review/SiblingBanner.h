#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Controllers/Commands/CardOffsets.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <QBoxLayout>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane::views {

/// Offers to move the sound of the clip in view as that of another camera of its take was moved; for a clip
/// without sound, to give it and its card sound with the offset of another clip of the card. Hidden without
/// such an offer; its place is chosen so that nothing moves when it appears.
class SiblingBanner : public QFrame {
  public:
    SiblingBanner(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

    QString text() const { return text_->text(); }
    bool hasOffer() const { return !isHidden(); }
    /// Applies the offer, if there is one; also while another message is shown in its place.
    void apply();

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    /// Adds a button that calls the member.
    QPushButton* add(QPushButton* one, void (SiblingBanner::*pressed)());
    void refresh();
    /// Shows the offer of the clip's card, which is found in the background.
    void askCard(const UUID& id);
    void showOffer(const QString& offer, const CardSuggestion* card = nullptr);
    void dismiss();
    void applyToCard() { applyOfCard(true); }
    void applyOfCard(bool isForAllClips);
    void run(std::string_view id, JSON arguments, const Desktop::Done& done = {});

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    QLabel* text_;
    QBoxLayout* buttons_;
    QPushButton* applyToCard_; ///< the number of clips is in its text
    std::string cardKey_;      ///< of the offer, if it is that of another clip of the card
    std::set<std::string> dismissedCards_;
    std::optional<UUID> shown_; ///< the clip of the offer
    bool isAsking_ = false;
    bool isAnswerOutdated_ = false; ///< of the running search; then it is repeated
    AfterPicture later_;
    std::vector<platform::Subscription> observations_;
};

} // namespace orvane::views
