#pragma once

#include <QString>
#include <QStringList>

#include <string_view>

class QCoreApplication;

/// The language of the windows. Every text of ours has its English form as its key, whoever asks: `tr` in a
/// view, Qt for a button of its own, or one of these for what comes from below. A catalogue is a JSON object
/// from English to the other language; of a text with a number (%n) the value lists the forms for one and for
/// more. The names of keys stand apart from the texts ("End" is a key and a moment); menus and our own lists
/// take them from there.
namespace orvane::views {

/// Makes the application speak a language, such as "de" or "de_AT"; empty: that of the desktop. English where
/// there is no catalogue. Before the first window; interface thread.
void installLanguage(QCoreApplication& application, const QString& wanted = {});
/// Those that can be chosen, by their codes.
QStringList languages();
/// The resources in which a language lies: a catalogue for each screen, and some for what comes from below.
QStringList catalogueNames(const QString& language);

/// A text of the core that is always the same: a title of the table of commands, a name of a column.
QString translated(std::string_view english);
/// One with names and numbers in it, which the catalogue holds with %1, %2 in their places. In its lines and
/// sentences, each by itself, what is not in the catalogue stays.
QString translatedSentence(std::string_view english);
/// A key by the names that keyboards of the language have: "Shift+Space" is "Umschalt+Leertaste" in German.
QString translatedKey(std::string_view english);

/// Texts that were asked for and are not in the catalogue, each once; for tests.
QStringList untranslatedTexts();

} // namespace orvane::views
