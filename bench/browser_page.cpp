#include "bench/browser_page.h"

#include <QProcess>

#include "bench/measuring.h"
#include "store/database.h"

namespace kibo::bench {
namespace {

constexpr int kPollMs = 20;
constexpr int kPolls = 500;

}  // namespace

ElementTable elementsIn(const QString& folder) {
    createStores(folder);
    const SystemClock clock;
    const ErrorPolicy policy;
    Database store(clock, policy);
    const auto opened = store.OpenElementStore(folder + QStringLiteral("/element.sys"));
    require(opened.ok(), "the element store can't be opened");
    return ElementTable([&store](const QString& name) {
        return store.OpenRecordset(QStringLiteral("select isi from element where nama = ?"), {name}).field(0);
    });
}

void runQuietly(const QString& program, const QStringList& arguments) {
    runInto(QProcess::nullDevice(), program, arguments);
}

void runInto(const QString& file, const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setStandardOutputFile(file);
    process.start(program, arguments);
    require(process.waitForFinished(60'000) && process.exitCode() == 0, program.toStdString() + " fails");
}

void createStores(const QString& folder) {
    runQuietly(QStringLiteral(KIBO_SOURCE_DIR "/scripts/create-stores"), {folder});
}

Settings standInSettings(const standin::StandIn& standIn) {
    Settings settings;
    settings.UseMDB = QStringLiteral("Y");
    settings.Headless = QStringLiteral("Y");
    settings.Speed = QStringLiteral("NORMAL");
    settings.Profil = QStringLiteral("1");
    settings.StartAddress = QString::fromStdString(standIn.address());
    settings.ChatAddress = QString::fromStdString(standIn.chatAddress());
    return settings;
}

BrowserPage::BrowserPage(Clock& clock)
    : settings(standInSettings(standIn)),
      elements(elementsIn(folder.path())),
      browser(folder.path(), clock),
      page(browser, elements, policy),
      clock_(clock) {
    standin::Behaviour behaviour = standIn.behaviour();
    behaviour.chatOpenDelayMs = {0, 0};
    behaviour.readyDelayMs = 0;
    standIn.setBehaviour(behaviour);
    const auto started = browser.open({settings, settings.Profil});
    require(started.ok(), started ? "" : started.failure().text);
    for (int i = 0; i < kPolls && page.look().newChatControls == 0; ++i) clock_.wait(kPollMs);
    require(page.look().newChatControls > 0, "the page does not come up");
}

void BrowserPage::openChat(const QString& number) {
    const QString address = settings.ChatAddress + number;
    require(page.plantLink(address) && page.pointLink(address) && page.clickLink(address), "no link to click");
    for (int i = 0; i < kPolls; ++i) {
        const auto look = page.lookAtChat(true);
        if (look && look->chat.open && look->boxFocused) return;
        clock_.wait(kPollMs);
    }
    throw std::runtime_error("the chat does not open");
}

}  // namespace kibo::bench
