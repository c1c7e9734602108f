// Rows in sections, one after the other. Main thread.
#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QList>
#include <QString>
#include <QUuid>

#include <functional>
#include <optional>

namespace stillwick {

/// A small box with a picture, or with what stands for it.
struct ThumbnailBox {
    enum class Content { nothing, picture, progress, symbol };

    Content content = Content::nothing;
    QImage picture;
    QString symbol;
    bool isOnCheckerboard = false;
    int padding = 0; ///< pixels around the picture
};

/// What a row shows, from left to right.
struct ListRow {
    QList<ThumbnailBox> boxes;
    QString symbolBetween; ///< between two boxes
    QString text;
    QString badge; ///< a few characters at the right end; none when empty
    QString toolTip;
    QString accessibleText; ///< what a screen reader says; the text when empty
};

struct ListSection {
    QUuid id;
    QList<QUuid> rows;

    bool operator==(const ListSection&) const = default;
};

/// Flat: each section is a header row and then its rows. What a row shows is asked for when it is
/// needed.
class SectionedListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    using RowSource = std::function<ListRow(const QUuid&)>;

    struct Place {
        int section = -1;
        int offset = -1; ///< within the section; −1 for its header

        bool operator==(const Place&) const = default;
    };

    /// Rows of one section, on their way to another place in it.
    struct MovingRows {
        int section = -1;
        QList<int> offsets; ///< ascending
    };

    explicit SectionedListModel(RowSource source, QObject* parent = nullptr);

    /// Takes the new order. What stays keeps its selection; views hear only of what came, went and
    /// moved.
    void setSections(const QList<ListSection>& sections);
    [[nodiscard]] const QList<ListSection>& sections() const { return m_sections; }
    /// What that row shows has changed.
    void announceRow(const QUuid& row);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] QStringList mimeTypes() const override;
    /// Those of the rows that stand in the same section as the first.
    [[nodiscard]] QMimeData* mimeData(const QModelIndexList& rows) const override;
    /// What mimeData of this model gave; none for anything else, and where the rows are gone since.
    [[nodiscard]] std::optional<MovingRows> movingRows(const QMimeData& data) const;

    [[nodiscard]] bool isHeader(int row) const;
    [[nodiscard]] Place placeOf(int row) const;
    /// A row's id, or its section's for a header.
    [[nodiscard]] QUuid idOf(int row) const { return m_ids.at(row); }
    /// The index of a row or a header; invalid where there is none.
    [[nodiscard]] QModelIndex indexOf(const QUuid& id) const;
    [[nodiscard]] ListRow content(int row) const { return m_source(idOf(row)); }

private:
    void removeAllBut(const QHash<QUuid, int>& wanted);
    void reorder(const QHash<QUuid, int>& wanted);
    void insertMissing(const QList<QUuid>& wanted);
    void placeAll();

    RowSource m_source;
    QUuid m_token = QUuid::createUuid(); // tells its rows from another list's
    QList<ListSection> m_sections;
    QList<QUuid> m_ids;    // headers too
    QList<Place> m_places; // of each of them
    QHash<QUuid, int> m_rows;
};

} // namespace stillwick
