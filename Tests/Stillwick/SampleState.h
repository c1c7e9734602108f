// A working state on the film that comes with the sources.
#pragma once

#include "ColumnSegmenter.h"
#include "EventLoop.h"

#include "Stillwick/AppState.h"
#include "Stillwick/CaptureLists.h"
#include "Stillwick/PictureStore.h"
#include "Stillwick/SubjectExtractionService.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>

namespace stillwick::testing {

inline QUrl sampleFilm() {
    return QUrl::fromLocalFile(QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4"));
}

/// A state whose subjects are what `segmenter` says.
inline std::unique_ptr<AppState> stateWith(std::shared_ptr<const ForegroundSegmenter> segmenter,
                                           std::shared_ptr<PictureStore> pictures = {}) {
    application();
    AppState::Services services;
    services.subjectExtractor = std::make_shared<SubjectExtractionService>(std::move(segmenter));
    services.pictures = std::move(pictures);
    return std::make_unique<AppState>(std::move(services));
}

/// Opens a film and waits until it is shown.
inline void load(AppState& state, const QUrl& url = sampleFilm()) {
    state.loadVideo(url);
    ASSERT_TRUE(runUntil([&state] {
        return !state.player()->picture().isNull() && state.duration() > CMTime::zero();
    }));
}

/// Goes to a time of the film and captures there; the capture's id.
inline QUuid captureAt(AppState& state, std::int64_t milliseconds) {
    state.seek(CMTime::make(milliseconds, 1000));
    EXPECT_TRUE(runUntil([&state] { return !state.player()->isSeeking(); }));
    state.captureCurrentFrame();
    return *state.selection().begin();
}

inline CapturedFrame frameIn(const AppState& state, const QUuid& id) {
    const CapturedFrame* const frame = frameOf(state.groups(), id);
    return frame != nullptr ? *frame : CapturedFrame(CMTime::invalid(), {}, {});
}

/// Waits until all background work is done.
inline void finish(const AppState& state) {
    ASSERT_TRUE(runUntil([&state] { return state.unfinishedFrames() == 0; }));
}

} // namespace stillwick::testing
