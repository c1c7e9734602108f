// stillwick-monkey [--seconds N] [--seed S] [--films FOLDER] [--tell]: does anything at all to the
// application's windows, for so long. Fails where a rule is broken, the event loop rests or Qt
// warns; the sanitizers see to the rest. --tell names each thing that it does.
#include "../ColourTables.h"
#include "Invariants.h"
#include "Monkey.h"
#include "Watch.h"

#include "Interface/Look.h"
#include "Stillwick/AppState.h"
#include "Stillwick/AppStateFocus.h"
#include "Stillwick/StillwickWindow.h"

#include <QApplication>
#include <QDir>
#include <QEventLoopLocker>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <random>

namespace {

using namespace stillwick;
using namespace stillwick::monkey;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::chrono::seconds patience(120);
#else
constexpr std::chrono::seconds patience(30);
#endif

int warnings = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

/// Nothing that Qt warns of is expected, but for what this platform has not: some of what windows
/// are, and sound.
void onMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    std::fprintf(stderr, "Qt: %s\n", qPrintable(text));
    if (type != QtDebugMsg && type != QtInfoMsg &&
        !text.startsWith(QStringLiteral("This plugin does not support")) &&
        !text.startsWith(QStringLiteral("PulseAudioService:")) &&
        !text.startsWith(QStringLiteral("QStandardPaths: XDG_RUNTIME_DIR not set")))
        ++warnings;
}

/// What is started and written, is so within `folder`; nothing can be reached over the bus.
void enclose(const QString& folder) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("PATH", "/nonexistent");
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
        qputenv(name, folder.toUtf8());
    QDir::setCurrent(folder);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

QString valueOf(const QStringList& arguments, const QString& option, const QString& otherwise) {
    const qsizetype at = arguments.indexOf(option);
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : otherwise;
}

/// Copies of the sample and of all films in `from`, in the folder `to`: whatever happens to them.
QStringList filmsCopied(const QString& from, const QDir& to) {
    QFileInfoList originals{QFileInfo(QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4"))};
    if (!from.isEmpty())
        originals += QDir(from).entryInfoList(QDir::Files, QDir::Name);
    QStringList films;
    for (const QFileInfo& original : originals) {
        const QString copy = to.filePath(original.fileName());
        if (original.suffix() != QStringLiteral("sh") &&
            QFile::copy(original.absoluteFilePath(), copy))
            films.append(copy);
    }
    return films;
}

/// Closes all that is open and waits until nothing of it is left.
QString closeEverything(Watch& watch) {
    QApplication::closeAllWindows();
    const auto isThere = [] {
        for (const QWidget* const widget : QApplication::topLevelWidgets())
            if (qobject_cast<const StillwickWindow*>(widget) != nullptr)
                return true;
        return false;
    };
    for (int i = 0; i < 200 && isThere(); ++i) {
        watch.beat();
        for (QWidget* const widget : QApplication::topLevelWidgets())
            widget->close();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    if (isThere())
        return QStringLiteral("A window stays after it was closed.");
    if (KeyboardCoordinator::shared().focusedState() != nullptr)
        return QStringLiteral("The keyboard still has a state.");
    return {};
}

/// Exports go on where their window goes: waits for them, and tells what they leave.
QString waitForExports(const QString& folder, Watch& watch) {
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&watch] { watch.beat(); });
    beat.start(std::chrono::milliseconds(50));
    QTimer::singleShot(patience, [] { QCoreApplication::exit(1); });
    // Each export holds the application; who lets it go last ends it.
    QCoreApplication::setQuitLockEnabled(true);
    QTimer::singleShot(0, [] { const QEventLoopLocker last; });
    if (QCoreApplication::exec() != 0)
        return QStringLiteral("An export does not come to its end.");
    const QString stray = strayFile(folder);
    return stray.isEmpty() ? QString() : QStringLiteral("This stays behind: ") + stray;
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir folder;
    for (const char* name : {"écrit", "films"})
        QDir(folder.path()).mkdir(QString::fromUtf8(name));
    enclose(folder.path());
    qInstallMessageHandler(onMessage);
    QApplication application(argc, argv);
    installLook(application, ColorScheme::light);
    // An export that ends while no window is open would end the program too.
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setQuitLockEnabled(false);
    (void)KeyboardCoordinator::shared();
    testing::makeColourTables();
    const QStringList arguments = QCoreApplication::arguments();
    const std::uint64_t seed =
        valueOf(arguments, QStringLiteral("--seed"), QString::number(std::random_device()()))
            .toULongLong();
    const std::chrono::seconds span(
        valueOf(arguments, QStringLiteral("--seconds"), QStringLiteral("15")).toInt());
    std::printf("monkey: seed %" PRIu64 ", %d s\n", seed, int(span.count()));
    std::fflush(stdout);

    Watch watch(patience);
    const QString written = folder.filePath(QStringLiteral("écrit"));
    for (int i = 0; i < 3; ++i)
        QDir(written).mkdir(QStringLiteral("export %1").arg(i));
    Monkey monkey(seed,
                  {written, filmsCopied(valueOf(arguments, QStringLiteral("--films"), QString()),
                                        QDir(folder.filePath(QStringLiteral("films"))))},
                  arguments.contains(QStringLiteral("--tell")));
    QObject::connect(&monkey, &Monkey::acted, [&watch] { watch.beat(); });
    QObject::connect(&monkey, &Monkey::finished, &application, &QCoreApplication::quit);
    const auto begin = std::chrono::steady_clock::now();
    monkey.start(span);
    QApplication::exec();

    const auto lasted = std::chrono::steady_clock::now() - begin;
    QString complaint = monkey.complaint();
    if (complaint.isEmpty() && lasted < span)
        complaint = QStringLiteral("The program ended before its time.");
    for (const QString& further : {closeEverything(watch), waitForExports(written, watch)})
        if (complaint.isEmpty())
            complaint = further;
    if (complaint.isEmpty() && warnings > 0)
        complaint = QStringLiteral("Qt warned %1 time(s).").arg(warnings);
    std::printf("monkey: seed %" PRIu64 ", %d things done in %d s%s%s\n", seed, monkey.actions(),
                int(std::chrono::duration_cast<std::chrono::seconds>(lasted).count()),
                complaint.isEmpty() ? ", all well" : ": ", qPrintable(complaint));
    std::fflush(stdout);
    return complaint.isEmpty() ? 0 : 1;
}
