#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "base/clock.h"
#include "base/controls.h"
#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "screens/background_work.h"
#include "screens/screen.h"
#include "screens/sent_log.h"
#include "screens/sorted_lines.h"
#include "widgets/row_reading.h"

class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kibo {

class QueueGrid;

/// The sent log, `frm_Sent`: finds sent messages, deletes them, sends them again, copies and exports them. All of it
/// over connections of its own, so neither window nor gateway waits.
class SentScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        const Database& database;  ///< says where the store is
        const Settings& settings;
        const GatewayState& state;
        const Clock& clock;
        Dialogs& dialogs;
        /// Hears of failed messages that were put into the outbox once more.
        std::function<void(const std::vector<qint64>& ids)> queuedAgain;
    };

    explicit SentScreen(Parts parts);
    ~SentScreen() override;

    void open() override;

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    using Lines = std::vector<int>;
    using Step = Result<SentLog::Outcome> (SentLog::*)(const FoundRows& rows, const Lines& lines,
                                                       const SentLog::Course& course);
    /// A change of many rows in words.
    struct ChangeWords {
        QString title, question, doing, done;  ///< %1 in the question: "3 messages"
    };

    QWidget* searchRow();
    QWidget* buttonRow();
    QPushButton* button(const char* name, const QString& text, const QString& hint, QWidget* parent, QWidget* below);
    void addKeys();

    void enterPressed();
    /// `note` stays in the status line.
    void search(const SentQuery& query, const QString& note = {});
    void searched(const Result<bool>& result);
    void showOutcomes(bool areKept);
    void sort();
    void sortedTo(const std::shared_ptr<const SortedLines>& sorted);
    void stop();
    void change(const ChangeWords& words, Step step);
    void beginChange(const ChangeWords& words, Step step, const Lines& lines);
    void changed(const ChangeWords& words, const Result<SentLog::Outcome>& outcome, int lines);
    /// `copied`: done when all of them are on the clipboard; may be empty.
    void copy(const Lines& lines, const std::function<void()>& copied = {});
    void Command1_Click();
    void askForFile();
    void exportTo(const QString& file);

    SentQuery query() const;
    void begin(const QString& doing);
    void showProgress();
    void showButtons();
    void tell(const QString& text);

    Parts p_;
    BackgroundWork work_;
    RowReading reading_;
    std::shared_ptr<FoundRows> rows_;  // of the last search; none before the first and while the window is closed
    std::shared_ptr<const SortedLines> sorted_;  // as they are shown; none: as they were found
    std::pair<int, Qt::SortOrder> sortedBy_{-1, Qt::AscendingOrder};
    bool sorting_ = false;
    SentQuery shown_;  // that found them
    Grid lines_;
    int columns_ = kSentColumns;  // that are shown, the first ones
    QString doing_;               // "Deleting %1 of 3 messages", empty while searching
    QString note_;
    std::shared_ptr<std::atomic<int>> done_ = std::make_shared<std::atomic<int>>(0);
    int scrollTo_ = 0;  // after a change: where the operator was
    QDate today_;       // proposed when the window was opened
    QTimer progress_;

    QLineEdit* txtCari_;
    QDateEdit* tgl1_;
    QDateEdit* tgl2_;
    QPushButton* Command2_;
    QueueGrid* ms_;
    QLabel* l_jml_;
    QLabel* status_;
    QPushButton* Command4_;
    QPushButton* Command5_;
    QPushButton* Command1_;
    QPushButton* export_;
    QPushButton* close_;
};

}  // namespace kibo
