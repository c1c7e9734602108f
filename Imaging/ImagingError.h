// The one error type of the image layer. Plain value, any thread.
#pragma once

#include <QByteArray>
#include <QException>
#include <QString>

namespace stillwick {

/// Why a picture could not be made into what was asked.
class ImagingError final : public QException {
public:
    enum class Category {
        EmptyPicture,      ///< no picture, or one without pixels
        UnfitColorProfile, ///< the picture's colour space has no profile that a PNG file can hold
        EncodingFailed,    ///< the encoder refused the picture
        OutOfMemory,
    };

    /// The error of that category in its standard words. `libraryText` is what the library said,
    /// for tests and reports of faults.
    explicit ImagingError(Category category, QString libraryText = {});

    [[nodiscard]] Category category() const noexcept { return m_category; }
    /// A French sentence for people.
    [[nodiscard]] QString description() const;
    [[nodiscard]] const QString& libraryText() const noexcept { return m_libraryText; }

    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] ImagingError* clone() const override { return new ImagingError(*this); }
    void raise() const override { throw ImagingError(*this); }

private:
    Category m_category;
    QString m_libraryText;
    QByteArray m_what;
};

} // namespace stillwick
