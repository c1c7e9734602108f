#include "Stillwick/JsonWriter.h"
#include "Stillwick/ProjectJson.h"
#include "Stillwick/ProjectKeys.h"

namespace stillwick {

namespace {

class Encoder {
public:
    [[nodiscard]] QByteArray encode(const ProjectFile& project) {
        write(project);
        return m_json.take();
    }

private:
    template <typename Record>
    void write(const Record& record) {
        m_json.beginObject();
        std::apply([&](const auto&... keys) { (writeField(keys.name, record.*keys.field), ...); },
                   projectKeys<Record>);
        m_json.endObject();
    }

    template <typename Field>
    void writeField(const char* name, const Field& field) {
        m_json.key(name);
        write(field);
    }

    template <typename Field>
    void writeField(const char* name, const std::optional<Field>& field) {
        if (field)
            writeField(name, *field);
    }

    template <typename Item>
    void write(const QList<Item>& items) {
        m_json.beginList();
        for (const Item& item : items) {
            m_json.item();
            write(item);
        }
        m_json.endList();
    }

    void write(const QPointF& point) { write(QList<double>{point.x(), point.y()}); }
    void write(const QUuid& id) { write(id.toString(QUuid::WithoutBraces).toUpper()); }
    void write(AnnotationKind kind) { write(rawValue(kind)); }
    void write(const QByteArray& bytes) { write(QString::fromLatin1(bytes.toBase64())); }
    void write(const QString& text) { m_json.write(text); }
    void write(double number) { m_json.write(number); }
    void write(qint64 number) { m_json.write(number); }
    void write(qint32 number) { m_json.write(qint64(number)); }
    void write(bool flag) { m_json.write(flag); }

    JsonWriter m_json{longestProject};
};

} // namespace

QByteArray encodeProject(const ProjectFile& project) {
    return Encoder().encode(project);
}

} // namespace stillwick
