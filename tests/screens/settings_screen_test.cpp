#include "screens/settings_screen.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

#include "base/settings_file.h"
#include "screens/setting_check.h"
#include "screens/setting_field.h"
#include "support/answering_dialogs.h"
#include "support/eventually.h"
#include "support/files.h"

namespace kibo::test {
namespace {

class SettingsScreenTest : public testing::Test {
 protected:
    QString stored(const char* section, const char* key) const {
        return readLongIni(QLatin1String(section), QLatin1String(key), file);
    }
    template <class Widget>
    Widget* find(const char* name) {
        auto* widget = screen.findChild<Widget*>(QLatin1String(name));
        EXPECT_TRUE(widget) << name;
        return widget;
    }
    std::string trouble(const char* key) {
        return find<QLabel>((QByteArray("trouble_") + key).constData())->text().toStdString();
    }
    std::string said() { return find<QLabel>("said")->text().toStdString(); }

    QTemporaryDir folder;
    const QString file = folder.filePath(u"kibo.ini"_qs);
    GatewayState state;
    AnsweringDialogs dialogs;
    int restarts = 0;
    SettingsScreen screen{{state, dialogs, file, folder.path(), [this] { ++restarts; }}};
};

TEST_F(SettingsScreenTest, everyControlWritesItsKeyAtOnceAndShowsWhatTheFileHolds) {
    screen.open();
    const auto fields = screen.findChildren<SettingField*>();
    EXPECT_EQ(fields.size(), static_cast<qsizetype>(settingList().size()) - 2)
        << "two keys are set by the kind of store";
    for (SettingField* field : fields) {
        const SettingEntry& entry = field->entry();
        const char* written = *entry.writes ? entry.writes : entry.key;
        auto* control = field->findChild<QWidget*>(QLatin1String(entry.control));
        ASSERT_TRUE(control) << entry.key;
        EXPECT_FALSE(control->accessibleName().isEmpty() || control->accessibleDescription().isEmpty()) << entry.key;
        if (auto* box = qobject_cast<QCheckBox*>(control)) {
            EXPECT_EQ(box->isChecked(), QLatin1String(entry.fallback) == u"on"_qs)
                << entry.key << ": nothing is written yet";
            for (int i = 0; i < 2; ++i) {
                box->toggle();
                EXPECT_EQ(stored(entry.section, written), box->isChecked() ? u"Y"_qs : u"N"_qs) << entry.key;
            }
        } else {
            const QString value = u"v %1 \"a\" ü [x];=1"_qs.arg(QLatin1String(entry.key)).left(30);
            if (auto* list = qobject_cast<QComboBox*>(control)) list->setCurrentText(value);
            if (auto* edit = qobject_cast<QLineEdit*>(control)) edit->setText(value);
            EXPECT_EQ(stored(entry.section, written), value.trimmed()) << entry.key;
        }
    }
    screen.close();
    WriteIni(u"kibo"_qs, u"Break"_qs, u"77"_qs, file);
    screen.open();
    EXPECT_EQ(find<QLineEdit>("txtBreak")->text(), u"77"_qs);
}

TEST_F(SettingsScreenTest, theKindOfStoreSetsItsKeysTogether) {
    const struct {
        const char *option, *keys;
    } cases[] = {{"optMDB", "Y N N"}, {"optMy", "N Y Y"}, {"optDSN", "N N N"}};
    for (const auto& one : cases) {
        WriteIni(u"kibo"_qs, u"LimitSelect"_qs, u"Y"_qs, file);
        find<QAbstractButton>(one.option)->click();
        const QString keys =
            stored("DB", "UseMDB") + u' ' + stored("DB", "MySQL_WithoutDSN") + u' ' + stored("kibo", "LimitSelect");
        EXPECT_EQ(keys, QLatin1String(one.keys)) << one.option;
    }
    EXPECT_EQ(stored("kibo", "DBMS"), u"MySQL"_qs);
    screen.open();
    find<QLineEdit>("txtTmpFolder")->setText(u"C:\\files\\\\"_qs);
    find<QPushButton>("cmd_Save")->click();
    EXPECT_EQ(dialogs.said(0), "Error|DSN Name can not empty!");
    EXPECT_TRUE(screen.isVisible());
    EXPECT_EQ(stored("kibo", "TmpFolder"), u"C:\\files\\"_qs) << "one of them";
    find<QLineEdit>("txtDSN")->setText(u"shop"_qs);
    find<QPushButton>("cmd_Save")->click();
    EXPECT_FALSE(screen.isVisible());
    EXPECT_EQ(stored("DB", "dsn"), u"shop"_qs);
}

TEST_F(SettingsScreenTest, saysWhatCannotWork) {
    screen.open();
    const struct {
        const char *control, *key, *value, *words;
    } cases[] = {{"txtPORT", "Port", "70000", "from 0 to 65535"},
                 {"txtPORT", "Port", "", ""},
                 {"txtBreak", "Break", "ten", "Write a number"},
                 {"txtTmpFolder", "TmpFolder", "/proc/version", "no folder"},
                 {"txtEXE", "EXE", "/no/such/bot", "no such file"},
                 {"txtURL", "PHP", "bot.php", "whole address"},
                 {"txtUser", "user", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", "first 49 bytes"}};
    for (const auto& one : cases) {
        find<QLineEdit>(one.control)->setText(QLatin1String(one.value));
        const std::string words = trouble(one.key);
        EXPECT_TRUE(*one.words ? words.find(one.words) != std::string::npos : words.empty())
            << one.key << ": " << words;
    }
    QFile::remove(file);
    ASSERT_TRUE(QDir().mkpath(file + u"/x"_qs));  // nothing can be written there, not even by root
    find<QLineEdit>("txtBreak")->setText(u"12"_qs);
    EXPECT_NE(trouble("Break").find("can't be written"), std::string::npos) << trouble("Break");
}

TEST_F(SettingsScreenTest, findsTriesAndRestarts) {
    screen.open();
    auto* pages = find<QListWidget>("pages");
    find<QLineEdit>("search")->setText(u"clipboard"_qs);
    EXPECT_EQ(pages->currentItem()->text(), u"Sending"_qs);
    EXPECT_TRUE(pages->item(0)->isHidden());
    EXPECT_TRUE(find<QCheckBox>("c_Clip")->isVisible());
    EXPECT_FALSE(find<QWidget>("cSPEED")->isVisible());
    find<QLineEdit>("search")->clear();
    WriteIni(u"DB"_qs, u"UseMDB"_qs, u"Y"_qs, file);
    find<QPushButton>("tryDatabase")->click();
    EXPECT_TRUE(eventually([&] { return said().find("can't be opened") != std::string::npos; })) << said();
    find<QPushButton>("tryBot")->click();
    EXPECT_TRUE(eventually([&] { return said() == "No bot is switched on."; })) << said();
    auto* restart = find<QPushButton>("restart");
    state.stepRunning = true;
    EXPECT_TRUE(eventually([&] { return !restart->isEnabled(); }));
    state.stepRunning = false;
    EXPECT_TRUE(eventually([&] { return restart->isEnabled(); }));
    dialogs.answers = {false, true};
    restart->click();
    restart->click();
    EXPECT_EQ(restarts, 1);
}

TEST(SettingList, isWhatTheGuideShows) {
    const QByteArray guide = contentOf(QStringLiteral(KIBO_SOURCE_DIR "/docs/operator.md"));
    EXPECT_TRUE(guide.contains(settingsInMarkdown().toUtf8())) << "run scripts/settings-table";
}

}  // namespace
}  // namespace kibo::test
