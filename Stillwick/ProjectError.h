// Why a text is no project, or a project no text. Plain value, any thread.
#pragma once

#include <QByteArray>
#include <QException>
#include <QString>

#include <utility>

namespace stillwick {

/// What is wrong with a project or its text, in words for the user that name the key at fault.
class ProjectError final : public QException {
public:
    enum class Category {
        TooLarge,     ///< longer than any project, as text
        TooDeep,      ///< lists within lists without end
        NotJson,      ///< the text breaks off, or is no JSON
        KeyMissing,   ///< a key that every project has is not there
        WrongType,    ///< a value is of another kind than its key asks for
        OutOfRange,   ///< a number has a fraction or more digits than its field holds
        UnknownValue, ///< a word, an identifier or bytes that cannot be read
        NotEncodable, ///< a number that no text can hold
    };

    ProjectError(Category category, QString description)
        : m_category(category), m_description(std::move(description)),
          m_what(m_description.toUtf8()) {}

    [[nodiscard]] Category category() const noexcept { return m_category; }
    /// A French sentence for people.
    [[nodiscard]] const QString& description() const noexcept { return m_description; }

    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] ProjectError* clone() const override { return new ProjectError(*this); }
    void raise() const override { throw ProjectError(*this); }

private:
    Category m_category;
    QString m_description;
    QByteArray m_what;
};

} // namespace stillwick
