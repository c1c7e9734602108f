// Projects that are told from one another by a number, and the files around them.
#pragma once

#include "../NamesIn.h"

#include "Stillwick/ErrorDescription.h"
#include "Stillwick/ProjectStore.h"

#include <QUrl>

#include <exception>
#include <string>

namespace stillwick::testing {

/// A project of that number with so many captures, some 120 bytes of text each.
inline ProjectFile numbered(qint64 number, int captures = 1) {
    ProjectFile project;
    project.version = number;
    project.groups = {{QStringLiteral("Captures"), {}, {}}};
    for (int i = 0; i < captures; ++i) {
        FrameDTO& frame = project.groups[0].frames.emplaceBack();
        frame.timeValue = 1001LL * i;
        frame.timeScale = 30000;
        frame.notes = QStringLiteral("vue de face");
    }
    return project;
}

inline QUrl urlOf(const std::string& path) {
    return QUrl::fromLocalFile(QString::fromStdString(path));
}

/// What the user would read of a save, or "ok".
inline std::string saved(const ProjectFile& project, const std::string& path) {
    try {
        ProjectStore::save(project, urlOf(path));
        return "ok";
    } catch (const std::exception& error) {
        return localizedDescription(error).toStdString();
    }
}

/// The number of the project there, or what the user would read.
inline std::string loaded(const std::string& path) {
    try {
        return std::to_string(ProjectStore::load(urlOf(path)).version);
    } catch (const std::exception& error) {
        return localizedDescription(error).toStdString();
    }
}

} // namespace stillwick::testing
