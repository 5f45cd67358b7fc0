#include "main_window/gateway_application.h"

#include <QCoreApplication>
#include <QDir>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QScopedValueRollback>

#include "app/log.h"
#include "app/settings_file.h"
#include "main_window/close_all.h"
#include "main_window/form_load.h"
#include "main_window/setting_indicators.h"
#include "main_window/termination_signal.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "platform/top_level_windows.h"

namespace kibo {
namespace {

/// How soon a termination signal and a due picture are noticed.
constexpr int kHeartbeatMs = 100;
constexpr qint64 kLongestReopenPauseMs = 300'000;
const QString kSection = QStringLiteral("kibo");

void logFailure(const Result<void>& result) {
    if (!result) log::warning("window", QString::fromStdString(result.failure().text));
}

void openForOperator(const QString& file) {
    logFailure(platform::openForOperator(QDir::toNativeSeparators(file).toStdString()));
}

}  // namespace

GatewayApplication::GatewayApplication(Dialogs& dialogs, QString programFolder, const QStringList& arguments)
    : dialogs_(dialogs),
      programFolder_(std::move(programFolder)),
      commandLine_(arguments.isEmpty() ? QStringLiteral("0") : arguments.join(QLatin1Char(' '))),
      database_(clock_, policy_),
      elementStore_(clock_, policy_),
      instanceRows_(database_),
      startUp_(dialogs, programFolder_),
      browser_(programFolder_, clock_) {
    // Already while a box of the start-up routine waits for its answer.
    QObject::connect(&heartbeat_, &QTimer::timeout, &heartbeat_, [this] { heartbeat(); });
    heartbeat_.start(kHeartbeatMs);
}

GatewayApplication::~GatewayApplication() = default;

bool GatewayApplication::start() {
    platform::removeStaleLockFile();
    startLog();
    startUp_.reportSettingsProblem(settings_.applicationName);
    settings_ = loadSettings(startUp_.settingsFile());
    if (!startUp_.openDatabase(database_, settings_)) return false;
    if (!startUp_.openElementStore(elementStore_)) return false;
    elements_ = ElementTable([this](const QString& name) {
        return elementStore_.OpenRecordset(QStringLiteral("select isi from element where nama = ?"), {name}).field(0);
    });
    state_.dboff.visible = !database_.isOpen();
    if (clock_.waitingStopped()) return false;
    buildEngine();
    return showWindow();
}

void GatewayApplication::startLog() const {
    const QString problem = log::start(QDir(programFolder_).filePath(QStringLiteral("kibo.log")));
    if (!problem.isEmpty()) log::warning("app", QStringLiteral("no log file: ") + problem);
}

void GatewayApplication::buildEngine() {
    edge_ = std::make_unique<ErrorEdge>(dialogs_, settings_.applicationName);
    timers_ = std::make_unique<TimerRunner>(*edge_);
    page_ = std::make_unique<WebPage>(browser_, elements_, policy_);
    gateway_ = std::make_unique<Gateway>(Gateway::Needs{
        .state = state_,
        .settings = settings_,
        .elements = elements_,
        .database = database_,
        .page = *page_,
        .clock = clock_,
        .journal = journal_,
        .random = [] { return QRandomGenerator::global()->generateDouble(); },
        .clipboard = &clipboard_,
    });
}

bool GatewayApplication::showWindow() {
    window_ = std::make_unique<MainWindow>(state_, settings_, dialogs_, actions());
    FormLoad formLoad{*window_,    state_, settings_, instanceRows_, dialogs_, programFolder_, startUp_.settingsFile(),
                      commandLine_};
    formLoad.mySql = !isYes(settings_.UseMDB);
    formLoad.machineProblem = [] { return QString::fromStdString(platform::machineProblem()); };
    formLoad.startAgent = [](const QString& program) {
        const Result<platform::ProcessId> started = platform::startProgram(program.toStdString());
        if (!started) log::warning("window", QString::fromStdString(started.failure().text));
    };
    if (!formLoad.Form_Load()) return false;
    if (const Result<void> opened = openJournal(); !opened) {
        log::error("window", QString::fromStdString(opened.failure().text));
        dialogs_.show({settings_.applicationName,
                       QStringLiteral("Nothing can be sent: the journal in the program folder can't be written.\n%1")
                           .arg(QString::fromStdString(opened.failure().text)),
                       MessageBox::Icon::Critical});
    }
    // Start-up skips what fails; from here on `DebugMode` decides.
    policy_.setDebugMode(isYes(settings_.DebugMode));
    log::setVerbose(isYes(settings_.DebugMode));

    const QString pictures = qEnvironmentVariable("KIBO_PICTURES");
    if (!pictures.isEmpty()) {
        picture_ = std::make_unique<WindowPicture>(*window_, state_, pictures, [this](const QString& name) {
            if (!browser_.isOpen()) return;
            const QByteArray picture = page_->pagePicture();
            QSaveFile file(name);
            if (picture.isEmpty() || !file.open(QIODevice::WriteOnly)) return;
            file.write(picture);
            file.commit();
        });
    }
    addTimers();
    state_.step = QStringLiteral("WhatsApp is not open");
    window_->showState();
    window_->show();
    log::info("window", QStringLiteral("%1 is ready").arg(settings_.applicationName));
    return true;
}

MainWindowActions GatewayApplication::actions() {
    MainWindowActions actions;
    actions.openWhatsApp = guarded([this] { cmd_OpenWA_Click(); });
    actions.pause = guarded([this] { gateway_->pacing.cmd_Pause_Click(); });
    actions.refreshOutbox = guarded([this] { refreshOutbox(); });
    if (platform::canHideWindows()) actions.hideChrome = [this](bool hide) { HideChrome_Click(hide); };
    actions.stop = [this] { cmd_STOP_Click(); };
    actions.profileChanged = [this](const QString& profile) { cb_Profil_Change(profile); };
    actions.closeAll = guarded([this] { mncloseall_Click(); });
    actions.exitProgram = [this] { endProgram(); };
    actions.openProgramFolder = [this] { openForOperator(programFolder_); };
    actions.openLogFile = [this] { openForOperator(QDir(programFolder_).filePath(QStringLiteral("kibo.log"))); };
    actions.activated = guarded([this] { activate(); });
    actions.unloaded = [this] { unload(); };
    return actions;
}

std::function<void()> GatewayApplication::guarded(std::function<void()> step) {
    return [this, step = std::move(step)] { edge_->run(step); };
}

void GatewayApplication::addTimers() {
    timers_->add(state_.timer_start, [this] { timer_start_Timer(); });
    timers_->add(state_.Timer_variabel, [this] { refreshSettingIndicators(settings_, state_); });
    timers_->add(state_.Timer1, [this] { Timer1_Timer(); });
    timers_->add(state_.Timer_KIBO, [this] { gateway_->machine.Timer_KIBO_Timer(); });
    timers_->add(state_.Timer2, [this] { gateway_->chatListWatch.Timer2_Timer(); });
    timers_->add(state_.BreakTime, [this] { gateway_->pacing.BreakTime_Timer(); });
    // Ticks without work: whether these two are on is what counts.
    timers_->add(state_.Timer_cekURL, [] {});
    timers_->add(state_.timer_QR, [] {});
}

void GatewayApplication::cmd_OpenWA_Click() {
    // Starting the browser may let clicks run; the second one must not start another.
    if (opening_) return;
    const QScopedValueRollback<bool> opening(opening_, true);
    const bool lost = state_.waurl.text == QStringLiteral("!!");
    state_.waurl.text.clear();
    state_.step = QStringLiteral("Starting the browser");
    window_->showState();
    clock_.runPendingEvents();
    // From here on the profile and the store stay as they are.
    if (const Result<void> opened = openJournal(); !opened) {
        state_.step = QStringLiteral("Nothing can be sent: ") + QString::fromStdString(opened.failure().text);
        log::error("window", state_.step);
        return;
    }
    LaunchOptions options{settings_, state_.cb_Profil.text, state_.HideChrome.checked};
    options.armStepMachine = [this] { state_.Timer_KIBO.setEnabled(true); };
    const Result<void> opened = browser_.open(options);
    if (opened) {
        reopenPauseMs_ = kShortestReopenPauseMs;
        state_.cb_Profil.enabled = false;  // the queue belongs to the account that is logged in
        return;
    }
    if (lost) {  // what ran before shall run again
        state_.waurl.text = QStringLiteral("!!");
        reopenAtMs_ = clock_.monotonicMs() + reopenPauseMs_;
        reopenPauseMs_ = std::min(2 * reopenPauseMs_, kLongestReopenPauseMs);
    }
    state_.step = QString::fromStdString(opened.failure().text);
    log::error("window", QStringLiteral("the browser can't be started: ") + state_.step);
}

Result<void> GatewayApplication::openJournal() {
    return journal_.open(
        QDir(programFolder_).filePath(SendJournal::fileName(state_.cb_Profil.text, gateway_->queue.storeIdentity())));
}

void GatewayApplication::timer_start_Timer() {
    state_.timer_start.setEnabled(false);
    if (isYes(settings_.AutoStart) && state_.cb_Profil.text != QStringLiteral("0")) cmd_OpenWA_Click();
}

void GatewayApplication::Timer1_Timer() {
    clock_.runPendingEvents();
    state_.l_disableread.visible = isYes(settings_.DisableRead);
    if (state_.waurl.text == QStringLiteral("!!") && clock_.monotonicMs() >= reopenAtMs_) cmd_OpenWA_Click();
    state_.cb_Profil.background = isYes(settings_.Multi) ? colour::kYellow : colour::kCyan;
    if (isYes(settings_.Multi) && state_.cb_Profil.text != QStringLiteral("0")) applyHideMe();
}

void GatewayApplication::HideChrome_Click(bool hide) {
    // Without a browser window there is nothing to hide, and nothing to remember.
    if (!browser_.hideWindow(hide)) return;
    settings_.HideChrome = hide ? QStringLiteral("Y") : QStringLiteral("N");
    WriteIni(kSection, QStringLiteral("HideChrome"), settings_.HideChrome, startUp_.settingsFile());
}

void GatewayApplication::cb_Profil_Change(const QString& profile) {
    if (isYes(settings_.Multi)) return;
    settings_.Profil = profile;
    WriteIni(kSection, QStringLiteral("Profil"), profile, startUp_.settingsFile());
}

void GatewayApplication::mncloseall_Click() {
    if (!closeAllInstances(dialogs_, instanceRows_, endOtherCopies)) return;
    endProgram();
}

void GatewayApplication::refreshOutbox() {
    // The step machine may be in the middle of a message that it has taken from row 1.
    if (!state_.stepRunning) gateway_->queue.cmd_OutboxRefresh_Click();
}

void GatewayApplication::applyHideMe() {
    settings_.HideMe = ReadIni(kSection, QStringLiteral("HIDE_ME"), startUp_.settingsFile());
    const bool hide = isYes(settings_.HideMe);
    if (window_->isHidden() != hide) window_->setVisible(!hide);
}

void GatewayApplication::activate() {
    refreshOutbox();
    if (isYes(settings_.Multi) && state_.cb_Profil.text != QStringLiteral("0")) applyHideMe();
}

void GatewayApplication::unload() {
    policy_.setDebugMode(false);
    instanceRows_.withdraw(state_.cb_Profil.text);
    endProgram();
}

void GatewayApplication::cmd_STOP_Click() {
    endProgram();
}

void GatewayApplication::endProgram() {
    if (clock_.waitingStopped()) return;
    // Waits of a running tick end now, so that it unwinds to the event loop and the program can leave.
    clock_.stopWaiting();
    if (timers_) timers_->stopAll();
    heartbeat_.stop();
    browser_.quit();
    log::info("window", QStringLiteral("%1 ends").arg(settings_.applicationName));
    // Not quit(): it would close the window first, which is the operator's way to unload it.
    QCoreApplication::exit(0);
}

void GatewayApplication::heartbeat() {
    if (terminationRequested()) {
        cmd_STOP_Click();
        return;
    }
    if (!picture_) return;
    window_->showState();  // a picture shows the state of its moment
    edge_->run([this] { picture_->look(); });
}

}  // namespace kibo
