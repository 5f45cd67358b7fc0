#include "screens/update_check.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "base/settings_file.h"
#include "browser/raw_server.h"
#include "platform/updater.h"
#include "support/answering_dialogs.h"
#include "support/eventually.h"

namespace kibo::test {
namespace {

class UpdateCheckTest : public testing::Test {
 protected:
    /// What is said when the service answers with `answer`; nothing: no service is set, "-": it isn't there.
    std::string said(const std::optional<std::string>& answer, const char* lastBuild = "") {
        WriteIni(QStringLiteral("kibo"), QStringLiteral("LastBuild"), QLatin1String(lastBuild), ini);
        auto server = std::make_unique<RawServer>(
            [&answer](int) { return RawServer::Reply{RawServer::answer(answer.value_or(""))}; });
        const QString address = QString::fromStdString(server->address());
        if (answer == "-") server.reset();
        dialogs.shown.clear();
        UpdateCheck check({dialogs, answer ? address : QString(), ini, QStringLiteral("2023-09-20"), [this] {
                               ++started;
                               return platform::startUpdater(folder.path().toStdString());
                           }});
        check.mnupdate_Click();
        EXPECT_TRUE(eventually([this] { return !dialogs.shown.empty(); }));
        return dialogs.said(0);
    }

    QTemporaryDir folder;
    const QString ini = folder.filePath(QStringLiteral("kibo.ini"));
    AnsweringDialogs dialogs;
    int started = 0;
};

const std::string kGood = "Info|Good..\r\nYour Version is Up To Date..";
const char* const kOffer = "|Found new update 2024-01-05\r\nAre you want to update ?";

TEST_F(UpdateCheckTest, OffersANewerBuildAndSaysWhatElseTheServiceTells) {
    dialogs.answers = {false};
    EXPECT_EQ(said("2024-01-05\r\n"), std::string("Current | 2023-09-20") + kOffer);
    EXPECT_EQ(dialogs.shown[0].buttons, MessageBox::Buttons::YesNo);
    EXPECT_EQ(started, 0);
    EXPECT_EQ(said("2024-01-05", "2099-01-01"), std::string("Current | 2023-09-20") + kOffer);
    EXPECT_EQ(started, 1);
    EXPECT_EQ(dialogs.said(1).find("Update|Here Kibo is updated the way it was installed"), 0);
    EXPECT_EQ(said("2024-01-05", "2020-02-02"), std::string("Current | 2020-02-02") + kOffer);
    EXPECT_EQ(said("2024-01-05", "tomorrow"), std::string("Current | 2023-09-20") + kOffer);

    EXPECT_EQ(said("2023-09-20"), kGood);
    EXPECT_EQ(said("-"), kGood) << "nobody answers";
    for (const char* other : {"<html>Please log in</html>", "zzz", "9999-99-99", ""})
        EXPECT_EQ(said(other).find(kGood + "\r\n\r\nThis is not certain"), 0) << other;
    EXPECT_EQ(said(std::nullopt).find("Update|Nobody can be asked"), 0);
}

}  // namespace
}  // namespace kibo::test
