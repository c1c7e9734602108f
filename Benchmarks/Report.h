// What a benchmark measured, for people and for programs. One thread at a time.
#pragma once

#include <QString>

#include <vector>

namespace stillwick::benchmarks {

/// A list of measured figures, printed as one table: a row for each figure, a column for each case.
class Report final {
public:
    explicit Report(QString benchmark) : m_benchmark(std::move(benchmark)) {}

    void add(const QString& aCase, const QString& figure, double value, const QString& unit);

    /// Writes the table to the standard output.
    void print(const QString& title) const;
    /// Writes a JSON list of {"benchmark", "case", "figure", "value", "unit"}.
    /// Returns false where the file cannot be written.
    [[nodiscard]] bool writeJson(const QString& path) const;

private:
    struct Figure {
        QString aCase;
        QString figure;
        double value = 0;
        QString unit;
    };

    [[nodiscard]] QString cell(const QString& aCase, const QString& figure) const;

    QString m_benchmark;
    std::vector<Figure> m_figures;
};

} // namespace stillwick::benchmarks
