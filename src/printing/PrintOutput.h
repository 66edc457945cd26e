#pragma once

#include "PrintDocument.h"

#include <memory>
#include <QImage>
#include <QString>

class QPrinter;
class QProgressDialog;

namespace zq {

// The progress of a long print job (reading many records, writing many pages), with a way to cancel.
class PrintProgress {
public:
    virtual ~PrintProgress() = default;
    virtual void begin(const QString& title, int total) = 0;
    // Reports `done` of the total with a line of text; false when the user cancelled.
    virtual bool step(int done, const QString& text) = 0;
    virtual void end() = 0;
};

// The progress in use for one job: an installed one (a test's), else a progress window on
// interactive jobs of `minimum` steps or more, else none. Ended when it goes out of scope.
class ProgressScope {
public:
    ProgressScope(const QString& title, int total, int minimum = 50);
    ~ProgressScope();
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;
    // Whether a job would show progress now (one is installed, or the job is interactive), so that a
    // caller counts its steps only when someone looks.
    static bool wanted();
    // False once the user has cancelled.
    bool step(int done, const QString& text);
    bool cancelled() const { return m_cancelled; }

private:
    PrintProgress* m_progress = nullptr;
    std::unique_ptr<PrintProgress> m_own;
    bool m_cancelled = false;
};

// Installs a progress ahead of the window (nullptr removes it).
void installPrintProgress(std::shared_ptr<PrintProgress> progress);

// Where print jobs go. Interactive programs get the preview, from which the user prints or saves a
// PDF; programs without windows (the admin tool, tests) set a PDF path, and every job is written
// there without asking anything.
class PrintOutput {
public:
    // Every job from now on is written to `path` as PDF; the empty text brings back the preview.
    static void setPdfPath(const QString& path);
    static QString pdfPath();
    // True when jobs show windows (preview, progress): no PDF path is set and the program has them.
    static bool interactive();

    // Hands a finished document to its destination. False when nothing came out (cancelled, or no
    // destination at all).
    static bool run(const PrintDocument& doc);
};

// Writes every page as a PDF; false (and no file) when cancelled or the file cannot be written.
bool writePdf(const PrintDocument& doc, const QString& path);
// Prints every page on a printer set up by the caller; false when cancelled.
bool printPages(const PrintDocument& doc, QPrinter& printer);
// One page as an image at `dpi` dots to the inch, on white.
QImage renderPage(const PrintDocument& doc, int page, double dpi);

} // namespace zq
