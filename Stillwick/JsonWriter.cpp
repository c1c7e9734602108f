#include "Stillwick/JsonWriter.h"

#include "Stillwick/ProjectError.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace stillwick {

namespace {

using Category = ProjectError::Category;

/// Any number, in the fewest digits that tell it from its neighbours.
template <typename Number>
void appendDigits(QByteArray& text, Number number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end - digits.data());
}

void appendEscaped(QByteArray& text, char character) {
    switch (character) {
    case '\n':
        text += "\\n";
        break;
    case '\r':
        text += "\\r";
        break;
    case '\t':
        text += "\\t";
        break;
    case '"':
    case '\\':
        text += '\\';
        text += character;
        break;
    default:
        constexpr const char* hexadecimal = "0123456789abcdef";
        text += "\\u00";
        text += hexadecimal[character / 16];
        text += hexadecimal[character % 16];
    }
}

bool mustBeEscaped(char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '"' || character == '\\';
}

} // namespace

void JsonWriter::key(const char* name) {
    newLine();
    m_text += '"';
    m_text += name;
    m_text += "\": ";
}

void JsonWriter::item() {
    newLine();
}

void JsonWriter::write(QStringView text) {
    const QByteArray bytes = text.toUtf8();
    m_text += '"';
    for (const char *at = bytes.begin(), *const end = bytes.end();;) {
        const char* const odd = std::find_if(at, end, mustBeEscaped);
        m_text.append(at, odd - at);
        if (odd == end)
            break;
        appendEscaped(m_text, *odd);
        at = odd + 1;
    }
    m_text += '"';
}

void JsonWriter::write(double number) {
    if (!std::isfinite(number))
        throw ProjectError(Category::NotEncodable,
                           QStringLiteral("Un réglage ou une annotation contient une valeur qui "
                                          "n'est pas un nombre."));
    appendDigits(m_text, number);
}

void JsonWriter::write(qint64 number) {
    appendDigits(m_text, number);
}

void JsonWriter::write(bool flag) {
    m_text += flag ? "true" : "false";
}

QByteArray JsonWriter::take() {
    m_depth = 0;
    m_isEmpty = true;
    newLine();
    return std::exchange(m_text, {});
}

void JsonWriter::begin(char opening) {
    m_text += opening;
    ++m_depth;
    m_isEmpty = true;
}

void JsonWriter::end(char closing) {
    --m_depth;
    if (!std::exchange(m_isEmpty, true))
        newLine();
    m_isEmpty = false;
    m_text += closing;
}

void JsonWriter::newLine() {
    if (!std::exchange(m_isEmpty, false))
        m_text += ',';
    m_text += '\n';
    constexpr qsizetype spaces = 2;
    m_text.append(spaces * m_depth, ' ');
    if (m_text.size() > m_mostBytes)
        throw ProjectError(Category::TooLarge,
                           QStringLiteral("Le projet est trop volumineux pour être enregistré."));
}

} // namespace stillwick
