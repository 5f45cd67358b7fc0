#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <numeric>

#include "app/timer_runner.h"
#include "engine/engine_fixture.h"
#include "main_window/main_window.h"
#include "session/browser_care.h"
#include "session/close_all.h"
#include "widgets/qt_dialogs.h"

namespace kibo::test {
namespace {

/// The boxes that stand.
QList<QDialog*> openBoxes() {
    QList<QDialog*> boxes;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* box = qobject_cast<QDialog*>(window); box && box->isVisible()) boxes.append(box);
    return boxes;
}

/// The engine under the real window, its real boxes and real timers. A wait takes no time, so that minutes of the
/// queue take seconds.
class OpenBox : public Engine {
 protected:
    OpenBox() {
        state.Timer_KIBO = StateTimer(5, true);
        MainWindowActions actions;
        actions.runCleaner = [this] { care.mn_cleaner_Click(); };
        actions.closeAll = [this] { closeAll.mncloseall_Click(); };
        window = std::make_unique<MainWindow>(state, settings, dialogs, std::move(actions));
        window->show();
        timers.add(state.Timer_KIBO, [this] { tick(); });
        timers.add(state.Timer2, [this] { gateway.chatListWatch.Timer2_Timer(); });
    }
    void openAll() {
        for (const char* entry : {"mn_cleaner", "mncloseall"})
            window->findChild<QAction*>(QLatin1String(entry))->trigger();
        care.newProfile();
    }
    /// Sends thirty messages; the time that each took, in the queue's own milliseconds.
    QList<qint64> pace() {
        QList<qint64> times;
        page.beforeEnter = [this, &times] {
            times.append(clock.monotonicMs());
            if (whileTyped) whileTyped();
        };
        const std::size_t wanted = page.delivered.size() + 30;
        for (int i = 0; i < 30; ++i) queue(QString::number(6281200001000 + i), QStringLiteral("text"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return page.delivered.size() >= wanted; }, 30'000))
            << page.delivered.size() << " sent";
        for (qsizetype i = times.size() - 1; i > 0; --i) times[i] -= times[i - 1];
        return times.mid(1);
    }

    QtDialogs dialogs;
    ErrorEdge edge{dialogs};
    TimerRunner timers{edge};
    InstanceRows rows{database};
    BrowserCare care{{.state = state,
                      .settings = settings,
                      .dialogs = dialogs,
                      .programFolder = folder.path(),
                      .settingsFile = folder.filePath(QStringLiteral("kibo.ini")),
                      .hideWindow = [](bool) { return false; },
                      .endSession = [] { ADD_FAILURE(); },
                      .cleanUp = {}}};
    CloseAll closeAll{{dialogs, rows, clock, [] { ADD_FAILURE(); }}};
    std::unique_ptr<MainWindow> window;
    std::function<void()> whileTyped;  // a text stands in a chat's box, and Enter is to come
};

TEST_F(OpenBox, changesNothingInTheQueuesPace) {
    const QList<qint64> undisturbed = pace();
    whileTyped = [this] {
        whileTyped = nullptr;
        // A box that holds the message up would hold up the test too.
        QTimer::singleShot(10'000, window.get(), [this] { dialogs.closeForGood(); });
        openAll();
        EXPECT_EQ(openBoxes().size(), 3);
    };
    EXPECT_EQ(pace(), undisturbed);
    EXPECT_EQ(openBoxes().size(), 3) << "nothing waited for them";
    // More than a minute.
    EXPECT_GT(std::accumulate(undisturbed.begin(), undisturbed.end(), qint64(0)), 60'000);
    dialogs.closeForGood();
    openAll();
    EXPECT_TRUE(openBoxes().isEmpty()) << "none outlives the end, none comes after it";
}

}  // namespace
}  // namespace kibo::test
