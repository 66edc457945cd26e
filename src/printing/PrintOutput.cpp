#include "PrintOutput.h"

#include "PreviewDialog.h"

#include "shell/ui/Commands.h"
#include "shell/ui/Fonts.h"

#include <QApplication>
#include <QFile>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QPrinter>
#include <QProgressDialog>

namespace zq {

namespace {

struct State {
    QString pdfPath;
    std::shared_ptr<PrintProgress> progress;
};

State& state() {
    static State s;
    return s;
}

// zqProBar's part: a bar with a cancel button over the active window.
class DialogProgress : public PrintProgress {
public:
    void begin(const QString& title, int total) override {
        m_dialog = std::make_unique<QProgressDialog>(QString(), QStringLiteral("取消"), 0, qMax(total, 1),
                                                     QApplication::activeWindow());
        m_dialog->setObjectName(QStringLiteral("zqProBar"));
        m_dialog->setWindowTitle(title);
        m_dialog->setFont(uiFont());
        m_dialog->setWindowModality(Qt::ApplicationModal);
        m_dialog->setMinimumDuration(400);
        m_dialog->setAutoReset(false);
        m_dialog->setAutoClose(false);
    }
    bool step(int done, const QString& text) override {
        m_dialog->setLabelText(text);
        m_dialog->setValue(qMin(done, m_dialog->maximum()));
        QCoreApplication::processEvents();
        return !m_dialog->wasCanceled();
    }
    void end() override { m_dialog.reset(); }

private:
    std::unique_ptr<QProgressDialog> m_dialog;
};

QPageLayout pageLayout(const PrintDocument& doc) {
    const QSizeF paper = doc.paperSize();
    const QSizeF portrait(qMin(paper.width(), paper.height()), qMax(paper.width(), paper.height()));
    return QPageLayout(QPageSize(portrait, QPageSize::Millimeter),
                       doc.landscape() ? QPageLayout::Landscape : QPageLayout::Portrait, QMarginsF());
}

// Draws every page on a paged device; false when the user cancelled.
bool paintAll(const PrintDocument& doc, QPagedPaintDevice& device, const QString& doing) {
    QPainter painter;
    if (!painter.begin(&device)) return false;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    Canvas canvas(painter, device.logicalDpiX() / 25.4);
    const int pages = doc.pageCount();
    ProgressScope progress(doc.title(), pages);
    for (int i = 0; i < pages; ++i) {
        if (i > 0) device.newPage();
        doc.paintPage(canvas, i);
        if (!progress.step(i + 1, QStringLiteral("%1第 %2 页 共 %3 页")
                                      .arg(doing, QString::number(i + 1), QString::number(pages)))) {
            painter.end();
            return false;
        }
    }
    return painter.end();
}

} // namespace

// ---- Progress ---------------------------------------------------------------------------------

void installPrintProgress(std::shared_ptr<PrintProgress> progress) {
    state().progress = std::move(progress);
}

ProgressScope::ProgressScope(const QString& title, int total, int minimum) {
    if (state().progress) {
        m_progress = state().progress.get();
    } else if (PrintOutput::interactive() && total >= minimum) {
        m_own = std::make_unique<DialogProgress>();
        m_progress = m_own.get();
    }
    if (m_progress) m_progress->begin(title, total);
}

bool ProgressScope::wanted() {
    return state().progress || PrintOutput::interactive();
}

ProgressScope::~ProgressScope() {
    if (m_progress) m_progress->end();
}

bool ProgressScope::step(int done, const QString& text) {
    if (m_progress && !m_cancelled) m_cancelled = !m_progress->step(done, text);
    return !m_cancelled;
}

// ---- Output -----------------------------------------------------------------------------------

void PrintOutput::setPdfPath(const QString& path) {
    state().pdfPath = path;
}

QString PrintOutput::pdfPath() {
    return state().pdfPath;
}

bool PrintOutput::interactive() {
    return state().pdfPath.isEmpty() && qobject_cast<QApplication*>(QCoreApplication::instance());
}

bool PrintOutput::run(const PrintDocument& doc) {
    if (!state().pdfPath.isEmpty()) return writePdf(doc, state().pdfPath);
    if (!interactive()) return false;
    PreviewDialog preview(doc, QApplication::activeWindow());
    showModal(preview);
    return true;
}

bool writePdf(const PrintDocument& doc, const QString& path) {
    // Written beside the target and renamed into place when whole: a job cancelled, killed or
    // failing on a full disk leaves no truncated file under the name, and an older file stays.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    bool done = false;
    {
        QPdfWriter writer(&file);
        writer.setTitle(doc.title());
        writer.setCreator(QStringLiteral("zqrs"));
        writer.setPageLayout(pageLayout(doc));
        done = paintAll(doc, writer, QStringLiteral("正在生成"));
    }
    if (!done) {
        file.cancelWriting();
        file.commit();
        return false;
    }
    return file.commit();
}

bool printPages(const PrintDocument& doc, QPrinter& printer) {
    printer.setDocName(doc.title());
    printer.setFullPage(true);
    printer.setPageLayout(pageLayout(doc));
    return paintAll(doc, printer, QStringLiteral("正在打印"));
}

QImage renderPage(const PrintDocument& doc, int page, double dpi) {
    const QSizeF paper = doc.paperSize();
    const double dpmm = dpi / 25.4;
    QImage image(qMax(1, qRound(paper.width() * dpmm)), qMax(1, qRound(paper.height() * dpmm)),
                 QImage::Format_RGB32);
    image.fill(Qt::white);
    image.setDotsPerMeterX(qRound(dpmm * 1000));
    image.setDotsPerMeterY(qRound(dpmm * 1000));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    Canvas canvas(painter, dpmm);
    if (page >= 0 && page < doc.pageCount()) doc.paintPage(canvas, page);
    return image;
}

} // namespace zq
