#include "emo/emoji_window.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>

#include "emo/emoji_grid.h"
#include "widgets/accessibility.h"
#include "widgets/help_page.h"

namespace kibo {
namespace {

constexpr int kGroupsWidth = 150;
constexpr QSize kSize(680, 470);
/// Its hand shows a tone better than a word does.
const QString kSampleOfTones = QStringLiteral("✋");

}  // namespace

EmojiWindow::EmojiWindow(Purpose purpose, const QString& stateFile, Take take)
    : purpose_(purpose),
      take_(std::move(take)),
      state_(stateFile, emoji_),
      search_(new QLineEdit(this)),
      tones_(new QComboBox(this)),
      groups_(new QListWidget(this)),
      model_(new EmojiModel(this)),
      grid_(new EmojiGrid(this)),
      said_(new QLabel(this)) {
    setObjectName(QStringLiteral("emo"));
    setWindowTitle(tr("Emoji"));
    setAccessibleRole(this, QAccessible::Window);
    build();
    list();
    resize(kSize);
}

void EmojiWindow::build() {
    search_->setObjectName(QStringLiteral("search"));
    search_->setPlaceholderText(tr("Find by an English name, as “heart” or “thumbs up”"));
    search_->setAccessibleName(tr("Find an emoji"));
    search_->setClearButtonEnabled(true);
    search_->installEventFilter(this);
    connect(search_, &QLineEdit::textChanged, this, &EmojiWindow::list);
    buildTones();
    buildGroups();
    grid_->setObjectName(QStringLiteral("grid"));
    grid_->setAccessibleName(tr("Emoji"));
    grid_->setModel(model_);
    connect(grid_, &EmojiGrid::taken, this, &EmojiWindow::take);
    connect(grid_, &EmojiGrid::typed, this, [this](const QString& text) {
        search_->setFocus(Qt::OtherFocusReason);
        search_->insert(text);
    });
    connect(grid_->selectionModel(), &QItemSelectionModel::currentChanged, this, &EmojiWindow::showName);
    said_->setObjectName(QStringLiteral("said"));
    said_->setTextFormat(Qt::PlainText);
    auto* takes = new QPushButton(purpose_ == Purpose::Copy ? tr("&Copy") : tr("&Insert"), this);
    takes->setObjectName(QStringLiteral("take"));
    takes->setToolTip(purpose_ == Purpose::Copy ? tr("Put the emoji on the clipboard (Enter)")
                                                : tr("Put the emoji into the message (Enter; with Shift go on)"));
    connect(takes, &QPushButton::clicked, this, [this] { takeCurrent(false); });
    auto* closes = new QPushButton(tr("C&lose"), this);
    closes->setToolTip(tr("Close this window (Esc)"));
    connect(closes, &QPushButton::clicked, this, &QWidget::close);
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(QKeySequence(Qt::Key_F1), this), &QShortcut::activated, this, [this] {
        const Result<void> opened = openHelpPage(helpFolder(), QStringLiteral("emoji"));
        if (!opened) say(QString::fromStdString(opened.failure().text));
    });
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, search_, [this] { search_->setFocus(); });

    auto* top = new QHBoxLayout;
    top->addWidget(search_, 1);
    auto* toneLabel = new QLabel(tr("&Skin"), this);
    toneLabel->setBuddy(tones_);
    top->addWidget(toneLabel);
    top->addWidget(tones_);
    auto* middle = new QHBoxLayout;
    middle->addWidget(groups_);
    middle->addWidget(grid_, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(said_, 1);
    for (QPushButton* button : {takes, closes}) {
        button->setAutoDefault(true);  // Enter presses it
        button->setMinimumSize(96, 32);
        bottom->addWidget(button);
    }
    auto* column = new QVBoxLayout(this);
    column->addLayout(top);
    column->addLayout(middle, 1);
    column->addLayout(bottom);
    QWidget* const order[] = {search_, tones_, groups_, grid_, takes, closes};
    for (std::size_t i = 1; i < std::size(order); ++i) setTabOrder(order[i - 1], order[i]);
}

void EmojiWindow::buildTones() {
    tones_->setObjectName(QStringLiteral("tones"));
    tones_->setAccessibleName(tr("Skin tone"));
    const QString names[] = {tr("none"), tr("light"), tr("medium light"), tr("medium"), tr("medium dark"), tr("dark")};
    const Emoji* sample = emoji_.find(kSampleOfTones);
    for (int tone = 0; tone < kSkinTones; ++tone)
        tones_->addItem((sample ? sample->inTone(static_cast<SkinTone>(tone)) + u' ' : QString()) + names[tone]);
    tones_->setCurrentIndex(static_cast<int>(state_.tone()));
    connect(tones_, &QComboBox::activated, this, [this](int tone) {
        const int row = grid_->currentIndex().row();
        if (const auto kept = state_.setTone(static_cast<SkinTone>(tone)); !kept)
            say(tr("The choice can't be kept: %1").arg(QString::fromStdString(kept.failure().text)));
        list();
        grid_->setCurrentIndex(model_->index(row));
    });
}

void EmojiWindow::buildGroups() {
    groups_->setObjectName(QStringLiteral("groups"));
    groups_->setAccessibleName(tr("Groups"));
    groups_->setFixedWidth(kGroupsWidth);
    groups_->setSpacing(3);
    groups_->addItem(tr("Last used"));
    groups_->addItems(emoji_.groups());
    groups_->setCurrentRow(state_.recent().isEmpty() ? 1 : 0);
    connect(groups_, &QListWidget::itemClicked, search_, &QLineEdit::clear);  // also the one that was chosen before
    connect(groups_, &QListWidget::currentRowChanged, this,
            [this] { search_->text().isEmpty() ? list() : search_->clear(); });
}

/// What the search finds, in all groups, or without one the chosen group.
void EmojiWindow::list() {
    const QString words = search_->text().trimmed();
    const int group = groups_->currentRow() - 1;
    groups_->currentItem()->setSelected(words.isEmpty());
    model_->show(!words.isEmpty() ? emoji_.matching(words)
                 : group < 0      ? state_.recent()
                                  : emoji_.ofGroup(group),
                 state_.tone());
    grid_->setCurrentIndex(model_->index(0));
    grid_->scrollToTop();
    if (model_->rowCount() == 0)
        say(words.isEmpty() ? tr("None was used yet") : tr("No emoji has these words in its name"));
}

void EmojiWindow::take(const QModelIndex& index, bool andGoOn) {
    const QString text = index.data().toString();
    const QString name = model_->at(index.row()).name;
    const Result<void> kept = state_.use(model_->at(index.row()));
    take_(text);
    if (purpose_ == Purpose::HandOver && !andGoOn) {
        close();
        return;
    }
    const QString done = purpose_ == Purpose::Copy ? tr("Copied: %1 %2") : tr("Inserted: %1 %2");
    const QString what = done.arg(drawn(text), name);
    say(kept ? what : what + tr(", but not remembered: %1").arg(QString::fromStdString(kept.failure().text)));
}

void EmojiWindow::takeCurrent(bool andGoOn) {
    if (grid_->currentIndex().isValid()) take(grid_->currentIndex(), andGoOn);
}

void EmojiWindow::showName() {
    const QModelIndex current = grid_->currentIndex();
    said_->setText(current.isValid() ? model_->at(current.row()).name : QString());
}

void EmojiWindow::say(const QString& text) {
    said_->setText(text);
    announce(said_);
}

bool EmojiWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    // Its children are painted in the same turn, so the next one finds all of it on the screen.
    if (event->type() == QEvent::Paint) QTimer::singleShot(0, this, &EmojiWindow::painted);
    return handled;
}

/// From the search into the grid without Tab.
bool EmojiWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != search_ || event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
    const auto& key = *static_cast<QKeyEvent*>(event);
    switch (key.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            takeCurrent(key.modifiers() & Qt::ShiftModifier);
            return true;
        case Qt::Key_Down:
        case Qt::Key_PageDown:
            grid_->setFocus(Qt::OtherFocusReason);
            return true;
        default:
            return QWidget::eventFilter(watched, event);
    }
}

}  // namespace kibo
