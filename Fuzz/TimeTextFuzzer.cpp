// Any text as a time of the command line: taken or refused, in agreement with a reader written
// another way; what is taken can be shown, and what is shown can be read again,
// to the millisecond.
#include "Stillwick/TimeText.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>

namespace {

using namespace stillwick;
using Wide = __int128;

void require(bool holds) {
    if (!holds)
        std::abort();
}

/// Reads a text from its front, by characters.
class Reader {
public:
    explicit Reader(std::string_view text) : m_rest(text) {}

    [[nodiscard]] bool isAtEnd() const { return m_rest.empty(); }
    /// Whether one of these characters came next; it is taken.
    bool take(std::string_view characters) {
        const bool comes = !m_rest.empty() && characters.find(m_rest.front()) != m_rest.npos;
        if (comes)
            m_rest.remove_prefix(1);
        return comes;
    }
    /// A number of 1 to `most` digits, all that come.
    std::optional<Wide> number(std::size_t most) {
        Wide number = 0;
        m_digits = 0;
        while (!m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9') {
            if (number <= std::numeric_limits<std::int64_t>::max()) // beyond, it is refused anyway
                number = number * 10 + (m_rest.front() - '0');
            ++m_digits;
            m_rest.remove_prefix(1);
        }
        return m_digits >= 1 && m_digits <= most ? std::optional(number) : std::nullopt;
    }
    /// Of the last number.
    [[nodiscard]] std::size_t digits() const { return m_digits; }

private:
    std::string_view m_rest;
    std::size_t m_digits = 0;
};

struct Expected {
    Wide value = 0;
    Wide timescale = 1;
};

std::optional<Expected> expectedPair(std::string_view text) {
    Reader reader(text);
    const auto value = reader.number(text.size());
    const bool isPair = value && reader.take("/");
    const auto timescale = isPair ? reader.number(text.size()) : std::nullopt;
    if (!timescale || !reader.isAtEnd() || *timescale < 1 ||
        *timescale > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return Expected{*value, *timescale};
}

std::optional<Expected> expectedClock(std::string_view text) {
    Reader reader(text);
    Expected time;
    std::size_t parts = 1;
    auto part = reader.number(10);
    while (part && reader.take(":")) {
        if (reader.digits() > 9 || ++parts > 3 || (parts == 3 && *part >= 60))
            return std::nullopt; // what stands before a colon: hours and minutes
        time.value = (time.value + *part) * 60;
        part = reader.number(10);
    }
    if (!part || (parts > 1 && *part >= 60))
        return std::nullopt;
    time.value += *part;
    if (reader.take(".,")) {
        const auto decimals = reader.number(9);
        if (!decimals)
            return std::nullopt;
        for (std::size_t i = 0; i < reader.digits(); ++i)
            time.timescale *= 10;
        time.value = time.value * time.timescale + *decimals;
    }
    return reader.isAtEnd() ? std::optional(time) : std::nullopt;
}

std::optional<Expected> expectedTime(std::string_view text) {
    const auto pair = expectedPair(text);
    const auto time = pair ? pair : expectedClock(text);
    return time && time->value <= std::numeric_limits<std::int64_t>::max() ? time : std::nullopt;
}

void showAndReadAgain(const CMTime& time) {
    const QString shown = time.displayString();
    require(!shown.isEmpty() && !time.fileNameString().contains(u'/'));
    const auto again = parseTime(shown);
    if (!again || time > CMTime::make(1'000'000'000, 1))
        return;
    // Shown are milliseconds, cut off in double precision: which is either side by one of them.
    const CMTime millisecond = CMTime::make(1, 1000);
    require(*again <= time + millisecond && *again + millisecond + millisecond > time);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( // NOLINT(readability-identifier-naming)
    const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto time = parseTime(QString::fromUtf8(text.data(), qsizetype(size)));
    const auto expected = expectedTime(text);
    require(time.has_value() == expected.has_value());
    if (!time)
        return 0;
    require(time->isNumeric() && time->value == expected->value &&
            time->timescale == expected->timescale);
    showAndReadAgain(*time);
    return 0;
}
