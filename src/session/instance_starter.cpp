#include "session/instance_starter.h"

#include "base/log.h"

namespace kibo {

void InstanceStarter::mnmulti_Click() {
    const auto say = [this](const QString& text, const std::function<void()>& then = {}) {
        n_.dialogs.show({QStringLiteral("Info"), text, MessageBox::Icon::Information}, [then](bool) {
            if (then) then();
        });
    };
    if (!isYes(n_.settings.Multi)) {
        say(QStringLiteral("Enable Multi Session must Enable before use this feature."), n_.openSettings);
        return;
    }
    if (!counter_) {
        bool isNumber = false;
        const int own = n_.state.cb_Profil.text.toInt(&isNumber);
        if (!isNumber) {
            say(QStringLiteral("The profile of this instance, \"%1\", is no number, so there is no next one. Start "
                               "another instance with its profile on the command line.")
                    .arg(n_.state.cb_Profil.text));
            return;
        }
        counter_ = own;
    }
    if (*counter_ + 1 >= kMost) return;
    ++*counter_;
    const Result<void> started = n_.start(QString::number(*counter_));
    if (started) {
        log::info("session", QStringLiteral("profile %1 is started").arg(*counter_));
    } else {
        say(QStringLiteral("Profile %1 can't be started: %2")
                .arg(*counter_)
                .arg(QString::fromStdString(started.failure().text)));
    }
}

}  // namespace kibo
