#include "Vision/NumpyArchive.h"

#include <libdeflate.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <utility>

namespace stillwick {
namespace {

using Bytes = std::span<const std::byte>;

// Part of some bytes; none where it reaches beyond them.
std::optional<Bytes> part(Bytes bytes, std::size_t from, std::size_t length) {
    if (from > bytes.size() || length > bytes.size() - from)
        return std::nullopt;
    return bytes.subspan(from, length);
}

// A little-endian number. The caller has seen to it that it lies within the bytes.
template <class Number>
Number numberAt(Bytes bytes, std::size_t from) {
    Number number = 0;
    for (std::size_t i = sizeof(Number); i-- > 0;)
        number = static_cast<Number>((number << 8U) | std::to_integer<Number>(bytes[from + i]));
    return number;
}

std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

constexpr std::uint32_t directoryEnd = 0x06054b50;
constexpr std::uint32_t directoryEntry = 0x02014b50;
constexpr std::uint32_t localEntry = 0x04034b50;

struct Entry {
    std::string name;
    Bytes content;
};

// The content of a directory entry: stored, whole, and with the right sum.
std::optional<Bytes> contentOf(Bytes archive, Bytes entry) {
    const auto length = numberAt<std::uint32_t>(entry, 20);
    const bool isStored =
        numberAt<std::uint16_t>(entry, 10) == 0 && numberAt<std::uint32_t>(entry, 24) == length;
    const std::size_t from = numberAt<std::uint32_t>(entry, 42);
    const auto local = part(archive, from, 30);
    if (!isStored || !local || numberAt<std::uint32_t>(*local, 0) != localEntry)
        return std::nullopt;
    const std::size_t skipped =
        std::size_t{30} + numberAt<std::uint16_t>(*local, 26) + numberAt<std::uint16_t>(*local, 28);
    const auto content = part(archive, from + skipped, length);
    if (!content ||
        libdeflate_crc32(0, content->data(), content->size()) != numberAt<std::uint32_t>(entry, 16))
        return std::nullopt;
    return content;
}

// All entries, or none where one is damaged. NumPy writes no comment behind the directory.
std::optional<std::vector<Entry>> entriesOf(Bytes archive) {
    const auto end = part(archive, archive.size() < 22 ? archive.size() : archive.size() - 22, 22);
    if (!end || numberAt<std::uint32_t>(*end, 0) != directoryEnd)
        return std::nullopt;
    std::vector<Entry> entries;
    std::size_t at = numberAt<std::uint32_t>(*end, 16);
    for (int i = 0; i < numberAt<std::uint16_t>(*end, 10); ++i) {
        const auto entry = part(archive, at, 46);
        if (!entry || numberAt<std::uint32_t>(*entry, 0) != directoryEntry)
            return std::nullopt;
        const std::size_t nameLength = numberAt<std::uint16_t>(*entry, 28);
        const auto name = part(archive, at + 46, nameLength);
        const auto content = contentOf(archive, *entry);
        if (!name || !content)
            return std::nullopt;
        entries.push_back({std::string(textOf(*name)), *content});
        at += 46 + nameLength + numberAt<std::uint16_t>(*entry, 30) +
              numberAt<std::uint16_t>(*entry, 32);
    }
    return entries;
}

// The numbers between the brackets after "'shape':".
std::optional<std::vector<int>> shapeIn(std::string_view header) {
    const std::size_t from = header.find('(', header.find("'shape'"));
    const std::size_t to = header.find(')', from);
    if (from == std::string_view::npos || to == std::string_view::npos)
        return std::nullopt;
    std::vector<int> shape;
    const char* at = header.data() + from + 1;
    const char* end = header.data() + to;
    while (at < end) {
        int length = 0;
        const auto [next, error] = std::from_chars(at, end, length);
        if (error == std::errc{} && length > 0)
            shape.push_back(length);
        at = error == std::errc{} ? next : at + 1;
    }
    return shape;
}

std::vector<float> numbersOf(Bytes content, bool half) {
    const std::size_t count = content.size() / (half ? 2 : 4);
    std::vector<float> numbers(count);
    if (!half) {
        std::memcpy(numbers.data(), content.data(), 4 * count);
        return numbers;
    }
    std::vector<cv::float16_t> halves(count);
    std::memcpy(halves.data(), content.data(), 2 * count);
    std::copy(halves.begin(), halves.end(), numbers.begin());
    return numbers;
}

// An array as it is stored: what its header says, and its bytes.
struct StoredArray {
    std::string_view header;
    Bytes values;
};

std::optional<StoredArray> storedArray(Bytes content) {
    const auto start = part(content, 0, 10);
    if (!start || textOf(start->subspan(1, 5)) != "NUMPY")
        return std::nullopt;
    const std::size_t headerLength = numberAt<std::uint16_t>(*start, 8);
    const auto header = part(content, 10, headerLength);
    if (!header || textOf(*header).find("'fortran_order': False") == std::string_view::npos)
        return std::nullopt;
    return StoredArray{textOf(*header), content.subspan(10 + headerLength)};
}

bool isOfKind(const StoredArray& array, std::string_view kind) {
    return array.header.find(kind) != std::string_view::npos;
}

std::optional<NumberArray> numbersIn(const StoredArray& stored) {
    const bool half = isOfKind(stored, "'<f2'");
    const auto shape = shapeIn(stored.header);
    if (!shape || (!half && !isOfKind(stored, "'<f4'")))
        return std::nullopt;
    NumberArray array{*shape, numbersOf(stored.values, half)};
    const auto count = std::accumulate(
        shape->begin(), shape->end(), std::size_t{1},
        [](std::size_t product, int length) { return product * static_cast<std::size_t>(length); });
    if (array.values.size() != count)
        return std::nullopt;
    return array;
}

} // namespace

std::optional<NumpyArchive> NumpyArchive::read(std::span<const std::byte> bytes) {
    const auto entries = entriesOf(bytes);
    if (!entries)
        return std::nullopt;
    NumpyArchive archive;
    for (const Entry& entry : *entries) {
        const std::string name = entry.name.substr(0, entry.name.rfind(".npy"));
        const auto stored = storedArray(entry.content);
        if (!stored)
            continue;
        if (auto numbers = numbersIn(*stored))
            archive.m_arrays.emplace(name, std::move(*numbers));
        else if (isOfKind(*stored, "'|u1'"))
            archive.m_texts.emplace(name, textOf(stored->values));
    }
    return archive;
}

const NumberArray* NumpyArchive::find(std::string_view name) const {
    const auto found = m_arrays.find(name);
    return found == m_arrays.end() ? nullptr : &found->second;
}

bool NumpyArchive::holdsAny(std::string_view prefix) const {
    const auto next = m_arrays.lower_bound(prefix);
    return next != m_arrays.end() && next->first.starts_with(prefix);
}

std::string_view NumpyArchive::text(std::string_view name) const {
    const auto found = m_texts.find(name);
    return found == m_texts.end() ? std::string_view{} : std::string_view(found->second);
}

} // namespace stillwick
