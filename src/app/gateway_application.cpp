#include "app/gateway_application.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSaveFile>

#include "app/form_load.h"
#include "app/termination_signal.h"
#include "base/log.h"
#include "base/settings_file.h"
#include "inbox/helper_installation.h"
#include "main_window/setting_indicators.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "platform/top_level_windows.h"
#include "platform/updater.h"
#include "screens/setting_check.h"
#include "widgets/help_page.h"
#include "widgets/window_place.h"

namespace kibo {
namespace {

/// How soon a termination signal and a due picture are noticed.
constexpr int kHeartbeatMs = 100;
const QString kSection = QStringLiteral("kibo");
const QString kSettingsScreen = QStringLiteral("frm_Config");

void logFailure(const Result<void>& result) {
    if (!result) log::warning("window", QString::fromStdString(result.failure().text));
}

/// Where the scripts are that belong to the program: its folder, or, when that is another one, beside the executable.
QString scriptFolder(const QString& programFolder, const QString& script) {
    const QDir folder(programFolder);
    if (!folder.entryList({script, script + QStringLiteral(".bat")}, QDir::Files).isEmpty()) return programFolder;
    return QFileInfo(QString::fromStdString(platform::executableFile())).path();
}

void openForOperator(const QString& file) {
    logFailure(platform::openForOperator(QDir::toNativeSeparators(file).toStdString()));
}

}  // namespace

GatewayApplication::GatewayApplication(ProgramDialogs& dialogs, QString programFolder, const QStringList& arguments,
                                       const MakeBrowser& makeBrowser)
    : dialogs_(dialogs),
      programFolder_(std::move(programFolder)),
      commandLine_(arguments.isEmpty() ? QStringLiteral("0") : arguments.join(QLatin1Char(' '))),
      database_(clock_, policy_),
      elementDatabase_(clock_, policy_),
      elementStore_(elementDatabase_),
      instanceRows_(database_),
      profileSettings_(state_, settings_, database_),
      startUp_(dialogs, programFolder_),
      browser_(makeBrowser({programFolder_, clock_, elements_, policy_})),
      mediaDownload_(settings_, clock_, programFolder_) {
    // Already while a box of the start-up routine waits for its answer.
    QObject::connect(&heartbeat_, &QTimer::timeout, &heartbeat_, [this] { heartbeat(); });
    heartbeat_.start(kHeartbeatMs);
}

GatewayApplication::~GatewayApplication() {
    // An answer would come to what is no more.
    dialogs_.closeForGood();
    // By now the message in hand is settled and the browser has ended: the panel sees the instance go when it has gone.
    policy_.programEnds();  // nothing surfaces from here
    if (report_ && !state_.standby.visible && database_.isOpen()) instanceRows_.withdraw(state_.cb_Profil.text);
    if (report_) report_->withdraw();
}

bool GatewayApplication::start() {
    platform::removeStaleLockFile();
    startLog();
    startUp_.reportCrash();
    settings_ = startUp_.prepareFolder();
    if (ending()) return false;
    if (!startUp_.openDatabase(database_, settings_)) return false;
    if (!startUp_.openElementStore(elementDatabase_)) return false;
    elementStore_.complete();
    elements_ = ElementTable([this](const QString& name) { return elementStore_.LoadElement(name); });
    state_.dboff = {!database_.isOpen(), database_.problem()};
    const StoreName store = storeName(database_.address().request);
    state_.storeName = store.name;
    state_.storePlace = store.place;
    if (ending()) return false;
    buildEngine();
    return showWindow();
}

void GatewayApplication::startLog() const {
    const QString problem = log::start(QDir(programFolder_).filePath(QStringLiteral("kibo.log")));
    if (!problem.isEmpty()) log::warning("app", QStringLiteral("no log file: ") + problem);
}

void GatewayApplication::buildEngine() {
    edge_ = std::make_unique<ErrorEdge>(dialogs_);
    guardedDialogs_ = std::make_unique<GuardedDialogs>(dialogs_, *edge_);
    help_ = std::make_unique<Help>(*guardedDialogs_, helpFolder());
    timers_ = std::make_unique<TimerRunner>(*edge_);
    const auto random = [] { return QRandomGenerator::global()->generateDouble(); };
    screens_ = std::make_unique<ScreenList>(ScreenParts{
        elements_, elementStore_, browser_->probe(), state_, settings_, *guardedDialogs_, startUp_.settingsFile(),
        [this](const auto& step) { edge_->run(step); }, database_, clock_, programFolder_, [this] { refreshOutbox(); },
        [this] { restartProgram(); }, [this](const auto& ids) { gateway_->unsent.queuedAgain(ids); },
        [this](const QString& name) { help_->open(name); }});
    const auto pageInUse = [this] { return screens_->pageInUse(); };
    gateway_ = std::make_unique<Gateway>(Gateway::Needs{
        .state = state_,
        .settings = settings_,
        .elements = elements_,
        .database = database_,
        .page = browser_->page(),
        .clock = clock_,
        .journal = journal_,
        .random = random,
        .BACA_WA = [this] { inbox_->reader.BACA_WA(); },
        .pageInUse = pageInUse,
        .takeArrived = [this](const QList<ArrivedMessage>& arrived) { inbox_->arrivals.take(arrived); },
        .fetchMedia = [this](const QString& address) { return mediaDownload_.fetch(address); },
        .releaseMedia = [this](const QString& file) { mediaDownload_.release(file); },
        .programFolder = programFolder_,
        .clipboard = &clipboard_,
        .confirmHold = [this](const QString& id, const QString& attempt) { return hold_->confirm(id, attempt); },
    });
    inbox_ = std::make_unique<Inbox>(Inbox::Needs{state_, settings_, elements_, database_, browser_->page(), clock_,
                                                  random, *gateway_, programFolder_, pageInUse,
                                                  [this] { profileSettings_.BACA_PROFIL(); }});
}

bool GatewayApplication::showWindow() {
    window_ = std::make_unique<MainWindow>(state_, settings_, *guardedDialogs_, actions());
    FormLoad formLoad{*window_,    state_, settings_, instanceRows_, dialogs_, programFolder_, startUp_.settingsFile(),
                      commandLine_};
    formLoad.alreadyRuns = [this] { return alreadyRuns(); };
    formLoad.mySql = !isYes(settings_.UseMDB);
    formLoad.machineProblem = [] { return QString::fromStdString(platform::machineProblem()); };
    formLoad.installHelper = [this] { installDownloadHelper(programFolder_); };
    formLoad.startAgent = [](const QString& program) {
        const Result<platform::ProcessId> started = platform::startProgram(program.toStdString());
        if (!started) log::warning("window", QString::fromStdString(started.failure().text));
    };
    if (!formLoad.Form_Load() || ending()) return false;
    const Result<void> journal = openJournal();
    if (!journal) log::error("window", QString::fromStdString(journal.failure().text));

    const QString pictures = qEnvironmentVariable("KIBO_PICTURES");
    if (!pictures.isEmpty()) {
        picture_ = std::make_unique<WindowPicture>(*window_, state_, pictures, [this](const QString& name) {
            if (!browser_->isOpen()) return;
            const QByteArray picture = browser_->page().pagePicture();
            QSaveFile file(name);
            if (picture.isEmpty() || !file.open(QIODevice::WriteOnly)) return;
            file.write(picture);
            file.commit();
        });
    }
    buildBrowserParts();
    buildInstanceParts();
    // Start-up skips what fails; from here on `DebugMode` decides.
    policy_.setDebugMode(isYes(settings_.DebugMode));
    log::setVerbose(isYes(settings_.DebugMode));
    addTimers();
    WindowPlace::remember(window_.get(), startUp_.settingsFile());
    state_.step = QStringLiteral("WhatsApp is not open");
    if (database_.isOpen()) refreshOutbox();
    window_->showState();
    window_->show();
    log::info("window", QStringLiteral("Kibo is ready"));
    if (!journal) {
        dialogs_.show({kProgramName,
                       QStringLiteral("Nothing can be sent: %1").arg(QString::fromStdString(journal.failure().text)),
                       MessageBox::Icon::Critical});
    }
    tableOffer_ = std::make_unique<TableOffer>(
        TableOffer::Needs{database_, settings_, *guardedDialogs_, startUp_.settingsFile()});
    tableOffer_->ask();
    if (startUp_.settingsAsked()) screens_->open(kSettingsScreen);
    return true;
}

void GatewayApplication::buildBrowserParts() {
    keeper_ = std::make_unique<SessionKeeper>(SessionKeeper::Needs{
        .state = state_,
        .settings = settings_,
        .clock = clock_,
        .openBrowser = [this](const LaunchOptions& options) { return openBrowser(options); },
        .closeBrowser = [this] { browser_->quit(); },
        .showState = [this] { window_->showState(); },
        .readProfile = [this] { profileSettings_.BACA_PROFIL(); },
    });
    queueActions_ = std::make_unique<QueueActions>(QueueActions::Needs{
        .state = state_,
        .settings = settings_,
        .database = database_,
        .dialogs = *guardedDialogs_,
        .unsent = gateway_->unsent,
        .refreshOutbox = [this] { refreshOutbox(); },
        .refreshInbox = [this] { inbox_->grid.cmd_InboxRefresh_Click(); },
        .guarded = [this](const auto& step) { edge_->run(step); },
    });
    care_ = std::make_unique<BrowserCare>(BrowserCare::Needs{
        .state = state_,
        .settings = settings_,
        .dialogs = *guardedDialogs_,
        .programFolder = programFolder_,
        .settingsFile = startUp_.settingsFile(),
        .hideWindow = [this](bool hide) { return browser_->hideWindow(hide); },
        .endSession = [this] { keeper_->close(); },
        .browserVersion = [this] { return installedBrowser(settings_); },
        .scriptFolder = scriptFolder(programFolder_, QStringLiteral("cekver")),
    });
    if (!isYes(settings_.Multi)) care_->checkVersions();
}

void GatewayApplication::buildInstanceParts() {
    closeAll_ =
        std::make_unique<CloseAll>(CloseAll::Needs{*guardedDialogs_, instanceRows_, clock_, [this] { endProgram(); }});
    panelCommands_ = std::make_unique<PanelCommands>(PanelCommands::Needs{
        .state = state_,
        .settings = settings_,
        .clock = clock_,
        .rows = instanceRows_,
        .closeBrowser = [this] { browser_->quit(); },
        .openFreshSession = [this] { openFreshSession(); },
        .endProgram =
            [this] {
                hold_->switchOffOthers();
                endProgram();
            },
    });
    renewal_ = std::make_unique<BrowserRenewal>(BrowserRenewal::Needs{
        .state = state_,
        .settings = settings_,
        .clock = clock_,
        .ageMs = [this] { return browser_->ageMs(); },
        .memoryBytes = [this] { return browser_->memoryBytes(); },
        .pageInUse = [this] { return screens_->pageInUse(); },
        .openFreshSession = [this] { openFreshSession(); },
    });
    report_ = std::make_unique<InstanceReport>(InstanceReport::Needs{
        .state = state_,
        .settings = settings_,
        .database = database_,
        .clock = clock_,
        .browserAgeMs = [this] { return browser_->ageMs(); },
        .browserBytes = [this] { return browser_->memoryBytes(); },
    });
    hold_ = std::make_unique<ProfileHold>(ProfileHold::Needs{
        .state = state_,
        .settings = settings_,
        .database = database_,
        .clock = clock_,
        .gained = [this](bool tookOver) { clearEarlierRows(tookOver); },
        .switchedOff = [this] { endProgram(); },
    });
    report_->begin();
    report_->tick();
    hold_->tick();
    pageCapture_ = std::make_unique<PageCapture>(state_, settings_, browser_->page(), programFolder_);
    instanceStarter_ = std::make_unique<InstanceStarter>(InstanceStarter::Needs{
        .state = state_,
        .settings = settings_,
        .dialogs = *guardedDialogs_,
        .start = [](const QString& profile) -> Result<void> {
            const auto started = platform::startProgram(platform::executableFile(), {profile.toStdString()});
            if (!started) return started.failure();
            return {};
        },
        .openSettings = [this] { screens_->open(kSettingsScreen); },
    });
    updateCheck_ = std::make_unique<UpdateCheck>(UpdateCheck::Parts{
        *guardedDialogs_, settings_.ElementServer, startUp_.settingsFile(), settings_.buildDate,
        [this] { return platform::startUpdater(QDir::toNativeSeparators(programFolder_).toStdString()); }});
}

/// An earlier instance of the profile that was ended by force left its rows, and a command of then isn't meant for this
/// one. One that has just taken over obeys what the other one can't obey any more.
void GatewayApplication::clearEarlierRows(bool tookOver) {
    if (tookOver) return;
    const QString& profile = state_.cb_Profil.text;
    if (instanceRows_.statusRows(profile) > 0)
        log::info("window",
                  QStringLiteral("profile %1 has a status row already: the last instance was ended").arg(profile));
    instanceRows_.withdraw(profile);
}

/// No message is in hand: the step machine then finds the browser gone, and forgets what it knew of the old page.
void GatewayApplication::openFreshSession() {
    browser_->quit();
    if (state_.Timer_KIBO.enabled()) gateway_->machine.Timer_KIBO_Timer();
    keeper_->cmd_OpenWA_Click();
}

MainWindowActions GatewayApplication::actions() {
    MainWindowActions actions;
    actions.openWhatsApp = guarded([this] { keeper_->cmd_OpenWA_Click(); });
    actions.pause = guarded([this] { gateway_->pacing.cmd_Pause_Click(); });
    actions.refreshInbox = guarded([this] { inbox_->grid.cmd_InboxRefresh_Click(); });
    actions.listChats = guarded([this] { inbox_->chatLister.len2_Click(); });
    actions.refreshOutbox = guarded([this] { refreshOutbox(); });
    actions.deleteWaiting = [this](const auto& ids) { edge_->run([&] { queueActions_->cmd_DelOut_Click(ids); }); };
    actions.queueAgain = [this](const auto& ids) { edge_->run([&] { queueActions_->cmd_MoveOutbox_Click(ids); }); };
    actions.whyWaiting = [this](qint64 id) {
        edge_->run([&] {
            guardedDialogs_->show({QStringLiteral("Message %1").arg(id),
                                   gateway_->waitingReason.of(id).join(QStringLiteral("\n\n")),
                                   MessageBox::Icon::Information});
        });
    };
    actions.reply = [this](const QString& number, const QString& received) {
        edge_->run([&] { screens_->openReply(number, received, state_.cb_Profil.text); });
    };
    actions.refillReply = [this](const QString& number, const QString& received) {
        edge_->run([&] { screens_->refillReply(number, received, state_.cb_Profil.text); });
    };
    actions.clearOutbox = guarded([this] { queueActions_->cmd_ClearOutbox_Click(); });
    actions.clearInbox = guarded([this] { queueActions_->cmd_ClearInbox_Click(); });
    actions.stopWork = [this] { queueActions_->stopWork(); };
    actions.emptyInboxList = [this] { queueActions_->cmd_ClearGridInbox_Click(); };
    actions.emptyUnsentList = [this] { queueActions_->cmd_ClearUnSent_Click(); };
    if (platform::canHideWindows()) actions.hideChrome = [this](bool hide) { care_->HideChrome_Click(hide); };
    actions.stop = [this] { cmd_STOP_Click(); };
    actions.profileChanged = [this](const QString& profile) { care_->cb_Profil_Change(profile); };
    actions.newProfile = [this] { care_->newProfile(); };
    actions.runCleaner = guarded([this] { care_->mn_cleaner_Click(); });
    actions.startAnother = guarded([this] { instanceStarter_->mnmulti_Click(); });
    actions.checkForUpdate = guarded([this] { updateCheck_->mnupdate_Click(); });
    actions.closeAll = guarded([this] { closeAll_->mncloseall_Click(); });
    actions.exitProgram = [this] { endProgram(); };
    actions.openProgramFolder = [this] { openForOperator(programFolder_); };
    actions.openLogFile = [this] { openForOperator(QDir(programFolder_).filePath(QStringLiteral("kibo.log"))); };
    actions.openScreen = [this](const QString& name) { edge_->run([&] { screens_->open(name); }); };
    actions.openHelp = [this] { help_->open(window_->objectName()); };
    actions.activated = guarded([this] { activate(); });
    actions.unloaded = [this] { unload(); };
    return actions;
}

std::function<void()> GatewayApplication::guarded(std::function<void()> step) {
    return [this, step = std::move(step)] { edge_->run(step); };
}

void GatewayApplication::addTimers() {
    timers_->add(state_.timer_start, [this] { keeper_->timer_start_Timer(); });
    timers_->add(state_.Timer_variabel, [this] { refreshSettingIndicators(settings_, state_); });
    timers_->add(state_.Timer1, [this] { Timer1_Timer(); });
    timers_->add(state_.Timer_KIBO, [this] { gateway_->machine.Timer_KIBO_Timer(); });
    timers_->add(state_.Timer2, [this] { gateway_->chatListWatch.Timer2_Timer(); });
    timers_->add(state_.BreakTime, [this] { gateway_->pacing.BreakTime_Timer(); });
    // Ticks without work: whether these two are on is what counts.
    timers_->add(state_.Timer_cekURL, [] {});
    timers_->add(state_.timer_QR, [] {});
}

Result<void> GatewayApplication::openBrowser(const LaunchOptions& options) {
    // From here on profile and store stay as they are.
    if (const Result<void> opened = openJournal(); !opened) return opened;
    return browser_->open(options);
}

/// Ends a second start of the same profile, whose operator looks for the window that is there.
bool GatewayApplication::alreadyRuns() {
    const Result<void> taken = instanceLock_.take(programFolder_, state_.cb_Profil.text);
    if (taken) return false;
    const QString text = QString::fromStdString(taken.failure().text);
    log::warning("window", text);
    dialogs_.showAndWait({kProgramName, text, MessageBox::Icon::Information});
    platform::bringToFront(instanceLock_.holder());
    return true;
}

Result<void> GatewayApplication::openJournal() {
    if (const Result<void> taken = instanceLock_.take(programFolder_, state_.cb_Profil.text); !taken) return taken;
    return journal_.open(journalFile());
}

/// Of the profile that is chosen now.
QString GatewayApplication::journalFile() const {
    return QDir(programFolder_).filePath(SendJournal::fileName(state_.cb_Profil.text, gateway_->queue.storeIdentity()));
}

void GatewayApplication::Timer1_Timer() {
    clock_.runPendingEvents();
    inbox_->reader.storeWaiting();
    inbox_->grid.keepFresh();
    if (!state_.stepRunning) {
        gateway_->records.removeOld();
        inbox_->records.removeOld();
        gateway_->ticks.write();
    }
    // What the store alone can settle need not wait for the page. Between two browsers another profile may be chosen,
    // whose rows tell nothing of what this journal holds.
    if (!state_.stepRunning && database_.isOpen() && journal_.isOpen(journalFile())) {
        gateway_->recovery.settleInStore();
        gateway_->abandoned.settle();
    }
    if (!state_.stepRunning) gateway_->unsent.fill();
    gateway_->held.look();
    state_.l_disableread.visible = isYes(settings_.DisableRead);
    keeper_->keepOpen();
    browser_->hideWhenTitled();
    state_.cb_Profil.background = isYes(settings_.Multi) ? colour::kYellow : colour::kCyan;
    if (!state_.standby.visible) {
        pageCapture_->capture();
        panelCommands_->tick();
        if (ending()) return;
    }
    renewal_->tick();
    report_->tick();
    hold_->tick();
    if (ending()) return;
    if (isYes(settings_.Multi) && state_.cb_Profil.text != QStringLiteral("0")) applyHideMe();
}

void GatewayApplication::refreshOutbox() {
    // The step machine may be in the middle of a message that it has taken from row 1.
    if (!state_.stepRunning) gateway_->queue.cmd_OutboxRefresh_Click();
    gateway_->held.lookNow();
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
    endProgram();
}

void GatewayApplication::cmd_STOP_Click() {
    endProgram();
}

void GatewayApplication::endProgram() {
    if (clock_.waitingStopped()) return;
    // Waits of a running tick end now, so that it unwinds to the event loop and the program can leave.
    clock_.stopWaiting();
    policy_.programEnds();
    dialogs_.closeForGood();
    if (timers_) timers_->stopAll();
    heartbeat_.stop();
    if (inbox_) inbox_->botBrowser.quit();
    browser_->quit();
    log::info("window", QStringLiteral("Kibo ends"));
    // Not quit(): it would close the window first, which is the operator's way to unload it.
    QCoreApplication::exit(0);
}

void GatewayApplication::restartProgram() {
    restartWanted_ = true;
    endProgram();
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
