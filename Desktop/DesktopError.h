// The one error type of the desktop layer. Plain value, any thread.
#pragma once

#include <QByteArray>
#include <QException>
#include <QString>

namespace stillwick {

/// Why the desktop refused a file or a folder.
class DesktopError final : public QException {
public:
    enum class Category {
        FileMissing,    ///< nothing of that name is there to read
        FileUnreadable, ///< the file may not be read
        NoRegularFile,  ///< a folder or a device is to be read
        ReadFailed,     ///< anything else, while reading
        FolderMissing,  ///< the folder does not exist, or is a file
        FolderReadOnly, ///< nothing may be created in the folder
        FileProtected,  ///< a file of that name exists and may not be written
        DiskReadOnly,   ///< the whole file system is read-only
        DiskFull,
        QuotaReached,
        FileTooLarge, ///< larger than the file system or the process allows
        NameTooLong,
        NameInvalid,    ///< empty, or with characters that no file name holds
        NotAFile,       ///< a folder or a device stands in the way
        LinkLoop,       ///< symbolic links that lead nowhere
        DiskFailed,     ///< the hardware or the network failed
        OutOfResources, ///< no memory or no more open files
        Failed,         ///< anything else, while writing
    };

    /// The error of that category in its standard words. `libraryText` is what the system said, for
    /// tests and reports of faults.
    explicit DesktopError(Category category, QString libraryText = {});
    /// The error for a value of `errno`, met while writing a file.
    [[nodiscard]] static DesktopError fromErrno(int code);
    /// The error for a value of `errno`, met while reading a file.
    [[nodiscard]] static DesktopError fromErrnoOfReading(int code);

    [[nodiscard]] Category category() const noexcept { return m_category; }
    /// A French sentence for people.
    [[nodiscard]] QString description() const;
    [[nodiscard]] const QString& libraryText() const noexcept { return m_libraryText; }

    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] DesktopError* clone() const override { return new DesktopError(*this); }
    void raise() const override { throw DesktopError(*this); }

private:
    Category m_category;
    QString m_libraryText;
    QByteArray m_what;
};

} // namespace stillwick
