#include <gtest/gtest.h>

#include "support/running_program.h"
#include "support/virtual_display.h"

namespace kibo {
namespace {

TEST(OperatorsDay, IsPlayedByNameThroughTheAccessibilityInterface) {
    const test::VirtualDisplay display;
    test::RunningProgram program;
    program.set("kibo", "AutoStart", u"N"_qs);
    const auto known =
        program.standIn.updateBehaviour(R"({"chatOpenDelayMs": 0, "unknownNumbers": ["6281230000009"]})");
    ASSERT_TRUE(known.ok()) << known.failure().text;

    // A session bus of its own, which starts the accessibility bus in the folder named here, and ends with this
    // program.
    ASSERT_TRUE(QDir(program.home.path()).mkdir(u"run"_qs));
    qputenv("XDG_RUNTIME_DIR", program.home.filePath(u"run"_qs).toLocal8Bit());
    QProcess bus;
    bus.start(u"setpriv"_qs, {u"--pdeathsig"_qs, u"TERM"_qs, u"dbus-daemon"_qs, u"--session"_qs, u"--nofork"_qs,
                              u"--print-address"_qs});
    ASSERT_TRUE(bus.waitForReadyRead()) << "dbus-daemon: " << bus.readAllStandardError().toStdString();
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readLine().trimmed());

    QProcessEnvironment seen;
    seen.insert(u"DISPLAY"_qs, qEnvironmentVariable("DISPLAY"));
    seen.insert(u"QT_QPA_PLATFORM"_qs, u"xcb"_qs);
    seen.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_qs, u"1"_qs);
    ASSERT_TRUE(program.start(seen));
    QProcess day;
    day.start(QStringLiteral(KIBO_SOURCE_DIR "/tests/system/operators_day"),
              {QString::fromStdString(program.standIn.address()), program.home.filePath(u"kb.mdb"_qs)});
    day.waitForFinished(110'000);
    EXPECT_EQ(day.exitCode(), 0) << day.readAllStandardError().toStdString() << program.log().toStdString();

    // Of each message once what it is; the two that were deleted are nowhere.
    const QString rows = test::sqlite(program.home.filePath(u"kb.mdb"_qs),
                                      u"select wa_text, coalesce(status, '') from sent order by id;"
                                      "select count(*) from outbox"_qs);
    EXPECT_EQ(rows.toStdString(),
              "by hand\t\nthe reply\t\nat first in vain\tfail\nat first in vain\t\nline 1\t\nline 2\t\nline 4\t\n0\n");
    program.process.terminate();
    EXPECT_TRUE(program.process.waitForFinished(15'000));
    bus.terminate();
    EXPECT_TRUE(bus.waitForFinished());
}

}  // namespace
}  // namespace kibo
