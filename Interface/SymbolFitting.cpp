#include "Interface/SymbolFitting.h"

#include <QRegularExpression>
#include <QString>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace stillwick {

namespace {

/// How one axis of the drawing is laid on pixels: a broken line through the places that were
/// fitted.
class AxisFit {
public:
    AxisFit(double scale, double middle) : m_scale(scale), m_middle(middle * scale) {}

    /// A line or an edge lies at that coordinate; `halfWidth` is half its stroke, in pixels.
    void add(double coordinate, double halfWidth) {
        const double place = coordinate * m_scale;
        // What is farther out decides where both would do: so the two sides mirror each other.
        const double outwards = place < m_middle ? -1 : 1;
        const double outer = toGrid(place + outwards * halfWidth) - outwards * halfWidth;
        const double inner = toGrid(place - outwards * halfWidth) + outwards * halfWidth;
        const bool takesOuter = std::abs(outer - place) <= std::abs(inner - place) + 1e-9;
        m_places[coordinate] = takesOuter ? outer : inner;
    }

    /// A line along the middle stays there, or the drawing would lean to one side.
    void keep(double coordinate) { m_places[coordinate] = coordinate * m_scale; }

    [[nodiscard]] double at(double coordinate) const {
        const auto above = m_places.lower_bound(coordinate);
        if (above == m_places.end())
            return beside(*m_places.rbegin(), coordinate);
        if (above->first == coordinate || above == m_places.begin())
            return beside(*above, coordinate);
        const auto below = std::prev(above);
        const double part = (coordinate - below->first) / (above->first - below->first);
        return below->second + part * (above->second - below->second);
    }

private:
    /// The nearest border between two pixels; of two as near, the one farther from the middle.
    [[nodiscard]] double toGrid(double place) const {
        return place < m_middle ? std::ceil(place - 0.5) : std::floor(place + 0.5);
    }
    [[nodiscard]] double beside(const std::pair<const double, double>& place,
                                double coordinate) const {
        return place.second + (coordinate - place.first) * m_scale;
    }

    double m_scale;
    double m_middle;
    std::map<double, double> m_places;
};

struct PathStep {
    QChar command;
    std::vector<double> numbers;
};

std::vector<PathStep> readPath(const QString& text) {
    static const QRegularExpression token(QStringLiteral("([A-Z])|(-?[0-9.]+)"));
    std::vector<PathStep> steps;
    for (auto found = token.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        if (match.hasCaptured(1))
            steps.push_back({match.captured(1).at(0), {}});
        else if (!steps.empty())
            steps.back().numbers.push_back(match.captured(2).toDouble());
    }
    return steps;
}

class Fitting {
public:
    Fitting(double viewBoxSide, double strokeWidth, int side)
        : m_scale(side / viewBoxSide), m_halfWidth(strokeWidth * m_scale / 2),
          m_middle(viewBoxSide / 2), m_x(m_scale, m_middle), m_y(m_scale, m_middle) {
        m_x.keep(0);
        m_y.keep(0);
        m_x.keep(viewBoxSide);
        m_y.keep(viewBoxSide);
    }

    void look(const QXmlStreamAttributes& attributes, QStringView element);
    [[nodiscard]] QXmlStreamAttributes fitted(const QXmlStreamAttributes& attributes,
                                              QStringView element) const;
    [[nodiscard]] double strokeWidth() const { return 2 * m_halfWidth; }

private:
    void mark(AxisFit& axis, double coordinate, double halfWidth) const {
        if (std::abs(coordinate - m_middle) < 0.01)
            axis.keep(coordinate);
        else
            axis.add(coordinate, halfWidth);
    }
    void lookAtPath(const QString& path, double halfWidth);
    [[nodiscard]] QString fittedPath(const QString& path) const;
    [[nodiscard]] QString fittedStep(const PathStep& step) const;

    double m_scale;
    double m_halfWidth;
    double m_middle;
    AxisFit m_x;
    AxisFit m_y;
};

void Fitting::lookAtPath(const QString& path, double halfWidth) {
    double x = 0;
    double y = 0;
    for (const PathStep& step : readPath(path)) {
        const std::vector<double>& numbers = step.numbers;
        if (step.command == u'H') {
            mark(m_y, y, halfWidth);
            x = numbers.at(0);
        } else if (step.command == u'V') {
            mark(m_x, x, halfWidth);
            y = numbers.at(0);
        } else if (numbers.size() >= 2) {
            x = numbers.at(numbers.size() - 2);
            y = numbers.back();
        }
    }
}

void Fitting::look(const QXmlStreamAttributes& attributes, QStringView element) {
    const auto number = [&](const char* name) {
        return attributes.value(QLatin1String(name)).toDouble();
    };
    const bool isStroked = attributes.value(QLatin1String("stroke")) != QLatin1String("none");
    const double halfWidth = isStroked ? m_halfWidth : 0;
    if (element == u"path") {
        lookAtPath(attributes.value(QLatin1String("d")).toString(), halfWidth);
    } else if (element == u"circle") {
        for (const double sign : {-1.0, 1.0}) {
            mark(m_x, number("cx") + sign * number("r"), halfWidth);
            mark(m_y, number("cy") + sign * number("r"), halfWidth);
        }
    } else if (element == u"rect") {
        for (const double part : {0.0, 1.0}) {
            mark(m_x, number("x") + part * number("width"), halfWidth);
            mark(m_y, number("y") + part * number("height"), halfWidth);
        }
    }
}

QString Fitting::fittedStep(const PathStep& step) const {
    QString text = step.command;
    const auto put = [&text](double number) {
        text += u' ' + QString::number(number, 'f', 3);
    };
    const std::vector<double>& numbers = step.numbers;
    if (step.command == u'H') {
        put(m_x.at(numbers.at(0)));
    } else if (step.command == u'V') {
        put(m_y.at(numbers.at(0)));
    } else if (step.command == u'A') {
        put(numbers.at(0) * m_scale);
        put(numbers.at(1) * m_scale);
        for (const std::size_t flag : {2U, 3U, 4U})
            text += u' ' + QString::number(numbers.at(flag));
        put(m_x.at(numbers.at(5)));
        put(m_y.at(numbers.at(6)));
    } else {
        for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
            put(m_x.at(numbers.at(i)));
            put(m_y.at(numbers.at(i + 1)));
        }
    }
    return text;
}

QString Fitting::fittedPath(const QString& path) const {
    QString text;
    for (const PathStep& step : readPath(path))
        text += fittedStep(step) + u' ';
    return text;
}

QXmlStreamAttributes Fitting::fitted(const QXmlStreamAttributes& attributes,
                                     QStringView element) const {
    const auto number = [&](const char* name) {
        return attributes.value(QLatin1String(name)).toDouble();
    };
    std::map<QString, QString> changed;
    const auto set = [&changed](const char* name, double value) {
        changed[QLatin1String(name)] = QString::number(value, 'f', 3);
    };
    if (element == u"path") {
        changed[QStringLiteral("d")] = fittedPath(attributes.value(QLatin1String("d")).toString());
    } else if (element == u"circle") {
        const double radius = number("r");
        const double left = m_x.at(number("cx") - radius);
        const double right = m_x.at(number("cx") + radius);
        const double top = m_y.at(number("cy") - radius);
        const double bottom = m_y.at(number("cy") + radius);
        set("cx", (left + right) / 2);
        set("cy", (top + bottom) / 2);
        set("r", (right - left + bottom - top) / 4);
    } else if (element == u"rect") {
        const double left = m_x.at(number("x"));
        const double top = m_y.at(number("y"));
        set("x", left);
        set("y", top);
        set("width", m_x.at(number("x") + number("width")) - left);
        set("height", m_y.at(number("y") + number("height")) - top);
        set("rx", number("rx") * m_scale);
    }
    QXmlStreamAttributes result;
    for (const QXmlStreamAttribute& attribute : attributes) {
        const auto found = changed.find(attribute.name().toString());
        result.append(attribute.name().toString(),
                      found == changed.end() ? attribute.value().toString() : found->second);
    }
    return result;
}

Fitting fittingOf(const QXmlStreamAttributes& root, int side) {
    const auto viewBox = root.value(QLatin1String("viewBox")).toString().split(u' ');
    return {viewBox.value(2).toDouble(), root.value(QLatin1String("stroke-width")).toDouble(),
            side};
}

QXmlStreamAttributes fittedRoot(const QXmlStreamAttributes& root, const Fitting& fitting,
                                int side) {
    QXmlStreamAttributes result;
    for (const char* kept : {"fill", "stroke", "stroke-linecap", "stroke-linejoin"})
        result.append(QLatin1String(kept), root.value(QLatin1String(kept)).toString());
    result.append(QStringLiteral("viewBox"), QStringLiteral("0 0 %1 %1").arg(side));
    result.append(QStringLiteral("stroke-width"), QString::number(fitting.strokeWidth()));
    return result;
}

} // namespace

QByteArray fitSymbolToPixels(const QByteArray& svg, int side) {
    QXmlStreamReader first(svg);
    if (!first.readNextStartElement())
        return svg;
    Fitting fitting = fittingOf(first.attributes(), side);
    const QXmlStreamAttributes root = fittedRoot(first.attributes(), fitting, side);
    while (first.readNextStartElement()) {
        fitting.look(first.attributes(), first.name());
        first.skipCurrentElement();
    }

    QByteArray result;
    QXmlStreamWriter writer(&result);
    QXmlStreamReader second(svg);
    second.readNextStartElement();
    writer.writeStartElement(QStringLiteral("svg"));
    writer.writeDefaultNamespace(QStringLiteral("http://www.w3.org/2000/svg"));
    writer.writeAttributes(root);
    while (second.readNextStartElement()) {
        writer.writeEmptyElement(second.name().toString());
        writer.writeAttributes(fitting.fitted(second.attributes(), second.name()));
        second.skipCurrentElement();
    }
    writer.writeEndElement();
    return result;
}

} // namespace stillwick
