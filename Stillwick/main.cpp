// The program: the window, or a command of the command line.
#include "Desktop/Interruption.h"
#include "Stillwick/CommandRunner.h"
#include "Stillwick/ErrorDescription.h"
#include "Stillwick/StillwickApp.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <optional>
#include <stop_token>
#include <unistd.h>

namespace {

using namespace stillwick;

void writeLine(std::FILE* stream, const QString& line) {
    std::fputs((line + u'\n').toUtf8().constData(), stream);
    std::fflush(stream);
}

/// The line that a terminal shows while work is under way; nothing elsewhere.
void showProgress(const QString& line) {
    if (isatty(STDERR_FILENO) == 0)
        return;
    constexpr const char* clearLine = "\r\033[K";
    std::fputs(clearLine, stderr);
    std::fputs(line.toUtf8().constData(), stderr);
    std::fflush(stderr);
}

CommandOutput standardOutput() {
    return {[](const QString& line) { writeLine(stdout, line); },
            [](const QString& line) { writeLine(stderr, line); }, showProgress};
}

struct Starter {
    std::stop_token stop;

    QCoro::Task<ExitStatus> operator()(const StillCommand& command) const {
        return runStill(command, standardOutput());
    }
    QCoro::Task<ExitStatus> operator()(const CaptureCommand& command) const {
        return runCapture(command, standardOutput(), stop);
    }
    QCoro::Task<ExitStatus> operator()(const ExportCommand& command) const {
        return runExport(command, standardOutput(), stop);
    }
    QCoro::Task<ExitStatus> operator()(const TextCommand& command) const {
        return finish(stdout, command.text.trimmed(), ExitStatus::AllDone);
    }
    QCoro::Task<ExitStatus> operator()(const UsageError& error) const {
        return finish(stderr, error.message + QStringLiteral("\n\n") + usageText().trimmed(),
                      ExitStatus::NothingDone);
    }
    QCoro::Task<ExitStatus> operator()(const WindowCommand& /*command*/) const {
        return finish(stderr, {}, ExitStatus::NothingDone); // has a loop of its own
    }

private:
    static QCoro::Task<ExitStatus> finish(std::FILE* stream, QString text, ExitStatus status) {
        writeLine(stream, text);
        co_return status;
    }
};

QCoro::Task<> runAndQuit(Command command, std::stop_token stop) {
    ExitStatus status = ExitStatus::NothingDone;
    const Starter starter{std::move(stop)}; // GCC 12 destroys one made within `co_await` twice
    try {
        status = co_await std::visit(starter, command);
    } catch (const std::exception& error) {
        writeLine(stderr, localizedDescription(error));
    }
    QCoreApplication::exit(int(status));
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("stillwick"));
    QCoreApplication::setApplicationVersion(QStringLiteral(STILLWICK_VERSION));
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    const Command command = parseCommandLine(words);
    if (const auto* window = std::get_if<WindowCommand>(&command))
        return runWindows(argc, argv, *window);
    const QCoreApplication application(argc, argv);
    std::stop_source stop;
    std::optional<Interruption> interruption;
    // Any other command may be ended at any moment.
    if (std::holds_alternative<CaptureCommand>(command) ||
        std::holds_alternative<ExportCommand>(command))
        QObject::connect(&interruption.emplace(), &Interruption::requested, &application,
                         [&stop] { stop.request_stop(); });
    // From within the event loop, so that a command that ends at once can leave it.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [&] { runAndQuit(command, stop.get_token()); },
        Qt::QueuedConnection);
    return QCoreApplication::exec();
}
