#pragma once

#include <QString>

#include "base/http_get.h"

namespace kibo {

/// The service from which new locators are fetched when the page has changed, and to which they are uploaded. Each
/// call is one GET of a few seconds at most.
class ElementService {
 public:
    /// `server`: host or http(s) address of the service, with a path where it has one; a bare host is asked over
    /// https. `settingsFile` keeps the installation's identifier.
    ElementService(const QString& server, QString settingsFile);

    bool isOff() const { return base_.isEmpty(); }

    /// The service's value of `name`. Fails with Protocol for an answer that can't be a locator.
    Result<QString> FetchElement(const QString& name) const;
    /// Gives `value` to the service as the new value of `name`; every "+" arrives as "plus".
    Result<void> UploadElement(const QString& value, const QString& name) const;

    /// Identifies this installation to the service: a random UUID, made at the first call and kept in the settings
    /// file as `InstallId`.
    QString installId() const;

 private:
    QString base_;  // without a slash at its end
    QString settingsFile_;
};

}  // namespace kibo
