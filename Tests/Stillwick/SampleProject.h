// A project written by hand, and the record that it stands for.
#pragma once

#include "Stillwick/ProjectError.h"
#include "Stillwick/ProjectJson.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace stillwick::testing {

/// A document with everything in it, written by hand.
inline const char* const whole = R"({
    "activeGroupIndex": 1,
    "cropToSubject": true,
    "edge": {"a": 1, "b": 0.25, "feather": 2.5, "g": 0.5, "outline": true, "outlineWidth": 6,
             "r": 1, "shrink": 0},
    "filter": "comic",
    "groups": [
        {"frames": [
            {"annotations": [
                {"a": 1, "b": 0, "end": [0.75, 1], "g": 0.5,
                 "id": "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9", "kind": "circle",
                 "lineWidth": 0.004, "r": 1, "start": [0.25, 0]}],
             "notes": "vue de face", "timeScale": 30000, "timeValue": 1001}],
         "name": "Plan A/B", "notes": "deux\nlignes"}],
    "outputFolderBookmark": "AAEC/w==",
    "version": 1,
    "videoBookmark": "c3RpbGw=",
    "videoName": "été"
})";

inline ProjectFile wholeProject() {
    ProjectFile project;
    project.videoBookmark = QByteArray("still");
    project.videoName = QStringLiteral("été");
    project.outputFolderBookmark = QByteArray("\0\1\2\xff", 4);
    project.cropToSubject = true;
    project.filter = QStringLiteral("comic");
    project.edge = {0, 2.5, true, 6, 1, 0.5, 0.25, 1};
    project.activeGroupIndex = 1;
    const Annotation mark{.id = QUuid(QStringLiteral("{0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9}")),
                          .kind = AnnotationKind::circle,
                          .start = {0.25, 0},
                          .end = {0.75, 1},
                          .r = 1,
                          .g = 0.5,
                          .b = 0,
                          .a = 1,
                          .lineWidth = 0.004};
    project.groups = {{QStringLiteral("Plan A/B"),
                       QStringLiteral("deux\nlignes"),
                       {{1001, 30000, QStringLiteral("vue de face"), QList<Annotation>{mark}}}}};
    return project;
}

/// What is said of a text that is no project.
inline ProjectError faultIn(const QByteArray& text) {
    try {
        (void)decodeProject(text);
    } catch (const ProjectError& error) {
        return error;
    }
    ADD_FAILURE() << "was read: " << text.left(200).toStdString();
    return {ProjectError::Category::NotJson, {}};
}

/// The whole document with one piece of it replaced.
inline QByteArray with(const char* piece, const char* by) {
    QByteArray text(whole);
    EXPECT_TRUE(text.contains(piece)) << piece;
    return text.replace(text.indexOf(piece), qsizetype(qstrlen(piece)), by);
}

/// Another reader's view of the text, as an independent judge of ours.
inline QJsonObject readByQt(const QByteArray& text) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return document.object();
}

} // namespace stillwick::testing
