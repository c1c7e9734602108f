#include "Stillwick/CommandLine.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <limits>

namespace stillwick {

namespace {

/// A number of digits only; none past 64 bits.
std::optional<qint64> digits(const QString& text) {
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<CMTime> parsePair(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^([0-9]+)/([0-9]+)$"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto value = digits(match.captured(1));
    const auto timescale = digits(match.captured(2));
    if (!value || !timescale || *timescale < 1 || *timescale > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return CMTime::make(*value, qint32(*timescale));
}

std::optional<CMTime> parseClock(const QString& text) {
    static const QRegularExpression form(
        QStringLiteral("^(?:(?:([0-9]{1,9}):)?([0-9]{1,9}):)?([0-9]{1,10})(?:[.,]([0-9]{1,9}))?$"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const bool hasHours = match.hasCaptured(1);
    const bool hasMinutes = match.hasCaptured(2);
    const qint64 minutes = match.captured(2).toLongLong();
    const qint64 seconds = match.captured(3).toLongLong();
    constexpr qint64 sixty = 60;
    if ((hasMinutes && seconds >= sixty) || (hasHours && minutes >= sixty))
        return std::nullopt;
    const qint64 whole = (match.captured(1).toLongLong() * sixty + minutes) * sixty + seconds;
    const QString decimals = match.captured(4);
    qint32 timescale = 1;
    for (qsizetype i = 0; i < decimals.size(); ++i)
        timescale *= 10;
    qint64 value = 0;
    if (__builtin_mul_overflow(whole, qint64(timescale), &value) ||
        __builtin_add_overflow(value, decimals.toLongLong(), &value))
        return std::nullopt;
    return CMTime::make(value, timescale);
}

/// Takes words one by one and remembers the first fault.
class Parser {
public:
    explicit Parser(const QStringList& arguments) : m_words(arguments) {}

    Command parse() {
        if (m_words.isEmpty())
            return WindowCommand{};
        const QString command = m_words.takeFirst();
        if (command == QStringLiteral("--help") || command == QStringLiteral("-h"))
            return TextCommand{usageText()};
        if (command == QStringLiteral("--version"))
            return TextCommand{
                QStringLiteral("stillwick %1").arg(QCoreApplication::applicationVersion())};
        if (command != QStringLiteral("still") && command != QStringLiteral("capture"))
            return UsageError{QStringLiteral("Commande inconnue : « %1 ».").arg(command)};
        m_isCapture = command == QStringLiteral("capture");
        while (m_fault.isEmpty() && !m_words.isEmpty())
            takeWord(m_words.takeFirst());
        checkWhole();
        if (!m_fault.isEmpty())
            return UsageError{m_fault};
        if (!m_isCapture)
            return StillCommand{m_capture.video, m_capture.times.front(), m_capture.folder};
        return m_capture;
    }

private:
    void takeWord(const QString& word) {
        if (m_areOptionsOver || !word.startsWith(u'-') || word == QStringLiteral("-"))
            takeVideo(word);
        else if (word == QStringLiteral("--"))
            m_areOptionsOver = true;
        else if (word == QStringLiteral("--at"))
            takeTime(valueOf(word));
        else if (word == QStringLiteral("-o"))
            takeOutput(valueOf(word));
        else if (m_isCapture && word == QStringLiteral("--mode"))
            takeMode(valueOf(word));
        else if (m_isCapture && word == QStringLiteral("--crop"))
            m_capture.crop = true;
        else
            m_fault = QStringLiteral("Option inconnue : « %1 ».").arg(word);
    }

    QString valueOf(const QString& option) {
        if (!m_words.isEmpty())
            return m_words.takeFirst();
        m_fault = QStringLiteral("L'option « %1 » attend une valeur.").arg(option);
        return {};
    }

    void takeVideo(const QString& word) {
        if (m_capture.video.isEmpty() && !word.isEmpty())
            m_capture.video = word;
        else
            m_fault = QStringLiteral("Argument en trop : « %1 ».").arg(word);
    }

    void takeTime(const QString& text) {
        if (!m_fault.isEmpty())
            return;
        if (const auto time = parseTime(text))
            m_capture.times.push_back(*time);
        else
            m_fault = QStringLiteral("Instant non valable : « %1 ».").arg(text);
        if (!m_isCapture && m_capture.times.size() > 1)
            m_fault =
                QStringLiteral("Un seul instant est possible avec « still » : « %1 ».").arg(text);
    }

    void takeOutput(const QString& text) {
        if (m_fault.isEmpty() && !m_capture.folder.isEmpty())
            m_fault = QStringLiteral("L'option « -o » est donnée deux fois : « %1 ».").arg(text);
        m_capture.folder = text;
    }

    void takeMode(const QString& text) {
        if (text == QStringLiteral("merged"))
            m_capture.mode = ExportMode::merged;
        else if (text == QStringLiteral("perSubject"))
            m_capture.mode = ExportMode::perSubject;
        else if (m_fault.isEmpty())
            m_fault = QStringLiteral("Mode inconnu : « %1 ».").arg(text);
    }

    void checkWhole() {
        if (!m_fault.isEmpty())
            return;
        if (m_capture.video.isEmpty())
            m_fault = QStringLiteral("La vidéo manque.");
        else if (m_capture.times.empty())
            m_fault = QStringLiteral("L'option « --at » manque.");
        else if (m_capture.folder.isEmpty())
            m_fault = QStringLiteral("L'option « -o » manque.");
    }

    QStringList m_words;
    bool m_isCapture = false;
    bool m_areOptionsOver = false;
    CaptureCommand m_capture; // of « still » the file stands in `folder`
    QString m_fault;
};

} // namespace

std::optional<CMTime> parseTime(const QString& text) {
    const auto pair = parsePair(text);
    return pair ? pair : parseClock(text);
}

Command parseCommandLine(const QStringList& arguments) {
    return Parser(arguments).parse();
}

QString usageText() {
    return QStringLiteral(
        "Utilisation :\n"
        "  stillwick still VIDÉO --at INSTANT -o FICHIER.png\n"
        "      L'image entière, exactement à cet instant.\n"
        "  stillwick capture VIDÉO --at INSTANT [--at INSTANT …] -o DOSSIER\n"
        "                    [--mode merged|perSubject] [--crop]\n"
        "      Le sujet détouré à chaque instant, en PNG transparent.\n"
        "      --mode perSubject  un fichier par sujet\n"
        "      --crop             coupe au plus près du sujet\n"
        "  stillwick --help | --version\n"
        "\n"
        "INSTANT : des secondes (83.5), un temps affiché (01:23.500, 1:02:03.250)\n"
        "          ou une fraction exacte de seconde (41750/500).\n");
}

} // namespace stillwick
