#include "main_window/window_controls.h"

#include "engine/outbox_queue.h"
#include "main_window/setting_indicators.h"
#include "widgets/accessibility.h"
#include "widgets/window_look.h"

namespace kibo {
namespace {

// Places are design pixels: the window is drawn for kDesignWidth by kDesignHeight and scaled from there.
constexpr int kLeft = 12, kLeftWidth = 914;
constexpr int kRight = 938, kRightWidth = 330;
constexpr int kLine = 26;
constexpr int kQrWidth = 520;

constexpr Colour kPaper = 0xFFFFFF, kDark = 0x2B3138, kOutline = 0xD3DAE0;
constexpr Colour kBusy = 0x2B7A66, kNotice = 0xFFE9B8, kNoticeText = 0x5A4300;

/// Creates controls in the order in which they stand in the window; that is also the order of the tab key.
class Builder {
 public:
    explicit Builder(QWidget* area) : area_(area) {}

    template <class Control>
    Control* place(Control* control, const char* name, int x, int y, int width, int height) const {
        control->setObjectName(QLatin1String(name));
        control->setGeometry(x, y, width, height);
        return control;
    }

    /// A panel behind other controls.
    void panel(const char* name, int x, int y, int width, int height, Colour fill, Colour outline) const {
        auto* shape = place(new ColourPanel(area_, fill, outline), name, x, y, width, height);
        shape->lower();
    }
    void card(const char* name, int x, int y, int width, int height) const {
        panel(name, x, y, width, height, kPaper, kOutline);
    }

    QLabel* caption(const char* name, const QString& text, int x, int y, int width, int height = kLine) const {
        auto* label = place(new QLabel(text, area_), name, x, y, width, height);
        label->setTextFormat(Qt::PlainText);
        label->setForegroundRole(QPalette::PlaceholderText);
        return label;
    }
    QLabel* heading(const char* name, const QString& text, int x, int y, int width) const {
        QLabel* label = caption(name, text, x, y, width, 24);
        label->setForegroundRole(QPalette::WindowText);
        label->setFont(sized(label->font(), 14, true));
        return label;
    }
    QLabel* text(const char* name, int x, int y, int width, int height = kLine) const {
        return place(new ElidedLabel(area_), name, x, y, width, height);
    }
    ColourLabel* mark(const char* name, const QString& text, int x, int y, int width, int height, Colour background,
                      Colour foreground) const {
        auto* label = place(new ColourLabel(area_), name, x, y, width, height);
        label->setText(text);
        label->setColours(background, foreground);
        return label;
    }
    QPushButton* button(const char* name, const QString& text, int x, int y, int width, int height) const {
        auto* control = place(new QPushButton(text, area_), name, x, y, width, height);
        control->setAutoDefault(true);  // Enter presses it
        return control;
    }
    QLineEdit* search(const char* name, int x, int y, int width) const {
        auto* edit = place(new QLineEdit(area_), name, x, y, width, kLine);
        edit->setPlaceholderText(WindowControls::tr("Find"));
        edit->setClearButtonEnabled(true);
        return edit;
    }
    QLineEdit* field(const char* name, int x, int y, int width, QLabel* words) const {
        auto* edit = place(new QLineEdit(area_), name, x, y, width, kLine);
        edit->setReadOnly(true);
        edit->setAccessibleName(words->text());
        return edit;
    }
    /// A large number over a small caption.
    QLabel* counter(const char* name, const char* captionName, const QString& text, int x, int y) const {
        constexpr int width = 102;
        auto* number = place(new QLabel(QStringLiteral("0"), area_), name, x, y, width, 34);
        number->setTextFormat(Qt::PlainText);
        number->setAlignment(Qt::AlignCenter);
        number->setFont(sized(number->font(), 22, true));
        caption(captionName, text, x, y + 34, width, 20)->setAlignment(Qt::AlignCenter);
        return number;
    }

    static QFont sized(QFont font, int pixels, bool bold) {
        font.setPixelSize(pixels);
        font.setBold(bold);
        return font;
    }

 private:
    QWidget* area_;
};

/// The queue as an operator sees it. Held rows stand last, since the first row is the next one to be sent.
class OutboxRows : public RowSource {
 public:
    OutboxRows(std::shared_ptr<const RowSource> waiting, std::shared_ptr<const RowSource> held)
        : waiting_(std::move(waiting)), held_(std::move(held)) {}

    int rowCount() const override { return waiting_->rowCount() + held_->rowCount(); }
    QString text(int row, int column) const override {
        const int behind = row - waiting_->rowCount();
        if (behind < 0) return waiting_->text(row, column);
        const QString text = held_->text(behind, column);
        return column == OutboxQueue::Mode && !text.isEmpty() ? WindowControls::tr("held") : text;
    }
    QStringList cells(int row, int columns) const override {
        return row < waiting_->rowCount() ? waiting_->cells(row, columns) : RowSource::cells(row, columns);
    }
    bool hasEnded() const override { return waiting_->hasEnded() || held_->hasEnded(); }

 private:
    const std::shared_ptr<const RowSource> waiting_, held_;
};

}  // namespace

void WindowControls::showOutbox(const GatewayState& state) {
    if (shownWaiting_ == state.ms_out.revision && shownHeld_ == state.held.revision && outbox.revision > 0) return;
    shownWaiting_ = state.ms_out.revision;
    shownHeld_ = state.held.revision;
    outbox.setRows(std::make_shared<OutboxRows>(state.ms_out.rows, state.held.rows));
}

WindowControls::WindowControls(QWidget* area, const GatewayState& state) {
    const Builder build(area);

    // Head
    build.panel("shapHead", 0, 0, kDesignWidth, 58, kPaper, kPaper);
    cmd_OpenWA = build.button("cmd_OpenWA", tr("&Open WhatsApp"), 12, 10, 150, 38);
    cmd_Pause = build.button("cmd_Pause", tr("&Pause"), 170, 10, 124, 38);
    cmd_STOP = build.button("cmd_STOP", tr("&Stop"), 302, 10, 90, 38);
    QLabel* lblProfil = build.caption("lblProfil", tr("P&rofile"), 408, 16, 56);
    cb_Profil = build.place(new QComboBox(area), "cb_Profil", 466, 14, 130, 30);
    lblProfil->setBuddy(cb_Profil);
    QLabel* lblDummy = build.caption("lblDummy", tr("Du&mmy"), 612, 16, 58);
    cb_DummyContact = build.place(new QComboBox(area), "cb_DummyContact", 672, 14, 170, 30);
    cb_DummyContact->setEditable(true);
    cb_DummyContact->setInsertPolicy(QComboBox::NoInsert);
    txt_DUMMY = cb_DummyContact->lineEdit();
    cb_DummyContact->setToolTip(tr("Number whose chat is opened between messages"));
    txt_DUMMY->setObjectName(QStringLiteral("txt_DUMMY"));
    lblDummy->setBuddy(cb_DummyContact);
    HideChrome = build.place(new QCheckBox(tr("Hid&e Chrome"), area), "HideChrome", 862, 16, 130, kLine);
    dboff = build.mark("dboff", tr("Database off"), 1008, 10, 122, 38, colour::kRed, colour::kYellow);
    status = build.mark("status", QString(), 1140, 10, 128, 38, colour::kRed, colour::kYellow);
    status->setFont(Builder::sized(status->font(), 15, true));
    setAnnounced(dboff);
    setAnnounced(status);

    // What the engine does
    step = build.text("step", kLeft + 4, 65, 644);
    step->setFont(Builder::sized(step->font(), 14, false));
    breakOff = build.button("breakOff", tr("Brea&k off"), 664, 65, 86, kLine);
    breakOff->setShortcut(QKeySequence(Qt::Key_Escape));
    wait = build.mark("wait", tr("Sending"), 758, 67, 80, 22, kBusy, 0xFFFFFF);
    waitread = build.mark("waitread", tr("Reading"), 846, 67, 80, 22, kBusy, 0xFFFFFF);

    // Queues. What acts on a list stands beside it, and its search before that.
    build.card("shapOutbox", kLeft, 98, kLeftWidth, 236);
    outbox.header = state.ms_out.header;
    outbox.statusColumn = OutboxQueue::Mode;
    outbox.warning = tr("held");
    outbox.warningColour = colour::kHeldRow;
    showOutbox(state);
    QLabel* lblOutbox = build.heading("lblOutbox", tr("Out&box"), 24, 104, 120);
    findOutbox = build.search("findOutbox", 376, 103, 180);
    cmd_OutboxRefresh = build.button("cmd_OutboxRefresh", tr("Re&fresh"), 564, 103, 82, kLine);
    cmd_CopyOutbox = build.button("cmd_CopyOutbox", tr("Copy"), 654, 103, 82, kLine);
    cmd_DelOut = build.button("cmd_DelOut", tr("Delete"), 744, 103, 82, kLine);
    cmd_ClearOutbox = build.button("cmd_ClearOutbox", tr("Clear"), 834, 103, 82, kLine);
    ms_out = new QueueGrid(outbox, OutboxQueue::Text, OutboxQueue::Id, {}, area);
    build.place(ms_out, "ms_out", 22, 134, kLeftWidth - 20, 192);
    lblOutbox->setBuddy(ms_out);

    build.card("shapInbox", kLeft, 342, 420, 202);
    QLabel* lblInbox = build.heading("lblInbox", tr("&Inbox"), 24, 347, 58);
    Inbox_Cnt = build.mark("Inbox_Cnt", QString(), 82, 349, 43, 20, kBusy, 0xFFFFFF);
    Inbox_Cnt->setToolTip(tr("Messages without a status"));
    l_disableread = build.mark("l_disableread", tr("Reading is off"), 134, 348, 106, 22, kNotice, kNoticeText);
    newestFirst = build.place(new QCheckBox(tr("Ne&west first"), area), "newestFirst", 306, 347, 116, 24);
    newestFirst->setToolTip(tr("Newest messages first"));
    ms = new QueueGrid(state.ms, 1, -1, tr("No message has arrived"), area);
    build.place(ms, "ms", 22, 374, 400, 130);
    lblInbox->setBuddy(ms);
    findInbox = build.search("findInbox", 22, 511, 84);
    cmd_InboxRefresh = build.button("cmd_InboxRefresh", tr("Refresh"), 114, 511, 76, kLine);
    cmd_CopyInbox = build.button("cmd_CopyInbox", tr("Copy"), 196, 511, 70, kLine);
    cmd_ClearGridInbox = build.button("cmd_ClearGridInbox", tr("Empty"), 274, 511, 70, kLine);
    cmd_ClearInbox = build.button("cmd_ClearInbox", tr("Clear"), 352, 511, 70, kLine);

    build.card("shapUnsent", 442, 342, 484, 202);
    ms2 = new QueueGrid(state.ms2, UnsentColumn::Text, UnsentColumn::Id, tr("No message has failed"), area);
    build.heading("lblUnsent", tr("&Unsent"), 454, 347, 120)->setBuddy(ms2);
    build.place(ms2, "ms2", 452, 374, 464, 130);
    findUnsent = build.search("findUnsent", 452, 511, 168);
    cmd_MoveOutbox = build.button("cmd_MoveOutbox", tr("Queue again"), 628, 511, 112, kLine);
    cmd_Copy_UnSent = build.button("cmd_Copy_UnSent", tr("Copy"), 748, 511, 80, kLine);
    cmd_ClearUnSent = build.button("cmd_ClearUnSent", tr("Empty"), 836, 511, 80, kLine);

    build.card("shapLog", kLeft, 552, kLeftWidth, 98);
    log = new LogLines(area);
    build.heading("lblLog", tr("&Log"), 24, 555, 120)->setBuddy(log);
    build.place(log, "log", 22, 580, kLeftWidth - 20, 62);

    // Message in progress
    build.card("shapMessage", kRight, 66, kRightWidth, 268);
    lblMessage = build.heading("lblMessage", tr("Message in progress"), 950, 72, 240);
    txtid = build.field("txtid", 1000, 102, 76, build.caption("lblId", tr("Id"), 950, 102, 48));
    txtNo = build.field("txtNo", 1112, 102, 144, build.caption("lblNo", tr("To"), 1086, 102, 26));
    txtMsg2 = build.place(new QPlainTextEdit(area), "txtMsg2", 950, 136, 306, 122);
    lblMessage->setBuddy(txtMsg2);
    txtMsg2->setReadOnly(true);
    txtMsg2->setTabChangesFocus(true);
    txtMsg2->setPlaceholderText(tr("Nothing is being sent"));
    txtMedia = build.field("txtMedia", 1000, 266, 256, build.caption("lblMedia", tr("Media"), 950, 266, 48));
    txtFile = build.field("txtFile", 1000, 299, 256, build.caption("lblFile", tr("File"), 950, 299, 48));

    // Pace
    build.card("shapPace", kRight, 342, kRightWidth, 308);
    build.heading("lblPace", tr("Pace"), 950, 347, 160);
    Sent_Cnt = build.counter("Sent_Cnt", "lblSent", tr("sent"), 950, 378);
    Failed_Cnt = build.counter("Failed_Cnt", "lblFailed", tr("failed"), 1052, 378);
    Outbox_Cnt = build.counter("Outbox_Cnt", "lblWaiting", tr("waiting"), 1154, 378);
    Held_Cnt = build.caption("Held_Cnt", QString(), 1154, 431, 102, 20);
    Held_Cnt->setAlignment(Qt::AlignCenter);
    Held_Cnt->setForegroundRole(QPalette::WindowText);
    Held_Cnt->setToolTip(tr("Rows with wa_mode 3: they stay until their mode is set back to 0"));
    lblBatch = build.caption("lblBatch", tr("Sent in this batch"), 950, 456, 130);
    Kirim_Cnt = build.text("Kirim_Cnt", 1086, 456, 170);
    Kirim_Cnt->setFont(Builder::sized(Kirim_Cnt->font(), 14, true));
    BreakProgress = build.place(new QProgressBar(area), "BreakProgress", 950, 490, 306, 18);
    BreakProgress->setTextVisible(false);
    BreakProgress->setAccessibleName(tr("Break"));
    wait2 = build.text("wait2", 950, 514, 200);
    BreakLeft = build.text("BreakLeft", 1156, 514, 100);
    BreakLeft->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    lblDiagnostic = build.caption("lblDiagnostic", QStringLiteral("HitungKirim, DetikBreak"), 950, 612, 172);
    HitungKirim = build.field("HitungKirim", 1126, 612, 62, lblDiagnostic);
    DetikBreak = build.field("DetikBreak", 1194, 612, 62, lblDiagnostic);

    // Settings in force
    build.panel("shapSettings", 0, 658, kDesignWidth, 36, kDark, kDark);
    constexpr int kMarkStep = 90;
    for (std::size_t i = 0; i < settingIndicators().size(); ++i) {
        const QByteArray name = "lb" + QByteArray::number(static_cast<int>(i) + 1);
        lb[i] = build.mark(name.constData(), QString(), 12 + static_cast<int>(i) * kMarkStep, 665, kMarkStep - 6, 22,
                           colour::kGrey, 0xFFFFFF);
        lb[i]->setToolTip(QLatin1String(settingIndicators()[i].setting));
    }

    // Above the others while a login is awaited: nothing is sent then, and a phone must be able to read it.
    pQR = build.place(new QrBox(area), "pQR", kDesignWidth - 12 - kQrWidth, 66, kQrWidth, 584);
}

}  // namespace kibo
