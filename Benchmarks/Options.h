// What every benchmark does with its command line. Free functions, after the application object is
// made.
#pragma once

#include "Report.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace stillwick::benchmarks {

/// What follows `option` on the command line; `otherwise` where it is not there.
[[nodiscard]] inline QString valueOf(const QString& option, const QString& otherwise) {
    const QStringList arguments = QCoreApplication::arguments();
    const qsizetype at = arguments.indexOf(option);
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : otherwise;
}

/// Prints the report, and writes it to the file that --json names. Returns the program's exit
/// status.
[[nodiscard]] inline int publish(const Report& report, const QString& title) {
    report.print(title);
    const QString json = valueOf(QStringLiteral("--json"), {});
    if (json.isEmpty() || report.writeJson(json))
        return 0;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(json));
    return 1;
}

} // namespace stillwick::benchmarks
