#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Support/Assets.h"
#include "Views/AllWindows.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <set>

namespace orvane::views {

namespace {

/// The English texts whose German translation differs: the fixed ones, and patterns for those with names in
/// them.
class Catalogue {
  public:
    Catalogue() {
        const QStringList names = catalogueNames(QStringLiteral("de"));
        EXPECT_FALSE(names.isEmpty());
        for (const QString& name : names) {
            QFile file(name);
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
            const QJsonObject texts = all["texts"].toObject();
            for (auto it = texts.begin(); it != texts.end(); ++it)
                if (it->isArray() || it->toString() != it.key()) texts_.insert(it.key());
            for (const QString& key : all["sentences"].toObject().keys()) {
                static const QRegularExpression place(QStringLiteral("\\\\%\\d"));
                const QString pattern = QRegularExpression::escape(key).replace(place, ".+?");
                // A pattern that is almost only names would match everything.
                if (QString(key).remove(QRegularExpression("%\\d|[^A-Za-z]")).size() > 5)
                    sentences_.append(QRegularExpression(QRegularExpression::anchoredPattern(pattern)));
            }
        }
    }
    bool holds(const QString& text) const {
        return texts_.contains(text) ||
               std::ranges::any_of(sentences_, [&](const auto& one) { return one.match(text).hasMatch(); });
    }

  private:
    QSet<QString> texts_;
    QList<QRegularExpression> sentences_;
};

void addItems(const QAbstractItemModel& model, const QModelIndex& parent, QStringList& texts) {
    constexpr int enough = 100;
    for (int row = 0; row < std::min(model.rowCount(parent), enough); ++row)
        for (int column = 0; column < model.columnCount(parent); ++column) {
            const QModelIndex at = model.index(row, column, parent);
            texts << at.data().toString() << at.data(Qt::ToolTipRole).toString();
            if (column == 0) addItems(model, at, texts);
        }
}

/// All texts of a window, visible or available on request.
QStringList textsOf(QWidget& top) {
    QStringList texts{top.windowTitle()};
    for (const QWidget* one : top.findChildren<QWidget*>()) {
        texts << one->toolTip() << one->accessibleName() << one->accessibleDescription();
        if (const auto* label = qobject_cast<const QLabel*>(one)) texts << label->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(one)) texts << button->text();
        if (const auto* field = qobject_cast<const QLineEdit*>(one)) texts << field->placeholderText();
        if (const auto* choice = qobject_cast<const QComboBox*>(one))
            for (int i = 0; i < choice->count(); ++i) texts << choice->itemText(i);
        if (const auto* view = qobject_cast<const QAbstractItemView*>(one)) {
            addItems(*view->model(), {}, texts);
            for (int i = 0; i < view->model()->columnCount(); ++i)
                texts << view->model()->headerData(i, Qt::Horizontal).toString();
        }
    }
    for (const QAction* one : top.findChildren<QAction*>())
        texts << one->text() << one->iconText() << one->toolTip() << one->statusTip();
    return texts;
}

/// Words between blanks that only English has: they show that a text is in no catalogue.
bool isEnglish(const QString& line) {
    static const QRegularExpression words(QStringLiteral(
        "\\b(the|of|and|or|with|without|for|to|from|is|are|by|what|which|this|that|all|where|not)\\b"));
    return line.contains(QLatin1Char(' ')) && words.match(line).hasMatch();
}

} // namespace

TEST(LanguageTest, NoWindowSaysAnythingInEnglishInGerman) {
    test::AllWindows windows(QStringLiteral("de"));
    windows.scan();
    windows.openSheets();
    for (int tab = 0; tab < windows.settingsWindow().tabCount(); ++tab) {
        windows.settingsWindow().showTab(tab);
        QCoreApplication::processEvents();
    }
    // Texts that are found in the background are included.
    for (auto* checks : windows.window().findChildren<QWidget*>(QStringLiteral("diagnostics")))
        ASSERT_TRUE(test::waitUntil([&] { return checks->findChildren<QLabel*>().size() > 5; }));
    const Catalogue catalogue;
    QSet<QString> left;
    for (QWidget* top : windows.tops())
        for (const QString& text : textsOf(*top))
            for (const QString& line : text.split(QLatin1Char('\n')))
                if (catalogue.holds(line) || isEnglish(line)) left.insert(line);
    QStringList all(left.begin(), left.end());
    all.sort();
    EXPECT_EQ(all.size(), 0) << all.join(QLatin1Char('\n')).toStdString();
    QStringList missing = untranslatedTexts();
    missing.sort();
    EXPECT_EQ(missing.size(), 0) << missing.join(QLatin1Char('\n')).toStdString();
}

TEST(LanguageTest, KnowsTextsAndSentencesButNoNames) {
    const test::Spoken spoken(QStringLiteral("de"));
    EXPECT_EQ(translated("Scan & Match"), QStringLiteral("Scannen & Zuordnen"));
    for (const auto& [english, german] :
         {std::pair<std::string, QStringView>("3.000 s after", u"3,000 s danach"),
          {"Scenes 1A-99X", u"Szenen 1A-99X"},
          {"sound at that time is of 2026-11-24", u"der Ton zu dieser Zeit ist vom 2026-11-24"},
          {heardText({.matched = 3, .heard = 2, .suggested = 1, .isOffsetRough = true}, {},
                     DoubtsAfterListening::found),
           u"Der Ton von 2 Clips, einigen je Karte, wurde verglichen.\n"
           u"Für 1 Clip wurde der Ton der Kamera in Aufnahmen gesucht, die "
           u"dazugehören können, und nirgends gefunden.\n"
           u"Mit Mikrofonen lässt sich der angegebene Tonversatz nur auf ein bis zwei Bilder genau prüfen: "
           u"eine Klappe prüfen.\n"
           u"Die Zweifel stehen über der Liste."},
          {heardText({.matched = 3, .heard = 2},
                     {{{"/A", 2, NotCompared::Reason::unlike}, {"/B", 3}, {"/C", 1}}},
                     DoubtsAfterListening::none),
           u"Der Ton von 2 Clips, einigen je Karte, wurde verglichen.\n"
           u"Nach dem Timecode ist nichts zweifelhaft.\n"
           u"4 Clips in '/B', '/C' haben keinen Ton zum Vergleichen: von jeder Kamera eine Klappe prüfen.\n"
           u"2 Clips in '/A' wurden nicht verglichen, da nichts im Ton der Kamera den Aufnahmen ähnlich ist: "
           u"von jeder Kamera eine Klappe prüfen."},
          {comparedText(
               {.right = 380, .off = {{{}, 0.12, 3}, {{}, 0.16, 4}}, .unlike = std::vector<UUID>(2)}),
           u"382 Clips mit dem Ton der Kamera verglichen: 380 richtig, 2 daneben; dort den Ton um +3 bis +4 "
           u"Bilder verschieben.\nNicht verglichen: 0 ohne Aufnahme, 0 ohne Ton der Kamera, 2 zu kurz oder "
           u"der Aufnahme unähnlich."},
          {comparedText({.off = {{{}, 0.04, 1}}}),
           u"1 Clip mit dem Ton der Kamera verglichen: 0 richtig, 1 daneben; dort den Ton um +1 Bild "
           u"verschieben."},
          {"left out as copies of camera files that are here: '/2/A.mov' and 3 more; the first one is a copy "
           "of '/1/A.mov'",
           u"als Kopien von vorhandenen Kameradateien weggelassen: „/2/A.mov“ und 3 weitere; die erste ist "
           u"eine Kopie von '/1/A.mov'"},
          {LockitController::noProject,
           u"Kein Lockit-Projekt ist zugewiesen. Zuerst dem Ordner (der Produktion) eines zuweisen, mit "
           u"„Lockit“ neben seinem Namen."},
          {"✓ Matched 2 of 8 clips with LockitNetwork (shooting day(s): 1, 2; checked 3 days).",
           u"✓ LockitNetwork kennt 2 von 8 Clips (Drehtage: 1, 2; geprüft: 3)."},
          {"Report loaded: 1 of 8 clips matched — check the match setting (current: column “Reel”)",
           u"Bericht geladen: 1 von 8 Clips gefunden — die Zuordnung prüfen (eingestellt: Spalte „Reel“)"},
          {"review, line 2: there is no recording number '9'",
           u"Prüftabelle, Zeile 2: eine Aufnahme mit der Nummer '9' gibt es nicht"}})
        EXPECT_EQ(translatedSentence(english), german);
    for (const char* name : {"A001.mov", "T1.5 s.WAV", "libsndfile-1.2.0", "Boom", "T2 Lav", "iXML: Boom"})
        EXPECT_EQ(translatedSentence(name), QLatin1String(name));
}

TEST(LanguageTest, SaysTheWarningsOfAnExportInGerman) {
    const test::Spoken german(QStringLiteral("de"));
    const SyncGroupList groups =
        SyncEngine().match({test::video("A.mov"), test::video("B.mov", "12:00:00:00"),
                            test::video("C.mov", "14:00:00:00", 60, 24)},
                           {test::audio("T.wav"), test::audio("U.wav", "14:00:00:00")}, MatchRules());
    SyncGroupList all = groups;
    for (const SyncGroup& group : groups)
        all.update(group.id, [](SyncGroup& own) {
            own.video.projectFrameRate = own.video.frameRate;
            if (own.video.filename == "A.mov") own.matchStatus = MatchStatus::unmatched();
        });
    ExportSettings settings;
    settings.frameRate = settings.projectFrameRate = 25;
    for (const auto* one : {&settings::volumeKeyframes, &settings::generateSyncClips})
        settings.set(*one, true);
    settings.set(settings::wrapMOSInSyncClip, false);
    std::vector<std::string> warnings = FCPXMLExporter::exportDocument(all, {}, settings).warnings;
    EXPECT_EQ(warnings.size(), 4U) << "rate, skipped, MOS, curves";
    const std::vector<const SyncGroup*> angles{&groups[0], &groups[1]};
    FCPXMLExporter::multicamBucketGroupID(angles, {{groups[0].id, "1A"}, {groups[1].id, "2B"}}, true,
                                          warnings);
    for (const char* fixed :
         {"Not in the multicam clip (shorter than a frame of it): A.mov",
          "the document holds no clip; look at the settings export.a and export.b",
          "3 clips may have the wrong sound; 'orvanesync diagnose' of the folders says why, and what 'scan' "
          "and 'sync' do about it",
          "Smart Audio can't read the sound of T.wav; only its channel 1 stays switched on",
          "Smart Audio analyzed only the first 4:00:00 of the 5:00:00 of T.wav",
          "Smart Audio left out A.mov: all its channels are excluded from the analysis; include one to have "
          "it "
          "analyzed",
          "T.wav ends early: 0:10 of the 1:00 that its header states could be read",
          "no loudness could be measured for 'A.mov' and 2 more: the sound is silent or can't be read; the "
          "master gain stays as it is"})
        warnings.emplace_back(fixed);
    for (const std::string& warning : warnings) {
        const QString said = translatedSentence(warning);
        EXPECT_TRUE(said != text(warning) && !isEnglish(said)) << said.toStdString();
    }
}

TEST(LanguageTest, NamesKeysAsTheKeyboardsOfTheLanguageDo) {
    const test::Spoken german(QStringLiteral("de"));
    for (const auto& [english, wanted] :
         {std::pair("Ctrl+Shift+L", "Strg+Umschalt+L"), std::pair("Space", "Leertaste"),
          std::pair("K held, J", "K gehalten, J"), std::pair("Ctrl++", "Strg++"), std::pair("F2", "F2"),
          std::pair(",", "Komma"), std::pair("Shift+.", "Umschalt+Punkt")})
        EXPECT_EQ(translatedKey(english), QString::fromUtf8(wanted));
    const QKeySequence menu(QStringLiteral("Ctrl+Shift+Z"));
    EXPECT_EQ(menu.toString(QKeySequence::NativeText), QStringLiteral("Strg+Umschalt+Z"));
    EXPECT_EQ(QKeySequence(menu.toString(QKeySequence::NativeText), QKeySequence::NativeText), menu);
    EXPECT_EQ(translatedSentence("⌘ Click"), QStringLiteral("Strg+Click"));
}

TEST(LanguageTest, MenusOpenByTheirLettersAndNoneOfTheseIsAKeyOfTheReview) {
    struct Reviewed : test::AllWindows {
        using AllWindows::AllWindows;
        bool isKHeld() const { return desktop_->players().keyboard().kHeld(); }
    };
    for (const char* language : {"en", "de"}) {
        Reviewed windows{QString::fromLatin1(language)};
        windows.scan();
        MainWindow& window = windows.window();
        window.openReview(windows.work().syncGroups().front().id);
        ASSERT_TRUE(window.review().isVisible());
        std::set<QString> keys;
        for (const QAction* menu : window.menuBar()->actions()) {
            for (const QAction* entry : menu->menu()->actions()) {
                const QString key = entry->shortcut().toString();
                EXPECT_TRUE(key.isEmpty() || keys.insert(key).second) << key.toStdString();
            }
            const int letter = QKeySequence::mnemonic(menu->text())[0].key();
            QTest::keyClick(&window, static_cast<Qt::Key>(letter), Qt::AltModifier);
            EXPECT_EQ(QApplication::activePopupWidget(), menu->menu()) << menu->text().toStdString();
            menu->menu()->close();
            window.menuBar()->setActiveAction(nullptr);
        }
        window.review().setFocus();
        QTest::keyPress(&window, Qt::Key_K, Qt::AltModifier);
        EXPECT_FALSE(windows.isKHeld());
        window.menuBar()->setFocus(Qt::MenuBarFocusReason);
        QTest::keyPress(window.menuBar(), Qt::Key_K);
        EXPECT_FALSE(windows.isKHeld()) << "the menu bar has the keyboard";
        window.review().setFocus();
        QTest::keyClick(&window, Qt::Key_K, Qt::AltModifier);
        QTest::keyPress(&window, Qt::Key_K);
        EXPECT_TRUE(windows.isKHeld());
    }
}

TEST(LanguageTest, NamesTheModifiersOfThisSystem) {
    const test::Spoken english(QStringLiteral("en"));
    EXPECT_EQ(translatedSentence("⌘⌥ Click on it"), QStringLiteral("Ctrl+Alt+Click on it"));
    EXPECT_EQ(translatedSentence("by ⌘⌥-clicking it.\n\nUse Cmd+Z to undo."),
              QStringLiteral("by Ctrl+Alt+clicking it.\n\nUse Ctrl+Z to undo."));
}

} // namespace orvane::views
