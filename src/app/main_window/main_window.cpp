#include "main_window/main_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QEvent>
#include <QLabel>
#include <QMenuBar>
#include <QVBoxLayout>
#include <cmath>

#include "main_window/grid_actions.h"
#include "main_window/window_controls.h"
#include "widgets/accessibility.h"
#include "widgets/icons.h"
#include "widgets/plain_text.h"
#include "widgets/shown_text.h"
#include "widgets/window_look.h"

namespace kibo {
namespace {

constexpr int kRepaintMs = 100;
constexpr QSize kSmallestWindow(960, 600);
/// A message may have 65,000 characters; the field shows as many as a person reads in passing.
constexpr int kShownCharacters = 4000;
/// The entry below the profiles, for one more. No folder can have this name.
QString newProfileEntry() {
    return MainWindow::tr("New profile…");
}

QString timeLeft(int seconds) {
    if (seconds < 60) return MainWindow::tr("%1 s left").arg(seconds);
    return MainWindow::tr("%1:%2 left").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void setText(QLabel* label, const QString& text) {
    if (label->text() != text) label->setText(text);
}

void setText(QLineEdit* edit, const QString& text) {
    if (edit->text() == text) return;
    edit->setText(text);
    edit->setCursorPosition(0);
}

void setShown(QWidget* widget, bool shown) {
    if (widget->isHidden() == shown) widget->setVisible(shown);
}

void setUsable(QWidget* widget, bool usable) {
    if (widget->isEnabled() != usable) widget->setEnabled(usable);
}

void setHint(QWidget* widget, const QString& text) {
    const QString hint = asPlainText(text);
    if (widget->toolTip() != hint) widget->setToolTip(hint);
}

void setBackground(QWidget* widget, Colour background) {
    const QColor colour = QColor::fromRgb(background);
    QPalette palette = widget->palette();
    if (palette.color(QPalette::Active, QPalette::Button) == colour) return;
    palette.setColor(QPalette::Active, QPalette::Button, colour);
    palette.setColor(QPalette::Inactive, QPalette::Button, colour);
    widget->setPalette(palette);
}

void showLabel(ColourLabel* mark, const Label& label) {
    setShown(mark, label.visible);
    setText(mark, label.caption);
    mark->setColours(label.background, label.foreground);
}

void showList(QComboBox* box, const ComboBox& state) {
    QStringList items;
    for (int i = 0; i < box->count(); ++i) items.append(box->itemText(i));
    if (items != state.items) {
        const QSignalBlocker quiet(box);
        box->clear();
        box->addItems(state.items);
        box->setCurrentIndex(-1);
    }
    if (box->currentText() != state.text) {
        const QSignalBlocker quiet(box);
        if (box->isEditable()) {
            box->setEditText(state.text);
        } else {
            box->setCurrentIndex(box->findText(state.text));
        }
    }
    setBackground(box, state.background);
}

}  // namespace

MainWindow::MainWindow(GatewayState& state, const Settings& settings, Dialogs& dialogs, MainWindowActions actions)
    : state_(state),
      settings_(settings),
      dialogs_(dialogs),
      actions_(std::move(actions)),
      scaler_(QSize(kDesignWidth, kDesignHeight)) {
    setObjectName(QStringLiteral("frm_Gateway2"));
    setWindowIcon(applicationIcon());
    auto* content = new QWidget(this);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    banner_ = new Banner(content);
    area_ = new QWidget(content);
    area_->resize(kDesignWidth, kDesignHeight);
    layout->addWidget(banner_);
    layout->addWidget(area_, 1);
    controls_ = std::make_unique<WindowControls>(area_, state_);
    setCentralWidget(content);
    area_->installEventFilter(this);
    buildMenus();
    connectControls();
    setMinimumSize(kSmallestWindow);
    resize(kDesignWidth, kDesignHeight + menuBar()->sizeHint().height());
    connect(&repaint_, &QTimer::timeout, this, &MainWindow::showState);
    repaint_.start(kRepaintMs);
    showState();
}

MainWindow::~MainWindow() {
    hide();  // while its lists are there, whose columns are remembered then
    // What they show is held by the members, which end before the window's children would.
    delete takeCentralWidget();
}

void MainWindow::hideDiagnostics() {
    controls_->lblDiagnostic->hide();
    controls_->HitungKirim->hide();
    controls_->DetikBreak->hide();
    state_.wait2.visible = false;
}

void MainWindow::recordControls() {
    scaler_.record(*area_);
    scaler_.scale(area_->size());
}

void MainWindow::buildMenus() {
    const auto add = [this](QMenu* menu, const char* name, const QString& text, const std::function<void()>& action,
                            const QKeySequence& shortcut = {}) {
        QAction* entry = menu->addAction(text);
        entry->setObjectName(QLatin1String(name));
        entry->setShortcut(shortcut);
        entry->setEnabled(static_cast<bool>(action));
        connect(entry, &QAction::triggered, this, [this, action] { click(action); });
        return entry;
    };

    QMenu* gateway = menuBar()->addMenu(tr("&Gateway"));
    mnOpenWA_ =
        add(gateway, "mnOpenWA", tr("&Open WhatsApp"), actions_.openWhatsApp, QKeySequence(Qt::CTRL | Qt::Key_O));
    mnPause_ = add(gateway, "mnPause", tr("&Pause"), actions_.pause, QKeySequence(Qt::Key_F8));
    add(gateway, "mnRefresh", tr("&Refresh Outbox"), actions_.refreshOutbox, QKeySequence(Qt::Key_F5));
    add(gateway, "mnRefreshInbox", tr("Refresh I&nbox"), actions_.refreshInbox, QKeySequence(Qt::Key_F6));
    gateway->addSeparator();
    mnStop_ = add(gateway, "mnStop", tr("&Stop"), actions_.stop);
    add(gateway, "mn_cleaner", tr("Run C&leaner"), actions_.runCleaner);
    add(gateway, "mnmulti", tr("Start another &instance"), actions_.startAnother);
    add(gateway, "mncloseall", tr("Close &All"), actions_.closeAll);
    add(gateway, "mnexit", tr("E&xit"), actions_.exitProgram, QKeySequence(Qt::CTRL | Qt::Key_Q));

    gridActions_ = std::make_unique<GridActions>(
        *controls_, actions_, dialogs_, [this](const auto& action) { click(action); },
        menuBar()->addMenu(tr("&Queues")), state_.work);

    QMenu* view = menuBar()->addMenu(tr("&View"));
    const auto focus = [](QWidget* control) { return [control] { control->setFocus(Qt::ShortcutFocusReason); }; };
    add(view, "mnViewOutbox", tr("&Outbox"), focus(controls_->ms_out), QKeySequence(Qt::CTRL | Qt::Key_1));
    add(view, "mnViewInbox", tr("&Inbox"), focus(controls_->ms), QKeySequence(Qt::CTRL | Qt::Key_2));
    add(view, "mnViewUnsent", tr("&Unsent"), focus(controls_->ms2), QKeySequence(Qt::CTRL | Qt::Key_3));
    add(view, "len2", tr("List &chats in Inbox"), actions_.listChats);
    const auto screen = [this](const char* screenName) -> std::function<void()> {
        if (!actions_.openScreen) return {};
        return [this, screenName] { actions_.openScreen(QLatin1String(screenName)); };
    };
    add(view, "mnSent", tr("&Sent messages…"), screen("frm_Sent"), QKeySequence(Qt::CTRL | Qt::Key_L));
    view->addSeparator();
    add(view, "mnProgramFolder", tr("&Program folder"), actions_.openProgramFolder);
    add(view, "mnLogFile", tr("&Log file"), actions_.openLogFile);

    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    add(tools, "mnSend", tr("&Send a message…"), screen("frm_Send1_v2"), QKeySequence(Qt::CTRL | Qt::Key_N));
    add(tools, "mnReply", tr("Quick &reply…"), screen("frm_Send2_v2"), QKeySequence(Qt::CTRL | Qt::Key_R));
    QMenu* answers = tools->addMenu(tr("&Automatic answers"));
    add(answers, "mn_autochat", tr("&Rules…"), screen("frm_autorespon"), QKeySequence(Qt::CTRL | Qt::Key_K));
    add(answers, "mnfilterchat", tr("&Excluded numbers…"), screen("frm_autorespon_filter"));
    add(answers, "mn_autorespon", tr("Rules of &several instances…"),
        actions_.openScreen ? [this] { mn_autorespon_Click(); } : std::function<void()>());
    add(tools, "mnConfig", tr("Se&ttings…"), screen("frm_Config"), QKeySequence(Qt::CTRL | Qt::Key_Comma));
    add(tools, "mnElement", tr("&Elements…"), screen("frm_element"), QKeySequence(Qt::CTRL | Qt::Key_E));

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    add(help, "mnHelp", tr("&Guide"), actions_.openHelp, QKeySequence(Qt::Key_F1));
    add(help, "mnHowSql", tr("&SQL guide…"), screen("frm_howsql"), QKeySequence(Qt::CTRL | Qt::Key_G));
    add(help, "mnupdate", tr("Check for &updates…"), actions_.checkForUpdate, QKeySequence(Qt::CTRL | Qt::Key_U));
    add(help, "mnAbout", tr("&About…"), screen("frm_about2"), QKeySequence(Qt::CTRL | Qt::Key_I));

    store_ = new QLabel(menuBar());
    store_->setObjectName(QStringLiteral("store"));
    store_->setTextFormat(Qt::PlainText);
    store_->setForegroundRole(QPalette::PlaceholderText);
    store_->setContentsMargins(0, 0, 12, 0);
    menuBar()->setCornerWidget(store_);
}

/// Instances that share a database share its rules; a single one has them all the same.
void MainWindow::mn_autorespon_Click() {
    const auto open = [this](bool yes) {
        if (yes) actions_.openScreen(QStringLiteral("frm_autorespon"));
    };
    if (isYes(settings_.Multi) && !isYes(settings_.UseMDB)) return open(true);
    dialogs_.show(
        {QStringLiteral("Info"),
         QStringLiteral("It's need MySQL and Use Multi Enabled\n\nOpen the rules of this instance, which need "
                        "neither?"),
         MessageBox::Icon::Information, MessageBox::Buttons::YesNo},
        open);
}

void MainWindow::connectControls() {
    const auto connectButton = [this](QPushButton* button, const std::function<void()>& action) {
        button->setEnabled(static_cast<bool>(action));
        connect(button, &QPushButton::clicked, this, [this, action] { click(action); });
    };
    WindowControls& c = *controls_;
    connectButton(c.cmd_OpenWA, actions_.openWhatsApp);
    connectButton(c.cmd_Pause, actions_.pause);
    connectButton(c.cmd_STOP, actions_.stop);
    connectButton(c.cmd_OutboxRefresh, actions_.refreshOutbox);
    connectButton(c.cmd_InboxRefresh, actions_.refreshInbox);
    connectButton(c.breakOff, [this] {
        gridActions_->stop();
        if (actions_.stopWork) actions_.stopWork();
    });
    c.cmd_OutboxRefresh->setAccessibleName(tr("Outbox: Refresh"));
    c.cmd_InboxRefresh->setAccessibleName(tr("Inbox: Refresh"));
    c.newestFirst->setEnabled(static_cast<bool>(actions_.refreshInbox));
    connect(c.newestFirst, &QCheckBox::clicked, this, [this](bool on) {
        state_.newestFirst.checked = on;
        click(actions_.refreshInbox);
    });
    c.HideChrome->setEnabled(static_cast<bool>(actions_.hideChrome));
    connect(c.HideChrome, &QCheckBox::clicked, this, [this](bool on) {
        state_.HideChrome.checked = on;
        click([this, on] { actions_.hideChrome(on); });
    });
    connect(c.cb_Profil, &QComboBox::textActivated, this, [this](const QString& profile) {
        if (profile == newProfileEntry()) {
            if (actions_.newProfile) actions_.newProfile();
            showState();  // also back to the profile in force
            return;
        }
        if (profile == state_.cb_Profil.text) return;
        state_.cb_Profil.text = profile;
        click(actions_.profileChanged ? [this, profile] { actions_.profileChanged(profile); }
                                      : std::function<void()>());
    });
    connect(c.cb_DummyContact, &QComboBox::editTextChanged, this, [this](const QString& number) {
        state_.cb_DummyContact.text = number;
        state_.txt_DUMMY.text = number;
    });
}

void MainWindow::click(const std::function<void()>& action) {
    if (action) action();
    showState();
}

void MainWindow::showTitle() {
    QString title = settings_.applicationName;
    if (isYes(settings_.Multi)) title += QStringLiteral(" [ ") + state_.cb_Profil.text + QStringLiteral(" ]");
    if (windowTitle() != title) setWindowTitle(title);
}

void MainWindow::showStore() {
    const QString name = state_.storeName.isEmpty() ? QString() : tr("Database: %1").arg(state_.storeName);
    if (store_->text() == name) return;
    store_->setText(name);
    setHint(store_, state_.storePlace);
    menuBar()->setCornerWidget(store_);  // which gives it the room that it needs now
}

/// Without its database nobody knows what waits; a store that takes nothing can still be read.
bool MainWindow::queueIsUnknown() const {
    return state_.dboff.visible && state_.ms_out.rowCount() == 1;
}

void MainWindow::showState() {
    WindowControls& c = *controls_;
    showTitle();
    showStore();
    showHead();
    showHindrances();
    QStringList line{state_.work, state_.step, state_.doneAbout};
    line.removeAll(QString());
    const QString doing = line.join(QStringLiteral("   ·   "));
    setText(c.step, doing);
    setHint(c.step, doing);
    setShown(c.breakOff, !state_.work.isEmpty());
    setShown(c.wait, state_.wait.visible);
    setShown(c.waitread, state_.waitread.visible);
    setShown(c.l_disableread, state_.l_disableread.visible);
    setText(c.Inbox_Cnt, state_.Inbox_Cnt.caption);
    setShown(c.Inbox_Cnt, !state_.Inbox_Cnt.caption.isEmpty());
    if (c.newestFirst->isChecked() != state_.newestFirst.checked) c.newestFirst->setChecked(state_.newestFirst.checked);
    c.ms_out->setEmptyText(queueIsUnknown() ? tr("The database is off") : tr("No message is waiting"));
    c.showOutbox(state_);
    c.ms_out->refresh();
    c.ms->refresh();
    c.ms2->refresh();
    c.log->refresh();
    showMessageInProgress();
    showPace();
    for (std::size_t i = 0; i < std::size(c.lb); ++i) showLabel(c.lb[i], state_.lb[i]);
    setShown(c.pQR, state_.pQR.visible);
    if (state_.pQR.visible) c.pQR->showFile(state_.pQR.caption);
}

void MainWindow::showHindrances() {
    std::vector<Banner::Line> lines;
    for (const Hindrance& hindrance : hindrances(state_, settings_)) lines.push_back(bannerLine(hindrance));
    banner_->show(lines);
}

Banner::Line MainWindow::bannerLine(const Hindrance& hindrance) {
    constexpr Colour kRed = 0xB3261E, kAmber = 0xFFE0A3;
    const bool red = hindrance.ends == Hindrance::Ends::WhenSomeoneActs;
    Banner::Line line{hindrance.text, red ? kRed : kAmber, red ? Colour(0xFFFFFF) : colour::kBlack};
    const auto offer = [&](const QString& caption, const std::function<void()>& action) {
        if (!action) return;
        line.button = caption;
        line.pressed = [this, action] { click(action); };
    };
    switch (hindrance.remedy) {
        case Hindrance::Remedy::OpenWhatsApp:
            offer(tr("Open WhatsApp"), actions_.openWhatsApp);
            break;
        case Hindrance::Remedy::Continue:
            offer(tr("Continue"), actions_.pause);
            break;
        case Hindrance::Remedy::Elements:
            if (actions_.openScreen)
                offer(tr("Elements…"), [this] { actions_.openScreen(QStringLiteral("frm_element")); });
            break;
        case Hindrance::Remedy::ProgramFolder:
            offer(tr("Program folder"), actions_.openProgramFolder);
            break;
        case Hindrance::Remedy::TryAgain:
            offer(tr("Try again"), actions_.refreshOutbox);
            break;
        case Hindrance::Remedy::None:
            break;
    }
    return line;
}

void MainWindow::showHead() {
    WindowControls& c = *controls_;
    setUsable(c.cmd_OpenWA, state_.cmd_OpenWA.enabled && actions_.openWhatsApp);
    setUsable(c.cmd_STOP, state_.cmd_STOP.enabled && actions_.stop);
    setHint(c.cmd_OpenWA, state_.cmd_OpenWA.hint);
    setHint(c.cmd_STOP, state_.cmd_STOP.hint);
    mnOpenWA_->setEnabled(c.cmd_OpenWA->isEnabled());
    mnStop_->setEnabled(c.cmd_STOP->isEnabled());

    const bool paused = state_.cmd_Pause.caption == QChar(kPausedCaption);
    const QString pauseText = paused ? tr("&Continue") : tr("&Pause");
    if (c.cmd_Pause->text() != pauseText || c.cmd_Pause->icon().isNull()) {
        c.cmd_Pause->setText(pauseText);
        c.cmd_Pause->setIcon(paused ? playIcon() : pauseIcon());
        mnPause_->setText(pauseText);
    }
    setHint(c.cmd_Pause, state_.cmd_Pause.hint);
    setUsable(c.cmd_Pause, state_.cmd_Pause.enabled && actions_.pause);
    mnPause_->setEnabled(c.cmd_Pause->isEnabled());
    setBackground(c.cmd_Pause, state_.cmd_Pause.background);

    ComboBox profiles = state_.cb_Profil;
    if (actions_.newProfile) profiles.items.append(newProfileEntry());
    showList(c.cb_Profil, profiles);
    setUsable(c.cb_Profil, state_.cb_Profil.enabled);
    ComboBox dummy = state_.cb_DummyContact;
    dummy.background = palette().color(QPalette::Button).rgb() & 0xFFFFFF;
    showList(c.cb_DummyContact, dummy);
    setUsable(c.cb_DummyContact, state_.cb_DummyContact.enabled);
    if (c.HideChrome->isChecked() != state_.HideChrome.checked) c.HideChrome->setChecked(state_.HideChrome.checked);
    setUsable(c.HideChrome, state_.HideChrome.enabled && actions_.hideChrome);
    setShown(c.dboff, state_.dboff.visible);
    const bool news = c.status->text() != state_.status.caption;
    showLabel(c.status, state_.status);
    if (news) announce(c.status);
}

void MainWindow::showMessageInProgress() {
    WindowControls& c = *controls_;
    // The fields keep a message until the next one is taken.
    const bool ended = !state_.wait.visible && !state_.txtid.text.isEmpty();
    setText(c.lblMessage, ended ? tr("Last message") : tr("Message in progress"));
    setText(c.txtid, state_.txtid.text);
    setText(c.txtNo, state_.txtNo.text);
    setText(c.txtMedia, state_.txtMedia.text);
    setText(c.txtFile, state_.txtFile.text);
    const QString& text = state_.txtMsg2.text;
    if (text == shownText_) return;
    shownText_ = text;
    c.txtMsg2->setPlainText(shownText(text, kShownCharacters));
}

void MainWindow::showPace() {
    WindowControls& c = *controls_;
    setText(c.Sent_Cnt, QString::number(state_.sentCount));
    setText(c.Failed_Cnt, QString::number(state_.failedCount));
    setText(c.Outbox_Cnt, queueIsUnknown() ? QStringLiteral("–") : state_.Outbox_Cnt.caption);
    const int held = state_.held.rowCount() - 1;
    setText(c.Held_Cnt, tr("%L1 held").arg(held));
    setShown(c.Held_Cnt, held > 0 && !queueIsUnknown());
    // The count stays after a break or a pause, until the first message of the next batch.
    const bool inBatch = state_.HitungKirim.text != QStringLiteral("0") || state_.BreakTime.enabled();
    setText(c.Kirim_Cnt, inBatch ? state_.Kirim_Cnt.caption : QString());
    setShown(c.lblBatch, !c.Kirim_Cnt->text().isEmpty());
    setText(c.HitungKirim, state_.HitungKirim.text);
    setText(c.DetikBreak, state_.DetikBreak.text);
    setText(c.wait2, state_.wait2.caption);
    // Each send attempt hides the mark, and the break clock shows it again: as long as the break lasts it stays.
    const bool isBreak = state_.BreakTime.enabled();
    setShown(c.wait2, state_.wait2.visible || isBreak);
    setShown(c.BreakProgress, isBreak);
    setShown(c.BreakLeft, isBreak);
    if (!isBreak) return;
    const int left = static_cast<int>(std::ceil(settings_.Break.toDouble() - state_.DetikBreak.text.toDouble()));
    setText(c.BreakLeft, timeLeft(qMax(0, left)));
    // Both texts may hold a fraction; the bar needs whole seconds and a range that isn't empty.
    c.BreakProgress->setMaximum(qMax(1, static_cast<int>(settings_.Break.toDouble())));
    c.BreakProgress->setValue(qMin(c.BreakProgress->maximum(), static_cast<int>(state_.DetikBreak.text.toDouble())));
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == area_ && event->type() == QEvent::Resize) scaler_.scale(area_->size());
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || controls_ == nullptr) return;
    click(actions_.activated);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (unloaded_) return;
    unloaded_ = true;
    repaint_.stop();
    if (actions_.unloaded) actions_.unloaded();
}

}  // namespace kibo
