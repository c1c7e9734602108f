// prove-films [--frames N] [--seed N] FILM-OR-FOLDER…: the whole proof, by hand, on any films.
#include "FilmArguments.h"
#include "Proof.h"
#include "Reference.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

using namespace stillwick::testing;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const auto [frames, seed, films] = readFilmArguments(argc, argv, "--frames", 1'000'000);
    int faulty = 0;
    for (const QString& film : films) {
        QElapsedTimer timer;
        timer.start();
        const Proof proof = proveFilm(film, frames, seed);
        const char* verdict = !proof.faults.isEmpty()    ? "WRONG"
                              : !proof.skipped.isEmpty() ? "skipped"
                              : proof.isDamaged          ? "right (times only: damaged)"
                                                         : "right";
        std::printf("%-28s %5d frames %6d grabs %7.1f s  %s\n",
                    qPrintable(QFileInfo(film).fileName()), proof.frames, proof.grabs,
                    double(timer.elapsed()) / 1000.0, verdict);
        if (!proof.skipped.isEmpty())
            std::printf("    %s\n", qPrintable(proof.skipped));
        for (const QString& fault : proof.faults)
            std::printf("    %s\n", qPrintable(fault));
        std::fflush(stdout);
        faulty += proof.faults.isEmpty() ? 0 : 1;
    }
    std::printf("%d of %d films wrong\n", faulty, int(films.size()));
    return faulty == 0 ? 0 : 1;
}
