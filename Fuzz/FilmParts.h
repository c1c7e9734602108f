// A film as the tree of its container's parts, and back again. Plain values, any thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace stillwick {

using Bytes = std::vector<std::uint8_t>;
using BytesView = std::span<const std::uint8_t>;

/// How a container is made up.
enum class Container {
    Boxes,    ///< MP4, QuickTime: a size, four letters
    Elements, ///< Matroska, WebM: an identifier and a size of variable length
    Chunks,   ///< AVI: four letters, a size
    Packets,  ///< MPEG transport streams: 188 bytes each
    Unknown,  ///< anything else: bytes
};

/// One part of a container: a head, its own content, and the parts inside it, in this order.
struct FilmPart {
    /// A box's or chunk's four letters, an element's identifier, the stream that a packet is of.
    std::uint64_t kind = 0;
    Bytes head; ///< kind and size, as the file has them, be they true or not; none: loose bytes
    Bytes content;
    std::vector<FilmPart> parts;

    bool operator==(const FilmPart&) const = default;
};

struct Film {
    Container container = Container::Unknown;
    std::vector<FilmPart> parts;

    bool operator==(const Film&) const = default;
};

/// The parts of a film, damaged or not: what cannot be read as a part is loose bytes.
/// *Source*: ISO/IEC 14496-12 (boxes), RFC 8794 (elements), the RIFF specification of 1991
/// (chunks), ISO/IEC 13818-1 (packets).
[[nodiscard]] Film takeApart(BytesView bytes);

/// The bytes of a film: exactly those that it was taken apart from, where nothing was changed.
[[nodiscard]] Bytes putTogether(const Film& film);

/// How many bytes a part takes, head included.
[[nodiscard]] std::size_t sizeOf(const FilmPart& part);

/// Makes a head claim a size of what follows it; as much of it as the field can hold. Packets and
/// loose bytes have no size to claim.
void claimSize(Container container, FilmPart& part, std::uint64_t size);

/// Makes a head claim that the part is of that kind. Loose bytes stay what they are.
void claimKind(Container container, FilmPart& part, std::uint64_t kind);

/// Makes all sizes true again, and the checksums of a transport stream's tables. Sizes that a file
/// leaves open stay open.
void makeConsistent(Film& film);

} // namespace stillwick
