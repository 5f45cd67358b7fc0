#pragma once

#include <QTemporaryDir>
#include <optional>

#include "base/clock.h"
#include "base/error_policy.h"
#include "base/settings.h"
#include "browser/browser.h"
#include "browser/element_table.h"
#include "browser/web_page.h"
#include "standin/stand_in.h"

namespace kibo::bench {

/// Runs a program to its end; what it prints goes nowhere. Throws std::runtime_error when it fails.
void runQuietly(const QString& program, const QStringList& arguments);
/// The same, with what it prints in `file`.
void runInto(const QString& file, const QString& program, const QStringList& arguments);

/// Makes the embedded store and the element store in `folder`.
void createStores(const QString& folder);
/// The same, and what the element store holds.
ElementTable elementsIn(const QString& folder);

/// Settings that run the browser without a window on the stand-in's page.
Settings standInSettings(const standin::StandIn& standIn);

/// The stand-in's page, answering without delays of its own, in a browser of its own. All of it is in one temporary
/// folder and ends with the object.
class BrowserPage {
 public:
    /// `clock` must outlive the page. Throws std::runtime_error when the browser can't be started.
    explicit BrowserPage(Clock& clock);

    /// Opens the chat with `number` by a click on the planted link and waits until its message box has the focus.
    void openChat(const QString& number);

    QTemporaryDir folder;
    standin::StandIn standIn;
    Settings settings;
    ErrorPolicy policy;
    ElementTable elements;
    Browser browser;
    WebPage page;

 private:
    Clock& clock_;
};

}  // namespace kibo::bench
