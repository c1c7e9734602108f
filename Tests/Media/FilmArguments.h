// What the proofs by hand are told on the command line.
#pragma once

#include <QString>

#include <vector>

namespace stillwick::testing {

struct FilmArguments {
    int amount = 0;
    unsigned seed = 1;
    std::vector<QString> films; ///< folders replaced by the films in them
};

/// Reads [AMOUNT-OPTION N] [--seed N] FILM-OR-FOLDER…
[[nodiscard]] FilmArguments readFilmArguments(int count, char** values, const char* amountOption,
                                              int amountOtherwise);

} // namespace stillwick::testing
