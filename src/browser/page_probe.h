#pragma once

#include <QString>
#include <QStringList>

#include "platform/result.h"

namespace kibo {

/// What a locator finds on the open page.
struct Matches {
    bool understood = true;  ///< false: neither XPath nor CSS to the browser
    int count = 0;
    int visible = 0;    ///< of the first 200: those that take up room on the page
    QStringList texts;  ///< as a person sees them, of the first 20 that have one, each cut to 300 characters
};

/// Tries locators out on the open page, for the operator who edits them. Not for the engine, which reads all that a
/// step needs in one look.
class PageProbe {
 public:
    PageProbe() = default;
    PageProbe(const PageProbe&) = delete;
    PageProbe& operator=(const PageProbe&) = delete;
    virtual ~PageProbe() = default;

    /// Counts what `locator` matches and frames it on the page for two seconds.
    /// Fails with ConnectionLost when no browser session is open.
    virtual Result<Matches> outline(const QString& locator) = 0;
    /// The open page's structure and how often each locator matches, without any text, name, number or address that the
    /// page shows. Fails likewise.
    virtual Result<QString> report() = 0;
};

}  // namespace kibo
