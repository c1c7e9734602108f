// The options of a benchmark's command line. Free functions, after the application object is made.
#pragma once

#include <QCoreApplication>
#include <QStringList>

namespace stillwick::benchmarks {

/// What follows `option` on the command line; `otherwise` where it is not there.
[[nodiscard]] inline QString valueOf(const QString& option, const QString& otherwise) {
    const QStringList arguments = QCoreApplication::arguments();
    const qsizetype at = arguments.indexOf(option);
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : otherwise;
}

} // namespace stillwick::benchmarks
