// Carrying out a command of the command line. Main thread.
#pragma once

#include "Stillwick/CommandLine.h"

#include <QCoroTask>

#include <functional>
#include <stop_token>

namespace stillwick {

/// How a command ended, as the program's exit status.
enum class ExitStatus {
    AllDone = 0,
    SomeFailed = 1,
    NothingDone = 2,
    Interrupted = 130, ///< as shells number what Ctrl-C ends
};

/// Where a command writes its lines.
struct CommandOutput {
    std::function<void(const QString&)> result;    ///< a line of standard output
    std::function<void(const QString&)> complaint; ///< a line of standard error
    std::function<void(const QString&)>
        progress; ///< the passing line of a terminal; empty clears it
};

/// Writes the picture at the command's time.
[[nodiscard]] QCoro::Task<ExitStatus> runStill(StillCommand command, CommandOutput output);

/// Exports the command's captures, and saves their project where that is asked for; what fails is
/// told, and the next is captured. After `stop` none is begun, and what has been written is told.
[[nodiscard]] QCoro::Task<ExitStatus> runCapture(CaptureCommand command, CommandOutput output,
                                                 std::stop_token stop = {});

/// Exports the captures of a project; the same holds.
[[nodiscard]] QCoro::Task<ExitStatus> runExport(ExportCommand command, CommandOutput output,
                                                std::stop_token stop = {});

} // namespace stillwick
