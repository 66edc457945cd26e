#pragma once

#include "shell/Prompts.h"

#include <memory>

class QFileDialog;
class QWidget;

namespace zq {

// The file dialog of a request, not yet shown: the program's own dialog, whose file list learns
// each file's type from its name only (see NameOnlyIconProvider). It opens in the folder of the
// request's file name when that is a path to a folder that exists, else in the folder last chosen
// in any file dialog of the program, else in the user's documents; an accepted dialog becomes
// that last folder.
std::unique_ptr<QFileDialog> MakeFileDialog(const FileRequest& request, QWidget* parent);
// The folder a file dialog without a folder of its own starts in.
QString StartFolder();
// Forgets the folder last chosen (for tests).
void ForgetLastFolder();

// The prompt service with real windows: message box, input box, file dialog, printer dialog.
// Each is modal over the active window and uses the system's font.
class WidgetPrompts : public Prompts {
public:
    int message(const QString& text, int style, const QString& title) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString file(const FileRequest& request) override;
    bool choosePrinter(QString& printerName) override;
};

} // namespace zq
