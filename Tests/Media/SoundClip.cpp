#include "SoundClip.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <cstring>

namespace stillwick::testing {

QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    constexpr int twoMinutes = 120'000;
    const bool finished = process.waitForFinished(twoMinutes);
    EXPECT_TRUE(finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        << program.toStdString() << ": " << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

void ffmpeg(const QString& arguments) {
    (void)outputOf(QStringLiteral("ffmpeg"), (QStringLiteral("-nostdin -y -v error ") + arguments)
                                                 .split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

std::vector<float> linearDecode(const QString& path, int sampleRate, int channels) {
    const QByteArray bytes =
        outputOf(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("fatal"),
                  QStringLiteral("-i"), path, QStringLiteral("-map"), QStringLiteral("0:a:0"),
                  QStringLiteral("-ar"), QString::number(sampleRate), QStringLiteral("-ac"),
                  QString::number(channels), QStringLiteral("-f"), QStringLiteral("f32le"),
                  QStringLiteral("-")});
    std::vector<float> samples(std::size_t(bytes.size()) / sizeof(float));
    std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}

double firstFrameTime(const QString& path, const QString& selector) {
    const QByteArray text = outputOf(
        QStringLiteral("ffprobe"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"), selector,
         QStringLiteral("-read_intervals"), QStringLiteral("%+#3"), QStringLiteral("-show_entries"),
         QStringLiteral("frame=best_effort_timestamp_time"), QStringLiteral("-of"),
         QStringLiteral("csv=p=0"), path});
    const QByteArray first = text.left(text.indexOf('\n')).split(',').front();
    bool isNumber = false;
    const double time = first.toDouble(&isNumber);
    EXPECT_TRUE(isNumber) << text.toStdString();
    return time;
}

} // namespace stillwick::testing
