#include "Stillwick/AnnotationTool.h"

namespace stillwick {

QString displayName(AnnotationTool tool) {
    const auto kind = kindOf(tool);
    return kind ? displayName(*kind) : QStringLiteral("Sélection");
}

QString systemImage(AnnotationTool tool) {
    const auto kind = kindOf(tool);
    return kind ? systemImage(*kind) : QStringLiteral("cursorarrow");
}

std::optional<AnnotationKind> kindOf(AnnotationTool tool) {
    switch (tool) {
    case AnnotationTool::select:
        return std::nullopt;
    case AnnotationTool::arrow:
        return AnnotationKind::arrow;
    case AnnotationTool::line:
        return AnnotationKind::line;
    case AnnotationTool::circle:
        return AnnotationKind::circle;
    }
    return std::nullopt;
}

} // namespace stillwick
