#pragma once

#include <QStringList>
#include <vector>

#include "base/settings.h"
#include "engine/attachment.h"

namespace kibo {

/// The files of the message in progress, ready on this computer before its chat is opened.
class MessageFiles {
 public:
    /// `fetch` may be empty: then messages with addresses fail. So may `release`.
    MessageFiles(const Settings& settings, FetchMedia fetch, ReleaseMedia release);

    /// What the columns name, media first: fetched where it is an address, and checked. The failure's text is for the
    /// operator.
    Result<std::vector<Attachment>> prepare(const QString& media, const QString& document);

    /// Lets go of what `prepare` has fetched since, and removes it with `ClearTmp` "Y". Files that were there before
    /// stay.
    void removeFetched();

 private:
    Result<Attachment> prepareOne(FileColumn column, const QString& entry);
    qint64 mostBytes() const;

    const Settings& settings_;
    FetchMedia fetch_;
    ReleaseMedia release_;
    QStringList fetched_;
};

}  // namespace kibo
