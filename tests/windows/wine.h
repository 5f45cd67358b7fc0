#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace kibo::test {

/// A Windows of its own for one test program: a Wine prefix in a temporary folder, which takes about 15 seconds to
/// make, with what a program finds on an operator's computer. Ends with everything that runs in it.
class Wine {
 public:
    Wine();
    ~Wine();
    Wine(const Wine&) = delete;
    Wine& operator=(const Wine&) = delete;

    /// Empty where Wine is not installed.
    static QString loader();

    /// Starts a program with `variables` added to the environment. `process` must not run yet.
    void start(QProcess& process, const QString& program, const QProcessEnvironment& variables = {},
               const QStringList& arguments = {}) const;

    /// What a Windows program calls the file or folder `path`.
    static QString windowsPath(const QString& path);

 private:
    QProcessEnvironment environment() const;
    void setFonts() const;

    QTemporaryDir prefix_;
};

/// Asks the window with that title to close, as a click on its closing mark does. False: there is none on the screen.
bool closeWindow(const char* title);
/// Presses and releases the first mouse button at that place of the window. False: there is none on the screen.
bool clickWindow(const char* title, int x, int y);

/// Presses and releases Ctrl and the key of that letter, wherever the focus is in the window. False: as above.
bool pressCtrl(const char* title, char letter);

}  // namespace kibo::test
