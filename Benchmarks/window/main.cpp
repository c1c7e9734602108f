// bench-window --clips FOLDER --programs FOLDER [--part NAME] [--rounds N] [--json FILE]: how long
// the window's event loop is held up while a 1080p film is worked on, how soon previews follow the
// edge settings, and how soon the window is there.
#include "../EventLoop.h"
#include "../Options.h"
#include "../Timings.h"
#include "LoopWatch.h"
#include "Starts.h"

#include "Interface/ContinuousSlider.h"
#include "Interface/Look.h"
#include "Interface/SectionedListView.h"
#include "Stillwick/AppState.h"
#include "Stillwick/AppStateFocus.h"
#include "Stillwick/ContentView.h"
#include "Stillwick/EdgeControlsView.h"
#include "Stillwick/ExtractionPreviewView.h"
#include "Stillwick/RenderCache.h"
#include "Stillwick/StillwickWindow.h"
#include "Stillwick/TimelineControlsView.h"

#include <QAbstractButton>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <functional>
#include <utility>

using namespace stillwick;
using namespace stillwick::benchmarks;

namespace {

constexpr int captureCount = 10;
constexpr int betweenMoves = 16; // milliseconds, as a mouse reports
constexpr int betweenLooks = 2;  // milliseconds

/// A window on the film, and hands for it. Input comes from timers, for what the hands do is no
/// handler of the window's.
class Bench final {
public:
    Bench(LoopWatch& watch, Report& report, const QString& film)
        : m_watch(watch), m_report(report) {
        constexpr QSize size(1600, 900);
        m_window.resize(size);
        m_window.setAttribute(Qt::WA_DeleteOnClose, false);
        m_window.show();
        m_window.activateWindow();
        for (auto* const header :
             m_window.findChild<EdgeControlsView*>()->findChildren<QAbstractButton*>(QString()))
            if (header->inherits("stillwick::DisclosureHeader"))
                header->setChecked(true);
        m_window.openFile(film);
        restUntil([this] { return !state().player()->picture().isNull(); }, betweenLooks);
        rest(2000); // what is decoded ahead
    }

    [[nodiscard]] AppState& state() const { return m_window.state(); }

    void doNothing();
    void capture();
    void select();
    void moveEdges();
    void scrub();
    void play();
    void save();
    void exportAll();

private:
    void tell(const char* name);
    void key(int key);
    /// From the event loop, so that it is watched.
    void asKey(std::function<void()> work) {
        QMetaObject::invokeMethod(&m_window, std::move(work), Qt::QueuedConnection);
    }
    void drag(ContinuousSlider& slider, int span, double turns);
    [[nodiscard]] const RenderCache& renders() const {
        return m_window.content().preview().renders();
    }

    LoopWatch& m_watch;
    Report& m_report;
    QTemporaryDir m_folder;
    StillwickWindow m_window;
};

void Bench::tell(const char* name) {
    const Stalls stalls = m_watch.takeStalls();
    const QString title = QString::fromUtf8(name);
    const auto add = [&](const char* figure, double value) {
        m_report.add(title, QString::fromUtf8(figure), value, QStringLiteral("ms"));
    };
    add("longest wait for the loop", stalls.longestWait);
    add("99 of 100 waits below", stalls.wait99);
    add("longest handler", stalls.longestHandler);
    add("longest, without waiting for a processor", stalls.longestOwn);
    add("of the processor's time, most", stalls.greatestEffort);
    std::printf("%s: %s\n", name, qPrintable(stalls.doing));
    std::fflush(stdout);
}

void Bench::key(int key) {
    qt_handleKeyEvent(m_window.windowHandle(), QEvent::KeyPress, key, {},
                      key == Qt::Key_C ? QStringLiteral("c") : QString());
    qt_handleKeyEvent(m_window.windowHandle(), QEvent::KeyRelease, key, {});
}

/// To and fro over the slider, for so many milliseconds.
void Bench::drag(ContinuousSlider& slider, int span, double turns) {
    QWindow* const window = m_window.windowHandle();
    const auto at = [&](double part) {
        constexpr int edge = 10;
        return slider.mapTo(
            &m_window, QPoint(edge + int(part * (slider.width() - 2 * edge)), slider.height() / 2));
    };
    const auto mouse = [&](QEvent::Type type, double part, Qt::MouseButtons held) {
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        qt_handleMouseEvent(window, at(part), window->mapToGlobal(at(part)), held, button, type, {},
                            0);
    };
    constexpr double pi = 3.14159265358979;
    mouse(QEvent::MouseButtonPress, 0, Qt::LeftButton);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < span) {
        const double turn = double(timer.elapsed()) / span * turns;
        mouse(QEvent::MouseMove, (1 - std::cos(2 * pi * turn)) / 2 * 0.9 + 0.02, Qt::LeftButton);
        rest(betweenMoves);
    }
    mouse(QEvent::MouseButtonRelease, 0.5, Qt::NoButton);
}

/// How long waits are on this machine whatever the window does.
void Bench::doNothing() {
    (void)m_watch.takeStalls();
    rest(4000);
    tell("doing nothing");
}

void Bench::capture() {
    (void)m_watch.takeStalls();
    for (int i = 0; i < captureCount; ++i) {
        asKey([this] { state().stepInterval(true); });
        rest(250);
        asKey([this] { key(Qt::Key_C); });
        rest(250);
    }
    restUntil([this] { return state().unfinishedFrames() == 0 && renders().isUpToDate(); },
              betweenLooks);
    tell("capturing");
}

void Bench::select() {
    auto* const list = m_window.findChild<SectionedListView*>();
    list->setFocus();
    (void)m_watch.takeStalls();
    std::vector<double> waits;
    for (int i = 0; i < captureCount - 1; ++i) {
        QElapsedTimer timer;
        timer.start();
        asKey([this] { key(Qt::Key_Up); });
        rest(5);
        restUntil([this] { return renders().isUpToDate(); }, betweenLooks);
        waits.push_back(double(timer.nsecsElapsed()) / 1e6);
        rest(200);
    }
    tell("changing the selection");
    m_report.add(QStringLiteral("previews"), QStringLiteral("all styles after a selection, median"),
                 median(waits), QStringLiteral("ms"));
}

void Bench::moveEdges() {
    std::vector<double> afterRest;
    double longestWithoutNews = 0;
    const auto sliders = m_window.findChild<EdgeControlsView*>()->findChildren<ContinuousSlider*>();
    (void)m_watch.takeStalls();
    for (ContinuousSlider* const slider : sliders) {
        if (!slider->isVisible())
            continue;
        QElapsedTimer news;
        news.start();
        const auto connection =
            QObject::connect(&renders(), &RenderCache::rendersChanged, &m_window, [&] {
                longestWithoutNews = std::max(longestWithoutNews, double(news.restart()));
            });
        drag(*slider, 4000, 2);
        QObject::disconnect(connection);
        QElapsedTimer resting;
        resting.start();
        restUntil([this] { return renders().isUpToDate(); }, betweenLooks);
        afterRest.push_back(double(resting.nsecsElapsed()) / 1e6);
        rest(300);
    }
    tell("moving an edge slider");
    const auto add = [&](const char* figure, double value) {
        m_report.add(QStringLiteral("previews"), QString::fromUtf8(figure), value,
                     QStringLiteral("ms"));
    };
    add("all styles after a slider's rest, median", median(afterRest));
    add("all styles after a slider's rest, slowest", quantile(afterRest, 1));
    add("longest without news while it moves", longestWithoutNews);
}

void Bench::scrub() {
    auto& slider = *m_window.findChild<TimelineControlsView*>()->findChild<ContinuousSlider*>();
    (void)m_watch.takeStalls();
    drag(slider, 6000, 2);
    restUntil([this] { return !state().player()->isSeeking(); }, betweenLooks);
    tell("scrubbing");
}

void Bench::play() {
    (void)m_watch.takeStalls();
    state().togglePlayPause();
    rest(6000);
    state().pause();
    rest(200);
    tell("playing");
}

void Bench::save() {
    const QUrl project = QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("p.stillwick")));
    state().saveProject(project);
    (void)m_watch.takeStalls();
    for (int i = 0; i < 5; ++i) {
        asKey([this, project] { state().saveProject(project); });
        rest(100);
    }
    tell("saving");
}

void Bench::exportAll() {
    state().setOutputFolder(QUrl::fromLocalFile(m_folder.path()));
    (void)m_watch.takeStalls();
    asKey([this] { state().runExport(ExportMode::merged); });
    rest(20);
    restUntil([this] { return !state().progress().isRunning; }, betweenLooks);
    rest(200);
    tell("exporting");
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    LoopWatch application(argc, argv);
    if (!hasOnly({QStringLiteral("--clips"), QStringLiteral("--programs"), QStringLiteral("--part"),
                  QStringLiteral("--rounds"), QStringLiteral("--json")}))
        return 2;
    installLook(application, ColorScheme::light);
    (void)KeyboardCoordinator::shared();
    const QString part = valueOf(QStringLiteral("--part"), {});
    Report report(QStringLiteral("window"));
    if (part != QStringLiteral("loop"))
        timeStarts(report, valueOf(QStringLiteral("--programs"), QStringLiteral(".")),
                   valueOf(QStringLiteral("--rounds"), QStringLiteral("15")).toInt());
    if (part != QStringLiteral("start")) {
        const QString film = clipNamed(QStringLiteral("1080p30-subjects.mp4"));
        if (film.isEmpty())
            return 1;
        Bench bench(application, report, film);
        bench.doNothing();
        bench.capture();
        bench.select();
        bench.moveEdges();
        bench.scrub();
        bench.play();
        bench.save();
        bench.exportAll();
    }
    return publish(report, QStringLiteral("window: a 1080p film in a window of 1600 × 900"));
}
