#pragma once

#include <QMap>
#include <QTimer>
#include <functional>

#include "base/dialogs.h"
#include "base/setting_list.h"
#include "engine/gateway_state.h"
#include "screens/background_work.h"
#include "screens/screen.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QVBoxLayout;

namespace kibo {

class SettingField;

/// `frm_Config`: every key of the settings file, by theme, each written at the moment of change. What is written counts
/// from the next start on.
class SettingsScreen : public Screen {
    Q_OBJECT

 public:
    struct Parts {
        const GatewayState& state;
        Dialogs& dialogs;
        QString settingsFile;
        QString programFolder;
        std::function<void()> restartProgram;
    };
    explicit SettingsScreen(Parts parts);

    void open() override;
    /// Reads every key anew: another program may have changed some.
    void BACA();

 private:
    enum class Mode { File, Dsn, Server };

    QWidget* buildPages();
    QWidget* buildPage(SettingPage page);
    void addModes(QVBoxLayout* column);
    void buildButtons(QVBoxLayout* column);
    QPushButton* addButton(QWidget* row, const char* name, const QString& text, const std::function<void()>& action);
    SettingField* field(const char* key) const;
    void choose(Mode mode);
    void showMode();
    void filter(const QString& words);
    void browse(SettingField& path);
    void cmd_Save_Click();
    void cutBackslash(const char* key);
    void openFile();
    void startApi();
    void attempt(const std::function<QString()>& look);
    void say(const QString& text);
    void noticeChange();

    Parts p_;
    QLineEdit* search_;
    QListWidget* pages_;
    QStackedWidget* stack_;
    QMap<QString, SettingField*> fields_;  // by key
    QMap<int, QRadioButton*> modes_;
    QLabel* said_ = nullptr;
    QPushButton* restart_ = nullptr;
    BackgroundWork work_{this};
    QTimer looks_;
};

}  // namespace kibo
