// Soak CYCLES: in one process, so many times: a window opened on a film, steps, a capture, its
// preview, an export, the window closed. Tells what the process holds every tenth of the way. Exit
// status 1 where, after the first hundred cycles (half of them, if fewer than two hundred), memory
// grew by 5 MiB or more, or where threads, descriptors or files are left. Under the sanitizers
// memory is theirs, and is not judged.
#include "EventLoop.h"

#include "Interface/Look.h"
#include "Stillwick/AppState.h"
#include "Stillwick/BigPreview.h"
#include "Stillwick/StillwickWindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <malloc.h>
#include <unistd.h>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

/// What the process holds at a moment.
struct Holding {
    qint64 memory = 0;    ///< resident bytes
    qint64 allocated = 0; ///< of those, what is allocated and not freed
    qsizetype threads = 0;
    qsizetype descriptors = 0;
    qsizetype files = 0; ///< in the temporary folder
};

QDir::Filters everything() {
    return QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
}

qsizetype entriesOf(const QString& folder) {
    return QDir(folder).entryList(everything()).size();
}

Holding held() {
    ::malloc_trim(0);
    QFile statistics(QStringLiteral("/proc/self/statm"));
    if (!statistics.open(QIODevice::ReadOnly))
        std::abort();
    const qint64 pages = statistics.readAll().split(' ').at(1).toLongLong();
    statistics.close();
    const auto heap = ::mallinfo2();
    return {pages * ::sysconf(_SC_PAGESIZE), qint64(heap.uordblks + heap.hblkhd),
            entriesOf(QStringLiteral("/proc/self/task")),
            entriesOf(QStringLiteral("/proc/self/fd")), entriesOf(QDir::tempPath())};
}

void tell(int cycle, const Holding& holding) {
    std::printf(
        "%6d cycles  %7.1f MiB (%.2f allocated)  %3lld threads  %3lld descriptors  %lld files\n",
        cycle, double(holding.memory) / (1 << 20), double(holding.allocated) / (1 << 20),
        qlonglong(holding.threads), qlonglong(holding.descriptors), qlonglong(holding.files));
    std::fflush(stdout);
}

template <typename Condition>
void wait(const char* what, Condition condition) {
    if (runUntil(condition, 120s))
        return;
    std::fprintf(stderr, "Soak: waited in vain for %s\n", what);
    std::exit(1); // NOLINT(concurrency-mt-unsafe): nothing is to be saved
}

void goThrough(const QString& film, const QString& folder) {
    const QPointer<StillwickWindow> window = StillwickWindow::openNew();
    window->openFile(film);
    AppState& state = window->state();
    wait("the film", [&] { return !state.player()->picture().isNull(); });
    state.seek(CMTime::make(1, 1));
    for (int step = 0; step < 3; ++step) {
        wait("a step", [&] { return !state.player()->isSeeking(); });
        state.stepFrame(1);
    }
    wait("the last step", [&] { return !state.player()->isSeeking(); });
    state.captureCurrentFrame();
    const auto& preview = *window->findChild<BigPreview*>();
    wait("the preview", [&] { return !preview.image().isNull(); });
    state.setOutputFolder(QUrl::fromLocalFile(folder));
    state.runExport(ExportMode::merged);
    wait("the export", [&] { return !state.exportFinishedFolder().isEmpty(); });
    if (!state.failures().isEmpty() || entriesOf(folder) != 1) {
        std::fputs("Soak: the export failed\n", stderr);
        std::exit(1); // NOLINT(concurrency-mt-unsafe): nothing is to be saved
    }
    window->close();
    wait("the window's end", [&] { return window.isNull(); });
}

/// What holds at the end, once pools have let their idle threads go.
Holding heldAtRest(const Holding& before) {
    (void)runUntil([&] { return held().threads <= before.threads; }, 45s);
    return held();
}

bool judge(const Holding& before, const Holding& after) {
    bool isSound = after.threads <= before.threads && after.descriptors <= before.descriptors &&
                   after.files == before.files;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    constexpr qint64 allowance = qint64(5) << 20;
    isSound = isSound && after.memory - before.memory < allowance;
#endif
    std::printf("%s: %+.1f MiB (%+.2f allocated), %+lld threads, %+lld descriptors, %+lld files\n",
                isSound ? "sound" : "NOT SOUND", double(after.memory - before.memory) / (1 << 20),
                double(after.allocated - before.allocated) / (1 << 20),
                qlonglong(after.threads - before.threads),
                qlonglong(after.descriptors - before.descriptors),
                qlonglong(after.files - before.files));
    return isSound;
}

bool soak(int cycles) {
    const QString film = QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4");
    const QTemporaryDir folder;
    const int first = std::min(100, cycles / 2);
    Holding before;
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        goThrough(film, folder.path());
        if (cycle == first)
            before = held();
        if (cycle == first || cycle % std::max(1, cycles / 10) == 0)
            tell(cycle, held());
    }
    return judge(before, heldAtRest(before));
}

} // namespace

} // namespace stillwick::testing

int main(int argc, char** argv) {
    const int cycles = argc == 2 ? std::atoi(argv[1]) : 0;
    if (cycles < 2) {
        std::fputs("Soak CYCLES\n", stderr);
        return 2;
    }
    // What the allocator keeps for later comes and goes by tens of megabytes: large blocks go back
    // at once here, and all threads share one heap, which can be trimmed.
    // NOLINTBEGIN(concurrency-mt-unsafe): there is one thread yet
    ::mallopt(M_MMAP_THRESHOLD, 128 << 10);
    ::mallopt(M_ARENA_MAX, 1);
    // NOLINTEND(concurrency-mt-unsafe)
    // A temporary folder of its own, so that what is left there is this process's.
    const QTemporaryDir temporary;
    qputenv("TMPDIR", temporary.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    stillwick::installLook(application, stillwick::ColorScheme::light);
    return stillwick::testing::soak(cycles) ? 0 : 1;
}
