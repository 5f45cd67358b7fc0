#include "screens/sql_samples.h"

namespace kibo {
namespace {

const QString kInto = QStringLiteral("INSERT INTO outbox (wa_mode, wa_no, wa_text, wa_media, wa_file )");
const QString kIntoWithTime =
    QStringLiteral("INSERT INTO outbox (wa_mode, wa_no, wa_text, wa_media, wa_file , wa_time)");

QString lines(const QString& first, const char* second) {
    return first + QStringLiteral("\r\n") + QLatin1String(second);
}

}  // namespace

QStringList messageTypes() {
    return {QStringLiteral("1 - Send TEXT Only"), QStringLiteral("2 - Send TEXT Scheduled"),
            QStringLiteral("3 - Send TEXT + IMAGE"), QStringLiteral("4 - Send TEXT + FILE")};
}

QString sampleStatement(const QString& messageType) {
    switch (messageType.isEmpty() ? 0 : messageType[0].unicode()) {
        case u'1':
            return lines(kInto, "VALUES (0, '6281200000001', 'SAMPLE TEXT #1', '', '' );");
        case u'2':
            return lines(kIntoWithTime,
                         "VALUES (0, '6281200000001', 'SAMPLE TEXT #2', '', '', '2020-11-27 21:38:59');");
        case u'3':
            return lines(kInto, "VALUES (0, '6281200000001', 'SAMPLE TEXT #3', 'd:/folder/gambar.jpg', '' );");
        case u'4':
            return lines(kInto, "VALUES (0, '6281200000001', 'SAMPLE TEXT #4', '', 'd:/folder/file.pdf' );");
        default:
            return {};
    }
}

QString testStatement() {
    return lines(kInto, "VALUES (0, '6281200000001', 'Hello.. Just testing for *Kibo*', '', '' );");
}

QString smsTrigger() {
    return QStringLiteral(
        "DELIMITER $$\n"
        "\n"
        "CREATE TRIGGER sendwa AFTER INSERT ON outbox\n"
        "FOR EACH ROW\n"
        "BEGIN\n"
        "  INSERT INTO kibo.outbox\n"
        "    (wa_mode, wa_no, wa_text, wa_media, wa_file)\n"
        "  VALUES\n"
        "    ('0', NEW.DestinationNumber, NEW.Text, '', '');\n"
        "END$$\n"
        "\n"
        "DELIMITER ;\n");
}

}  // namespace kibo
