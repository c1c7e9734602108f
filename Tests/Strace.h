// Programs under strace. Free functions, any thread.
#pragma once

#include <QProcess>
#include <QStringList>

namespace stillwick::testing {

/// Whether this machine lets strace trace.
[[nodiscard]] inline bool canTrace() {
    return QProcess::execute(
               QStringLiteral("strace"),
               {QStringLiteral("-o"), QStringLiteral("/dev/null"), QStringLiteral("true")}) == 0;
}

struct Traced {
    int status = -1; ///< −1 where the program did not come to its end
    QByteArray output;
    QByteArray errors;
};

/// Runs strace with these arguments, the command and its own last.
[[nodiscard]] inline Traced traced(const QStringList& arguments) {
    QProcess strace;
    strace.start(QStringLiteral("strace"), arguments);
    if (!strace.waitForFinished() || strace.exitStatus() != QProcess::NormalExit)
        return {};
    return {strace.exitCode(), strace.readAllStandardOutput(), strace.readAllStandardError()};
}

} // namespace stillwick::testing
