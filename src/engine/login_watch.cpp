#include "engine/login_watch.h"

#include <QDir>
#include <QImage>

#include "base/log.h"
#include "base/profile_number.h"

namespace kibo {
namespace {

constexpr qint64 kUnreachablePauseMs = 5'000;
constexpr qint64 kOtherPagePauseMs = 30'000;
constexpr qint64 kUseHerePauseMs = 10'000;
// A large account loads for minutes after its first login; loading anew would make it begin again.
constexpr qint64 kBlankHintMs = 60'000;
constexpr qint64 kBlankLimitMs = 300'000;
const QString kLoginCode = QStringLiteral("update web_user set qr = ? where id = ?");
const QString kWaitingCode = QStringLiteral("wait");

}  // namespace

LoginWatch::LoginWatch(GatewayState& state, const Settings& settings, Database& database, ChatPage& page,
                       const Clock& clock, QString programFolder)
    : state_(state),
      settings_(settings),
      database_(database),
      page_(page),
      clock_(clock),
      programFolder_(std::move(programFolder)) {}

QString LoginWatch::tick(const PageLook& look) {
    if (look.qrCodes != 1) {
        hidePicture();
        publish(kWaitingCode);
        return awaitPage(look);
    }
    blankSinceMs_.reset();
    publish(look.qrData);
    if (isYes(settings_.CaptureQR)) showPicture();
    state_.Timer_cekURL.setEnabled(false);
    state_.cmd_STOP.enabled = true;
    // The expired code stays in the page until the new one is drawn; nobody is to scan it.
    if (look.qrReloads == 1 && page_.clickQrReload()) publish(kWaitingCode);
    return QStringLiteral("Waiting for login");
}

void LoginWatch::loggedIn() {
    hidePicture();
    blankSinceMs_.reset();
    askedMs_.reset();
}

QString LoginWatch::awaitPage(const PageLook& look) {
    if (look.presence == PageLook::Presence::Gone) return QStringLiteral("The browser has gone");
    if (look.noPage) return bringBack(QStringLiteral("The page can't be reached"), kUnreachablePauseMs);
    if (!look.otherSite.isEmpty())
        return bringBack(QStringLiteral("The browser shows another page, %1").arg(look.otherSite), kOtherPagePauseMs);
    if (look.errorPage) return bringBack(QStringLiteral("The page shows an error"), kOtherPagePauseMs);
    if (look.useHereButtons > 0) {
        if (due(kUseHerePauseMs)) {
            log::warning("engine", QStringLiteral("WhatsApp is open in another window; it is used here again"));
            page_.clickUseHere();
        }
        return QStringLiteral("WhatsApp is open in another window, using it here");
    }
    const qint64 now = clock_.monotonicMs();
    if (!blankSinceMs_) blankSinceMs_ = now;
    const qint64 blankMs = now - *blankSinceMs_;
    if (blankMs < kBlankHintMs) return QStringLiteral("Waiting for login");
    // The chats are there, only their mark isn't.
    if (look.hasChatList) return QStringLiteral("Page changed: XX_NewChat");
    if (blankMs >= kBlankLimitMs) {
        blankSinceMs_ = now;
        page_.openStartPage();
    }
    return QStringLiteral("Waiting for login: the page shows neither chats nor a QR code");
}

QString LoginWatch::bringBack(const QString& what, qint64 pauseMs) {
    if (due(pauseMs)) page_.openStartPage();
    return what + QStringLiteral(", trying again");
}

bool LoginWatch::due(qint64 pauseMs) {
    const qint64 now = clock_.monotonicMs();
    if (askedMs_ && now - *askedMs_ < pauseMs) return false;
    askedMs_ = now;
    return true;
}

void LoginWatch::publish(const QString& code) {
    if (state_.standby.visible) return;  // the panel shows the code of the instance that works
    const bool written = database_.execute(kLoginCode, {code, state_.cb_Profil.text}).has_value();
    // The queue, which shows this as a rule, is not looked at before the login.
    if (written || !database_.isOpen()) state_.dboff = {!written, database_.problem()};
}

void LoginWatch::showPicture() {
    const QDir folder(settings_.CaptureImage.isEmpty() ? programFolder_ : settings_.CaptureImage);
    const QString file = folder.filePath(QStringLiteral("qr%1.jpg").arg(profile6(state_.cb_Profil.text)));
    // A picture that can't be taken at this moment is taken at the next tick; one that can't be written never.
    const QImage picture = QImage::fromData(page_.qrPicture());
    if (picture.isNull()) return;
    if (folder.mkpath(QStringLiteral(".")) && picture.save(file, "JPG", 95)) {
        state_.pQR.caption = file;
        state_.pQR.visible = true;
        state_.timer_QR.setEnabled(true);
        pictureRefused_ = false;
    } else if (!pictureRefused_) {
        pictureRefused_ = true;
        log::warning("engine", QStringLiteral("the picture of the QR code can't be written to %1").arg(file));
    }
}

void LoginWatch::hidePicture() {
    state_.pQR.visible = false;
    state_.timer_QR.setEnabled(false);
}

}  // namespace kibo
