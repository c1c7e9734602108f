// The one error type of the media layer. Plain value, any thread.
#pragma once

#include <QException>
#include <QString>

namespace stillwick {

/// Why a film could not be opened or a picture not be had.
class MediaError final : public QException {
public:
    enum class Category {
        NotFound,       ///< no file at that path
        NotAFile,       ///< a folder, a device
        NoPermission,   ///< reading is not allowed
        EmptyFile,      ///< a file of 0 bytes
        NotMedia,       ///< no container that is known, or one that is refused
        Damaged,        ///< a known container whose tables are missing or cut off
        NoVideo,        ///< sound only, or nothing but a cover picture
        StillPicture,   ///< a picture file
        Unsupported,    ///< no decoder for the track's format
        Protected,      ///< encrypted
        TooLarge,       ///< a picture larger than can be held
        NoPicture,      ///< nothing could be decoded
        TimeOutOfRange, ///< negative, not a number, or past the film's end
        ReadFailed,     ///< the system refused to read on
        OutOfMemory,
        Cancelled, ///< the request was withdrawn
    };

    /// *Shape*: `description` is a French sentence for people; `libraryText` what the library said,
    /// for tests and reports of faults.
    MediaError(Category category, QString description, QString libraryText = {});

    /// The error of that category in its standard words.
    [[nodiscard]] static MediaError make(Category category, const QString& libraryText = {});
    /// The error for a negative return value of libav*, met while reading the file.
    [[nodiscard]] static MediaError fromLibav(int code);

    [[nodiscard]] Category category() const noexcept { return m_category; }
    [[nodiscard]] const QString& description() const noexcept { return m_description; }
    [[nodiscard]] const QString& libraryText() const noexcept { return m_libraryText; }

    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] MediaError* clone() const override { return new MediaError(*this); }
    void raise() const override { throw MediaError(*this); }

private:
    Category m_category;
    QString m_description;
    QString m_libraryText;
    QByteArray m_what;
};

} // namespace stillwick
