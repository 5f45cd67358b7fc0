#pragma once

#include <QString>

namespace kibo {

/// Column `tipe`.
enum class RuleKind { Text = 0, Welcome = 1, NotFound = 2, Back = 3, End = 4 };

inline const QString kExactLogic = QStringLiteral("="), kContainsLogic = QStringLiteral("%");

/// A row of `autochat`: what is answered to which message.
struct Rule {
    qint64 id = 0;         ///< `rowid`; 0: not stored yet
    QString profile = {};  ///< `PROFIL`
    QString keyword = {};
    QString previous = {};          ///< `previd`: the rule that must have answered just before; empty: none
    QString logic = kExactLogic;    ///< the message is the keyword, or it contains it
    QString answer = {};            ///< `answer`
    QString media = {}, file = {};  ///< `wa_media`, `wa_file`: sent along
    QString program = {};           ///< `run_exe`
    QString script = {};            ///< `exec_php`: an address
    bool answersByScript = false;   ///< `respon`: the reply is what the script returns
    bool expectsNext = false;       ///< `neednext`: a rule follows whose `previous` is this one
    RuleKind kind = RuleKind::Text;

    friend bool operator==(const Rule&, const Rule&) = default;
};

}  // namespace kibo
