#include "Stillwick/JsonReader.h"
#include "Stillwick/ProjectError.h"
#include "Stillwick/ProjectJson.h"
#include "Stillwick/ProjectKeys.h"
#include "Stillwick/WholeNumber.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>

namespace stillwick {

namespace {

using Category = ProjectError::Category;
using Kind = JsonReader::Kind;

template <typename Field>
constexpr bool isOptional = false;
template <typename Field>
constexpr bool isOptional<std::optional<Field>> = true;

/// One step from the document to a value: a key, or a place in a list.
struct Step {
    const char* key = nullptr;
    qsizetype index = 0;
};

/// Whether the text is of the form 8-4-4-4-12 hexadecimal digits.
bool isIdentifier(QStringView text) {
    constexpr std::u16string_view form = u"00000000-0000-0000-0000-000000000000";
    constexpr std::u16string_view digits = u"0123456789abcdefABCDEF";
    const auto fits = [&](QChar character, char16_t expected) {
        return expected == u'-' ? character == u'-'
                                : digits.find(character.unicode()) != std::u16string_view::npos;
    };
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), fits);
}

/// An item to be filled in. A mark's own identity would cost a call of the system.
template <typename Item>
Item blank() {
    return {};
}
template <>
Annotation blank() {
    return {.id = QUuid(), .start = {}, .end = {}};
}

class Decoder {
public:
    explicit Decoder(QByteArrayView text) : m_json(text) {}

    [[nodiscard]] ProjectFile decode() {
        ProjectFile project;
        read(project);
        m_json.finish();
        return project;
    }

private:
    template <typename Record>
    void read(Record& record) {
        enter(Kind::Object, QStringLiteral("un objet"));
        unsigned found = 0;
        while (const std::optional<QString> key = m_json.nextKey())
            if (!readField(record, *key, found))
                m_json.skip();
        requireKeys<Record>(found);
    }

    /// Whether the key is one of the record's; if it is, its value was read.
    template <typename Record>
    bool readField(Record& record, const QString& name, unsigned& found) {
        unsigned bit = 1;
        const auto readIfNamed = [&](const auto& key) {
            const bool isNamed = name == QLatin1StringView(key.name);
            if (isNamed) {
                found |= bit;
                m_path.append(Step{key.name});
                read(record.*key.field);
                m_path.removeLast();
            }
            bit <<= 1U;
            return isNamed;
        };
        return std::apply([&](const auto&... keys) { return (readIfNamed(keys) || ...); },
                          projectKeys<Record>);
    }

    template <typename Record>
    void requireKeys(unsigned found) {
        unsigned bit = 1;
        const auto require = [&]<typename Field>(const ProjectKey<Record, Field>& key) {
            if ((found & bit) == 0 && !isOptional<Field>) {
                m_path.append(Step{key.name});
                throw ProjectError(Category::KeyMissing,
                                   QStringLiteral("La clé « %1 » manque.").arg(path()));
            }
            bit <<= 1U;
        };
        std::apply([&](const auto&... keys) { (require(keys), ...); }, projectKeys<Record>);
    }

    template <typename Field>
    void read(std::optional<Field>& field) {
        field.reset();
        if (m_json.kind() == Kind::Null)
            m_json.takeNull();
        else
            read(field.emplace());
    }

    template <typename Item>
    void read(QList<Item>& items) {
        enter(Kind::List, QStringLiteral("une liste"));
        items.clear();
        m_path.append(Step{});
        for (; m_json.nextItem(); ++m_path.last().index)
            read(items.emplaceBack(blank<Item>()));
        m_path.removeLast();
    }

    void read(QPointF& point) {
        const QString expected = QStringLiteral("une liste de deux nombres");
        enter(Kind::List, expected);
        for (const int axis : {0, 1}) {
            if (!m_json.nextItem())
                throw wrongType(expected);
            m_path.append(Step{nullptr, axis});
            read(axis == 0 ? point.rx() : point.ry());
            m_path.removeLast();
        }
        if (m_json.nextItem())
            throw wrongType(expected);
    }

    void read(QString& text) {
        require(Kind::Text, QStringLiteral("un texte"));
        text = m_json.takeText();
    }

    void read(bool& flag) {
        require(Kind::Flag, QStringLiteral("« true » ou « false »"));
        flag = m_json.takeFlag();
    }

    void read(double& number) {
        require(Kind::Number, QStringLiteral("un nombre"));
        const QByteArrayView digits = m_json.takeNumber();
        if (std::from_chars(digits.begin(), digits.end(), number).ec != std::errc())
            throw ProjectError(Category::OutOfRange,
                               QStringLiteral("La clé « %1 » contient un nombre trop grand ou trop "
                                              "petit.")
                                   .arg(path()));
    }

    void read(qint64& number) { readInteger(number); }
    void read(qint32& number) { readInteger(number); }

    template <typename Integer>
    void readInteger(Integer& number) {
        require(Kind::Number, QStringLiteral("un nombre entier"));
        const std::optional<qint64> whole = wholeNumber(m_json.takeNumber());
        if (!whole || *whole < std::numeric_limits<Integer>::min() ||
            *whole > std::numeric_limits<Integer>::max())
            throw ProjectError(
                Category::OutOfRange,
                QStringLiteral("La clé « %1 » doit être un nombre entier de %2 bits.")
                    .arg(path())
                    .arg(8 * sizeof(Integer)));
        number = Integer(*whole);
    }

    void read(QByteArray& bytes) {
        QString text;
        read(text);
        const auto decoded = QByteArray::fromBase64Encoding(
            text.toUtf8(), QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded || QLatin1StringView(decoded.decoded.toBase64()) != text)
            throw unknownValue(QStringLiteral("du base64"));
        bytes = decoded.decoded;
    }

    void read(QUuid& id) {
        QString text;
        read(text);
        if (!isIdentifier(text))
            throw unknownValue(QStringLiteral("un identifiant"));
        id = QUuid::fromString(text);
    }

    void read(AnnotationKind& kind) {
        QString text;
        read(text);
        const auto known = annotationKindFromRawValue(text);
        if (!known)
            throw unknownValue(QStringLiteral("une forme connue"));
        kind = *known;
    }

    void enter(Kind kind, const QString& expected) {
        require(kind, expected);
        if (kind == Kind::Object)
            m_json.enterObject();
        else
            m_json.enterList();
    }

    void require(Kind kind, const QString& expected) {
        if (m_json.kind() != kind)
            throw wrongType(expected);
    }

    [[nodiscard]] ProjectError wrongType(const QString& expected) const {
        if (m_path.isEmpty())
            return {Category::WrongType,
                    QStringLiteral("Le fichier n'est pas un projet : son contenu n'est pas %1.")
                        .arg(expected)};
        return {Category::WrongType,
                QStringLiteral("La clé « %1 » doit être %2.").arg(path(), expected)};
    }

    [[nodiscard]] ProjectError unknownValue(const QString& expected) const {
        return {Category::UnknownValue,
                QStringLiteral("La valeur de la clé « %1 » n'est pas %2.").arg(path(), expected)};
    }

    /// Where the value stands: "groups[0].frames[3].notes".
    [[nodiscard]] QString path() const {
        QString text;
        for (const Step& step : m_path) {
            if (!step.key)
                text += QStringLiteral("[%1]").arg(step.index);
            else
                text += (text.isEmpty() ? QString() : QStringLiteral(".")) +
                        QLatin1StringView(step.key);
        }
        return text;
    }

    JsonReader m_json;
    QList<Step> m_path;
};

} // namespace

ProjectFile decodeProject(QByteArrayView text) {
    if (text.size() > longestProject)
        throw ProjectError(Category::TooLarge,
                           QStringLiteral("Le fichier est trop volumineux pour un projet."));
    if (text.isEmpty())
        throw ProjectError(Category::NotJson, QStringLiteral("Le fichier est vide."));
    return Decoder(text).decode();
}

} // namespace stillwick
