// Films as the cases of a parametrised test.
#pragma once

#include <gtest/gtest.h>

#include <QString>

#include <ostream>
#include <string>
#include <vector>

namespace stillwick::testing {

/// A film, and how much is to be done with it.
struct FilmCase {
    QString path;
    int amount = 0;
};

std::ostream& operator<<(std::ostream& stream, const FilmCase& film);

[[nodiscard]] std::vector<FilmCase> filmCases(const QString& folder, int amount);
/// Without those that are not proved but refused, for they have no picture.
[[nodiscard]] std::vector<FilmCase> realFilmCases(const QString& folder, int amount);
/// The file's name, of letters and digits alone.
[[nodiscard]] std::string nameOfCase(const ::testing::TestParamInfo<FilmCase>& info);
/// True for films whose linear decode meets errors: what concealment makes is not repeatable.
[[nodiscard]] bool mayBeDamaged(const QString& path);

} // namespace stillwick::testing
