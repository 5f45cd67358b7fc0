#pragma once

#include <QMimeData>
#include <memory>

#include "app/clipboard.h"

namespace kibo {

/// The desktop's clipboard.
class QtClipboard : public Clipboard {
 public:
    ~QtClipboard() override;

    void lend(const QString& text) override;
    void giveBack() override;

 private:
    QString lent_;
    std::unique_ptr<QMimeData> kept_;  ///< what was there before; none when nothing is lent
};

}  // namespace kibo
