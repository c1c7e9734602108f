#include "Stillwick/FilterStyle.h"

#include <algorithm>
#include <cstddef>

namespace stillwick {

namespace {

struct Words {
    QStringView rawValue;
    QStringView displayName;
};

/// One row per style, in the order of the enumeration.
constexpr std::array<Words, allFilterStyles.size()> table{{
    {u"none", u"Aucun"},
    {u"sketch", u"Croquis"},
    {u"comic", u"BD"},
    {u"poster", u"Postérisation"},
}};

const Words& wordsOf(FilterStyle style) {
    return table.at(static_cast<std::size_t>(style));
}

} // namespace

QString rawValue(FilterStyle style) {
    return wordsOf(style).rawValue.toString();
}

std::optional<FilterStyle> filterStyleFromRawValue(QStringView rawValue) {
    const auto found = std::ranges::find(allFilterStyles, rawValue,
                                         [](FilterStyle style) { return wordsOf(style).rawValue; });
    if (found == allFilterStyles.end())
        return std::nullopt;
    return *found;
}

QString displayName(FilterStyle style) {
    return wordsOf(style).displayName.toString();
}

} // namespace stillwick
