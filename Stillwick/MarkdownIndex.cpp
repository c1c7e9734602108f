#include "Stillwick/MarkdownIndex.h"

namespace stillwick::MarkdownIndex {

QString imageLine(const QString& name, const CMTime& time, const QString& note) {
    // Put together piece by piece: a name with %1 in it is a name.
    QString line = QStringLiteral("- [") + name + QStringLiteral("](") + name +
                   QStringLiteral(") — ") + time.displayString();
    const QString flattened = QString(note).replace(u'\n', u' ').trimmed();
    if (!flattened.isEmpty())
        line += QStringLiteral("\n  > ") + flattened;
    return line;
}

QString markdown(const QString& name, const QString& notes, const QStringList& imageLines) {
    QString text = QStringLiteral("# ") + name + QStringLiteral("\n\n");
    if (!notes.isEmpty())
        text += notes + QStringLiteral("\n\n");
    text += QStringLiteral("## Images\n");
    text += imageLines.isEmpty() ? QStringLiteral("_Aucune image_") : imageLines.join(u'\n');
    return text + u'\n';
}

} // namespace stillwick::MarkdownIndex
