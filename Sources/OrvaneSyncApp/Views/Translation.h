#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include <QString>
#include <QStringList>

#include <string_view>

class QCoreApplication;

/// The language of the windows. Every text of ours has its English form as its key, whether a view asks for
/// it with `tr`, Qt for a button of its own, or one of the functions below for a text from the lower layers.
/// A catalogue is a JSON object from English to the other language; for a text with a number (%n), the value
/// is a list of the singular and the plural. The names of keys are separate from the texts, because "End" is
/// both a key and a moment; menus and our own lists use them.
namespace orvane::views {

/// Sets the language of the application, such as "de" or "de_AT"; empty: that of the desktop. English if
/// there is no catalogue. Before the first window; interface thread.
void installLanguage(QCoreApplication& application, const QString& wanted = {});
/// The codes of the languages that can be chosen.
QStringList languages();
/// The resources of a language: a catalogue for each screen, and some for the texts from the lower layers.
QStringList catalogueNames(const QString& language);

/// Translates a text of the core that is always the same: a title of the table of commands, the name of a
/// column.
QString translated(std::string_view english);
/// Translates a text with names and numbers in it, for which the catalogue has %1, %2. Lines and sentences
/// are translated one by one; those that are not in the catalogue stay as they are.
QString translatedSentence(std::string_view english);
/// A key with the names on keyboards of the language: "Shift+Space" is "Umschalt+Leertaste" in German. Comma
/// and period have names as well.
QString translatedKey(std::string_view english);

/// Texts name actions that have a key by their identifiers in angle brackets, such as "⟨lockCurrent⟩". The
/// functions above show the user's key instead, or the action's title if the action has no key.
void setKeysInTexts(const ShortcutBindings& bindings);

/// Texts that were asked for but are not in the catalogue, each once; for tests.
QStringList untranslatedTexts();

} // namespace orvane::views
