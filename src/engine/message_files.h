#pragma once

#include <QStringList>
#include <map>
#include <vector>

#include "base/settings.h"
#include "engine/attachment.h"

namespace kibo {

/// The files of the message in progress: fetched while it still waits in the queue, checked before its chat is opened.
class MessageFiles {
 public:
    /// `fetch` may be empty: then messages with addresses fail. So may `release`.
    MessageFiles(const Settings& settings, FetchMedia fetch, ReleaseMedia release);

    /// Whether a column holds an address that `fetch` was not asked for since the last `removeFetched`.
    bool needFetching(const QString& media, const QString& document) const;
    /// Fetches what the columns name by address. What fails is told by `prepare`.
    void fetch(const QString& media, const QString& document);

    /// What the columns name, media first, checked. The failure's text is for the operator.
    Result<std::vector<Attachment>> prepare(const QString& media, const QString& document);

    /// Lets go of what was fetched, and removes it with `ClearTmp` "Y". Files that were there before stay.
    void removeFetched();

 private:
    QStringList unfetched(const QString& media, const QString& document) const;
    Result<Attachment> prepareOne(FileColumn column, const QString& entry) const;

    const Settings& settings_;
    FetchMedia fetch_;
    std::map<QString, Result<QString>> fetched_;  // by address: the file, or why there is none
    ReleaseMedia release_;
};

}  // namespace kibo
