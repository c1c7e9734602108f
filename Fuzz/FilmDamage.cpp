#include "Fuzz/FilmDamage.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <random>
#include <utility>

namespace stillwick {

namespace {

/// Chance that is the same everywhere: the standard's distributions are not.
class Chance {
public:
    explicit Chance(std::uint32_t seed) : m_engine(seed) {}

    /// 0 to `count` - 1; 0 for none.
    std::size_t below(std::size_t count) { return count == 0 ? 0 : m_engine() % count; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    std::uint64_t any() {
        const std::uint64_t high = m_engine();
        return high << 32 | m_engine();
    }
    /// Any size below `largest`, small ones as often as large ones.
    std::size_t size(std::size_t largest) {
        return below(largest >> below(std::size_t(std::bit_width(largest))));
    }

    template <typename Values>
    auto& oneOf(Values& values) {
        return *(std::begin(values) + std::ptrdiff_t(below(std::size(values))));
    }

private:
    std::mt19937 m_engine;
};

/// Where a part stands: among which others, and which of them it is.
struct Place {
    std::vector<FilmPart>* siblings;
    std::size_t index;

    [[nodiscard]] FilmPart& part() const { return (*siblings)[index]; }
    [[nodiscard]] auto iterator() const { return siblings->begin() + std::ptrdiff_t(index); }
};

void collectPlaces(std::vector<FilmPart>& siblings, std::vector<Place>& places) {
    for (std::size_t i = 0; i < siblings.size(); ++i) {
        places.push_back({&siblings, i});
        collectPlaces(siblings[i].parts, places);
    }
}

/// The number in these bytes, the most significant first.
std::uint64_t numberIn(BytesView bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

class FilmDamager {
public:
    FilmDamager(BytesView bytes, std::size_t largest, std::uint32_t seed,
                const ByteDamage& damageBytes)
        : m_film(takeApart(bytes)), m_largest(largest), m_chance(seed), m_damageBytes(damageBytes) {
    }

    Bytes damaged();

private:
    using Fault = void (FilmDamager::*)();

    // To how the film is made up.
    void dropPart();
    void repeatPart();
    void swapParts();
    void replacePart();
    void nestPart();
    void renamePart();
    // To what a part holds.
    void changeNumber();
    void changeNumbers();
    void resizeContent();
    void changeContent();
    // To what a part claims of itself.
    void lieAboutSize();
    void flipHeadBit();
    // To plain bytes.
    void changeByte(Bytes& bytes);
    void removeBytes(Bytes& bytes);
    void repeatBytes(Bytes& bytes);
    void changeBytes(Bytes& bytes, std::size_t room);

    /// Each kind is as likely as any other: a film has one head, and thousands of samples.
    Place anyPlace();
    [[nodiscard]] bool hasRoomFor(const FilmPart& part) const;
    std::uint64_t strange(std::uint64_t number);
    void changeNumberIn(Bytes& bytes);
    void commit(std::span<const Fault> faults, std::size_t count);
    void damageParts();

    Film m_film;
    std::size_t m_largest;
    Chance m_chance;
    const ByteDamage& m_damageBytes;
};

Place FilmDamager::anyPlace() {
    std::vector<Place> places;
    collectPlaces(m_film.parts, places);
    const auto kindOf = [](const Place& place) {
        return place.part().kind;
    };
    std::ranges::stable_sort(places, {}, kindOf);
    std::vector<std::uint64_t> kinds;
    std::ranges::transform(places, std::back_inserter(kinds), kindOf);
    kinds.erase(std::unique(kinds.begin(), kinds.end()), kinds.end());
    auto alike = std::ranges::equal_range(places, m_chance.oneOf(kinds), {}, kindOf);
    return m_chance.oneOf(alike);
}

bool FilmDamager::hasRoomFor(const FilmPart& part) const {
    std::size_t size = sizeOf(part);
    for (const FilmPart& top : m_film.parts)
        size += sizeOf(top);
    return size <= m_largest;
}

void FilmDamager::dropPart() {
    const Place place = anyPlace();
    place.siblings->erase(place.iterator());
}

void FilmDamager::repeatPart() {
    constexpr std::size_t most = 40;
    const Place place = anyPlace();
    const FilmPart copy = place.part();
    for (std::size_t count = m_chance.size(most) + 1; count > 0 && hasRoomFor(copy); --count)
        place.siblings->insert(place.iterator(), copy);
}

void FilmDamager::swapParts() {
    const Place place = anyPlace();
    std::swap(place.part(), m_chance.oneOf(*place.siblings));
}

void FilmDamager::replacePart() {
    FilmPart copy = anyPlace().part(); // of what may be inside the one replaced
    if (hasRoomFor(copy))
        anyPlace().part() = std::move(copy);
}

void FilmDamager::nestPart() {
    const FilmPart copy = anyPlace().part();
    if (!hasRoomFor(copy))
        return;
    std::vector<FilmPart>& parts = anyPlace().part().parts;
    parts.insert(parts.begin() + std::ptrdiff_t(m_chance.below(parts.size() + 1)), copy);
}

void FilmDamager::renamePart() {
    const std::uint64_t kind = anyPlace().part().kind;
    claimKind(m_film.container, anyPlace().part(), kind);
}

/// What a reader may not have thought of, or nearly the number that it was.
std::uint64_t FilmDamager::strange(std::uint64_t number) {
    constexpr std::uint64_t all = ~std::uint64_t(0);
    constexpr std::size_t near = 300;
    switch (m_chance.below(9)) {
    case 0:
        return 0;
    case 1:
        return 1;
    case 2:
        return all; // the largest, or -1
    case 3:
        return number + m_chance.size(near) + 1;
    case 4:
        return number - m_chance.size(near) - 1;
    case 5:
        return number << m_chance.below(32);
    case 6:
        return number >> m_chance.below(32);
    case 7:
        return number ^ std::uint64_t(1) << m_chance.below(64);
    default:
        return m_chance.any();
    }
}

/// A number of 1, 2, 4 or 8 bytes, where such numbers stand in tables; the first ones more often.
void FilmDamager::changeNumberIn(Bytes& bytes) {
    std::size_t size = std::min<std::size_t>(std::size_t(1) << m_chance.below(4), bytes.size());
    if (m_film.container == Container::Elements && bytes.size() <= 8 && !m_chance.oneIn(4))
        size = bytes.size(); // the element is a number
    if (size == 0)
        return;
    const std::size_t place = m_chance.size(bytes.size() / size) * size;
    const auto where = std::span(bytes).subspan(place, size);
    const bool isLittleEndian = m_film.container == Container::Chunks;
    if (isLittleEndian)
        std::ranges::reverse(where);
    std::uint64_t number = strange(numberIn(where));
    if (m_chance.oneIn(5)) // the largest that has a sign, or the least
        number = (std::uint64_t(1) << (8 * size - 1)) - m_chance.below(2);
    for (auto byte = where.rbegin(); byte != where.rend(); ++byte, number >>= 8)
        *byte = std::uint8_t(number);
    if (isLittleEndian)
        std::ranges::reverse(where);
}

void FilmDamager::changeNumber() {
    changeNumberIn(anyPlace().part().content);
}

void FilmDamager::changeNumbers() {
    constexpr std::size_t most = 12;
    Bytes& content = anyPlace().part().content;
    for (std::size_t count = m_chance.size(most) + 2; count > 0; --count)
        changeNumberIn(content);
}

void FilmDamager::resizeContent() {
    constexpr std::size_t more = 64;
    Bytes& content = anyPlace().part().content;
    const auto filling = std::uint8_t(m_chance.oneIn(2) ? 0 : m_chance.any());
    if (m_chance.oneIn(2))
        content.resize(m_chance.size(content.size()));
    else
        content.insert(content.end(), m_chance.size(more) + 1, filling);
}

void FilmDamager::changeContent() {
    constexpr std::size_t more = 32;
    Bytes& content = anyPlace().part().content;
    changeBytes(content, content.size() + more);
}

void FilmDamager::lieAboutSize() {
    FilmPart& part = anyPlace().part();
    claimSize(m_film.container, part, strange(sizeOf(part) - part.head.size()));
}

void FilmDamager::flipHeadBit() {
    Bytes& head = anyPlace().part().head;
    if (!head.empty())
        m_chance.oneOf(head) ^= std::uint8_t(1U << m_chance.below(8));
}

void FilmDamager::changeByte(Bytes& bytes) {
    m_chance.oneOf(bytes) = std::uint8_t(strange(m_chance.oneOf(bytes)));
}

void FilmDamager::removeBytes(Bytes& bytes) {
    const std::size_t place = m_chance.below(bytes.size());
    const auto first = bytes.begin() + std::ptrdiff_t(place);
    bytes.erase(first, first + std::ptrdiff_t(m_chance.size(bytes.size() - place) + 1));
}

void FilmDamager::repeatBytes(Bytes& bytes) {
    constexpr std::size_t most = 4096;
    const std::size_t place = m_chance.below(bytes.size());
    const auto first = bytes.begin() + std::ptrdiff_t(place);
    const std::size_t count = std::min(m_chance.size(most) + 1, bytes.size() - place);
    const Bytes copy(first, first + std::ptrdiff_t(count));
    bytes.insert(bytes.begin() + std::ptrdiff_t(m_chance.below(bytes.size())), copy.begin(),
                 copy.end());
}

void FilmDamager::changeBytes(Bytes& bytes, std::size_t room) {
    if (m_damageBytes) {
        const std::size_t size = std::min(bytes.size(), room);
        bytes.resize(room);
        bytes.resize(m_damageBytes(bytes.data(), size, room));
        return;
    }
    using Change = void (FilmDamager::*)(Bytes&);
    constexpr auto changes = std::to_array<Change>(
        {&FilmDamager::changeByte, &FilmDamager::changeByte, &FilmDamager::changeByte,
         &FilmDamager::changeNumberIn, &FilmDamager::removeBytes, &FilmDamager::repeatBytes});
    constexpr std::size_t most = 16;
    for (std::size_t count = m_chance.size(most) + 1; count > 0 && !bytes.empty(); --count)
        (this->*m_chance.oneOf(changes))(bytes);
    bytes.resize(std::min(bytes.size(), room));
}

void FilmDamager::commit(std::span<const Fault> faults, std::size_t count) {
    for (; count > 0 && !m_film.parts.empty(); --count)
        (this->*m_chance.oneOf(faults))();
}

void FilmDamager::damageParts() {
    // Those met more often than others stand here more than once.
    constexpr auto faults = std::to_array<Fault>({
        &FilmDamager::dropPart,
        &FilmDamager::repeatPart,
        &FilmDamager::swapParts,
        &FilmDamager::replacePart,
        &FilmDamager::nestPart,
        &FilmDamager::renamePart,
        &FilmDamager::changeNumber,
        &FilmDamager::changeNumber,
        &FilmDamager::changeNumber,
        &FilmDamager::changeNumbers,
        &FilmDamager::changeNumbers,
        &FilmDamager::resizeContent,
        &FilmDamager::changeContent,
        &FilmDamager::changeContent,
    });
    constexpr auto lies =
        std::to_array<Fault>({&FilmDamager::lieAboutSize, &FilmDamager::flipHeadBit});
    constexpr std::size_t most = 5;
    commit(faults, m_chance.size(most) + 1);
    if (!m_chance.oneIn(4))
        makeConsistent(m_film);
    if (m_chance.oneIn(3))
        commit(lies, 1);
}

Bytes FilmDamager::damaged() {
    const Bytes whole = putTogether(m_film);
    if (m_film.container != Container::Unknown)
        damageParts();
    Bytes bytes = putTogether(m_film);
    if (m_film.container == Container::Unknown || m_chance.oneIn(6))
        changeBytes(bytes, std::max<std::size_t>(m_largest, 1));
    if (m_chance.oneIn(10))
        bytes.resize(m_chance.below(bytes.size()));
    bytes.resize(std::min(bytes.size(), m_largest));
    if (bytes != whole)
        return bytes;
    if (bytes.empty())
        bytes.push_back(0);
    else
        m_chance.oneOf(bytes) ^= std::uint8_t(1U << m_chance.below(8));
    return bytes;
}

} // namespace

Bytes damagedFilm(BytesView film, std::size_t largest, std::uint32_t seed,
                  const ByteDamage& damageBytes) {
    return FilmDamager(film, largest, seed, damageBytes).damaged();
}

} // namespace stillwick
