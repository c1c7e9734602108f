// What the user asks for on the command line. Plain values, any thread.
#pragma once

#include "Media/CMTime.h"
#include "Stillwick/EdgeOptions.h"
#include "Stillwick/ExportMode.h"
#include "Stillwick/FilterStyle.h"

#include <QString>
#include <QStringList>

#include <variant>
#include <vector>

namespace stillwick {

/// One whole picture into one file.
struct StillCommand {
    QString video;
    CMTime time;
    QString file;
};

/// A time at which to capture.
struct CaptureRequest {
    CMTime time;
    QString note;
};

/// Captures that belong together.
struct GroupRequest {
    QString name;
    QString note;
    std::vector<CaptureRequest> captures = {}; ///< in the order given
};

/// One cut-out, or one per subject, for each time, into a folder.
struct CaptureCommand {
    QString video;
    std::vector<GroupRequest> groups; ///< in the order in which they were first named
    QString folder;
    ExportMode mode = ExportMode::merged;
    bool crop = false;
    FilterStyle style = FilterStyle::none;
    EdgeOptions edge;
    QString project = {}; ///< the file to save what is captured to; empty for none
};

/// The export of a project, with the settings that it holds.
struct ExportCommand {
    QString project;
    QString folder; ///< empty for the project's own
    ExportMode mode = ExportMode::merged;
};

/// No command: the window, on these films and projects.
struct WindowCommand {
    QStringList files = {};
};
/// Text asked for (--help, --version).
struct TextCommand {
    QString text;
};
/// What is wrong with the command line, naming the word at fault.
struct UsageError {
    QString message;
};

using Command = std::variant<WindowCommand, StillCommand, CaptureCommand, ExportCommand,
                             TextCommand, UsageError>;

/// The command in the program's arguments, the program's own name left out.
[[nodiscard]] Command parseCommandLine(const QStringList& arguments);

/// How to call the program.
[[nodiscard]] QString usageText();

} // namespace stillwick
