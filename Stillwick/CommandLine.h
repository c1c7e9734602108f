// What the user asks for on the command line. Plain values, any thread.
#pragma once

#include "Media/CMTime.h"
#include "Stillwick/ExportMode.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>
#include <vector>

namespace stillwick {

/// One whole picture into one file.
struct StillCommand {
    QString video;
    CMTime time;
    QString file;
};

/// One cut-out, or one per subject, for each time, into a folder.
struct CaptureCommand {
    QString video;
    std::vector<CMTime> times; ///< in the order given
    QString folder;
    ExportMode mode = ExportMode::merged;
    bool crop = false;
};

/// No command: the window.
struct WindowCommand {};
/// Text asked for (--help, --version).
struct TextCommand {
    QString text;
};
/// What is wrong with the command line, naming the word at fault.
struct UsageError {
    QString message;
};

using Command = std::variant<WindowCommand, StillCommand, CaptureCommand, TextCommand, UsageError>;

/// The command in the program's arguments, the program's own name left out.
[[nodiscard]] Command parseCommandLine(const QStringList& arguments);

/// How to call the program.
[[nodiscard]] QString usageText();

/// A time as the user writes it: seconds ("83.5"), minutes and seconds ("01:23.500"), hours too
/// ("1:02:03.250"), or an exact pair ("41750/500"). Exact, decimals up to nine; none for anything
/// else.
[[nodiscard]] std::optional<CMTime> parseTime(const QString& text);

} // namespace stillwick
