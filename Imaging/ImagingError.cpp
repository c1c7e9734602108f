#include "Imaging/ImagingError.h"

#include <utility>

namespace stillwick {

namespace {

QString standardWords(ImagingError::Category category) {
    switch (category) {
    case ImagingError::Category::EmptyPicture:
        return QStringLiteral("L'image est vide.");
    case ImagingError::Category::UnfitColorProfile:
        return QStringLiteral("Le profil de couleurs de l'image ne peut pas être enregistré.");
    case ImagingError::Category::EncodingFailed:
        return QStringLiteral("L'image n'a pas pu être convertie en PNG.");
    case ImagingError::Category::OutOfMemory:
        return QStringLiteral("La mémoire ne suffit pas pour cette image.");
    }
    Q_UNREACHABLE();
}

} // namespace

ImagingError::ImagingError(Category category, QString libraryText)
    : m_category(category), m_libraryText(std::move(libraryText)),
      m_what((description() + QStringLiteral(" [") + m_libraryText + u']').toUtf8()) {}

QString ImagingError::description() const {
    return standardWords(m_category);
}

} // namespace stillwick
