#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

#include "engine/gateway_state.h"
#include "widgets/colour_label.h"
#include "widgets/log_lines.h"
#include "widgets/qr_box.h"
#include "widgets/queue_grid.h"

namespace kibo {

/// The controls of the main window, created at their design places as children of `area` and owned by it. Each
/// one's object name is the name of the value it shows.
struct WindowControls {
    Q_DECLARE_TR_FUNCTIONS(kibo::WindowControls)

 public:
    WindowControls(QWidget* area, const GatewayState& state);

    /// Brings the rows of `outbox` in line with the state.
    void showOutbox(const GatewayState& state);

    // Head: what the operator does
    QPushButton* cmd_OpenWA;
    QPushButton* cmd_Pause;
    QPushButton* cmd_STOP;
    QComboBox* cb_Profil;
    QComboBox* cb_DummyContact;
    QLineEdit* txt_DUMMY;  ///< the edit field of `cb_DummyContact`
    QCheckBox* HideChrome;
    ColourLabel* dboff;
    ColourLabel* status;

    // What the engine does
    QLabel* step;
    QPushButton* breakOff;
    ColourLabel* wait;
    ColourLabel* waitread;

    // Queues
    QPushButton* cmd_OutboxRefresh;
    QPushButton* cmd_CopyOutbox;
    QPushButton* cmd_DelOut;
    QPushButton* cmd_ClearOutbox;
    QLineEdit* findOutbox;
    QPushButton* cmd_InboxRefresh;
    QPushButton* cmd_CopyInbox;
    QPushButton* cmd_ClearGridInbox;
    QPushButton* cmd_ClearInbox;
    QLineEdit* findInbox;
    QPushButton* cmd_MoveOutbox;
    QPushButton* cmd_Copy_UnSent;
    QPushButton* cmd_ClearUnSent;
    QLineEdit* findUnsent;
    QCheckBox* newestFirst;
    ColourLabel* Inbox_Cnt;
    ColourLabel* l_disableread;
    Grid outbox;  ///< what `ms_out` shows: the rows that wait, and behind them those that are held
    QueueGrid* ms_out;
    QueueGrid* ms;
    QueueGrid* ms2;
    LogLines* log;

    // Message in progress
    QLabel* lblMessage;
    QLineEdit* txtid;
    QLineEdit* txtNo;
    QPlainTextEdit* txtMsg2;
    QLineEdit* txtMedia;
    QLineEdit* txtFile;

    // Pace
    QLabel* Sent_Cnt;
    QLabel* Failed_Cnt;
    QLabel* Outbox_Cnt;
    QLabel* Held_Cnt;
    QLabel* Kirim_Cnt;
    QLabel* lblBatch;
    QProgressBar* BreakProgress;
    QLabel* wait2;
    QLabel* BreakLeft;
    QLabel* lblDiagnostic;
    QLineEdit* HitungKirim;
    QLineEdit* DetikBreak;

    ColourLabel* lb[14];
    QrBox* pQR;

 private:
    quint64 shownWaiting_ = 0, shownHeld_ = 0;  // revisions
};

}  // namespace kibo
