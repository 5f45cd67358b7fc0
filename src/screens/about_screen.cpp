#include "screens/about_screen.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSysInfo>
#include <QVBoxLayout>

#include "base/log.h"
#include "engine/phone_number.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "screens/setting_check.h"
#include "widgets/accessibility.h"
#include "widgets/queue_grid.h"

namespace kibo {
namespace {

constexpr int kTypingMs = 25;
constexpr int kLicencesHeight = 170;
const QString kUnknown = QStringLiteral("not known");

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* made = new QLabel(text, parent);
    made->setTextFormat(Qt::PlainText);
    return made;
}

/// The number whose chat can be opened; empty: none is set, or what is set is no number.
QString supportNumber(const Settings& settings) {
    const QString number = destinationNumber(settings.SupportNumber, settings.Prefix, settings.CountryCode);
    return isPositiveNumber(number) ? number : QString();
}

}  // namespace

AboutScreen::AboutScreen(Parts parts)
    : p_(std::move(parts)),
      work_(this),
      supportNumber_(supportNumber(p_.settings)),
      texts_{tr("Kibo sends the rows of a table as WhatsApp messages, and keeps what comes back"),
             tr("Version %1, build of %2").arg(QStringLiteral(KIBO_VERSION), p_.settings.buildDate),
             supportNumber_.isEmpty() ? tr("No support contact is set, so there is nobody to chat with here")
                                      : tr("C&hat with support: +%1").arg(supportNumber_),
             tr("It works through WhatsApp Web in a Chrome of your own")} {
    setObjectName(QStringLiteral("frm_about2"));
    setWindowTitle(tr("About"));
    resize(760, 600);
    setMinimumSize(620, 480);
    libraries_.header = QStringList{tr("Library"), tr("Licence"), tr("For")};
    auto rows = std::make_shared<ListRows>();
    for (const QStringList& library : shippedLibraries()) rows->append(library);
    libraries_.setRows(rows);

    auto* page = new QVBoxLayout(this);
    page->addLayout(lines());
    facts_ = new QFormLayout;
    facts_->setVerticalSpacing(4);
    facts_->setHorizontalSpacing(14);
    facts_->setContentsMargins(0, 10, 0, 10);
    page->addLayout(facts_);
    licences_ = new QueueGrid(libraries_, 2, -1, QString(), this);
    licences_->setObjectName(QStringLiteral("licences"));
    licences_->setAccessibleName(tr("Libraries and their licences"));
    licences_->setMinimumHeight(kLicencesHeight);
    auto* heading = plainLabel(tr("&Licences of what the Windows package carries; on Debian the system's packages are "
                                  "used"),
                               this);
    heading->setBuddy(licences_);
    page->addWidget(heading);
    page->addWidget(licences_, 1);
    page->addLayout(buttons());
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    Timer1_.setInterval(kTypingMs);
    connect(&Timer1_, &QTimer::timeout, this, &AboutScreen::Timer1_Timer);
    showFacts();
}

/// The grid asks for its header once more when it goes, and that is a member.
AboutScreen::~AboutScreen() {
    delete licences_;
}

/// Their room is that of the whole texts from the start, so that nothing moves while they are typed.
QLayout* AboutScreen::lines() {
    auto* column = new QVBoxLayout;
    column->setSpacing(4);
    for (std::size_t i = 0; i < kLines; ++i) {
        const QString text = texts_[static_cast<qsizetype>(i)];
        if (i == 2 && !supportNumber_.isEmpty()) {
            auto* chat = new QPushButton(text, this);
            chat->setFlat(true);
            chat->setAutoDefault(true);  // Enter presses it
            chat->setCursor(Qt::PointingHandCursor);
            chat->setStyleSheet(QStringLiteral("text-align: left; padding: 2px 0; text-decoration: underline"));
            connect(chat, &QPushButton::clicked, this, &AboutScreen::Label3_Click);
            Label_[i] = chat;
        } else {
            Label_[i] = plainLabel(text, this);
        }
        QFont font = Label_[i]->font();
        if (i == 0) font.setBold(true);
        Label_[i]->setFont(font);
        Label_[i]->setObjectName(QStringLiteral("Label%1").arg(i + 1));
        QString spoken = text;
        Label_[i]->setAccessibleName(spoken.remove(u'&'));
        Label_[i]->setMinimumSize(Label_[i]->sizeHint());
        column->addWidget(Label_[i], 0, Qt::AlignLeft);
    }
    return column;
}

QLayout* AboutScreen::buttons() {
    auto* line = new QHBoxLayout;
    status_ = plainLabel({}, this);
    status_->setObjectName(QStringLiteral("about_status"));
    line->addWidget(status_, 1);
    const auto add = [&](const char* name, const QString& text, const QString& hint) {
        auto* made = new QPushButton(text, this);
        made->setObjectName(QLatin1String(name));
        made->setToolTip(hint);
        made->setMinimumSize(96, 32);
        made->setAutoDefault(true);
        line->addWidget(made);
        return made;
    };
    copy_ = add("copyReport", tr("Copy for a &report"),
                tr("Versions and places onto the clipboard, without names, numbers and passwords"));
    connect(copy_, &QPushButton::clicked, this, &AboutScreen::copyReport);
    connect(add("Command3", tr("&Close"), tr("Close this window (Esc)")), &QPushButton::clicked, this, &QWidget::close);
    return line;
}

void AboutScreen::open() {
    if (isHidden()) {
        typed_ = TypedLines(texts_);
        Timer1_.start();
        Timer1_Timer();
        status_->clear();
        copy_->setFocus();
        lookForVersions();
    }
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void AboutScreen::closeEvent(QCloseEvent* event) {
    Timer1_.stop();
    work_.abandon();
    event->accept();
}

void AboutScreen::Timer1_Timer() {
    if (!typed_.tick()) Timer1_.stop();
    for (std::size_t i = 0; i < kLines; ++i) {
        const QString text = typed_.shown(static_cast<qsizetype>(i));
        if (auto* chat = qobject_cast<QPushButton*>(Label_[i])) {
            chat->setText(text);
        } else {
            static_cast<QLabel*>(Label_[i])->setText(text);
        }
    }
}

void AboutScreen::Label3_Click() {
    const QString base = p_.settings.ChatAddress.isEmpty() ? kDefaultChatAddress : p_.settings.ChatAddress;
    const Result<void> opened = platform::openForOperator((base + supportNumber_).toStdString());
    if (opened) return;
    p_.dialogs.show({windowTitle(),
                     tr("The chat can't be opened: %1").arg(QString::fromStdString(opened.failure().text)),
                     MessageBox::Icon::Critical});
}

/// Both programs are started for it, which takes a moment.
void AboutScreen::lookForVersions() {
    work_.start([settings = p_.settings, this](const std::stop_token&) {
        const QString browser = installedBrowser(settings), driver = installedDriver(settings.ChromeDriver);
        return [=, this] {
            browser_ = browser.isEmpty() ? kUnknown : browser;
            driver_ = driver.isEmpty() ? kUnknown : driver;
            showFacts();
        };
    });
}

QList<ProgramFact> AboutScreen::facts() const {
    const QString looking = tr("looking…");
    const bool server = p_.database.kind() == DatabaseKind::MySql;
    return {{tr("Version"), QStringLiteral(KIBO_VERSION)},
            {tr("Build"), p_.settings.buildDate},
            {tr("Program folder"), QDir::toNativeSeparators(p_.programFolder)},
            {tr("Settings file"), QDir::toNativeSeparators(p_.settingsFile)},
            {tr("Database"), server ? tr("MySQL or MariaDB server") : tr("local file")},
            {tr("Qt"), QLatin1String(qVersion())},
            {tr("System"), QSysInfo::prettyProductName() + u' ' + QSysInfo::currentCpuArchitecture()},
            {tr("Browser"), browser_.isEmpty() ? looking : browser_},
            {tr("Driver"), driver_.isEmpty() ? looking : driver_}};
}

void AboutScreen::showFacts() {
    while (facts_->rowCount() > 0) facts_->removeRow(0);
    for (const ProgramFact& fact : facts()) {
        auto* value = plainLabel(fact.value, this);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setWordWrap(true);
        facts_->addRow(plainLabel(fact.name, this), value);
    }
}

void AboutScreen::copyReport() {
    QApplication::clipboard()->setText(factsForReport(facts(), QDir::homePath()));
    status_->setText(tr("Copied. What paths tell of you is left out."));
    announce(status_);
}

}  // namespace kibo
