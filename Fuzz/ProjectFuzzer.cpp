// Any bytes as a project: read or refused, in agreement with another reader of JSON; what was read
// is written and read back to the same, and its bookmarks and names lead nowhere unexpected.
#include "Desktop/Bookmark.h"
#include "Stillwick/ExportNaming.h"
#include "Stillwick/ProjectError.h"
#include "Stillwick/ProjectJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

using namespace stillwick;

void require(bool holds) {
    if (!holds)
        std::abort();
}

std::optional<ProjectFile> projectIn(QByteArrayView text) {
    try {
        return decodeProject(text);
    } catch (const ProjectError& error) {
        require(!error.description().isEmpty());
        return std::nullopt;
    }
}

/// Qt's reader takes all that ours takes, and finds the same. But for numbers beyond all doubles,
/// which ours passes over under keys that it does not know, and for a byte order mark at the
/// beginning of a text, which is a character of it that Qt's drops.
void compareWithQt(const QByteArray& text, const ProjectFile& project) {
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(text, &error).object();
    if (error.error == QJsonParseError::IllegalNumber)
        return;
    // As a double, for Qt reads 9007199254740993.0 as one.
    require(object[QStringLiteral("version")].toDouble() == double(project.version));
    const QString name = object[QStringLiteral("videoName")].toString();
    require(name == project.videoName || QChar::ByteOrderMark + name == project.videoName);
    require(object[QStringLiteral("groups")].toArray().size() == project.groups.size());
    const QJsonObject edge = object[QStringLiteral("edge")].toObject();
    require(edge[QStringLiteral("feather")].toDouble() == project.edge.feather);
}

void readWhatWasWritten(const ProjectFile& project) {
    const QByteArray text = encodeProject(project);
    const std::optional<ProjectFile> again = projectIn(text);
    require(again && *again == project && encodeProject(*again) == text);
}

void useAsAStateWould(const ProjectFile& project) {
    for (const auto& bookmark : {project.videoBookmark, project.outputFolderBookmark})
        if (bookmark)
            require(resolveBookmark(*bookmark).value_or("/").startsWith('/'));
    for (const GroupDTO& group : project.groups) {
        require(!ExportNaming::folderName(group.name).contains(u'/'));
        for (const FrameDTO& frame : group.frames) {
            const CMTime time = CMTime::make(frame.timeValue, frame.timeScale);
            require(!time.displayString().isEmpty() && !time.fileNameString().contains(u'/'));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( // NOLINT(readability-identifier-naming)
    const std::uint8_t* data, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char*>(data), qsizetype(size));
    const std::optional<ProjectFile> project = projectIn(text);
    if (!project)
        return 0;
    compareWithQt(text, *project);
    readWhatWasWritten(*project);
    useAsAStateWould(*project);
    return 0;
}
