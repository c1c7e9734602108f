#include "Stillwick/ErrorDescription.h"

#include "Desktop/DesktopError.h"
#include "Imaging/ImagingError.h"
#include "Media/MediaError.h"
#include "Stillwick/AppError.h"
#include "Stillwick/ProjectError.h"
#include "Vision/VisionError.h"

#include <QUnhandledException>

#include <new>
#include <optional>

namespace stillwick {

namespace {

/// The description, if the error is of one of these types.
template <typename... Errors>
std::optional<QString> descriptionAs(const std::exception& error) {
    std::optional<QString> description;
    const auto take = [&description](const auto* known) {
        if (known)
            description = known->description();
    };
    (take(dynamic_cast<const Errors*>(&error)), ...);
    return description;
}

/// An error that came through a future without a type that Qt knows.
QString descriptionOfUnhandled(const QUnhandledException& error) {
    try {
        if (error.exception())
            std::rethrow_exception(error.exception());
    } catch (const std::exception& inner) {
        return localizedDescription(inner);
    } catch (...) {
    }
    return localizedDescription(std::exception());
}

} // namespace

QString localizedDescription(const std::exception& error) {
    if (const auto known = descriptionAs<AppError, ProjectError, MediaError, VisionError,
                                         ImagingError, DesktopError>(error))
        return *known;
    if (const auto* unhandled = dynamic_cast<const QUnhandledException*>(&error))
        return descriptionOfUnhandled(*unhandled);
    if (dynamic_cast<const std::bad_alloc*>(&error))
        return QStringLiteral("La mémoire ne suffit pas.");
    return QStringLiteral("Une erreur imprévue est survenue.");
}

QString openingFailed(const std::exception& error) {
    return QStringLiteral("Échec de l'ouverture : ") + localizedDescription(error);
}

QString savingFailed(const std::exception& error) {
    return QStringLiteral("Échec de l'enregistrement : ") + localizedDescription(error);
}

} // namespace stillwick
