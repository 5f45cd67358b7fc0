#pragma once

#include <QString>

#include "browser/page_probe.h"

namespace kibo {

/// What a test of a locator or text found, for the operator.
struct Verdict {
    bool found = false;
    QString text;
};

/// In words: how many elements a locator matches.
Verdict locatorVerdict(const Matches& matches);

/// Whether one of the notices that the page shows (`shown`, found by a locator) is one that `wanted` describes.
Verdict noticeVerdict(const QString& wanted, const Matches& shown);

/// An XPath to the elements whose own text holds one of the texts of `wanted`, which are separated by "|"; case is
/// ignored, and "*" stands for any text. Empty when `wanted` names no text.
QString locatorOfTexts(const QString& wanted);

}  // namespace kibo
