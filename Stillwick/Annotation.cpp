#include "Stillwick/Annotation.h"

#include <QHashFunctions>

#include <tuple>

namespace stillwick {

namespace {

auto numbersOf(const Annotation& mark) {
    return std::tuple(mark.start.x(), mark.start.y(), mark.end.x(), mark.end.y(), mark.r, mark.g,
                      mark.b, mark.a, mark.lineWidth);
}

} // namespace

bool operator==(const Annotation& x, const Annotation& y) noexcept {
    return x.id == y.id && x.kind == y.kind && numbersOf(x) == numbersOf(y);
}

std::size_t qHash(const Annotation& annotation, std::size_t seed) noexcept {
    const std::size_t numbers = std::apply(
        [seed](auto... number) { return qHashMulti(seed, number...); }, numbersOf(annotation));
    return qHashMulti(numbers, annotation.id, static_cast<int>(annotation.kind));
}

} // namespace stillwick
