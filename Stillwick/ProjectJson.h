// Projects as text. Pure functions, any thread.
#pragma once

#include "Stillwick/ProjectFile.h"

#include <QByteArray>
#include <QByteArrayView>

namespace stillwick {

/// The longest text that is written or taken for a project, in bytes: some two hundred thousand
/// marks.
inline constexpr qint64 longestProject = qint64(100) << 20;

/// The project as JSON in UTF-8: one key a line, keys in ascending order, whole numbers exact over
/// 64 bits, others so that they read back to the same bits, bytes as base64. A field without a
/// value is left out. `decodeProject` reads all that this returns.
/// *Errors*: ProjectError NotEncodable where a number is not finite, TooLarge past
/// `longestProject`.
/// *Source*: RFC 8259 (JSON), RFC 4648 (base64).
[[nodiscard]] QByteArray encodeProject(const ProjectFile& project);

/// The project in the text. The order of keys does not matter and keys that are not a project's are
/// passed over; of a key given twice the last counts. Whatever else is not as a project has it
/// makes the whole text unreadable. Needs memory for the records alone, whatever the text.
/// *Errors*: ProjectError of any category but NotEncodable.
[[nodiscard]] ProjectFile decodeProject(QByteArrayView text);

} // namespace stillwick
