// What every benchmark does with its command line. Free functions, after the application object is
// made.
#pragma once

#include "Report.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringList>

#include <cstdio>

namespace stillwick::benchmarks {

/// What follows `option` on the command line; `otherwise` where it is not there.
[[nodiscard]] inline QString valueOf(const QString& option, const QString& otherwise) {
    const QStringList arguments = QCoreApplication::arguments();
    const qsizetype at = arguments.indexOf(option);
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : otherwise;
}

/// The clip of that name in the folder that --clips names; tells where it is not there.
[[nodiscard]] inline QString clipNamed(const QString& name) {
    const QString path =
        QDir(valueOf(QStringLiteral("--clips"), QStringLiteral("."))).filePath(name);
    if (QFile::exists(path))
        return path;
    std::fprintf(stderr, "%s is not there\n", qPrintable(path));
    return {};
}

/// Whether nothing but these options, each with a value, follows on the command line; tells what
/// does not belong there.
[[nodiscard]] inline bool hasOnly(const QStringList& options) {
    const QStringList arguments = QCoreApplication::arguments();
    for (qsizetype i = 1; i < arguments.size(); i += 2)
        if (!options.contains(arguments[i]) || i + 1 == arguments.size()) {
            std::fprintf(stderr, "%s: the options are %s, each with a value\n",
                         qPrintable(arguments[i]), qPrintable(options.join(QStringLiteral(", "))));
            return false;
        }
    return true;
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
