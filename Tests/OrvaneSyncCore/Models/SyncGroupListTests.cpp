#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"

#include <algorithm>
#include <random>

namespace orvane {
namespace {

SyncGroup clip() { return {UUID::random(), MediaAsset(FileURL{"/a.mov"}, AssetKind::video), {}, {}}; }

/// Applies the changes to the earlier list as a list on screen does: the result is the later list, and only
/// the named rows are touched.
void expectThatItLeadsTo(const SyncGroupList& later, const SyncGroupList& earlier) {
    const SyncGroupChanges changes = later.changesSince(earlier);
    std::vector<SyncGroupList::Element> rows, moving;
    const auto isAmong = [](const auto& list, std::size_t row) { return std::ranges::count(list, row) > 0; };
    for (std::size_t row = 0; row < earlier.size(); ++row) {
        const bool moves = std::ranges::count(changes.moved, row, &SyncGroupChanges::Move::from) > 0;
        if (!moves && !isAmong(changes.removed, row)) rows.push_back(earlier.element(row));
    }
    const auto place = [&](std::size_t row, SyncGroupList::Element element) {
        ASSERT_LE(row, rows.size());
        rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(row), std::move(element));
    };
    for (std::size_t row = 0; row < later.size(); ++row) {
        const auto move = std::ranges::find(changes.moved, row, &SyncGroupChanges::Move::to);
        if (move != changes.moved.end()) place(row, earlier.element(move->from));
        if (isAmong(changes.inserted, row)) place(row, later.element(row));
    }
    for (const std::size_t row : changes.changed) rows.at(row) = later.element(row);
    ASSERT_EQ(rows.size(), later.size());
    for (std::size_t row = 0; row < rows.size(); ++row) EXPECT_EQ(rows[row], later.element(row)) << row;
}

TEST(SyncGroupChanges, leadFromOneListToTheNext) {
    std::mt19937 random(test::randomSeed());
    for (int round = 0; round < 60; ++round) {
        std::vector<SyncGroupList::Element> rows;
        const std::size_t count = random() % 300;
        for (std::size_t i = 0; i < count; ++i) rows.push_back(std::make_shared<const SyncGroup>(clip()));
        SyncGroupList earlier, later;
        for (const auto& row : rows) earlier.append(row);
        for (std::size_t edit = random() % 6; edit > 0 && !rows.empty(); --edit) {
            const auto at = rows.begin() + static_cast<std::ptrdiff_t>(random() % rows.size());
            const auto kind = random() % 4;
            if (kind == 0) *at = std::make_shared<const SyncGroup>(**at);
            if (kind == 1) rows.erase(at);
            if (kind == 2) rows.insert(at, std::make_shared<const SyncGroup>(clip()));
            if (kind == 3)
                std::iter_swap(at, rows.begin() + static_cast<std::ptrdiff_t>(random() % rows.size()));
        }
        for (const auto& row : rows) later.append(row);
        expectThatItLeadsTo(later, earlier);
    }
}

TEST(SyncGroupChanges, nameNoUnchangedRow) {
    SyncGroupList list;
    for (int i = 0; i < 1000; ++i) list.append(clip());
    EXPECT_TRUE(list.changesSince(list).empty());
    SyncGroupList edited = list;
    for (const std::size_t row : {999U, 0U, 64U})
        edited.update(list[row].id, [](SyncGroup& own) { own.isLocked = true; });
    EXPECT_EQ(edited.changesSince(list), (SyncGroupChanges{{}, {}, {}, {0, 64, 999}}));
    SyncGroupList many = list;
    many.updateAt({999, 1, 64, 2, 1}, [](SyncGroup& own, std::size_t i) {
        own.manualAudioOffsetSeconds += static_cast<double>(i);
        own.isLocked = true;
    });
    EXPECT_EQ(many.changesSince(list), (SyncGroupChanges{{}, {}, {}, {1, 2, 64, 999}}));
    EXPECT_EQ(many[1].manualAudioOffsetSeconds, 1 + 4);
    const SyncGroupList kept = many;
    many.updateWhere([](const SyncGroup& group) { return group.isLocked; },
                     [](SyncGroup& own) { own.isLocked = false; });
    EXPECT_EQ(many.changesSince(kept), (SyncGroupChanges{{}, {}, {}, {1, 2, 64, 999}}));
    EXPECT_TRUE(kept[2].isLocked) << "an earlier state stays as it was";
    const auto without = list.filtered([&](const SyncGroup& group) { return group.id != list[3].id; });
    EXPECT_EQ(without.changesSince(list), (SyncGroupChanges{{3}, {}, {}, {}}))
        << "those behind it do not move";
    SyncGroupList moved;
    for (std::size_t row = 1; row < list.size(); ++row) moved.append(list.element(row));
    moved.append(list.element(0));
    EXPECT_EQ(moved.changesSince(list), (SyncGroupChanges{{}, {}, {{0, 999}}, {}}));
}

} // namespace
} // namespace orvane
