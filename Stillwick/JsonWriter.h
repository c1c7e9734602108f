// JSON text put together from left to right. One thread at a time.
#pragma once

#include <QByteArray>
#include <QStringView>

namespace stillwick {

/// A JSON text under way: UTF-8, one key or item a line, two spaces for each level. Whoever writes
/// opens, fills and closes in the order of the text.
/// *Errors*: ProjectError NotEncodable for a number that is not finite, TooLarge past the length
/// allowed.
/// *Source*: RFC 8259.
class JsonWriter final {
public:
    /// *Units*: bytes.
    explicit JsonWriter(qsizetype mostBytes) : m_mostBytes(mostBytes) {}

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginList() { begin('['); }
    void endList() { end(']'); }
    /// The key of what is written next. Plain ASCII without quotes.
    void key(const char* name);
    /// Before each item of a list.
    void item();

    /// Text; half a surrogate pair becomes a question mark.
    void write(QStringView text);
    /// The shortest digits that read back to the same bits.
    void write(double number);
    void write(qint64 number);
    void write(bool flag);

    /// The whole text, with a line break at its end.
    [[nodiscard]] QByteArray take();

private:
    void begin(char opening);
    void end(char closing);
    void newLine();

    QByteArray m_text;
    qsizetype m_mostBytes;
    int m_depth = 0;
    bool m_isEmpty = true; ///< nothing was written yet into what was begun last
};

} // namespace stillwick
