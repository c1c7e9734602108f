#include "Report.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <cstdio>

namespace stillwick::benchmarks {

void Report::add(const QString& aCase, const QString& figure, double value, const QString& unit) {
    m_figures.push_back({aCase, figure, value, unit});
}

QString Report::cell(const QString& aCase, const QString& figure) const {
    const auto found = std::find_if(m_figures.begin(), m_figures.end(), [&](const Figure& f) {
        return f.aCase == aCase && f.figure == figure;
    });
    if (found == m_figures.end())
        return QStringLiteral("-");
    const int decimals = found->unit == QStringLiteral("ms")         ? 1
                         : found->unit == QStringLiteral("pictures") ? 0
                                                                     : 2;
    return QString::number(found->value, 'f', decimals) + u' ' + found->unit;
}

void Report::print(const QString& title) const {
    QStringList cases;
    QStringList figures;
    for (const Figure& f : m_figures) {
        if (!cases.contains(f.aCase))
            cases.append(f.aCase);
        if (!figures.contains(f.figure))
            figures.append(f.figure);
    }
    qsizetype cellWidth = 14;
    for (const QString& aCase : cases)
        cellWidth = std::max(cellWidth, aCase.size() + 2);
    qsizetype width = 0;
    for (const QString& figure : figures)
        width = std::max(width, figure.size());
    QString text = title + u'\n' + QString(width, u' ');
    for (const QString& aCase : cases)
        text += aCase.rightJustified(cellWidth);
    for (const QString& figure : figures) {
        text += u'\n' + figure.leftJustified(width);
        for (const QString& aCase : cases)
            text += cell(aCase, figure).rightJustified(cellWidth);
    }
    std::printf("%s\n", qPrintable(text));
}

bool Report::writeJson(const QString& path) const {
    QJsonArray list;
    for (const Figure& f : m_figures) {
        list.append(QJsonObject{{QStringLiteral("benchmark"), m_benchmark},
                                {QStringLiteral("case"), f.aCase},
                                {QStringLiteral("figure"), f.figure},
                                {QStringLiteral("value"), f.value},
                                {QStringLiteral("unit"), f.unit}});
    }
    QFile file(path);
    const QByteArray text = QJsonDocument(list).toJson();
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush();
}

} // namespace stillwick::benchmarks
