#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// Buttons as the message box reports them.
enum : int { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

// Styles in use: the sum of a button set (low three bits), an icon and a default button.
enum : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
    vbDefaultButton2 = 256,
    vbDefaultButton3 = 512,
};

// The buttons of a style, in the order they stand in the box.
QVector<int> buttonsOfStyle(int style);

// A request for the common file dialog. The filter is "text|pattern|text|pattern"; a pattern may
// list several globs separated by ';'.
struct FileRequest {
    enum Mode { Open, Save };
    Mode mode = Open;
    QString title;
    QString filter;
    int filterIndex = 1; // 1-based
    int flags = 0;
    QString fileName; // the present name, shown first
};

// Flags of the file dialog that the system uses.
enum : int {
    cdlOFNOverwritePrompt = 0x2,
    cdlOFNHideReadOnly = 0x4,
    cdlOFNPathMustExist = 0x800,
    cdlOFNFileMustExist = 0x1000,
    cdlOFNCreatePrompt = 0x2000,
};

// The filter of a request as the dialogs of the toolkit want it: "text (globs);;text (globs)".
QStringList fileFilters(const QString& filter);

// Everything that asks the user: message box, input box, file dialog, printer choice. The user
// interface installs windows; tests install a scripted one, so nothing ever blocks a test.
class Prompts {
public:
    virtual ~Prompts() = default;
    // Gives the button pressed (vbOK, vbYes, ...).
    virtual int message(const QString& text, int style, const QString& title) = 0;
    // The text typed, or nothing when cancelled.
    virtual std::optional<QString> input(const QString& prompt, const QString& title,
                                         const QString& defaultText) = 0;
    // The file chosen, or the empty text when cancelled.
    virtual QString file(const FileRequest& request) = 0;
    // Lets the user choose the printer; false when cancelled. `printerName` is the present one in,
    // the chosen one out.
    virtual bool choosePrinter(QString& printerName) = 0;
};

// A prompt service that answers from queues and records what was asked. An empty queue gives the
// first button of a message, the default text of an input, no file and the present printer.
class ScriptedPrompts : public Prompts {
public:
    enum class Kind { Message, Input, File, Printer };
    struct Shown {
        Kind kind;
        QString text;  // message text, input prompt, file filter, printer name
        int style = 0; // message style, file flags
        QString title;
        QString answer; // button number as text, typed text, file or printer chosen
    };

    void answer(int button) { m_buttons.push_back(button); }
    void answerInput(std::optional<QString> text) { m_inputs.push_back(std::move(text)); }
    void answerFile(const QString& fileName) { m_files.push_back(fileName); }
    void answerPrinter(std::optional<QString> printerName) { m_printers.push_back(std::move(printerName)); }

    const QVector<Shown>& shown() const { return m_shown; }
    // Texts of the message boxes shown so far.
    QStringList messages() const;
    void clear();

    int message(const QString& text, int style, const QString& title) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString file(const FileRequest& request) override;
    bool choosePrinter(QString& printerName) override;

private:
    std::deque<int> m_buttons;
    std::deque<std::optional<QString>> m_inputs;
    std::deque<QString> m_files;
    std::deque<std::optional<QString>> m_printers;
    QVector<Shown> m_shown;
};

// The prompt service in use: the one installed (by a test), else the one the user interface
// provides, else a scripted one, so that programs without windows never wait for an answer.
Prompts& prompts();
// Installs a service ahead of the user interface's; nullptr removes it.
void installPrompts(std::shared_ptr<Prompts> service);
// Installs a fresh scripted service and gives it.
ScriptedPrompts& scriptPrompts();
// Where the user interface's service comes from; asked at every prompt.
void setPromptProvider(std::function<Prompts*()> provider);

// The message box of the system: an empty title shows the application title.
int ShowMsg(const QString& text, int style = vbOKOnly, const QString& title = {});
// The input box; an empty title shows the application title.
std::optional<QString> InputBox(const QString& prompt, const QString& title = {},
                                const QString& defaultText = {});

} // namespace zq
