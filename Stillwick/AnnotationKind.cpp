#include "Stillwick/AnnotationKind.h"

#include <algorithm>
#include <cstddef>

namespace stillwick {

namespace {

struct Words {
    QStringView rawValue;
    QStringView displayName;
    QStringView systemImage;
};

/// One row per kind, in the order of the enumeration.
constexpr std::array<Words, allAnnotationKinds.size()> table{{
    {u"arrow", u"Flèche", u"arrow.up.right"},
    {u"line", u"Ligne", u"line.diagonal"},
    {u"circle", u"Cercle", u"circle"},
}};

const Words& wordsOf(AnnotationKind kind) {
    return table.at(static_cast<std::size_t>(kind));
}

} // namespace

QString rawValue(AnnotationKind kind) {
    return wordsOf(kind).rawValue.toString();
}

std::optional<AnnotationKind> annotationKindFromRawValue(QStringView rawValue) {
    const auto found = std::ranges::find(
        allAnnotationKinds, rawValue, [](AnnotationKind kind) { return wordsOf(kind).rawValue; });
    if (found == allAnnotationKinds.end())
        return std::nullopt;
    return *found;
}

QString displayName(AnnotationKind kind) {
    return wordsOf(kind).displayName.toString();
}

QString systemImage(AnnotationKind kind) {
    return wordsOf(kind).systemImage.toString();
}

} // namespace stillwick
