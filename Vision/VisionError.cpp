#include "Vision/VisionError.h"

#include <utility>

namespace stillwick {
namespace {

QString standardWords(VisionError::Category category) {
    switch (category) {
    case VisionError::Category::EmptyPicture:
        return QStringLiteral("L'image est vide.");
    case VisionError::Category::UnknownInstance:
        return QStringLiteral("Le sujet demandé n'existe pas dans cette image.");
    case VisionError::Category::OtherPicture:
        return QStringLiteral("Le masque a été calculé pour une autre image.");
    case VisionError::Category::SegmentationFailed:
        return QStringLiteral("La recherche du sujet a échoué.");
    case VisionError::Category::OutOfMemory:
        return QStringLiteral("La mémoire ne suffit pas pour cette image.");
    case VisionError::Category::Cancelled:
        return QStringLiteral("La recherche du sujet a été annulée.");
    }
    Q_UNREACHABLE();
}

} // namespace

VisionError::VisionError(Category category, QString libraryText)
    : m_category(category), m_libraryText(std::move(libraryText)),
      m_what((description() + QStringLiteral(" [") + m_libraryText + u']').toUtf8()) {}

QString VisionError::description() const {
    return standardWords(m_category);
}

} // namespace stillwick
