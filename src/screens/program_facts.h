#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace kibo {

/// Something to know about this installation, as a name and what it is.
struct ProgramFact {
    QString name, value;
};

/// Library, licence and what it is there for, of all that the Windows package carries inside the programs. Elsewhere
/// they are the system's.
QList<QStringList> shippedLibraries();

/// `facts` as lines of text for somebody else: what paths tell of the person whose home folder is `home` is left out.
QString factsForReport(const QList<ProgramFact>& facts, const QString& home);

/// Texts that are typed out together, letter by letter.
class TypedLines {
 public:
    explicit TypedLines(QStringList whole = {}) : whole_(std::move(whole)) {}

    /// One more character of each. False when the first one is complete: all are shown whole then.
    bool tick();
    QString shown(qsizetype line) const { return whole_.value(line).left(count_); }

 private:
    QStringList whole_;
    qsizetype count_ = 0;
};

}  // namespace kibo
