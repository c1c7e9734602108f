#include "FilmArguments.h"

#include "Reference.h"

#include <QFileInfo>
#include <QStringList>

namespace stillwick::testing {

FilmArguments readFilmArguments(int count, char** values, const char* amountOption,
                                int amountOtherwise) {
    QStringList arguments;
    for (int i = 1; i < count; ++i)
        arguments.append(QString::fromLocal8Bit(values[i]));
    FilmArguments result;
    result.amount = amountOtherwise;
    while (!arguments.isEmpty()) {
        const QString argument = arguments.takeFirst();
        if (argument == QString::fromLatin1(amountOption) && !arguments.isEmpty())
            result.amount = arguments.takeFirst().toInt();
        else if (argument == QStringLiteral("--seed") && !arguments.isEmpty())
            result.seed = arguments.takeFirst().toUInt();
        else if (QFileInfo(argument).isDir())
            for (const QString& film : filmsIn(argument))
                result.films.push_back(film);
        else
            result.films.push_back(argument);
    }
    return result;
}

} // namespace stillwick::testing
