#pragma once

#include <QStringList>
#include <vector>

#include "base/settings.h"
#include "engine/attachment.h"

namespace kibo {

/// The files of the message in progress, ready on this computer before its chat is opened.
class MessageFiles {
 public:
    /// `fetch` may be empty: then messages with addresses fail.
    MessageFiles(const Settings& settings, FetchMedia fetch);

    /// What the columns name, media first: fetched where it is an address, and checked. The failure's text is for the
    /// operator.
    Result<std::vector<Attachment>> prepare(const QString& media, const QString& document);

    /// With `ClearTmp` "Y": removes what `prepare` has fetched since. Files that were there before stay.
    void removeFetched();

 private:
    Result<Attachment> prepareOne(FileColumn column, const QString& entry);
    qint64 mostBytes() const;

    const Settings& settings_;
    FetchMedia fetch_;
    QStringList fetched_;
};

}  // namespace kibo
