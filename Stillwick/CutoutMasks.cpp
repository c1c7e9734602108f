// cutout-masks [--classical] FOLDER OUT: the cut-outs of a folder's pictures as grey masks, for
// scoring; by the method without a network where that is asked for.
//
// For each picture NAME.* writes OUT/NAME.png, its opacity, and OUT/NAME.inst.png, the number of
// the subject of each pixel; both all zero where no subject was found.

#include "Stillwick/AppError.h"
#include "Stillwick/SubjectExtractionService.h"
#include "Vision/ClassicalSegmenter.h"
#include "Vision/VisionError.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QTextStream>
#include <QtConcurrentMap>

#include <memory>
#include <vector>

namespace stillwick {
namespace {

// One picture's way through the program.
struct Job {
    QString picture;
    QString target;
    double seconds = 0;
    std::size_t subjects = 0;
    QString failure;
};

QImage emptyMask(QSize size) {
    QImage mask(size, QImage::Format_Grayscale8);
    mask.fill(0);
    return mask;
}

// Draws the opacity of one subject, and its number where it is visible. Subjects do not overlap, so
// that all together give the merged cut-out.
void draw(const QImage& cutOut, int number, QImage& opacity, QImage& indices) {
    for (int y = 0; y < opacity.height(); ++y) {
        const uchar* alpha = cutOut.constScanLine(y) + 3;
        for (int x = 0; x < opacity.width(); ++x)
            if (alpha[4 * x] > 0) {
                opacity.scanLine(y)[x] = alpha[4 * x];
                indices.scanLine(y)[x] = static_cast<uchar>(number);
            }
    }
}

std::vector<QImage> subjectsOrNone(const SubjectExtractionService& service, const QImage& picture) {
    try {
        return service.extractNow(picture, ExportMode::perSubject, false);
    } catch (const AppError& error) {
        if (error.kind() == AppError::Case::noSubjectFound)
            return {};
        throw;
    }
}

void cutOutPicture(const SubjectExtractionService& service, Job& job) {
    QImageReader reader(job.picture);
    reader.setAutoTransform(true);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        job.failure = reader.errorString();
        return;
    }
    QImage opacity = emptyMask(picture.size());
    QImage indices = emptyMask(picture.size());
    QElapsedTimer timer;
    timer.start();
    const std::vector<QImage> subjects = subjectsOrNone(service, picture);
    job.seconds = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    job.subjects = subjects.size();
    for (std::size_t i = 0; i < subjects.size(); ++i)
        draw(subjects[i], static_cast<int>(i) + 1, opacity, indices);
    if (!opacity.save(job.target + QStringLiteral(".png")) ||
        !indices.save(job.target + QStringLiteral(".inst.png")))
        job.failure = QStringLiteral("not written");
}

std::vector<Job> jobsOf(const QString& folder, const QString& out) {
    QStringList patterns;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        patterns.append(QStringLiteral("*.") + QString::fromLatin1(format));
    std::vector<Job> jobs;
    for (const QFileInfo& file : QDir(folder).entryInfoList(patterns, QDir::Files, QDir::Name))
        jobs.push_back({file.filePath(), out + u'/' + file.completeBaseName(), 0, 0, {}});
    return jobs;
}

void work(const SubjectExtractionService& service, Job& job) {
    try {
        cutOutPicture(service, job);
    } catch (const AppError& error) {
        job.failure = error.description();
    } catch (const VisionError& error) {
        job.failure = error.description();
    }
}

int report(const std::vector<Job>& jobs, double wall) {
    QTextStream out(stdout);
    double seconds = 0;
    std::size_t with = 0;
    int failures = 0;
    for (const Job& job : jobs) {
        seconds += job.seconds;
        with += job.subjects > 0 ? 1 : 0;
        if (job.failure.isEmpty())
            continue;
        ++failures;
        out << job.picture << ": " << job.failure << '\n';
    }
    const auto count = static_cast<double>(jobs.empty() ? 1 : jobs.size());
    out << jobs.size() << " pictures, " << with << " with a subject, " << failures << " failed; "
        << QString::number(seconds / count, 'f', 3) << " seconds per picture ("
        << QString::number(wall, 'f', 1) << " s in all)\n";
    return failures == 0 && !jobs.empty() ? 0 : 1;
}

int run(QStringList arguments) {
    const bool classical = arguments.removeAll(QStringLiteral("--classical")) > 0;
    if (arguments.size() != 3 || !QDir().mkpath(arguments[2])) {
        QTextStream(stderr) << "usage: cutout-masks [--classical] FOLDER OUT\n";
        return 2;
    }
    QImageReader::setAllocationLimit(0);
    std::vector<Job> jobs = jobsOf(arguments[1], arguments[2]);
    const SubjectExtractionService service(classical ? std::make_shared<const ClassicalSegmenter>()
                                                     : standardSegmenter());
    QElapsedTimer timer;
    timer.start();
    QtConcurrent::blockingMap(jobs, [&service](Job& job) { work(service, job); });
    return report(jobs, static_cast<double>(timer.elapsed()) * 1e-3);
}

} // namespace
} // namespace stillwick

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return stillwick::run(QCoreApplication::arguments());
}
