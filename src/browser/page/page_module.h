#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>

#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "browser/webdriver/command.h"

/// What runs in the chat page: the files of this folder, as one script that begins once in each document and that
/// commands call. Nothing is pasted into it: what differs from call to call is passed as an argument.
namespace kibo::page_module {

/// Puts it into a document; does nothing in one that has it already.
QString script();
/// Takes it out again, with all that it has added to the page.
webdriver::ExecuteScript leave();

/// What the caller has heard of the document already, so that answers needn't repeat it.
struct Heard {
    int serial = 0;  ///< of the newest conversation
    int clicks = 0;  ///< on the planted link
};
/// Calls the command of this name. The answer is `kAbsent` or `kOtherLocators` where it was not carried out.
webdriver::ExecuteScript call(const ElementTable& elements, const Heard& heard, const QString& name,
                              const QJsonArray& arguments = {});
/// Hands the locators over, which calls go by from then on, and to a new document what is known of messages.
webdriver::ExecuteScript handOver(const ElementTable& elements, const KnownMessages& known = {});

inline constexpr const char* kAbsent = "absent";
inline constexpr const char* kOtherLocators = "locators";

/// A locator as commands take it: {xpath: bool, text: string}, and for one that ends in the name of a text between
/// braces that text, as "words".
QJsonObject locatorJson(const ElementTable& elements, const QString& locator);

}  // namespace kibo::page_module
