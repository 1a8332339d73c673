#include "OrvaneSyncApp/Views/MatchAgain.h"

#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QPointer>

#include <algorithm>

namespace orvane::views {

void matchAgain(Desktop& desktop, QWidget* of, const std::vector<UUID>& clips) {
    const SyncGroupList before = desktop.controller().work().syncGroups();
    desktop.runForClips("resyncClip", clips, {}, [window = QPointer(of->window()), &desktop, before, clips] {
        if (!window) return;
        const SyncGroupList& now = desktop.controller().work().syncGroups();
        const auto changed = std::ranges::count_if(clips, [&](const UUID& id) {
            const SyncGroup *was = before.find(id), *is = now.find(id);
            return was != nullptr && is != nullptr && !haveSameContents(*was, *is);
        });
        design::showToast(window, changed == 0
                                      ? QObject::tr("Matched again: nothing has changed.")
                                      : QObject::tr("Matched again: %1 changed.")
                                            .arg(translatedSentence(counted(changed, "clip", "clips"))));
    });
}

} // namespace orvane::views
