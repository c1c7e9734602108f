// JSON text taken apart from left to right; no tree is built. One thread at a time.
#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace stillwick {

/// A place in a JSON text. Whoever reads asks what comes next and takes it, so that the memory
/// needed is that of what is kept, whatever the text.
/// *Errors*: all operations throw ProjectError NotJson, with the line, where the text is not what
/// RFC 8259 allows, and TooDeep below `deepest` objects and lists within one another. Half a
/// surrogate pair is no text.
/// *Lifetime*: the text outlives the reader.
/// *Source*: RFC 8259.
class JsonReader final {
public:
    enum class Kind { Object, List, Text, Number, Flag, Null };

    static constexpr int deepest = 512;

    /// Stands before the document's one value. A byte order mark is passed over.
    explicit JsonReader(QByteArrayView text);

    /// What the next value is. Only where a value comes next, as for all that follows.
    [[nodiscard]] Kind kind();

    void enterObject();
    /// The next key of the object entered, whose value comes next then; none once it is left.
    [[nodiscard]] std::optional<QString> nextKey();
    void enterList();
    /// Whether another item of the list entered comes next; if not, the list is left.
    [[nodiscard]] bool nextItem();

    [[nodiscard]] QString takeText();
    /// The number as it is written.
    [[nodiscard]] QByteArrayView takeNumber();
    [[nodiscard]] bool takeFlag();
    void takeNull();
    /// Passes over a value of any kind.
    void skip();
    /// Makes sure that nothing but white space follows the document's value.
    void finish();

private:
    [[nodiscard]] char here() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    [[nodiscard]] char afterSpace();
    bool passes(char expected);
    void expect(char expected);
    void expectWord(QByteArrayView word);
    void expectDigits();
    void enter(char opening);
    [[nodiscard]] bool leavesAt(char closing);
    void appendEscaped(QString& text);
    [[nodiscard]] char16_t takeCodeUnit();
    [[noreturn]] void fail() const;

    QByteArrayView m_text;
    qsizetype m_at = 0;
    int m_depth = 0;
    bool m_isFirst = true; ///< nothing was taken yet of what was entered last
};

} // namespace stillwick
