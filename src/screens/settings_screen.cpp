#include "screens/settings_screen.h"

#include <QAction>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QShortcut>
#include <QStackedWidget>

#include "base/settings_file.h"
#include "platform/access_file.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "screens/setting_check.h"
#include "screens/setting_field.h"
#include "widgets/accessibility.h"

namespace kibo {
namespace {

constexpr int kPagesWidth = 150;
constexpr int kLookMs = 500;
const QString kDb = QStringLiteral("DB"), kKibo = QStringLiteral("kibo");
const QString kYes = QStringLiteral("Y"), kNo = QStringLiteral("N");

}  // namespace

SettingsScreen::SettingsScreen(Parts parts)
    : p_(std::move(parts)),
      search_(new QLineEdit(this)),
      pages_(new QListWidget(this)),
      stack_(new QStackedWidget(this)) {
    setObjectName(QStringLiteral("frm_Config"));
    setWindowTitle(tr("Settings"));
    resize(900, 660);
    setMinimumSize(640, 420);
    search_->setObjectName(QStringLiteral("search"));
    search_->setPlaceholderText(tr("Find a setting"));
    search_->setAccessibleName(tr("Find a setting"));
    search_->setClearButtonEnabled(true);
    connect(search_, &QLineEdit::textChanged, this, &SettingsScreen::filter);
    auto* column = new QVBoxLayout(this);
    column->addWidget(search_);
    column->addWidget(buildPages(), 1);
    buildButtons(column);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, search_,
            [this] { search_->setFocus(Qt::ShortcutFocusReason); });
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    looks_.setInterval(kLookMs);
    connect(&looks_, &QTimer::timeout, this,
            [this] { restart_->setEnabled(isVisible() && !p_.state.atWork() && p_.restartProgram); });
    looks_.start();
    showMode();
}

QWidget* SettingsScreen::buildPages() {
    pages_->setObjectName(QStringLiteral("pages"));
    pages_->setAccessibleName(tr("Pages"));
    pages_->setFixedWidth(kPagesWidth);
    pages_->setSpacing(3);
    for (const SettingPage page :
         {SettingPage::Database, SettingPage::Browser, SettingPage::Sending, SettingPage::Files, SettingPage::Receiving,
          SettingPage::Instances, SettingPage::Program}) {
        pages_->addItem(pageTitle(page));
        stack_->addWidget(buildPage(page));
    }
    connect(pages_, &QListWidget::currentRowChanged, stack_, &QStackedWidget::setCurrentIndex);
    pages_->setCurrentRow(0);
    auto* both = new QWidget(this);
    auto* row = new QHBoxLayout(both);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(pages_);
    row->addWidget(stack_, 1);
    return both;
}

QWidget* SettingsScreen::buildPage(SettingPage page) {
    auto* content = new QWidget(this);
    auto* column = new QVBoxLayout(content);
    if (page == SettingPage::Database) addModes(column);
    for (const SettingEntry& entry : settingList()) {
        if (entry.page != page || entry.kind == SettingKind::Mode) continue;
        auto* field = new SettingField(entry, p_.settingsFile, content);
        fields_.insert(QLatin1String(entry.key), field);
        column->addWidget(field);
        connect(field, &SettingField::changed, this, &SettingsScreen::noticeChange);
        connect(field, &SettingField::browseAsked, this, [this, field] { browse(*field); });
    }
    column->addStretch();
    auto* area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);  // the keyboard goes from control to control, and the page follows
    area->setWidget(content);
    return area;
}

void SettingsScreen::addModes(QVBoxLayout* column) {
    const struct {
        Mode mode;
        const char *name, *text;
    } modes[] = {{Mode::File, "optMDB", "The local file kb.mdb"},
                 {Mode::Dsn, "optDSN", "A server, by the name of an ODBC data source"},
                 {Mode::Server, "optMy", "A server, by its address"}};
    for (const auto& one : modes) {
        auto* option = new QRadioButton(QLatin1String(one.text), this);
        option->setObjectName(QLatin1String(one.name));
        connect(option, &QRadioButton::clicked, this, [this, mode = one.mode] { choose(mode); });
        modes_.insert(static_cast<int>(one.mode), option);
        column->addWidget(option);
    }
    column->addSpacing(12);
}

void SettingsScreen::buildButtons(QVBoxLayout* column) {
    said_ = new QLabel(this);
    said_->setObjectName(QStringLiteral("said"));
    said_->setTextFormat(Qt::PlainText);
    said_->setWordWrap(true);
    said_->setMinimumHeight(2 * said_->fontMetrics().lineSpacing());
    column->addWidget(said_);
    const auto settings = [this] { return loadSettings(p_.settingsFile); };
    auto* tries = new QWidget(this);
    new QHBoxLayout(tries);
    addButton(tries, "tryDatabase", tr("Try &database"), [this, settings] {
        attempt([settings = settings(), folder = p_.programFolder] { return tryDatabase(settings, folder); });
    });
    addButton(tries, "tryBrowser", tr("Try &browser"),
              [this, settings] { attempt([settings = settings()] { return tryBrowser(settings); }); });
    addButton(tries, "tryBot", tr("Try b&ot"),
              [this, settings] { attempt([settings = settings()] { return tryBot(settings); }); });
    static_cast<QHBoxLayout*>(tries->layout())->addStretch();
    addButton(tries, "cmd_Edit", tr("Edit &file"), [this] { openFile(); });
    addButton(tries, "cmd_API", tr("A&PI"), [this] { startApi(); });
    addButton(tries, "cmd_Doc", tr("&Guide"), [this] { help()->trigger(); });
    tries->layout()->setContentsMargins(0, 0, 0, 0);
    column->addWidget(tries);
    auto* end = new QWidget(this);
    auto* row = new QHBoxLayout(end);
    row->setContentsMargins(0, 0, 0, 0);
    auto* note = new QLabel(tr("Each change is written at once, and counts from the next start on."), end);
    note->setTextFormat(Qt::PlainText);
    note->setForegroundRole(QPalette::PlaceholderText);
    row->addWidget(note, 1);
    restart_ = addButton(end, "restart", tr("&Restart Kibo"), [this] {
        p_.dialogs.show({tr("Restart"), tr("Shall Kibo end and start again now, so that the settings count?"),
                         MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
                        [this](bool yes) {
                            if (yes && p_.restartProgram) p_.restartProgram();
                        });
    });
    addButton(end, "cmd_Save", tr("&Save"), [this] { cmd_Save_Click(); })->setDefault(true);
    column->addWidget(end);
}

QPushButton* SettingsScreen::addButton(QWidget* row, const char* name, const QString& text,
                                       const std::function<void()>& action) {
    auto* button = new QPushButton(text, row);
    button->setObjectName(QLatin1String(name));
    connect(button, &QPushButton::clicked, this, action);
    row->layout()->addWidget(button);
    return button;
}

void SettingsScreen::open() {
    if (!isVisible()) {
        BACA();
        say({});
    }
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void SettingsScreen::BACA() {
    for (SettingField* field : std::as_const(fields_)) field->read();
    showMode();
}

SettingField* SettingsScreen::field(const char* key) const {
    return fields_.value(QLatin1String(key));
}

void SettingsScreen::choose(Mode mode) {
    const auto write = [this](const QString& section, const char* key, const QString& value) {
        WriteIni(section, QLatin1String(key), value, p_.settingsFile);
    };
    write(kDb, "UseMDB", mode == Mode::File ? kYes : kNo);
    write(kDb, "MySQL_WithoutDSN", mode == Mode::Server ? kYes : kNo);
    if (mode == Mode::Server)
        write(kKibo, "DBMS", QStringLiteral("MySQL"));
    else
        write(kKibo, "LimitSelect", kNo);
    BACA();
    noticeChange();
}

void SettingsScreen::showMode() {
    const auto isOn = [this](const char* key) { return ReadIni(kDb, QLatin1String(key), p_.settingsFile) == kYes; };
    const Mode mode = isOn("UseMDB") ? Mode::File : isOn("MySQL_WithoutDSN") ? Mode::Server : Mode::Dsn;
    modes_[static_cast<int>(mode)]->setChecked(true);
    const auto use = [this](const char* key, bool used) { field(key)->setEnabled(used); };
    use("dsn", mode == Mode::Dsn);
    for (const char* key : {"MySQL_Server", "Port", "MySQL_DB"}) use(key, mode == Mode::Server);
    for (const char* key : {"user", "password", "DBMS", "LimitSelect", "AskTables"}) use(key, mode != Mode::File);
}

/// All that match, on whatever page: pages without any are left out.
void SettingsScreen::filter(const QString& words) {
    int first = -1;
    for (int page = 0; page < stack_->count(); ++page) {
        bool any = false;
        const auto fields = stack_->widget(page)->findChildren<SettingField*>();
        for (SettingField* field : fields) {
            const bool matches = field->matches(words.trimmed());
            field->setVisible(matches);
            any = any || matches;
        }
        pages_->item(page)->setHidden(!any);
        if (any && first < 0) first = page;
    }
    for (QRadioButton* mode : std::as_const(modes_)) mode->setVisible(words.trimmed().isEmpty());
    if (first < 0) {
        say(tr("No setting has these words."));
    } else {
        say({});
        if (pages_->currentItem()->isHidden()) pages_->setCurrentRow(first);
    }
}

void SettingsScreen::browse(SettingField& path) {
    const bool bot = QLatin1String(path.entry().key) == QLatin1String("EXE");
    FileBox box;
    box.title = bot ? QStringLiteral("Select EXE File") : QString::fromUtf8(path.entry().label);
    const bool onlyExe = bot && platform::usesAccessFiles();  // where programs have that ending
    box.kinds = {onlyExe ? FileBox::Kind{QStringLiteral("EXE File"), QStringLiteral("*.exe")}
                         : FileBox::Kind{QStringLiteral("All files (*.*)"), QStringLiteral("*")}};
    box.beside = path.value();
    box.folder = path.entry().kind == SettingKind::Folder;
    p_.dialogs.choose(box, [&path](const std::optional<QString>& chosen) {
        if (chosen) path.setValue(QDir::toNativeSeparators(*chosen));
    });
}

void SettingsScreen::cmd_Save_Click() {
    field("Speed")->setValue(field("Speed")->value());
    cutBackslash("TmpFolder");
    cutBackslash("CaptureImage");
    if (modes_[static_cast<int>(Mode::Dsn)]->isChecked() && field("dsn")->value().trimmed().isEmpty()) {
        p_.dialogs.show(
            {QStringLiteral("Error"), QStringLiteral("DSN Name can not empty!"), MessageBox::Icon::Critical});
        return;
    }
    close();
}

void SettingsScreen::cutBackslash(const char* key) {
    QString folder = field(key)->value();
    if (folder.endsWith(u'\\')) folder.chop(1);
    field(key)->setValue(folder);
}

void SettingsScreen::openFile() {
    const auto opened = platform::openForOperator(QDir::toNativeSeparators(p_.settingsFile).toStdString());
    if (!opened) say(QString::fromStdString(opened.failure().text));
}

void SettingsScreen::startApi() {
    const QString program =
        QString::fromStdString(platform::findProgram(platform::joinPath(p_.programFolder.toStdString(), "kb-api")));
    const auto started = program.isEmpty() ? Result<platform::ProcessId>(Failure{FailureKind::NotFound, ""})
                                           : platform::startMinimised(program.toStdString(), {});
    if (!started)
        say(QStringLiteral("There is no API program (kb-api, on Windows kb-api.exe) in %1")
                .arg(QDir::toNativeSeparators(p_.programFolder)));
}

/// In the background: what hangs hangs nothing here.
void SettingsScreen::attempt(const std::function<QString()>& look) {
    say(tr("Trying…"));
    work_.start([this, look](const std::stop_token&) -> BackgroundWork::Ended {
        const QString seen = look();
        return [this, seen] { say(seen); };
    });
}

void SettingsScreen::say(const QString& text) {
    said_->setText(text);
    announce(said_);
}

void SettingsScreen::noticeChange() {
    if (!said_) return;
    say(tr("Written. It counts from the next start on."));
}

}  // namespace kibo
