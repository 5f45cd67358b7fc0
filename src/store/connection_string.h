#pragma once

#include <QList>
#include <QString>
#include <utility>

#include "base/settings.h"

namespace kibo {

/// A database connection text, "Key=Value;Key=Value": the form that ODBC and OLE DB share. Keys are compared without
/// regard to case, blanks around keys and bare values don't count, and of a repeated key the first one holds, as with
/// ODBC. A value may stand in {braces}, "double" or 'single' quotes (the closing character doubled where it belongs to
/// the value) and then may hold anything. A text without any "=" is the name of a data source.
class ConnectionString {
 public:
    using Attribute = std::pair<QString, QString>;

    static ConnectionString parse(const QString& text);

    /// Empty where the key is missing.
    QString value(const QString& key) const;
    bool has(const QString& key) const;
    const QList<Attribute>& attributes() const { return attributes_; }

    /// `value` as it may stand in an ODBC text: in braces only where it could not stand bare.
    static QString quoted(const QString& value);

 private:
    QList<Attribute> attributes_;
};

/// What opens a connection. User and password are arguments of their own only with a data source name.
struct ConnectionRequest {
    QString text;
    QString user = {};
    QString password = {};
};

/// The main store of `settings`: the local file when `UseMDB` is "Y", whatever the MySQL settings say; else MySQL by
/// data source name, or by driver name and server when `MySQL_WithoutDSN` is "Y".
ConnectionRequest mainStoreRequest(const Settings& settings, const QString& programFolder);

/// The name under which Qt's ODBC driver reaches the server that `request` names.
QString serverConnection(const ConnectionRequest& request);

/// Which store `request` names, for the operator: never user or password.
struct StoreName {
    QString name;   ///< the server, else its data source, else the local file, as short as it can be told
    QString place;  ///< the same with all that tells it from others: database and port, or the whole path
};
StoreName storeName(const ConnectionRequest& request);

/// The element store in `file` (a whole path).
ConnectionRequest elementStoreRequest(const QString& file);

/// Path of `name` in the program folder, in the spelling that connection texts use on every system.
QString inProgramFolder(const QString& programFolder, const QString& name);

}  // namespace kibo
