// What the tests of whole files have in common: an empty folder, and what is in it.
#pragma once

#include "../NamesIn.h"

#include "Desktop/AtomicFile.h"
#include "Desktop/DesktopError.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <iterator>
#include <string>

#include <sys/stat.h>

namespace stillwick {

using testing::namesIn;

/// The user's words for what came of a write, or "ok".
inline std::string written(const std::string& path, const QByteArray& content) {
    try {
        writeFileAtomically(QString::fromStdString(path), content);
    } catch (const DesktopError& error) {
        return error.description().toStdString();
    }
    return "ok";
}

inline void put(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
}

class AtomicFileTest : public ::testing::Test {
protected:
    AtomicFileTest() { ::chmod(m_folder.path().toUtf8().constData(), 0755); }

    /// A path in an empty folder that every user may enter.
    std::string path(const std::string& name = {}) const {
        return m_folder.path().toStdString() + '/' + name;
    }
    std::string names() const { return namesIn(path()); }

private:
    QTemporaryDir m_folder;
};

} // namespace stillwick
