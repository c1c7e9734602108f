#include "Stillwick/TimeText.h"

#include <QRegularExpression>

#include <limits>

namespace stillwick {

namespace {

/// A number of digits only; none past 64 bits.
std::optional<qint64> digits(const QString& text) {
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<CMTime> parsePair(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^([0-9]+)/([0-9]+)\\z"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto value = digits(match.captured(1));
    const auto timescale = digits(match.captured(2));
    if (!value || !timescale || *timescale < 1 || *timescale > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return CMTime::make(*value, qint32(*timescale));
}

std::optional<CMTime> parseClock(const QString& text) {
    static const QRegularExpression form(QStringLiteral(
        "^(?:(?:([0-9]{1,9}):)?([0-9]{1,9}):)?([0-9]{1,10})(?:[.,]([0-9]{1,9}))?\\z"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const bool hasHours = match.hasCaptured(1);
    const bool hasMinutes = match.hasCaptured(2);
    const qint64 minutes = match.captured(2).toLongLong();
    const qint64 seconds = match.captured(3).toLongLong();
    constexpr qint64 sixty = 60;
    if ((hasMinutes && seconds >= sixty) || (hasHours && minutes >= sixty))
        return std::nullopt;
    const qint64 whole = (match.captured(1).toLongLong() * sixty + minutes) * sixty + seconds;
    const QString decimals = match.captured(4);
    qint32 timescale = 1;
    for (qsizetype i = 0; i < decimals.size(); ++i)
        timescale *= 10;
    qint64 value = 0;
    if (__builtin_mul_overflow(whole, qint64(timescale), &value) ||
        __builtin_add_overflow(value, decimals.toLongLong(), &value))
        return std::nullopt;
    return CMTime::make(value, timescale);
}

} // namespace

std::optional<CMTime> parseTime(const QString& text) {
    const auto pair = parsePair(text);
    return pair ? pair : parseClock(text);
}

} // namespace stillwick
