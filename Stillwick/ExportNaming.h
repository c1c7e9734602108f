// The names under which an export lands on disk. Pure functions, any thread.
#pragma once

#include "Media/CMTime.h"

#include <QString>

#include <optional>

namespace stillwick {

/// Names that sort by time within a folder; the video's name is taken as it is.
class ExportNaming final {
public:
    ExportNaming() = delete;

    /// A film's name as exports use it: its file's, without the extension. A name that is all
    /// extension is a name.
    [[nodiscard]] static QString videoName(const QString& path);
    /// The name of one picture: "match_00-01-23-500.png", or "match_00-01-23-500_s2.png" for
    /// subject 2.
    [[nodiscard]] static QString fileName(const QString& videoName, const CMTime& time,
                                          std::optional<int> subjectIndex = std::nullopt);
    /// A group's name made fit for a folder: separators of paths become hyphens, white space at
    /// the ends goes; "Sans-nom" where nothing is left.
    [[nodiscard]] static QString folderName(const QString& name);
};

} // namespace stillwick
