#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <cstdio>
#include <string>
#include <vector>

#include "base/settings_file.h"
#include "emo/emoji_window.h"
#include "platform/machine.h"
#include "platform/top_level_windows.h"
#include "widgets/icons.h"
#include "widgets/translation.h"
#include "widgets/window_look.h"

namespace {

constexpr const char* kUsage =
    "usage: emo            shows all emoji; a click puts one on the clipboard\n"
    "       emo --print    writes the emoji that is taken to standard output, a line each, and ends\n"
    "       emo --measure  ends when its window is on the screen\n";

void print(const QString& emoji) {
    const QByteArray line = emoji.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}

/// What is on the clipboard of an X display is asked of the program that put it there, so that one stays, without a
/// window, until something else is copied.
void endWithClipboard(QClipboard& clipboard) {
    if (!clipboard.supportsSelection() || !clipboard.ownsClipboard()) {
        QCoreApplication::quit();
        return;
    }
    QObject::connect(&clipboard, &QClipboard::dataChanged, &clipboard, [&clipboard] {
        if (!clipboard.ownsClipboard()) QCoreApplication::quit();
    });
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = kibo::platform::programArguments(argc, argv);
    const std::string mode = arguments.empty() ? std::string() : arguments[0];
    if (arguments.size() > 1 || (!mode.empty() && mode != "--print" && mode != "--measure")) {
        std::fputs(kUsage, mode == "--help" ? stdout : stderr);
        return mode == "--help" ? 0 : 2;
    }
    const std::string needed = kibo::platform::windowSystem();
    if (!needed.empty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", needed.c_str());
    QApplication qt(argc, argv);
    kibo::applyLook(qt);
    QApplication::setWindowIcon(kibo::applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false);
    QClipboard& clipboard = *QGuiApplication::clipboard();
    const bool prints = mode == "--print";
    const QDir folder(QString::fromStdString(kibo::platform::programFolder()));
    kibo::speak(
        kibo::ReadIni(QStringLiteral("kibo"), QStringLiteral("Language"), folder.filePath(QStringLiteral("kibo.ini"))));
    using Window = kibo::EmojiWindow;
    Window window(prints ? Window::Purpose::HandOver : Window::Purpose::Copy,
                  folder.filePath(QStringLiteral("emo.recent")), [&](const QString& emoji) {
                      if (prints) {
                          print(emoji);
                      } else {
                          clipboard.setText(emoji);
                      }
                  });
    QObject::connect(&qt, &QGuiApplication::lastWindowClosed, &qt, [&clipboard] { endWithClipboard(clipboard); });
    if (mode == "--measure") QObject::connect(&window, &Window::painted, &window, &QWidget::close);
    window.show();
    return QApplication::exec();
}
