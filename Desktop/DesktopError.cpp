#include "Desktop/DesktopError.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace stillwick {

namespace {

using Category = DesktopError::Category;

Category categoryOf(int code) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return Category::FolderMissing;
    case EACCES:
    case EPERM:
        return Category::FolderReadOnly;
    case EROFS:
        return Category::DiskReadOnly;
    case ENOSPC:
        return Category::DiskFull;
    case EDQUOT:
        return Category::QuotaReached;
    case EFBIG:
        return Category::FileTooLarge;
    case ENAMETOOLONG:
        return Category::NameTooLong;
    case EINVAL:
    case EILSEQ:
        return Category::NameInvalid;
    case EISDIR:
        return Category::NotAFile;
    case ELOOP:
        return Category::LinkLoop;
    case EIO:
    case ENXIO:
    case ENODEV:
    case ESTALE:
    case EREMOTEIO:
    case ENOTCONN:
    case ETIMEDOUT:
        return Category::DiskFailed;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return Category::OutOfResources;
    default:
        return Category::Failed;
    }
}

/// Where reading calls for other words than writing.
Category categoryOfReading(int code) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return Category::FileMissing;
    case EACCES:
    case EPERM:
        return Category::FileUnreadable;
    case EISDIR:
    case ENXIO:
        return Category::NoRegularFile;
    default:
        const Category category = categoryOf(code);
        return category == Category::Failed ? Category::ReadFailed : category;
    }
}

DesktopError errorOf(Category category, int code) {
    return DesktopError(category, QString::fromStdString(std::generic_category().message(code)));
}

QString standardWords(Category category) {
    switch (category) {
    case Category::FileMissing:
        return QStringLiteral("Le fichier n'existe pas.");
    case Category::FileUnreadable:
        return QStringLiteral("Vous n'avez pas le droit de lire ce fichier.");
    case Category::NoRegularFile:
        return QStringLiteral("Ce n'est pas un fichier, mais un dossier ou un périphérique.");
    case Category::ReadFailed:
        return QStringLiteral("Le fichier n'a pas pu être lu.");
    case Category::FolderMissing:
        return QStringLiteral("Le dossier n'existe pas.");
    case Category::FolderReadOnly:
        return QStringLiteral("Le dossier est en lecture seule.");
    case Category::FileProtected:
        return QStringLiteral("Le fichier existant est protégé en écriture.");
    case Category::DiskReadOnly:
        return QStringLiteral("Le disque est en lecture seule.");
    case Category::DiskFull:
        return QStringLiteral("Le disque est plein.");
    case Category::QuotaReached:
        return QStringLiteral("L'espace disque qui vous est alloué est épuisé.");
    case Category::FileTooLarge:
        return QStringLiteral("Le fichier est trop volumineux pour ce disque.");
    case Category::NameTooLong:
        return QStringLiteral("Le nom du fichier est trop long.");
    case Category::NameInvalid:
        return QStringLiteral("Le nom du fichier n'est pas valable.");
    case Category::NotAFile:
        return QStringLiteral("Un dossier ou un périphérique porte déjà ce nom.");
    case Category::LinkLoop:
        return QStringLiteral("Le lien symbolique ne mène à aucun fichier.");
    case Category::DiskFailed:
        return QStringLiteral("Le disque a signalé une erreur.");
    case Category::OutOfResources:
        return QStringLiteral("La mémoire ou le nombre de fichiers ouverts ne suffit pas.");
    case Category::Failed:
        break;
    }
    return QStringLiteral("Le fichier n'a pas pu être enregistré.");
}

} // namespace

DesktopError::DesktopError(Category category, QString libraryText)
    : m_category(category), m_libraryText(std::move(libraryText)),
      m_what((description() + QStringLiteral(" [") + m_libraryText + u']').toUtf8()) {}

DesktopError DesktopError::fromErrno(int code) {
    return errorOf(categoryOf(code), code);
}

DesktopError DesktopError::fromErrnoOfReading(int code) {
    return errorOf(categoryOfReading(code), code);
}

QString DesktopError::description() const {
    return standardWords(m_category);
}

} // namespace stillwick
