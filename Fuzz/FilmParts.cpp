#include "Fuzz/FilmParts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string_view>

namespace stillwick {

namespace {

constexpr int deepest = 12; // parts inside parts: films have up to eight
constexpr std::size_t packetSize = 188;
constexpr std::size_t packetHeadSize = 4;
constexpr std::uint8_t packetStart = 0x47;
constexpr std::uint64_t matroska = 0x1A45DFA3; // the first element's identifier

constexpr std::uint64_t letters(std::string_view name) {
    std::uint64_t value = 0;
    for (const char letter : name)
        value = value << 8 | static_cast<unsigned char>(letter);
    return value;
}

std::uint64_t bigEndian(BytesView bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

/// As many of the number's last bytes as there is room for.
void writeBigEndian(std::uint64_t value, std::span<std::uint8_t> bytes) {
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte, value >>= 8)
        *byte = std::uint8_t(value);
}

/// What is read of a part before its content is.
struct Head {
    std::uint64_t kind = 0;
    std::size_t size = 0;          ///< its own
    std::uint64_t contentSize = 0; ///< as it claims
    std::size_t ownContent = 0;    ///< before the parts inside, where it has any
    bool hasParts = false;
    std::size_t padding = 0; ///< loose bytes after the part
};

struct Parent {
    std::uint64_t kind;
    std::size_t ownContent; ///< bytes before the parts inside
};

constexpr auto parentBoxes = std::to_array<Parent>({
    {letters("moov"), 0},  {letters("trak"), 0},  {letters("mdia"), 0},  {letters("minf"), 0},
    {letters("dinf"), 0},  {letters("stbl"), 0},  {letters("edts"), 0},  {letters("udta"), 0},
    {letters("mvex"), 0},  {letters("moof"), 0},  {letters("traf"), 0},  {letters("mfra"), 0},
    {letters("tref"), 0},  {letters("ilst"), 0},  {letters("sinf"), 0},  {letters("schi"), 0},
    {letters("wave"), 0},  {letters("gmhd"), 0},  {letters("meta"), 4},  {letters("stsd"), 8},
    {letters("dref"), 8},  {letters("mp4a"), 28}, {letters("avc1"), 78}, {letters("hvc1"), 78},
    {letters("hev1"), 78}, {letters("mp4v"), 78}, {letters("av01"), 78}, {letters("s263"), 78},
    {letters("apcn"), 78}, {letters("jpeg"), 78}, {letters("vp09"), 78},
});

constexpr auto parentElements = std::to_array<std::uint64_t>({
    matroska,   0x18538067, 0x114D9B74, 0x4DBB, 0x1549A966, 0x1654AE6B, 0xAE,       0xE0,   0xE1,
    0x55B0,     0x55D0,     0x7670,     0x6D80, 0x6240,     0x5034,     0xE2,       0xE3,   0xE4,
    0x1C53BB6B, 0xBB,       0xB7,       0xDB,   0x1F43B675, 0xA0,       0x75A1,     0xA6,   0x8E,
    0x1254C367, 0x7373,     0x63C0,     0x67C8, 0x1941A469, 0x61A7,     0x1043A770, 0x45B9,
});

constexpr auto firstBoxes = std::to_array<std::uint64_t>({
    letters("ftyp"),
    letters("moov"),
    letters("mdat"),
    letters("moof"),
    letters("free"),
    letters("skip"),
    letters("wide"),
    letters("styp"),
    letters("sidx"),
    letters("pnot"),
});

std::optional<Head> boxHead(BytesView bytes) {
    constexpr std::size_t small = 8;
    constexpr std::size_t large = 16;
    if (bytes.size() < small)
        return std::nullopt;
    Head head{bigEndian(bytes.subspan(4, 4)), small, bigEndian(bytes.first(4))};
    if (head.contentSize == 1 && bytes.size() >= large) {
        head.size = large;
        head.contentSize = bigEndian(bytes.subspan(8, 8));
    } else if (head.contentSize == 0) {
        head.contentSize = bytes.size(); // to the end
    }
    if (head.contentSize < head.size)
        return std::nullopt;
    head.contentSize -= head.size;
    const auto* const parent = std::ranges::find(parentBoxes, head.kind, &Parent::kind);
    head.hasParts = parent != parentBoxes.end();
    head.ownContent = head.hasParts ? parent->ownContent : 0;
    return head;
}

/// How many bytes a number of variable length takes, by its first; 9 where it is none.
std::size_t variableSize(std::uint8_t first) {
    return std::size_t(std::countl_zero(first)) + 1;
}

/// The bits of such a number that are not its length.
std::uint64_t variableMask(std::size_t size) {
    return (std::uint64_t(1) << (7 * size)) - 1;
}

std::optional<Head> elementHead(BytesView bytes) {
    constexpr std::size_t largestKind = 4;
    constexpr std::size_t largestSize = 8;
    const std::size_t kindSize = variableSize(bytes.front());
    if (kindSize > largestKind || kindSize >= bytes.size())
        return std::nullopt;
    const std::size_t sizeSize = variableSize(bytes[kindSize]);
    if (sizeSize > largestSize || kindSize + sizeSize > bytes.size())
        return std::nullopt;
    Head head{bigEndian(bytes.first(kindSize)), kindSize + sizeSize,
              bigEndian(bytes.subspan(kindSize, sizeSize)) & variableMask(sizeSize)};
    head.hasParts = std::ranges::find(parentElements, head.kind) != parentElements.end();
    return head;
}

std::optional<Head> chunkHead(BytesView bytes) {
    constexpr std::size_t size = 8;
    if (bytes.size() < size)
        return std::nullopt;
    Head head{bigEndian(bytes.first(4)), size};
    for (std::size_t place = size; place > 4; --place)
        head.contentSize = head.contentSize << 8 | bytes[place - 1];
    head.hasParts = head.kind == letters("RIFF") || head.kind == letters("LIST");
    head.ownContent = 4; // of which kind the list is
    head.padding = head.contentSize % 2;
    return head;
}

std::optional<Head> packetHead(BytesView bytes) {
    if (bytes.size() < packetSize || bytes.front() != packetStart)
        return std::nullopt;
    constexpr std::uint64_t streamBits = 0x1FFF;
    return Head{bigEndian(bytes.subspan(1, 2)) & streamBits, packetHeadSize,
                packetSize - packetHeadSize};
}

std::optional<Head> headOf(Container container, BytesView bytes) {
    switch (container) {
    case Container::Boxes:
        return boxHead(bytes);
    case Container::Elements:
        return elementHead(bytes);
    case Container::Chunks:
        return chunkHead(bytes);
    case Container::Packets:
        return packetHead(bytes);
    case Container::Unknown:
        break;
    }
    return std::nullopt;
}

BytesView taken(BytesView& bytes, std::uint64_t size) {
    const BytesView front = bytes.first(std::size_t(std::min<std::uint64_t>(size, bytes.size())));
    bytes = bytes.subspan(front.size());
    return front;
}

Bytes copied(BytesView bytes) {
    return {bytes.begin(), bytes.end()};
}

void appendLoose(std::vector<FilmPart>& parts, BytesView bytes) {
    if (!bytes.empty())
        parts.push_back({0, {}, copied(bytes), {}});
}

std::vector<FilmPart> partsOf(Container container, BytesView bytes, int depth) {
    std::vector<FilmPart> parts;
    while (!bytes.empty()) {
        const std::optional<Head> head = headOf(container, bytes);
        if (!head)
            break;
        FilmPart& part = parts.emplace_back();
        part.kind = head->kind;
        part.head = copied(taken(bytes, head->size));
        BytesView inside = taken(bytes, head->contentSize);
        const bool isOpened = head->hasParts && depth < deepest;
        part.content = copied(taken(inside, isOpened ? head->ownContent : inside.size()));
        part.parts = partsOf(container, inside, depth + 1);
        appendLoose(parts, taken(bytes, head->padding));
    }
    appendLoose(parts, bytes);
    return parts;
}

Container containerOf(BytesView bytes) {
    constexpr std::size_t leastSize = 8;
    if (bytes.size() < leastSize)
        return Container::Unknown;
    const std::uint64_t first = bigEndian(bytes.first(4));
    if (first == matroska)
        return Container::Elements;
    if (first == letters("RIFF"))
        return Container::Chunks;
    if (std::ranges::find(firstBoxes, bigEndian(bytes.subspan(4, 4))) != firstBoxes.end())
        return Container::Boxes;
    const bool isPackets = bytes.size() > packetSize && bytes.front() == packetStart &&
                           bytes[packetSize] == packetStart;
    return isPackets ? Container::Packets : Container::Unknown;
}

void append(const FilmPart& part, Bytes& bytes) {
    bytes.insert(bytes.end(), part.head.begin(), part.head.end());
    bytes.insert(bytes.end(), part.content.begin(), part.content.end());
    for (const FilmPart& inner : part.parts)
        append(inner, bytes);
}

/// Where a head says how much follows, and how.
struct SizeField {
    std::size_t place = 0;
    std::size_t size = 0;
    std::uint64_t added = 0;  ///< to what follows: the head counts too
    std::uint64_t marker = 0; ///< bits that are always set
    std::uint64_t mask = ~std::uint64_t(0);
    bool isLittleEndian = false;
    bool isOpen = false; ///< says that the size is not known
};

SizeField boxSizeField(const Bytes& head) {
    const bool isLarge = head.size() == 16;
    const bool isOpen = !isLarge && bigEndian(BytesView(head).first(4)) == 0;
    return {.place = isLarge ? 8U : 0U,
            .size = isLarge ? 8U : 4U,
            .added = head.size(),
            .isOpen = isOpen};
}

std::optional<SizeField> elementSizeField(const Bytes& head) {
    const std::size_t kindSize = variableSize(head.front());
    if (kindSize >= head.size() || head.size() - kindSize > 8)
        return std::nullopt; // its first byte was changed
    const std::size_t size = head.size() - kindSize;
    const std::uint64_t mask = variableMask(size);
    const std::uint64_t now = bigEndian(BytesView(head).subspan(kindSize));
    return SizeField{.place = kindSize,
                     .size = size,
                     .marker = mask + 1,
                     .mask = mask,
                     .isOpen = (now & mask) == mask};
}

std::optional<SizeField> sizeFieldOf(Container container, const Bytes& head) {
    if (head.size() < 2)
        return std::nullopt;
    if (container == Container::Boxes)
        return boxSizeField(head);
    if (container == Container::Elements)
        return elementSizeField(head);
    if (container == Container::Chunks)
        return SizeField{.place = 4, .size = 4, .isLittleEndian = true};
    return std::nullopt;
}

void write(const SizeField& field, std::uint64_t size, Bytes& head) {
    const std::uint64_t value = ((size + field.added) & field.mask) | field.marker;
    const auto place = std::span(head).subspan(field.place, field.size);
    writeBigEndian(value, place);
    if (field.isLittleEndian)
        std::ranges::reverse(place);
}

void renameElement(std::uint64_t kind, Bytes& head) {
    const std::size_t oldSize = std::min(variableSize(head.front()), head.size());
    Bytes identifier(std::size_t(std::bit_width(kind) + 7) / 8);
    writeBigEndian(kind, identifier);
    head.erase(head.begin(), head.begin() + std::ptrdiff_t(oldSize));
    head.insert(head.begin(), identifier.begin(), identifier.end());
}

/// The checksum that ends a transport stream's table, begun with all ones.
std::uint32_t checksum(BytesView bytes) {
    constexpr std::uint32_t polynomial = 0x04C11DB7;
    std::uint32_t sum = ~std::uint32_t(0);
    for (const std::uint8_t byte : bytes) {
        sum ^= std::uint32_t(byte) << 24;
        for (int bit = 0; bit < 8; ++bit)
            sum = sum << 1 ^ (sum >> 31 != 0 ? polynomial : 0);
    }
    return sum;
}

/// The table that begins in a packet, checksum included; empty where none does, or does not end.
std::span<std::uint8_t> tableIn(FilmPart& packet) {
    constexpr std::uint8_t beginsHere = 0x40;
    constexpr std::uint8_t isAdapted = 0x20;
    constexpr std::uint8_t isTable = 0x80;
    constexpr std::size_t tableHeadSize = 3;
    std::span<std::uint8_t> rest(packet.content);
    const auto pass = [&rest](std::size_t count) {
        rest = rest.subspan(std::min(count, rest.size()));
    };
    if (packet.head.size() != packetHeadSize || (packet.head[1] & beginsHere) == 0)
        return {};
    if ((packet.head[3] & isAdapted) != 0 && !rest.empty())
        pass(std::size_t(rest.front()) + 1);
    if (!rest.empty())
        pass(std::size_t(rest.front()) + 1);
    if (rest.size() < tableHeadSize || (rest[1] & isTable) == 0)
        return {};
    const std::size_t size = tableHeadSize + (std::size_t(rest[1] & 0x0F) << 8 | rest[2]);
    return size <= rest.size() ? rest.first(size) : std::span<std::uint8_t>();
}

void correctChecksum(FilmPart& packet) {
    constexpr std::size_t sumSize = 4;
    const std::span<std::uint8_t> table = tableIn(packet);
    if (table.size() < sumSize)
        return;
    std::uint32_t sum = checksum(table.first(table.size() - sumSize));
    for (std::uint8_t& byte : table.last(sumSize)) {
        byte = std::uint8_t(sum >> 24);
        sum <<= 8;
    }
}

void makeConsistent(Container container, FilmPart& part) {
    for (FilmPart& inner : part.parts)
        makeConsistent(container, inner);
    if (container == Container::Packets)
        correctChecksum(part);
    const auto field = sizeFieldOf(container, part.head);
    if (field && !field->isOpen)
        write(*field, sizeOf(part) - part.head.size(), part.head);
}

} // namespace

Film takeApart(BytesView bytes) {
    const Container container = containerOf(bytes);
    return {container, partsOf(container, bytes, 0)};
}

Bytes putTogether(const Film& film) {
    Bytes bytes;
    for (const FilmPart& part : film.parts)
        append(part, bytes);
    return bytes;
}

std::size_t sizeOf(const FilmPart& part) {
    std::size_t size = part.head.size() + part.content.size();
    for (const FilmPart& inner : part.parts)
        size += sizeOf(inner);
    return size;
}

void claimSize(Container container, FilmPart& part, std::uint64_t size) {
    if (const auto field = sizeFieldOf(container, part.head))
        write(*field, size, part.head);
}

void claimKind(Container container, FilmPart& part, std::uint64_t kind) {
    if (part.head.empty())
        return;
    constexpr std::uint64_t flags = 0xE000;
    const std::span<std::uint8_t> head(part.head);
    switch (container) {
    case Container::Boxes:
        writeBigEndian(kind, head.subspan(4, 4));
        break;
    case Container::Elements:
        renameElement(kind, part.head);
        break;
    case Container::Chunks:
        writeBigEndian(kind, head.first(4));
        break;
    case Container::Packets:
        writeBigEndian((bigEndian(head.subspan(1, 2)) & flags) | (kind & ~flags),
                       head.subspan(1, 2));
        break;
    case Container::Unknown:
        return;
    }
    part.kind = kind;
}

void makeConsistent(Film& film) {
    for (FilmPart& part : film.parts)
        makeConsistent(film.container, part);
}

} // namespace stillwick
