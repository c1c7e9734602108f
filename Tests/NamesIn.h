// What is in a folder.
#pragma once

#include <QDir>
#include <QString>

#include <string>

namespace stillwick::testing {

/// The names in a folder, hidden ones too.
inline std::string namesIn(const std::string& folder) {
    return QDir(QString::fromStdString(folder))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
        .join(u' ')
        .toStdString();
}

} // namespace stillwick::testing
