#include "support/mariadb_server.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>
#include <fstream>
#include <stdexcept>

#include "support/stores.h"

namespace kibo::test {
namespace {

int freePort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(fd);
    return ntohs(address.sin_port);
}

/// The server refuses to run as root unless told to.
QStringList asThisUser() {
    return ::geteuid() == 0 ? QStringList{QStringLiteral("--user=root")} : QStringList{};
}

}  // namespace

QString MariaDbServer::password() {
    return QStringLiteral("pa;ss}w{örd");
}

MariaDbServer& MariaDbServer::shared() {
    static MariaDbServer server;
    return server;
}

MariaDbServer::MariaDbServer() : port_(freePort()) {
    const QString data = QStringLiteral("--datadir=") + folder_.filePath(QStringLiteral("data"));
    outputOf(QStringLiteral("mariadb-install-db"),
             QStringList{QStringLiteral("--no-defaults"), data, temporary(), QStringLiteral("--skip-test-db"),
                         QStringLiteral("--auth-root-authentication-method=normal")} +
                 asThisUser());
    start();
    const std::string folder = folder_.path().toStdString();
    std::ofstream(folder + "/odbcinst.ini") << "[MYSQL ODBC 5.1 Driver]\nDriver=libmaodbc.so\nThreading=0\n";
    std::ofstream(folder + "/odbc.ini") << "[kibo_test]\nDriver=MYSQL ODBC 5.1 Driver\nSERVER=127.0.0.1\nPORT=" << port_
                                        << "\nDATABASE=kibo\n";
    ::setenv("ODBCSYSINI", folder.c_str(), 1);
    ::setenv("ODBCINI", (folder + "/odbc.ini").c_str(), 1);
    const QString account = QStringLiteral(
        "CREATE USER kibo@'%' IDENTIFIED BY '%1'; CREATE DATABASE kibo; GRANT ALL ON kibo.* TO kibo@'%'; USE kibo;");
    run(account.arg(password()) + QStringLiteral("\nsource " KIBO_SOURCE_DIR "/src/store/schema/mysql.sql"));
}

MariaDbServer::~MariaDbServer() {
    stop();
}

void MariaDbServer::start() {
    // setpriv lets the kernel end the server when this program ends in any way.
    server_.setStandardOutputFile(folder_.filePath(QStringLiteral("log")), QIODevice::Append);
    server_.setStandardErrorFile(folder_.filePath(QStringLiteral("log")), QIODevice::Append);
    // What was committed survives the server, as it must when a test kills it, but not the computer.
    const QString arguments = QStringLiteral(
        "--pdeathsig KILL mariadbd --no-defaults --bind-address=127.0.0.1 --skip-name-resolve --port=%1 "
        "--innodb-buffer-pool-size=32M --innodb-log-file-size=16M --innodb-flush-log-at-trx-commit=2 "
        "--innodb-flush-method=nosync --sync-frm=0");
    server_.start(QStringLiteral("setpriv"),
                  arguments.arg(port_).split(u' ') +
                      QStringList{QStringLiteral("--datadir=") + folder_.filePath(QStringLiteral("data")),
                                  QStringLiteral("--socket=") + socket(), temporary()} +
                      asThisUser());
    for (const QDeadlineTimer limit(60'000); !limit.hasExpired() && server_.state() != QProcess::NotRunning;) {
        QProcess ping;
        ping.start(QStringLiteral("mariadb-admin"), client() + QStringList{QStringLiteral("ping")});
        if (ping.waitForFinished() && ping.exitCode() == 0) return;
        QThread::msleep(50);
    }
    QFile log(folder_.filePath(QStringLiteral("log")));
    if (!log.open(QIODevice::ReadOnly)) throw std::runtime_error("the server wrote no log");
    throw std::runtime_error("the server does not start: " + log.readAll().right(2000).toStdString());
}

void MariaDbServer::stop() {
    server_.terminate();
    if (!server_.waitForFinished(30000)) kill();
}

void MariaDbServer::kill() {
    server_.kill();
    server_.waitForFinished();
}

Settings MariaDbServer::settings(bool dsn, Settings settings) const {
    settings.UseMDB = QStringLiteral("N");
    settings.user = QStringLiteral("kibo");
    settings.password = password();
    settings.MySQL_WithoutDSN = dsn ? QStringLiteral("N") : QStringLiteral("Y");
    if (dsn) {
        settings.dsn = QStringLiteral("kibo_test");
        return settings;
    }
    settings.MySQL_Server = QStringLiteral("127.0.0.1");
    settings.MySQL_DB = QStringLiteral("kibo");
    settings.Port = QString::number(port_);
    return settings;
}

QString MariaDbServer::run(const QString& sql) {
    QStringList arguments = client();
    arguments << QStringLiteral("-N") << QStringLiteral("-B") << QStringLiteral("--default-character-set=utf8mb4");
    if (QFile::exists(folder_.filePath(QStringLiteral("data/kibo")))) arguments.append(QStringLiteral("kibo"));
    return outputOf(QStringLiteral("mariadb"), arguments, sql);
}

void MariaDbServer::empty() {
    QString sql;
    const QString all = run(QStringLiteral("SHOW FULL TABLES WHERE Table_type = 'BASE TABLE'"));
    for (const QString& table : all.split(u'\n', Qt::SkipEmptyParts))
        sql += QStringLiteral("TRUNCATE TABLE %1;").arg(table.section(u'\t', 0, 0));
    run(sql);
}

}  // namespace kibo::test
