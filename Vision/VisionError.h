// The one error type of the vision layer. Plain value, any thread.
#pragma once

#include <QByteArray>
#include <QException>
#include <QString>

namespace stillwick {

/// Why a vision request, or the making of a masked image, did not end well.
class VisionError final : public QException {
public:
    enum class Category {
        EmptyPicture,       ///< no picture, or one without pixels
        UnknownInstance,    ///< an instance that the observation does not hold, or none at all
        OtherPicture,       ///< a handler whose picture is not the one that was observed
        SegmentationFailed, ///< the library refused the picture
        OutOfMemory,
        Cancelled, ///< the caller asked to stop
    };

    /// The error of that category in its standard words. `libraryText` is what the library said,
    /// for tests and reports of faults.
    explicit VisionError(Category category, QString libraryText = {});

    [[nodiscard]] Category category() const noexcept { return m_category; }
    /// A French sentence for people.
    [[nodiscard]] QString description() const;
    [[nodiscard]] const QString& libraryText() const noexcept { return m_libraryText; }

    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] VisionError* clone() const override { return new VisionError(*this); }
    void raise() const override { throw VisionError(*this); }

private:
    Category m_category;
    QString m_libraryText;
    QByteArray m_what;
};

} // namespace stillwick
