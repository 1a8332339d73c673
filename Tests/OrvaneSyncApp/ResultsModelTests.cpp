#include "ControllerTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "Support/AllocatedWork.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"

#include <random>

namespace orvane {
namespace {

using test::AllocatedWork;
using Filter = ResultsViewModel::Filter;
using Column = ResultsViewModel::Column;

class ResultsModelTest : public test::ControllerTest {
  protected:
    /// How a list is shown.
    struct Shown {
        Filter filter = Filter::all;
        const char* search = "";
        std::optional<Column> column{};
        bool isAscending = true;

        void show(ResultsViewModel& list) const {
            list.setFilter(filter);
            list.setSearch(search);
            list.setSorting(column, isAscending);
        }
    };

    /// Two cameras on each recording, and every third take a clip without sound.
    void open(int takes) {
        SyncGroupList clips;
        recordings_.clear();
        const auto name = [](const char* kind, int take, const char* end) {
            return kind + std::to_string(1000 + take) + end;
        };
        for (int take = 0; take < takes; ++take) {
            recordings_.push_back(
                test::slated(test::audio(name("T", take, ".wav")), "1", std::to_string(take)));
            for (const char* camera : {"A001C", "B001C"})
                clips.append(test::clip(test::video(name(camera, take, ".mov"), "10:00:00:00", take % 7),
                                        recordings_.back()));
            if (take % 3 == 0)
                clips.append(
                    SyncGroup(test::video(name("C001C", take, ".mov")), {}, MatchStatus::unmatched()));
        }
        controller_->openStoredWork({{}, {}, clips});
    }
    static std::string textOf(const ResultsViewModel& list, std::size_t row) {
        const ResultsViewModel::Row shown = list.row(row);
        std::string all = shown.isBelowAnother ? " " : "";
        for (const std::string& cell : shown.texts) all += cell + "|";
        return all + std::to_string(shown.foldable) + (shown.isLocked ? "L" : "") +
               (shown.isApproved ? "A" : "");
    }
    static std::vector<std::string> textsOf(const ResultsViewModel& list) {
        std::vector<std::string> all;
        for (std::size_t row = 0; row < list.rowCount(); ++row) all.push_back(textOf(list, row));
        return all;
    }
    void edit(std::mt19937& random) {
        const auto& groups = controller_->work().syncGroups();
        const auto anyOf = [&](std::size_t count) { return random() % count; };
        const SyncGroup group = groups[anyOf(groups.size())];
        ClipEditing& clips = controller_->clips();
        controller_->withUndo(undoSteps::toggleLocked, [&] {
            switch (anyOf(8)) {
            case 0:
                for (std::size_t i = 0; i < 3; ++i) clips.toggleLocked(groups[anyOf(groups.size())].id);
                break;
            case 1:
                return clips.toggleApproved(group.id);
            case 2:
                return clips.setManualClipName(group.id, "Clip " + std::to_string(anyOf(20)));
            case 3:
                return clips.adjustAudioOffset(group.id, static_cast<double>(anyOf(20)) - 10);
            case 4:
                return clips.toggleExcludedFromMulticam(group.id);
            case 5:
                return clips.toggleExcludedFromExport(group.id);
            case 6:
                if (!group.isMOS())
                    controller_->recordings().removeAudioMatch(group.id, group.audioMatches.front().id);
                break;
            default:
                controller_->recordings().attachAudioToGroup(group.id,
                                                             recordings_[anyOf(recordings_.size())]);
            }
        });
        if (anyOf(4) == 0) controller_->undo();
    }

    std::vector<MediaAsset> recordings_;
};

TEST_F(ResultsModelTest, aListThatFollowsChangesIsLikeOneMadeAfterThem) {
    const Shown cases[] = {{},
                           {Filter::issues},
                           {Filter::matched, "", Column::match},
                           {Filter::all, "c10", {}},
                           {Filter::all, "001c", Column::name},
                           {Filter::matched, "a001", Column::begins, false},
                           {Filter::all, "", Column::marks, false},
                           {Filter::issues, "", Column::sound}};
    for (const unsigned seed : test::seeds(3))
        for (const Shown& shown : cases) {
            SCOPED_TRACE(std::to_string(seed) + ", case " + std::to_string(&shown - cases));
            std::mt19937 random(seed);
            open(12);
            ResultsViewModel list(*controller_);
            shown.show(list);
            std::vector<std::string> painted = textsOf(list);
            const auto following = list.onChange([&](const ResultsViewModel::Change& change) {
                if (change.isLayoutChanged) painted = textsOf(list);
                for (const std::size_t row : change.rows) painted.at(row) = textOf(list, row);
            });
            for (int step = 0; step < 60; ++step) {
                edit(random);
                mainThread_->runPosted();
                ResultsViewModel fresh(*controller_);
                shown.show(fresh);
                ASSERT_EQ(painted, textsOf(fresh)) << "after edit " << step;
                ASSERT_EQ(list.order(), fresh.order());
                for (std::size_t row = 0; row < list.rowCount(); ++row)
                    ASSERT_EQ(list.rowOf(list.groupID(row)), row);
            }
        }
}

/// Counted in allocations, which do not depend on the machine: those for texts and lists of all clips would.
TEST_F(ResultsModelTest, aChangeOfOneClipCostsTheSameInALongList) {
    if (!AllocatedWork::isCounted) GTEST_SKIP() << "a sanitizer has its own allocator";
    const Shown cases[] = {
        {Filter::all, "", Column::name}, {Filter::issues, "c001"}, {Filter::matched, "", Column::marks}};
    for (const Shown& shown : cases) {
        const auto allocations = [&](int takes) {
            open(takes);
            ResultsViewModel list(*controller_);
            shown.show(list);
            long last = 0;
            for (int i = 0; i < 3; ++i) { // the first changes make what is kept from then on
                const UUID clip = list.groupID(list.rowCount() / 2);
                AllocatedWork::begin(0, {});
                controller_->clips().toggleLocked(clip);
                last = AllocatedWork::end();
            }
            return last;
        };
        const long ofFew = allocations(100);
        EXPECT_LE(allocations(1000), ofFew + ofFew / 2) << "case " << &shown - cases;
    }
}

} // namespace
} // namespace orvane
