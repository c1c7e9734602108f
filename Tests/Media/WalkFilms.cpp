// walk-films [--operations N] [--seed N] FILM-OR-FOLDER…: random walks with the player, by hand, on
// any films.
#include "FilmArguments.h"
#include "PlayerWalk.h"
#include "Reference.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

using namespace stillwick::testing;

int main(int argc, char** argv) {
    const auto [operations, seed, films] = readFilmArguments(argc, argv, "--operations", 500);
    int faulty = 0;
    for (const QString& film : films) {
        QElapsedTimer timer;
        timer.start();
        const ReferenceFilm reference = referenceFor(film);
        if (reference.frames.empty()) {
            std::printf("%-28s skipped: %s\n", qPrintable(QFileInfo(film).fileName()),
                        qPrintable(reference.problem));
            continue;
        }
        const PlayerWalk walk = walkThrough(film, operations, seed, reference.isDamaged);
        std::printf("%-28s %5d operations %5d comparisons %7.1f s  %s\n",
                    qPrintable(QFileInfo(film).fileName()), walk.operations, walk.comparisons,
                    double(timer.elapsed()) / 1000.0, walk.faults.isEmpty() ? "right" : "WRONG");
        for (const QString& fault : walk.faults)
            std::printf("    %s\n", qPrintable(fault));
        std::fflush(stdout);
        faulty += walk.faults.isEmpty() ? 0 : 1;
    }
    std::printf("%d of %d films wrong\n", faulty, int(films.size()));
    return faulty == 0 ? 0 : 1;
}
