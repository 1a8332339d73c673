#include "OrvaneSyncApp/Views/Translation.h"

#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>
#include <QTranslator>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace orvane::views {

namespace {

/// The names under which Qt asks for our texts from classes without a catalogue of their own. Qt's own texts
/// have other names.
bool isOurs(const char* context) {
    static const QSet<QByteArray> names{"",        "QWidget",     "QDialog",
                                        "QObject", "QMainWindow", "QAbstractTableModel",
                                        "QFrame",  "QTableView",  "QStyledItemDelegate"};
    return names.contains(context);
}

constexpr const char* nameOfKeys = "QShortcut"; ///< the name under which Qt asks for the names of keys

/// A sentence that contains names, and its translation.
struct Sentence {
    QRegularExpression pattern;
    QString form;
    QString words; ///< its longest part without names; most texts that do not match lack it, which is quick
                   ///< to check
};

class Catalogue : public QTranslator {
  public:
    explicit Catalogue(const QString& language)
        : isEnglish_(language == QStringLiteral("en")), decimalPoint_(QLocale(language).decimalPoint()) {
        for (const QString& name : catalogueNames(language)) read(name);
        // The longest patterns first, because a short one may match the text of a longer one, too.
        std::ranges::sort(sentences_, [](const Sentence& a, const Sentence& b) {
            return a.pattern.pattern().size() > b.pattern.pattern().size();
        });
    }
    bool isEmpty() const override { return texts_.isEmpty(); }
    QString translate(const char* context, const char* source, const char*, int n) const override {
        const QString key = QString::fromUtf8(source);
        if (qstrcmp(context, nameOfKeys) == 0) return keys_.value(key);
        const auto found = texts_.constFind(key);
        if (found != texts_.constEnd()) return found->at(n == 1 || found->size() == 1 ? 0 : 1);
        if (!isEnglish_ && isOurs(context) && !key.isEmpty()) missing_.insert(key);
        return {};
    }
    QString line(const QString& english) const {
        const auto found = texts_.constFind(english);
        if (found != texts_.constEnd()) return found->first();
        for (const Sentence& one : sentences_) {
            if (!english.contains(one.words)) continue;
            const auto match = one.pattern.match(english);
            if (!match.hasMatch()) continue;
            QString form = one.form;
            for (int i = 1; i <= 9; ++i) {
                const QString place = QStringLiteral("%%1").arg(i);
                if (form.contains(place))
                    form.replace(place, line(match.captured(QStringLiteral("p%1").arg(i))));
            }
            return form;
        }
        return english;
    }
    /// Numbers with a unit get the decimal point of the language: if the point groups digits in it, "2.000 s"
    /// would be read as two thousand. A text without a unit is not changed, because a point may be part of a
    /// name.
    QString withNumbers(QString text) const {
        static const QRegularExpression withUnit(
            QStringLiteral(R"((?<![\w.:])\d+\.\d+ (?:s|MB|GB|dB|dBFS|LUFS|fps|ms)\b)"));
        static const QRegularExpression number(QStringLiteral(R"((?<![\w.:/])(\d+)\.(\d+)(?![\w.:/]))"));
        if (decimalPoint_ == QStringLiteral(".") || !text.contains(withUnit)) return text;
        return text.replace(number, QStringLiteral("\\1") + decimalPoint_ + QStringLiteral("\\2"));
    }
    QStringList missing() const { return {missing_.begin(), missing_.end()}; }

  private:
    void read(const QString& name) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) return;
        const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
        const QJsonObject texts = all.value(QStringLiteral("texts")).toObject();
        for (auto it = texts.begin(); it != texts.end(); ++it) {
            QStringList forms;
            if (it->isArray())
                for (const auto& form : it->toArray()) forms << form.toString();
            else
                forms << it->toString();
            texts_.insert(it.key(), forms);
        }
        const QJsonObject keys = all.value(QStringLiteral("keys")).toObject();
        for (auto it = keys.begin(); it != keys.end(); ++it) keys_.insert(it.key(), it->toString());
        const QJsonObject sentences = all.value(QStringLiteral("sentences")).toObject();
        for (auto it = sentences.begin(); it != sentences.end(); ++it) {
            QString pattern = QRegularExpression::escape(it.key());
            for (int i = 1; i <= 9; ++i)
                pattern.replace(QStringLiteral("\\%%1").arg(i), QStringLiteral("(?<p%1>.+?)").arg(i));
            static const QRegularExpression place(QStringLiteral("%[1-9]"));
            const QStringList parts = it.key().split(place);
            const auto longest =
                std::ranges::max_element(parts, {}, [](const QString& part) { return part.size(); });
            sentences_.push_back({QRegularExpression(QRegularExpression::anchoredPattern(pattern)),
                                  it.value().toString(), *longest});
        }
    }

    const bool isEnglish_;
    const QString decimalPoint_;
    QHash<QString, QStringList> texts_;
    QHash<QString, QString> keys_;
    std::vector<Sentence> sentences_;
    mutable QSet<QString> missing_;
};

std::unique_ptr<Catalogue> installed;

ShortcutBindings& keysInTexts() {
    static ShortcutBindings bindings = defaultBindings();
    return bindings;
}

std::string keyInTexts(ShortcutAction action) {
    const ShortcutBindings& bindings = keysInTexts();
    const auto bound = bindings.find(action);
    const bool isReached = bound != bindings.end() && !bound->second.isUnbound() &&
                           actionFor(bindings, bound->second.key, bound->second.modifiers) == action;
    return (isReached ? translatedKey(keyText(bound->second))
                      : QStringLiteral("“%1”").arg(translated(label(action))))
        .toStdString();
}

QString withKeys(const QString& text) {
    return text.contains(QChar(u'⟨'))
               ? QString::fromStdString(withKeysOfActions(text.toStdString(), keyInTexts))
               : text;
}

QString keysOfThisSystem(const QString& given) {
    QString text = withKeys(given);
    constexpr QStringView signs = u"⌘⌃⌥⇧";
    if (std::ranges::none_of(std::as_const(text), [&](QChar one) { return signs.contains(one); }) &&
        !text.contains(QStringLiteral("Cmd+")))
        return text;
    QString named = QString::fromStdString(withKeysOfThisSystem(text.toStdString()));
    for (const char* modifier : {"Ctrl", "Shift"})
        named.replace(QLatin1String(modifier) + QLatin1Char('+'),
                      QCoreApplication::translate(nameOfKeys, modifier) + QLatin1Char('+'));
    return named;
}

} // namespace

QStringList catalogueNames(const QString& language) {
    const QString folder = QStringLiteral(":/translations/");
    QStringList names;
    for (const QString& name : QDir(folder).entryList({language + QStringLiteral("*.json")}, QDir::Files))
        names << folder + name;
    return names;
}

QStringList languages() { return {QStringLiteral("en"), QStringLiteral("de")}; }

void installLanguage(QCoreApplication& application, const QString& wanted) {
    const QStringList known = languages();
    QStringList asked = wanted.isEmpty() ? QLocale::system().uiLanguages() : QStringList{wanted};
    QString language = known.first();
    for (QString& one : asked) {
        const QString code = one.section(QRegularExpression(QStringLiteral("[-_.]")), 0, 0).toLower();
        if (!known.contains(code)) continue;
        language = code;
        break;
    }
    if (installed) application.removeTranslator(installed.get());
    installed = std::make_unique<Catalogue>(language);
    application.installTranslator(installed.get());
    if (!wanted.isEmpty()) QLocale::setDefault(QLocale(wanted));
}

QString translated(std::string_view english) {
    return keysOfThisSystem(
        QCoreApplication::translate("", QByteArray(english.data(), static_cast<qsizetype>(english.size()))));
}

QString translatedSentence(std::string_view english) {
    const QString given = QString::fromUtf8(english.data(), static_cast<qsizetype>(english.size()));
    if (!installed || installed->isEmpty()) return keysOfThisSystem(given);
    QStringList lines;
    for (const QString& line : given.split(QLatin1Char('\n')))
        lines << installed->withNumbers(installed->line(line));
    return keysOfThisSystem(lines.join(QLatin1Char('\n')));
}

QString translatedKey(std::string_view english) {
    static const QRegularExpression name(QStringLiteral("[A-Za-z]{2,}"));
    QString given = QString::fromUtf8(english.data(), static_cast<qsizetype>(english.size()));
    // At the size of a label these signs are two or three pixels high.
    for (const auto& [sign, word] : {std::pair(',', "Comma"), std::pair('.', "Period")})
        if (given == QLatin1Char(sign) || given.endsWith(QStringLiteral("+") + QLatin1Char(sign)))
            given.replace(given.size() - 1, 1, QLatin1String(word));
    QString named;
    qsizetype end = 0;
    for (auto names = name.globalMatch(given); names.hasNext();) {
        const auto one = names.next();
        named += given.mid(end, one.capturedStart() - end) +
                 QCoreApplication::translate(nameOfKeys, one.captured().toUtf8());
        end = one.capturedEnd();
    }
    return named + given.mid(end);
}

void setKeysInTexts(const ShortcutBindings& bindings) { keysInTexts() = bindings; }

QStringList untranslatedTexts() { return installed ? installed->missing() : QStringList(); }

} // namespace orvane::views
