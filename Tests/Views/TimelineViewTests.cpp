#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineCanvas.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineView.h"
#include "OrvaneSyncApp/Views/Timeline/TrackHeader.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WildTracksView.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Support/FakePlayer.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/TimelineClip.h"
#include "Views/AllWindows.h"

#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
#include <QTest>
#include <QTreeWidget>
#include <QWheelEvent>

#include <cmath>
#include <filesystem>
#include <numbers>

namespace orvane::views {

namespace {

using test::waitUntil;
using RowKind = TimelineLayout::RowKind;

/// Bursts like speech, different on each channel; a clap at 6 s on all.
std::vector<float> spokenSamples(int channels, int rate, int seconds) {
    std::vector<float> samples;
    for (int i = 0; i < rate * seconds; ++i)
        for (int channel = 0; channel < channels; ++channel) {
            const double t = static_cast<double>(i) / rate;
            const double speaks =
                std::max(0.0, std::sin(t * 1.7 + channel * 1.1)) * std::pow(std::sin(t * 9), 2);
            const double clap = t > 6 && t < 6.03 ? 0.9 : 0;
            samples.push_back(static_cast<float>(std::sin(t * 2 * std::numbers::pi * 700) *
                                                 (0.01 + clap + 0.5 * speaks / (1 + channel % 3))));
        }
    return samples;
}

/// The timeline with a clip whose sound is loaded and whose player is moved by the test.
class TimelineViewTest : public testing::Test {
  protected:
    explicit TimelineViewTest(int channels = 3) {
        test::application();
        registerStandardDefaults(*settings_);
        Desktop::Dependencies dependencies;
        dependencies.mainThread = qtMainThread();
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path("sessions");
        system_ = std::make_shared<test::FakePlayerSystem>(dependencies.mainThread);
        system_->usual.duration = {30, 1};
        dependencies.openPlayers = [this] { return system_; };
        desktop_ = std::make_unique<Desktop>(std::move(dependencies));
        desktop_->whenRefused = [](const QString& why) { ADD_FAILURE() << why.toStdString(); };
        SyncGroup group = test::timelineClip(channels);
        MediaAsset recording = *group.audioMatches.front().audio;
        recording.url =
            FileURL{folder_.write("T01.WAV", test::WaveMaker()
                                                 .format({.channels = channels, .sampleRate = 4000})
                                                 .samples(spokenSamples(channels, 4000, 20))
                                                 .bytes())};
        group.audioMatches.front().audio = recording;
        id_ = group.id;
        SyncGroup silent(test::video("A002_MOS.mov", "11:00:00:00", 12), {}, MatchStatus::mos());
        silentID_ = silent.id;
        desktop_->controller().openStoredWork({{}, {}, SyncGroupList({group, silent})});
        desktop_->controller().smartAudio().caches().state.results[id_] = test::timelineResult();
        view_ = std::make_unique<TimelineView>(*desktop_, review());
        view_->resize(TrackHeader::width + 800, 420);
        view_->show();
    }

    const std::shared_ptr<ReviewViewModel>& review() { return desktop_->players().review(); }
    TimelineCanvas& canvas() { return view_->canvas(); }
    const TimelineLayout& layout() { return canvas().layout(); }
    const SyncGroup& clip() { return *desktop_->controller().work().syncGroups().find(id_); }
    void open(const UUID& id) {
        const platform::Task loading = desktop_->players().loadGroup(id);
        ASSERT_TRUE(waitUntil([&] { return loading.isDone(); }));
        ASSERT_TRUE(waitUntil([&] { return canvas().hasLayout() && layout().content().groupID == id; }));
        settle();
    }
    void openExpanded() {
        open(id_);
        review()->handleKeyAction(KeyAction::toggleAudioExpand);
        settle();
    }
    /// When scroll bars appear or disappear, the rows are placed again, and painting them requests tiles.
    void settle() {
        const auto turn = [] {
            for (int i = 0; i < 4; ++i) QCoreApplication::processEvents();
        };
        turn();
        ASSERT_TRUE(waitUntil([&] { return canvas().isComplete(); }));
        turn();
    }
    QPoint at(double seconds, RowKind kind, int index = 0, bool onStrip = false) {
        const auto* row = layout().row(kind, index);
        const double y = onStrip ? layout().stripRect(*row).y + 5 : row->y + row->height / 3;
        return QPointF(layout().x(seconds), y).toPoint();
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers held = {}) {
        const auto move = [&](QPoint place) {
            QMouseEvent event(QEvent::MouseMove, place, canvas().mapToGlobal(place), Qt::NoButton,
                              Qt::LeftButton, held);
            QCoreApplication::sendEvent(&canvas(), &event);
        };
        QTest::mousePress(&canvas(), Qt::LeftButton, held, from);
        move((from + to) / 2);
        move(to);
        QTest::mouseRelease(&canvas(), Qt::LeftButton, held, to);
        settle();
    }
    void hover(QPoint place) {
        QMouseEvent event(QEvent::MouseMove, place, canvas().mapToGlobal(place), Qt::NoButton, Qt::NoButton,
                          {});
        QCoreApplication::sendEvent(&canvas(), &event);
    }
    TrackBox& box(const QString& name) {
        return *static_cast<TrackBox*>(view_->findChild<QAbstractButton*>(name));
    }
    double playhead() { return review()->engine()->playhead().seconds(); }

    test::TemporaryDirectory folder_;
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<test::FakePlayerSystem> system_;
    std::unique_ptr<Desktop> desktop_;
    UUID id_ = UUID::random(), silentID_ = UUID::random();
    std::unique_ptr<TimelineView> view_;
};

/// The greatest width, in points, of a rectangle of the canvas that was painted.
class PaintWatch : public QObject {
  public:
    explicit PaintWatch(QWidget& watched) { watched.installEventFilter(this); }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            for (const QRect& rect : static_cast<QPaintEvent*>(event)->region())
                widest = std::max(widest, rect.width());
        return false;
    }
    int widest = 0;
};

} // namespace

TEST_F(TimelineViewTest, DragsTheSoundUnlessItIsLocked) {
    open(id_);
    const double pixels = layout().zoom().pixelsPerSecond();
    const QPoint from = at(12, RowKind::sound);
    drag(from, from + QPoint(static_cast<int>(2 * pixels), 0));
    EXPECT_NEAR(clip().manualAudioOffsetSeconds, 2, 1 / pixels);
    EXPECT_NEAR(clip().manualAudioOffsetSeconds * 25, std::round(clip().manualAudioOffsetSeconds * 25), 1e-6);
    EXPECT_NEAR(layout().content().soundOffset, 4 + clip().manualAudioOffsetSeconds, 1e-9)
        << "the row follows";
    desktop_->controller().undo();
    EXPECT_EQ(clip().manualAudioOffsetSeconds, 0) << "one step";

    // Escape while the button is held undoes the drag.
    settle();
    QTest::mousePress(&canvas(), Qt::LeftButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, from + QPoint(60, 0), canvas().mapToGlobal(from + QPoint(60, 0)),
                     Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&canvas(), &move);
    EXPECT_NE(clip().manualAudioOffsetSeconds, 0);
    QTest::keyClick(&canvas(), Qt::Key_Escape);
    QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, from);
    EXPECT_NEAR(clip().manualAudioOffsetSeconds, 0, 1e-9);

    desktop_->controller().clips().toggleLocked(id_);
    settle();
    drag(from, from + QPoint(80, 0));
    EXPECT_NEAR(clip().manualAudioOffsetSeconds, 0, 1e-9);
}

TEST_F(TimelineViewTest, ClicksMoveThePlayheadAndSetTheAnchor) {
    open(id_);
    const double tolerance = 1 / layout().zoom().pixelsPerSecond();
    for (const auto& [seconds, kind] : {std::pair(15.0, RowKind::sound), std::pair(7.0, RowKind::picture)}) {
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, at(seconds, kind));
        EXPECT_NEAR(playhead(), seconds, tolerance);
    }
    QTest::mouseClick(&canvas(), Qt::LeftButton, Qt::ControlModifier | Qt::AltModifier,
                      at(9, RowKind::sound));
    EXPECT_NEAR(clip().audioAnchorOffsetInAudioSeconds.value(), 5, tolerance);

    // At the end of skimming the playhead moves back, unless something was clicked meanwhile.
    hover(at(20, RowKind::picture));
    hover(at(21, RowKind::picture));
    EXPECT_NEAR(playhead(), 21, tolerance);
    hover(at(9, RowKind::sound));
    EXPECT_NEAR(playhead(), 9, tolerance);
}

TEST_F(TimelineViewTest, DrawsMovesAndRemovesRanges) {
    openExpanded();
    const double tolerance = 1.5 / layout().zoom().pixelsPerSecond();
    drag(at(20, RowKind::channel, 2, true), at(17, RowKind::channel, 2, true));
    ASSERT_EQ(clip().manualBlockOverrides.size(), 2U);
    EXPECT_EQ(clip().manualBlockOverrides[1].trackIndex, 3);
    EXPECT_NEAR(clip().manualBlockOverrides[1].startSeconds, 17, tolerance);
    EXPECT_NEAR(clip().manualBlockOverrides[1].endSeconds, 20, tolerance);
    EXPECT_EQ(canvas().selectedRange(), clip().manualBlockOverrides[1].id) << "for Delete";

    // An edge that is moved inwards frees the rest, and all is one undo step.
    drag(at(15, RowKind::channel, 1, true), at(13, RowKind::channel, 1, true));
    EXPECT_NEAR(clip().manualBlockOverrides[0].endSeconds, 13, tolerance);
    desktop_->controller().undo();
    settle();
    EXPECT_EQ(clip().manualBlockOverrides[0].endSeconds, 15);

    QTest::mouseClick(&canvas(), Qt::LeftButton, {}, at(13.5, RowKind::channel, 1, true));
    EXPECT_TRUE(canvas().selectedRange());
    QTest::keyClick(&canvas(), Qt::Key_Delete);
    ASSERT_EQ(clip().manualBlockOverrides.size(), 1U);
    EXPECT_EQ(clip().manualBlockOverrides[0].trackIndex, 3);
}

TEST_F(TimelineViewTest, BoxesOfAChannelRunTheirCommands) {
    open(id_);
    QTest::mouseClick(view_->findChild<QAbstractButton*>("foldChannels"), Qt::LeftButton);
    settle();
    ASSERT_TRUE(box("ALGO-2").isVisible() && box("ALGO-2").isChecked());
    EXPECT_EQ(box("ON-3").accessibleName(), "Track 3: Toggle Audio Track");
    const auto heightInView = [this](const QWidget& in, int y) {
        return in.mapTo(view_.get(), QPoint(0, y)).y();
    };
    const auto* row = layout().row(RowKind::channel, 1);
    const int top = heightInView(canvas(), static_cast<int>(row->y)), of2 = heightInView(box("ALGO-2"), 0);
    EXPECT_TRUE(of2 >= top && of2 + box("ALGO-2").height() <= top + row->height) << of2 << " below " << top;
    QTest::mouseClick(&box("ALGO-2"), Qt::LeftButton);
    settle();
    EXPECT_EQ(clip().algorithmExcludedTracks, std::set{2});
    EXPECT_FALSE(box("ALGO-2").isChecked());
    // The analysis that follows may choose other tracks; the track that was pressed keeps its state.
    const bool wasOn = box("ON-1").isChecked();
    box("ON-1").setFocus();
    QTest::keyClick(&box("ON-1"), Qt::Key_Space);
    settle();
    EXPECT_EQ(clip().manualActiveTracks.contains(1), !wasOn);
    EXPECT_EQ(box("ON-1").isChecked(), !wasOn);

    for (const double seconds : {13.5, 15.0}) { // in the range, and at its end
        const auto menu =
            canvas().menuAt(layout().hit(layout().x(seconds), at(seconds, RowKind::channel, 1, true).y()));
        QStringList titles;
        for (const QAction* action : menu->actions())
            if (action->isEnabled()) titles << action->text();
        EXPECT_TRUE(titles.contains("Solo Audio Track") && titles.contains("Remove Range Override"))
            << seconds << ": " << titles.join(", ").toStdString();
    }
}

TEST_F(TimelineViewTest, InGermanItsBoxesAndMenusAreGerman) {
    const test::Spoken spoken(QStringLiteral("de"));
    openExpanded();
    for (const QPoint place :
         {at(11, RowKind::recordings), at(13.5, RowKind::channel, 1, true), at(13.5, RowKind::sound)})
        canvas().menuAt(layout().hit(place.x(), place.y()));
    EXPECT_FALSE(box("ON-1").toolTip().contains("With Alt"));
    const QStringList missing = untranslatedTexts();
    EXPECT_TRUE(missing.isEmpty()) << missing.join(QLatin1Char('\n')).toStdString();
}

TEST_F(TimelineViewTest, ARecordingOnALaneIsTakenByItsMenuOrADoubleClick) {
    open(id_);
    const auto menu = canvas().menuAt(layout().hit(layout().x(11), at(11, RowKind::recordings).y()));
    desktop_->controller().tracks().soloTrackActive(id_, 1);
    for (QAction* action : menu->actions())
        if (action->text() == "Choose Recording") action->trigger();
    EXPECT_EQ(clip().audioMatches.front().audio->filename, "ZOOM0001.WAV");
    EXPECT_EQ(clip().manualActiveTracks, (std::set{1, 2})) << "it is heard, and the other one is not";
    settle();
    const auto other = clip().audioMatches[1].audio->filename;
    const auto doubleClick = [&] {
        QTest::mouseDClick(&canvas(), Qt::LeftButton, {}, at(11, RowKind::recordings));
        settle();
    };
    doubleClick();
    EXPECT_EQ(clip().audioMatches.front().audio->filename, other);
    desktop_->controller().clips().toggleLocked(id_);
    doubleClick();
    EXPECT_EQ(clip().audioMatches.front().audio->filename, other) << "a locked clip keeps its own";
}

TEST_F(TimelineViewTest, ZoomsAtThePointerAndRepaintsLittleWhilePlaying) {
    open(id_);
    const QPoint place = at(20, RowKind::sound);
    const double under = layout().seconds(place.x());
    const auto turnWheel = [&](int angle, Qt::KeyboardModifier held) {
        QWheelEvent wheel(place, canvas().mapToGlobal(place), {}, {0, angle}, Qt::NoButton, held,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&canvas(), &wheel);
    };
    for (int i = 0; i < 5; ++i) turnWheel(120, Qt::ControlModifier);
    settle();
    EXPECT_NEAR(layout().zoom().zoomScale, std::pow(1.25, 5), 1e-9);
    EXPECT_NEAR(layout().seconds(place.x()), under, 1e-6);
    const double start = layout().x(0);
    turnWheel(-120, Qt::ShiftModifier);
    settle();
    EXPECT_LT(layout().x(0), start - 10) << "scrolled towards the end";
    review()->handleKeyAction(KeyAction::zoomFit);
    settle();
    EXPECT_NEAR(layout().x(0), 0, 1) << "a key is followed too";
    EXPECT_NEAR(layout().x(30), canvas().width(), 1);

    PaintWatch watch(canvas());
    canvas().showPlayhead(12);
    QCoreApplication::processEvents();
    EXPECT_GT(watch.widest, 0);
    EXPECT_LT(watch.widest, 40) << "points of " << canvas().width();

    open(silentID_);
    EXPECT_FALSE(layout().content().hasSound);
    desktop_->players().review()->close();
    EXPECT_TRUE(waitUntil([&] { return !canvas().isVisible(); })) << "no clip";
}

TEST_F(TimelineViewTest, SaysThatASoundIsMissingHoweverSoonThatIsKnown) {
    std::filesystem::remove(folder_.path("T01.WAV"));
    open(silentID_);
    open(id_);
    EXPECT_TRUE(waitUntil([&] { return canvas().soundHint().startsWith("The sound cannot be read"); }))
        << canvas().soundHint().toStdString();
}

TEST_F(TimelineViewTest, NothingIsLeftUnpainted) {
    openExpanded();
    view_->hide(); // otherwise it would request tiles itself
    constexpr QRgb nothing = 0xFFFF00FF;
    for (const double ratio : {1.0, 1.5, 2.0})
        for (const int steps : {0, 3, 9})
            for (const double scroll : {0.0, 37.0}) {
                TimelineZoomState zoom = layout().zoom();
                for (int i = 0; i < steps; ++i) zoom.applyZoom(TimelineZoomState::zoomInFactor);
                zoom.scrollOffset = zoom.largestScrollOffset() * 0.31;
                const TimelineLayout placed(std::make_shared<TimelineRows>(layout().content()), zoom, true,
                                            scroll);
                const QSize size(static_cast<int>(placed.width()), static_cast<int>(placed.height()) + 20);
                QImage image(size * ratio, QImage::Format_RGB32);
                image.setDevicePixelRatio(ratio);
                // First without its tiles, and then with them.
                for (const bool isReady : {false, true}) {
                    image.fill(nothing);
                    QPainter painter(&image);
                    const TimelineScene scene{.layout = placed,
                                              .tiles = canvas().tiles(),
                                              .pictures = canvas().pictures(),
                                              .pixelRatio = ratio};
                    const TimelineGaps gaps = paintTimeline(painter, scene, QRectF(QPointF(), size));
                    painter.end();
                    EXPECT_TRUE(gaps.tiles.empty() || !isReady);
                    int left = 0;
                    for (int y = 0; y < image.height(); ++y)
                        for (int x = 0; x < image.width(); ++x) left += image.pixel(x, y) == nothing ? 1 : 0;
                    EXPECT_EQ(left, 0) << ratio << ", " << steps << " steps, " << scroll << ", " << isReady;
                    canvas().tiles().want(gaps.tiles);
                    ASSERT_TRUE(waitUntil([&] { return !canvas().tiles().isDrawing(); }));
                }
            }
}

TEST_F(TimelineViewTest, aRecordingThatIsListenedToStopsWhereTheListIsLeft) {
    desktop_->controller().openStoredWork({{}, {}, {}, {WildTrack(test::audio("Atmo.wav"))}});
    WildTracksView list(*desktop_);
    list.show();
    Q_EMIT list.list()->itemClicked(list.list()->topLevelItem(0), 0);
    const auto plays = [&] {
        return std::ranges::any_of(system_->players, [](const auto* one) { return one->rate() > 0; });
    };
    ASSERT_TRUE(waitUntil(plays));
    list.hide();
    EXPECT_FALSE(plays()) << "the clip that is opened would be heard on top of it";
}

TEST(TrackColourTest, ChannelsAreTold) {
    for (int one = 0; one < 16; ++one) {
        EXPECT_GE(design::contrast(design::channelColour(one), design::colours().window), 4.5) << one;
        for (int other = 0; other < one; ++other)
            EXPECT_NE(design::channelColour(one), design::channelColour(other));
    }
}

} // namespace orvane::views
