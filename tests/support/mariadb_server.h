#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>

#include "base/settings.h"

namespace kibo::test {

/// A real MariaDB server for one test program: own data folder, free loopback port, own ODBC registration (driver
/// name "MYSQL ODBC 5.1 Driver" and data source "kibo_test"), database "kibo" with the shipped schema, user "kibo".
/// Starting takes a few seconds, so share one. Ends with the program, also when that crashes.
class MariaDbServer {
 public:
    /// The program's server, started at the first call. Throws std::runtime_error where it can't be.
    static MariaDbServer& shared();

    MariaDbServer();
    ~MariaDbServer();

    /// `settings` with this server as the main store: with data source name, or with driver name and server.
    Settings settings(bool dsn, Settings settings = {}) const;

    /// Runs statements in the mariadb program, as outside programs do; gives its output (tab-separated).
    QString run(const QString& sql);
    /// Deletes all rows of all tables and starts their ids from 1.
    void empty();

    /// Takes the server away and brings it back, with its data, on the same port.
    void stop();
    void start();
    /// The same without a chance to tidy up.
    void kill();

    int port() const { return port_; }
    qint64 processId() const { return server_.processId(); }
    static QString password();

 private:
    /// A server that starts removes the temporary tables of others from a folder that it shares with them.
    QString temporary() const { return QStringLiteral("--tmpdir=") + folder_.path(); }
    QString socket() const { return folder_.filePath(QStringLiteral("s")); }
    /// How client programs reach the server.
    QStringList client() const {
        return {QStringLiteral("--no-defaults"), QStringLiteral("-S"), socket(), QStringLiteral("-uroot")};
    }

    QTemporaryDir folder_;
    int port_;
    QProcess server_;
};

}  // namespace kibo::test
