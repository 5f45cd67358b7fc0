#include "inbox/incoming_row.h"

#include <QCryptographicHash>
#include <QStringList>

namespace kibo {

QByteArray IncomingRow::likeness() const {
    const QString stored = QStringList{PROFIL, wa_no, SUB_NO, wa_time, wa_text}.join(QChar(QChar::Null));
    return QCryptographicHash::hash(stored.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
}

}  // namespace kibo
