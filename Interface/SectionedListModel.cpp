#include "Interface/SectionedListModel.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

QList<QUuid> flattened(const QList<ListSection>& sections) {
    QList<QUuid> ids;
    for (const ListSection& section : sections) {
        ids.push_back(section.id);
        ids.append(section.rows);
    }
    return ids;
}

QHash<QUuid, int> positions(const QList<QUuid>& ids) {
    QHash<QUuid, int> result;
    result.reserve(ids.size());
    for (int i = 0; i < int(ids.size()); ++i)
        result.insert(ids.at(i), i);
    return result;
}

} // namespace

SectionedListModel::SectionedListModel(RowSource source, QObject* parent)
    : QAbstractListModel(parent), m_source(std::move(source)) {}

void SectionedListModel::setSections(const QList<ListSection>& sections) {
    if (sections == m_sections)
        return;
    const QList<QUuid> ids = flattened(sections);
    const QHash<QUuid, int> wanted = positions(ids);
    Q_ASSERT(wanted.size() == ids.size()); // every id once
    removeAllBut(wanted);
    reorder(wanted);
    m_sections = sections;
    insertMissing(ids);
    placeAll();
}

void SectionedListModel::removeAllBut(const QHash<QUuid, int>& wanted) {
    for (auto last = int(m_ids.size()) - 1; last >= 0; --last) {
        if (wanted.contains(m_ids.at(last)))
            continue;
        int first = last;
        while (first > 0 && !wanted.contains(m_ids.at(first - 1)))
            --first;
        beginRemoveRows({}, first, last);
        m_ids.remove(first, last - first + 1);
        m_places.remove(first, last - first + 1);
        m_rows = positions(m_ids);
        endRemoveRows();
        last = first;
    }
}

void SectionedListModel::reorder(const QHash<QUuid, int>& wanted) {
    const auto comesFirst = [&wanted](const QUuid& one, const QUuid& other) {
        return wanted.value(one) < wanted.value(other);
    };
    if (std::ranges::is_sorted(m_ids, comesFirst))
        return;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    QList<QUuid> held;
    for (const QModelIndex& persistent : before)
        held.push_back(m_ids.at(persistent.row()));
    QHash<QUuid, Place> places;
    for (int row = 0; row < int(m_ids.size()); ++row)
        places.insert(m_ids.at(row), m_places.at(row));
    std::ranges::sort(m_ids, comesFirst);
    m_rows = positions(m_ids);
    for (int row = 0; row < int(m_ids.size()); ++row)
        m_places[row] = places.value(m_ids.at(row));
    QModelIndexList after;
    for (const QUuid& id : held)
        after.push_back(createIndex(m_rows.value(id), 0));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void SectionedListModel::insertMissing(const QList<QUuid>& wanted) {
    for (int first = 0; first < int(wanted.size()); ++first) {
        if (m_rows.contains(wanted.at(first)))
            continue;
        int last = first;
        while (last + 1 < int(wanted.size()) && !m_rows.contains(wanted.at(last + 1)))
            ++last;
        // Of the old ones those before `first` are all there, in order.
        beginInsertRows({}, first, last);
        m_ids = wanted.mid(0, last + 1) + m_ids.mid(first);
        placeAll();
        endInsertRows();
        first = last;
    }
}

/// Where each id stands; in the midst of a change those that are still missing count as if they
/// were there.
void SectionedListModel::placeAll() {
    m_rows = positions(m_ids);
    QHash<QUuid, Place> places;
    for (int section = 0; section < int(m_sections.size()); ++section) {
        places.insert(m_sections.at(section).id, {section, -1});
        for (int offset = 0; offset < int(m_sections.at(section).rows.size()); ++offset)
            places.insert(m_sections.at(section).rows.at(offset), {section, offset});
    }
    m_places.clear();
    m_places.reserve(m_ids.size());
    for (const QUuid& id : std::as_const(m_ids))
        m_places.push_back(places.value(id));
}

void SectionedListModel::announceRow(const QUuid& row) {
    if (const QModelIndex changed = indexOf(row); changed.isValid())
        emit dataChanged(changed, changed);
}

int SectionedListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_ids.size());
}

QVariant SectionedListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || isHeader(index.row()))
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return content(index.row()).text;
    case Qt::ToolTipRole:
        return content(index.row()).toolTip;
    case Qt::AccessibleTextRole: {
        const ListRow row = content(index.row());
        return row.accessibleText.isEmpty() ? row.text : row.accessibleText;
    }
    default:
        return {};
    }
}

Qt::ItemFlags SectionedListModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || isHeader(index.row()))
        return Qt::NoItemFlags; // the header's own widgets take what is meant for it
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled |
           Qt::ItemNeverHasChildren;
}

QStringList SectionedListModel::mimeTypes() const {
    return {QStringLiteral("application/x-stillwick-rows")};
}

QMimeData* SectionedListModel::mimeData(const QModelIndexList& rows) const {
    if (rows.isEmpty())
        return nullptr;
    const int section = placeOf(rows.first().row()).section;
    QList<QUuid> moving;
    for (const QModelIndex& row : rows) {
        if (placeOf(row.row()).section == section)
            moving.push_back(idOf(row.row()));
    }
    QByteArray payload;
    QDataStream stream(&payload, QIODevice::WriteOnly);
    stream << m_token << moving;
    auto* result = new QMimeData;
    result->setData(mimeTypes().constFirst(), payload);
    return result;
}

std::optional<SectionedListModel::MovingRows>
SectionedListModel::movingRows(const QMimeData& data) const {
    QDataStream stream(data.data(mimeTypes().constFirst()));
    QUuid token;
    QList<QUuid> moving;
    stream >> token >> moving;
    if (stream.status() != QDataStream::Ok || token != m_token)
        return std::nullopt;
    MovingRows rows;
    for (const QUuid& id : moving) {
        const QModelIndex index = indexOf(id);
        if (!index.isValid())
            continue;
        const Place place = placeOf(index.row());
        if (rows.section < 0)
            rows.section = place.section;
        if (place.section == rows.section)
            rows.offsets.push_back(place.offset);
    }
    std::ranges::sort(rows.offsets);
    return rows.offsets.isEmpty() ? std::nullopt : std::optional(rows);
}

bool SectionedListModel::isHeader(int row) const {
    return m_places.at(row).offset < 0;
}

SectionedListModel::Place SectionedListModel::placeOf(int row) const {
    return m_places.at(row);
}

QModelIndex SectionedListModel::indexOf(const QUuid& id) const {
    const auto found = m_rows.constFind(id);
    return found == m_rows.cend() ? QModelIndex() : createIndex(*found, 0);
}

} // namespace stillwick
