// The memory of this process. Linux.
#pragma once

#include <QByteArray>
#include <QFile>

namespace stillwick::benchmarks {

/// A line of the process's status. *Units*: MiB; 0 where there is none.
[[nodiscard]] inline double statusMebibytes(const QByteArray& name) {
    constexpr double kibibytesPerMebibyte = 1024;
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(name))
            return line.mid(name.size()).trimmed().split(' ').front().toDouble() /
                   kibibytesPerMebibyte;
    return 0;
}

/// What is in use now. *Units*: MiB.
[[nodiscard]] inline double residentMemory() {
    return statusMebibytes("VmRSS:");
}

/// The most that has been in use. *Units*: MiB.
[[nodiscard]] inline double peakMemory() {
    return statusMebibytes("VmHWM:");
}

} // namespace stillwick::benchmarks
