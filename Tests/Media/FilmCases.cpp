#include "FilmCases.h"

#include "Reference.h"

#include <QFileInfo>

#include <cctype>

namespace stillwick::testing {

std::ostream& operator<<(std::ostream& stream, const FilmCase& film) {
    return stream << film.path.toStdString();
}

std::vector<FilmCase> filmCases(const QString& folder, int amount) {
    std::vector<FilmCase> result;
    for (const QString& path : filmsIn(folder))
        result.push_back({path, amount});
    return result;
}

std::vector<FilmCase> realFilmCases(const QString& folder, int amount) {
    std::vector<FilmCase> result = filmCases(folder, amount);
    std::erase_if(result, [](const FilmCase& film) {
        return film.path.endsWith(QStringLiteral("/sound_only.mp4"));
    });
    return result;
}

std::string nameOfCase(const ::testing::TestParamInfo<FilmCase>& info) {
    std::string name = QFileInfo(info.param.path).fileName().toStdString();
    for (char& character : name) {
        if (!std::isalnum(static_cast<unsigned char>(character)))
            character = '_';
    }
    return name;
}

bool mayBeDamaged(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    return name.startsWith(QStringLiteral("damaged")) || name.startsWith(QStringLiteral("cut"));
}

} // namespace stillwick::testing
