#include "Media/MediaError.h"

#include "Media/Libav.h"

#include <array>
#include <cerrno>
#include <utility>

namespace stillwick {

namespace {

using Category = MediaError::Category;

QString standardWords(Category category) {
    switch (category) {
    case Category::NotFound:
        return QStringLiteral("Le fichier est introuvable.");
    case Category::NotAFile:
        return QStringLiteral("Ce n'est pas un fichier, mais un dossier ou un périphérique.");
    case Category::NoPermission:
        return QStringLiteral("La lecture du fichier n'est pas autorisée.");
    case Category::EmptyFile:
        return QStringLiteral("Le fichier est vide.");
    case Category::NotMedia:
        return QStringLiteral("Ce type de fichier n'est pas pris en charge.");
    case Category::Damaged:
        return QStringLiteral("Ce fichier est endommagé ou incomplet et ne peut pas être lu.");
    case Category::NoVideo:
        return QStringLiteral("Ce fichier ne contient pas de vidéo.");
    case Category::StillPicture:
        return QStringLiteral("Ce fichier est une image fixe, pas une vidéo.");
    case Category::Unsupported:
        return QStringLiteral("Le format de cette vidéo n'est pas pris en charge.");
    case Category::Protected:
        return QStringLiteral("Cette vidéo est protégée et ne peut pas être ouverte.");
    case Category::TooLarge:
        return QStringLiteral("L'image de cette vidéo est trop grande.");
    case Category::NoPicture:
        return QStringLiteral("Aucune image n'a pu être lue dans cette vidéo.");
    case Category::TimeOutOfRange:
        return QStringLiteral("Il n'y a pas d'image à cet instant.");
    case Category::ReadFailed:
        return QStringLiteral("La lecture du fichier a échoué.");
    case Category::OutOfMemory:
        return QStringLiteral("La mémoire ne suffit pas pour lire cette vidéo.");
    case Category::Cancelled:
        return QStringLiteral("La demande a été abandonnée.");
    }
    Q_UNREACHABLE();
}

Category categoryOf(int code) {
    switch (code) {
    case AVERROR(ENOENT):
        return Category::NotFound;
    case AVERROR(EISDIR):
        return Category::NotAFile;
    case AVERROR(EACCES):
    case AVERROR(EPERM):
        return Category::NoPermission;
    case AVERROR(ENOMEM):
        return Category::OutOfMemory;
    case AVERROR_EXIT:
        return Category::Cancelled;
    case AVERROR_INVALIDDATA:
    case AVERROR_EOF:
        return Category::Damaged;
    case AVERROR_DECODER_NOT_FOUND:
    case AVERROR_PATCHWELCOME:
        return Category::Unsupported;
    default:
        return Category::ReadFailed;
    }
}

QString libavText(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return QString::fromUtf8(text.data());
}

} // namespace

MediaError::MediaError(Category category, QString description, QString libraryText)
    : m_category(category), m_description(std::move(description)),
      m_libraryText(std::move(libraryText)),
      m_what(
          (m_description + QStringLiteral(" [") + m_libraryText + QStringLiteral("]")).toUtf8()) {}

MediaError MediaError::make(Category category, const QString& libraryText) {
    return {category, standardWords(category), libraryText};
}

MediaError MediaError::fromLibav(int code) {
    return make(categoryOf(code), libavText(code));
}

} // namespace stillwick
