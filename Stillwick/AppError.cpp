#include "Stillwick/AppError.h"

#include <utility>

namespace stillwick {

AppError::AppError(Case kind, QString detail)
    : m_case(kind), m_detail(std::move(detail)), m_what(description().toUtf8()) {}

AppError AppError::frameExtractionFailed(QString detail) {
    return AppError(Case::frameExtractionFailed, std::move(detail));
}

AppError AppError::exportFailed(QString detail) {
    return AppError(Case::exportFailed, std::move(detail));
}

AppError AppError::noVideoLoaded() {
    return AppError(Case::noVideoLoaded);
}

AppError AppError::noOutputFolder() {
    return AppError(Case::noOutputFolder);
}

AppError AppError::subjectLiftingUnavailable() {
    return AppError(Case::subjectLiftingUnavailable);
}

AppError AppError::noSubjectFound() {
    return AppError(Case::noSubjectFound);
}

QString AppError::description() const {
    switch (m_case) {
    case Case::frameExtractionFailed:
        return QStringLiteral("Échec de l'extraction de l'image : ") + m_detail;
    case Case::exportFailed:
        return QStringLiteral("Échec de l'export : ") + m_detail;
    case Case::noVideoLoaded:
        return QStringLiteral("Aucune vidéo chargée.");
    case Case::noOutputFolder:
        return QStringLiteral("Aucun dossier de sortie sélectionné.");
    case Case::subjectLiftingUnavailable:
        return QStringLiteral("Le détourage du sujet n'est pas disponible sur cette version de "
                              "macOS (requiert macOS 14 ou plus récent).");
    case Case::noSubjectFound:
        return QStringLiteral("Aucun sujet détecté dans cette image.");
    }
    Q_UNREACHABLE();
}

bool operator==(const AppError& a, const AppError& b) noexcept {
    return a.kind() == b.kind() && a.detail() == b.detail();
}

} // namespace stillwick
