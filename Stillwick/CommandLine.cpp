#include "Stillwick/CommandLine.h"

#include "Stillwick/TimeText.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <optional>

namespace stillwick {

namespace {

/// Where captures go before a group is named, as in a new window.
const QString firstGroup = QStringLiteral("Captures");
/// Wider edges than this are a slip of the keyboard.
constexpr double widestEdge = 1000;

/// A number of pixels, with a point or a comma; none below 0 or above the widest.
std::optional<double> parsePixels(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^[0-9]{1,4}(?:[.,][0-9]{1,6})?\\z"));
    if (!form.match(text).hasMatch())
        return std::nullopt;
    const double pixels = QString(text).replace(u',', u'.').toDouble();
    return pixels <= widestEdge ? std::optional(pixels) : std::nullopt;
}

/// #RRGGBB or #RRGGBBAA.
std::optional<QColor> parseColor(const QString& text) {
    static const QRegularExpression form(
        QStringLiteral("^#([0-9A-Fa-f]{2})([0-9A-Fa-f]{2})([0-9A-Fa-f]{2})([0-9A-Fa-f]{2})?\\z"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    constexpr int hexadecimal = 16;
    const auto component = [&match](int i) {
        return match.captured(i).toInt(nullptr, hexadecimal);
    };
    return QColor(component(1), component(2), component(3),
                  match.hasCaptured(4) ? component(4) : 255);
}

/// Whether the word is meant as a file: one that exists, or one that no command looks like.
bool isFileName(const QString& word) {
    return !word.startsWith(u'-') &&
           (word.contains(u'/') || word.contains(u'.') || QFileInfo::exists(word));
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
        if (command == QStringLiteral("still"))
            m_verb = Still;
        else if (command == QStringLiteral("capture"))
            m_verb = Capture;
        else if (command == QStringLiteral("export"))
            m_verb = Export;
        else if (isFileName(command))
            return WindowCommand{QStringList(command) + m_words};
        else
            return UsageError{QStringLiteral("Commande inconnue : « %1 ».").arg(command)};
        while (m_fault.isEmpty() && !m_words.isEmpty())
            takeWord(m_words.takeFirst());
        checkWhole();
        if (!m_fault.isEmpty())
            return UsageError{m_fault};
        if (m_verb == Still)
            return StillCommand{m_capture.video, lastCapture().time, m_capture.folder};
        if (m_verb == Export)
            return ExportCommand{m_capture.video, m_capture.folder, m_capture.mode};
        return m_capture;
    }

private:
    /// The commands, as bits.
    enum Verb : unsigned { Still = 1, Capture = 2, Export = 4 };
    struct Option {
        QStringView word;
        unsigned verbs; ///< the commands that have it
        void (Parser::*take)(const QString& value);
    };
    /// The options that are followed by a value.
    static const std::array<Option, 12> options;

    void takeWord(const QString& word) {
        if (m_areOptionsOver || !word.startsWith(u'-') || word == QStringLiteral("-"))
            takeFile(word);
        else if (word == QStringLiteral("--"))
            m_areOptionsOver = true;
        else if (m_verb == Capture && word == QStringLiteral("--crop"))
            m_capture.crop = true;
        else
            takeOption(word);
    }

    void takeOption(const QString& word) {
        const auto* option = std::ranges::find(options, QStringView(word), &Option::word);
        if (option == options.end() || (option->verbs & m_verb) == 0)
            m_fault = QStringLiteral("Option inconnue : « %1 ».").arg(word);
        else if (m_words.isEmpty())
            m_fault = QStringLiteral("L'option « %1 » attend une valeur.").arg(word);
        else
            (this->*option->take)(m_words.takeFirst());
    }

    /// The film, or the project.
    void takeFile(const QString& word) {
        if (m_capture.video.isEmpty() && !word.isEmpty())
            m_capture.video = word;
        else
            m_fault = QStringLiteral("Argument en trop : « %1 ».").arg(word);
    }

    void takeTime(const QString& text) {
        const auto time = parseTime(text);
        if (!time)
            m_fault = QStringLiteral("Instant non valable : « %1 ».").arg(text);
        else if (m_verb == Still && m_lastGroup)
            m_fault =
                QStringLiteral("Un seul instant est possible avec « still » : « %1 ».").arg(text);
        else
            addCapture(*time);
    }

    void addCapture(const CMTime& time) {
        group().captures.push_back({time, {}});
        m_lastGroup = m_group;
    }

    void takeOutput(const QString& text) {
        if (!m_capture.folder.isEmpty())
            m_fault = QStringLiteral("L'option « -o » est donnée deux fois : « %1 ».").arg(text);
        m_capture.folder = text;
    }

    void takeProject(const QString& text) {
        if (!m_capture.project.isEmpty() || text.isEmpty())
            m_fault = QStringLiteral("Un seul fichier de projet est possible : « %1 ».").arg(text);
        m_capture.project = text;
    }

    void takeMode(const QString& text) {
        if (text == QStringLiteral("merged"))
            m_capture.mode = ExportMode::merged;
        else if (text == QStringLiteral("perSubject"))
            m_capture.mode = ExportMode::perSubject;
        else
            m_fault = QStringLiteral("Mode inconnu : « %1 ».").arg(text);
    }

    void takeStyle(const QString& text) {
        if (const auto style = filterStyleFromRawValue(text))
            m_capture.style = *style;
        else
            m_fault = QStringLiteral("Style inconnu : « %1 ».").arg(text);
    }

    void takeShrink(const QString& text) { takePixels(text, m_capture.edge.shrink); }
    void takeFeather(const QString& text) { takePixels(text, m_capture.edge.feather); }

    void takeOutline(const QString& text) {
        m_capture.edge.outline = true;
        takePixels(text, m_capture.edge.outlineWidth);
    }

    void takePixels(const QString& text, double& pixels) {
        if (const auto number = parsePixels(text))
            pixels = *number;
        else
            m_fault = QStringLiteral("Nombre de pixels non valable : « %1 ».").arg(text);
    }

    void takeOutlineColor(const QString& text) {
        m_hasOutlineColor = true;
        if (const auto color = parseColor(text))
            m_capture.edge.outlineColor = *color;
        else
            m_fault = QStringLiteral("Couleur non valable : « %1 ».").arg(text);
    }

    /// Opens the group of that name, which may have been open before.
    void takeGroup(const QString& name) {
        const auto found = std::ranges::find(m_capture.groups, name, &GroupRequest::name);
        m_group = std::size_t(found - m_capture.groups.begin());
        if (found == m_capture.groups.end())
            m_capture.groups.push_back({name, {}});
    }

    void takeNoteOfCapture(const QString& text) {
        if (!m_lastGroup)
            m_fault = QStringLiteral("L'option « --note » vient après l'instant qu'elle "
                                     "concerne : « %1 ».")
                          .arg(text);
        else
            takeNote(QStringLiteral("--note"), text, lastCapture().note);
    }

    void takeNoteOfGroup(const QString& text) {
        takeNote(QStringLiteral("--group-note"), text, group().note);
    }

    void takeNote(const QString& option, const QString& text, QString& note) {
        if (!note.isEmpty())
            m_fault =
                QStringLiteral("L'option « %1 » est donnée deux fois : « %2 ».").arg(option, text);
        note = text;
    }

    /// The group that is open.
    GroupRequest& group() {
        if (m_capture.groups.empty())
            takeGroup(firstGroup);
        return m_capture.groups[m_group];
    }

    /// The capture that was asked for last, whatever group is open now. There must be one.
    CaptureRequest& lastCapture() { return m_capture.groups[*m_lastGroup].captures.back(); }

    void checkWhole() {
        if (!m_fault.isEmpty())
            return;
        if (m_capture.video.isEmpty())
            m_fault = m_verb == Export ? QStringLiteral("Le projet manque.")
                                       : QStringLiteral("La vidéo manque.");
        else if (m_verb == Export)
            return;
        else if (!m_lastGroup)
            m_fault = QStringLiteral("L'option « --at » manque.");
        else if (m_capture.folder.isEmpty())
            m_fault = QStringLiteral("L'option « -o » manque.");
        else if (m_hasOutlineColor && !m_capture.edge.outline)
            m_fault = QStringLiteral("L'option « --outline-color » va avec « --outline ».");
    }

    QStringList m_words;
    Verb m_verb = Still;
    bool m_areOptionsOver = false;
    bool m_hasOutlineColor = false;
    // Of « still » the file stands in `folder`, of « export » the project in `video`.
    CaptureCommand m_capture;
    std::size_t m_group = 0;
    std::optional<std::size_t> m_lastGroup; ///< of the capture asked for last
    QString m_fault;
};

const std::array<Parser::Option, 12> Parser::options{{
    {u"--at", Still | Capture, &Parser::takeTime},
    {u"-o", Still | Capture | Export, &Parser::takeOutput},
    {u"--mode", Capture | Export, &Parser::takeMode},
    {u"--style", Capture, &Parser::takeStyle},
    {u"--shrink", Capture, &Parser::takeShrink},
    {u"--feather", Capture, &Parser::takeFeather},
    {u"--outline", Capture, &Parser::takeOutline},
    {u"--outline-color", Capture, &Parser::takeOutlineColor},
    {u"--group", Capture, &Parser::takeGroup},
    {u"--note", Capture, &Parser::takeNoteOfCapture},
    {u"--group-note", Capture, &Parser::takeNoteOfGroup},
    {u"--save", Capture, &Parser::takeProject},
}};

} // namespace

Command parseCommandLine(const QStringList& arguments) {
    return Parser(arguments).parse();
}

QString usageText() {
    return QStringLiteral(
        "Utilisation :\n"
        "  stillwick [VIDÉO | PROJET …]\n"
        "      La fenêtre.\n"
        "  stillwick still VIDÉO --at INSTANT -o FICHIER.png\n"
        "      L'image entière, exactement à cet instant.\n"
        "  stillwick capture VIDÉO --at INSTANT [--at INSTANT …] -o DOSSIER [OPTIONS]\n"
        "      Le sujet détouré à chaque instant, en PNG transparent.\n"
        "      --mode merged|perSubject  tous les sujets ensemble, ou un fichier par sujet\n"
        "      --crop                    coupe au plus près du sujet\n"
        "      --style none|sketch|comic|poster  aucun style, croquis, BD ou postérisation\n"
        "      --shrink PX               réduit le bord du détourage\n"
        "      --feather PX              adoucit le bord\n"
        "      --outline PX              entoure le sujet d'un contour de cette largeur\n"
        "      --outline-color #RRVVBB[AA]  couleur du contour (blanc sinon)\n"
        "      --note TEXTE              note sur l'instant qui précède\n"
        "      --group NOM               groupe des instants qui suivent ; s'il y en a plusieurs,\n"
        "                                un dossier par groupe\n"
        "      --group-note TEXTE        note sur le groupe\n"
        "      --save FICHIER.stillwick  enregistre aussi le projet de ces captures\n"
        "      Ctrl-C arrête entre deux images.\n"
        "  stillwick export PROJET [-o DOSSIER] [--mode merged|perSubject]\n"
        "      Les captures d'un projet, avec ses réglages ; sans -o, dans son dossier de sortie.\n"
        "  stillwick --help | --version\n"
        "\n"
        "INSTANT : des secondes (83.5), un temps affiché (01:23.500, 1:02:03.250)\n"
        "          ou une fraction exacte de seconde (41750/500).\n");
}

} // namespace stillwick
