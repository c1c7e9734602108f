// One still that an export could not write. Plain value, any thread.
#pragma once

#include <QString>
#include <QUuid>

namespace stillwick {

struct ExportFailure {
    QString timestamp;              ///< the still's time as it is displayed, "01:05.250"
    QString message;                ///< the error's description
    QUuid id = QUuid::createUuid(); ///< tells rows of the same words apart
};

} // namespace stillwick
