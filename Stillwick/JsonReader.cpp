#include "Stillwick/JsonReader.h"

#include "Stillwick/ProjectError.h"

#include <QChar>
#include <QStringConverter>

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

using Category = ProjectError::Category;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isSpace(char character) {
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

/// What a character stands for behind a backslash; NUL where it stands for nothing.
char16_t meaningBehindBackslash(char character) {
    switch (character) {
    case '"':
    case '\\':
    case '/':
        return char16_t(character);
    case 'b':
        return u'\b';
    case 'f':
        return u'\f';
    case 'n':
        return u'\n';
    case 'r':
        return u'\r';
    case 't':
        return u'\t';
    default:
        return 0;
    }
}

/// Every character, where QString's own takes a byte order mark away wherever a text begins.
QString fromUtf8(QByteArrayView text) {
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
    return decoder(text);
}

} // namespace

JsonReader::JsonReader(QByteArrayView text) : m_text(text) {
    constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (m_text.startsWith(byteOrderMark))
        m_at = byteOrderMark.size();
    if (!m_text.isValidUtf8())
        throw ProjectError(Category::NotJson,
                           QStringLiteral("Le fichier n'est pas du texte en UTF-8."));
}

JsonReader::Kind JsonReader::kind() {
    switch (const char first = afterSpace()) {
    case '{':
        return Kind::Object;
    case '[':
        return Kind::List;
    case '"':
        return Kind::Text;
    case 't':
    case 'f':
        return Kind::Flag;
    case 'n':
        return Kind::Null;
    default:
        if (first != '-' && !isDigit(first))
            fail();
        return Kind::Number;
    }
}

void JsonReader::enterObject() {
    enter('{');
}

std::optional<QString> JsonReader::nextKey() {
    if (leavesAt('}'))
        return std::nullopt;
    QString key = takeText();
    if (afterSpace() != ':')
        fail();
    ++m_at;
    return key;
}

void JsonReader::enterList() {
    enter('[');
}

bool JsonReader::nextItem() {
    return !leavesAt(']');
}

QString JsonReader::takeText() {
    if (afterSpace() != '"')
        fail();
    ++m_at;
    QString text;
    for (;;) {
        const auto* const begin = m_text.begin() + m_at;
        const auto* const end = std::find_if(begin, m_text.end(), [](char character) {
            return character == '"' || character == '\\' ||
                   static_cast<unsigned char>(character) < ' ';
        });
        text += fromUtf8(QByteArrayView(begin, end));
        m_at += end - begin;
        if (passes('"'))
            return text;
        expect('\\');
        appendEscaped(text);
    }
}

QByteArrayView JsonReader::takeNumber() {
    const char first = afterSpace();
    const qsizetype begin = m_at;
    if (first == '-')
        ++m_at;
    if (!passes('0'))
        expectDigits();
    if (passes('.'))
        expectDigits();
    if (passes('e') || passes('E')) {
        if (!passes('+'))
            passes('-');
        expectDigits();
    }
    return m_text.sliced(begin, m_at - begin);
}

bool JsonReader::takeFlag() {
    const bool flag = afterSpace() == 't';
    expectWord(flag ? QByteArrayView("true") : QByteArrayView("false"));
    return flag;
}

void JsonReader::takeNull() {
    (void)afterSpace();
    expectWord("null");
}

void JsonReader::skip() {
    switch (kind()) {
    case Kind::Object:
        enterObject();
        while (nextKey())
            skip();
        break;
    case Kind::List:
        enterList();
        while (nextItem())
            skip();
        break;
    case Kind::Text:
        (void)takeText();
        break;
    case Kind::Number:
        (void)takeNumber();
        break;
    case Kind::Flag:
        (void)takeFlag();
        break;
    case Kind::Null:
        takeNull();
        break;
    }
}

void JsonReader::finish() {
    (void)afterSpace();
    if (m_at != m_text.size())
        fail();
}

char JsonReader::afterSpace() {
    while (isSpace(here()))
        ++m_at;
    return here();
}

bool JsonReader::passes(char expected) {
    if (here() != expected)
        return false;
    ++m_at;
    return true;
}

void JsonReader::expect(char expected) {
    if (!passes(expected))
        fail();
}

void JsonReader::expectWord(QByteArrayView word) {
    for (const char character : word)
        expect(character);
}

void JsonReader::expectDigits() {
    if (!isDigit(here()))
        fail();
    while (isDigit(here()))
        ++m_at;
}

void JsonReader::enter(char opening) {
    if (afterSpace() != opening)
        fail();
    if (m_depth == deepest)
        throw ProjectError(Category::TooDeep,
                           QStringLiteral("Le fichier imbrique plus de %1 listes : ce n'est pas un "
                                          "projet.")
                               .arg(deepest));
    ++m_at;
    ++m_depth;
    m_isFirst = true;
}

bool JsonReader::leavesAt(char closing) {
    const bool isFirst = std::exchange(m_isFirst, false);
    if (afterSpace() == closing) {
        ++m_at;
        --m_depth;
        return true;
    }
    if (!isFirst)
        expect(',');
    return false;
}

/// What follows a backslash.
void JsonReader::appendEscaped(QString& text) {
    if (const char16_t meaning = meaningBehindBackslash(here())) {
        ++m_at;
        text += QChar(meaning);
        return;
    }
    const char16_t unit = takeCodeUnit();
    if (QChar::isLowSurrogate(unit))
        fail();
    text += QChar(unit);
    if (!QChar::isHighSurrogate(unit))
        return;
    expect('\\');
    const char16_t low = takeCodeUnit();
    if (!QChar::isLowSurrogate(low))
        fail();
    text += QChar(low);
}

char16_t JsonReader::takeCodeUnit() {
    expect('u');
    constexpr qsizetype digits = 4;
    constexpr QByteArrayView hexadecimal("0123456789abcdefABCDEF");
    char16_t unit = 0;
    for (qsizetype i = 0; i < digits; ++i) {
        const qsizetype digit = hexadecimal.indexOf(here());
        if (digit < 0)
            fail();
        unit = char16_t(unit * 16 + (digit < 16 ? digit : digit - 6));
        ++m_at;
    }
    return unit;
}

void JsonReader::fail() const {
    const auto read = m_text.first(m_at);
    const auto line = 1 + std::count(read.begin(), read.end(), '\n');
    if (m_at == m_text.size())
        throw ProjectError(
            Category::NotJson,
            QStringLiteral("Le fichier est incomplet : il s'arrête à la ligne %1.").arg(line));
    const qsizetype lineBegin = read.lastIndexOf('\n') + 1;
    throw ProjectError(Category::NotJson,
                       QStringLiteral("Le fichier n'est pas un projet lisible : erreur de syntaxe "
                                      "à la ligne %1, caractère %2.")
                           .arg(line)
                           .arg(1 + QString::fromUtf8(read.sliced(lineBegin)).size()));
}

} // namespace stillwick
