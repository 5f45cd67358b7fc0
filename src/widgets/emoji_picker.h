#pragma once

#include <QProcess>
#include <QStringList>

class QPlainTextEdit;

namespace kibo {

/// Puts emoji into a message's box: starts the program `emo`, whose window an operator chooses in, and inserts what it
/// hands over where the cursor stands. Ends the program when it goes.
class EmojiPicker : public QObject {
    Q_OBJECT

 public:
    /// Looks for the program in these folders, in turn.
    EmojiPicker(QPlainTextEdit* edit, QStringList programFolders);
    ~EmojiPicker() override;

    /// Empty: the program is not there.
    QString program() const;
    /// Why nothing can be picked, in words for the operator; empty when it can.
    QString trouble() const;
    /// Starts the program, or brings its window to the front.
    void start();

 signals:
    void failed(const QString& why);

 private:
    void readChosen();
    void ended(int exitCode, QProcess::ExitStatus status);

    QPlainTextEdit* edit_;
    QStringList programFolders_;
    QProcess process_;
};

}  // namespace kibo
