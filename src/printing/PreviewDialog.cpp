#include "PreviewDialog.h"

#include "PrintOutput.h"

#include "shell/Prompts.h"
#include "shell/ui/Fonts.h"

#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

namespace zq {

namespace {
QPushButton* button(QWidget* parent, QHBoxLayout* row, const char* name, const char* caption) {
    auto* b = new QPushButton(QString::fromUtf8(caption), parent);
    b->setObjectName(QString::fromUtf8(name));
    b->setAutoDefault(false);
    row->addWidget(b);
    return b;
}
} // namespace

PreviewDialog::PreviewDialog(const PrintDocument& doc, QWidget* parent)
    : QDialog(parent)
    , m_doc(doc) {
    setObjectName(QStringLiteral("frmPrintPreview"));
    setWindowTitle(doc.title() + QStringLiteral(" - 打印预览"));
    setFont(uiFont());

    auto* bar = new QHBoxLayout;
    QPushButton* cmdPrint = button(this, bar, "cmdPrint", "打印(&P)");
    QPushButton* cmdSave = button(this, bar, "cmdSave", "保存PDF(&S)");
    bar->addSpacing(16);
    m_cmdFirst = button(this, bar, "cmdFirst", "首页");
    m_cmdPrev = button(this, bar, "cmdPrev", "上页");
    m_lblPage = new QLabel(this);
    m_lblPage->setObjectName(QStringLiteral("lblPage"));
    m_lblPage->setAlignment(Qt::AlignCenter);
    m_lblPage->setMinimumWidth(120);
    bar->addWidget(m_lblPage);
    m_cmdNext = button(this, bar, "cmdNext", "下页");
    m_cmdLast = button(this, bar, "cmdLast", "末页");
    bar->addSpacing(16);
    m_cboZoom = new QComboBox(this);
    m_cboZoom->setObjectName(QStringLiteral("cboZoom"));
    m_cboZoom->addItem(QStringLiteral("适合宽度"), 0.0);
    m_cboZoom->addItem(QStringLiteral("整页"), -1.0);
    for (int percent : {50, 75, 100, 125, 150, 200})
        m_cboZoom->addItem(QStringLiteral("%1%").arg(percent), percent / 100.0);
    bar->addWidget(m_cboZoom);
    bar->addStretch();
    QPushButton* cmdQuit = button(this, bar, "cmdQuit", "退出(&X)");

    m_picPage = new QLabel;
    m_picPage->setObjectName(QStringLiteral("picPage"));
    m_picPage->setStyleSheet(QStringLiteral("border: 1px solid #555; background: white;"));
    m_scroll = new QScrollArea(this);
    m_scroll->setObjectName(QStringLiteral("picBack"));
    m_scroll->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_scroll->setBackgroundRole(QPalette::Dark);
    m_scroll->setWidget(m_picPage);
    m_scroll->installEventFilter(this);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(m_scroll, 1);

    connect(cmdPrint, &QPushButton::clicked, this, &PreviewDialog::printDocument);
    connect(cmdSave, &QPushButton::clicked, this, &PreviewDialog::savePdf);
    connect(cmdQuit, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_cmdFirst, &QPushButton::clicked, this, [this] { setPage(0); });
    connect(m_cmdPrev, &QPushButton::clicked, this, [this] { setPage(m_page - 1); });
    connect(m_cmdNext, &QPushButton::clicked, this, [this] { setPage(m_page + 1); });
    connect(m_cmdLast, &QPushButton::clicked, this, [this] { setPage(m_doc.pageCount() - 1); });
    connect(m_cboZoom, &QComboBox::currentIndexChanged, this,
            [this](int i) { setZoom(m_cboZoom->itemData(i).toDouble()); });

    const QRect screen = QGuiApplication::primaryScreen()
                             ? QGuiApplication::primaryScreen()->availableGeometry()
                             : QRect(0, 0, 1024, 768);
    resize(qMin(980, screen.width() * 9 / 10), screen.height() * 9 / 10);
    render();
}

void PreviewDialog::setPage(int page) {
    const int bounded = qBound(0, page, qMax(0, m_doc.pageCount() - 1));
    if (bounded == m_page) return;
    m_page = bounded;
    render();
    m_scroll->verticalScrollBar()->setValue(0);
}

void PreviewDialog::setZoom(double zoom) {
    m_zoom = zoom;
    const int i = m_cboZoom->findData(zoom);
    if (i >= 0 && i != m_cboZoom->currentIndex()) {
        const QSignalBlocker block(m_cboZoom);
        m_cboZoom->setCurrentIndex(i);
    }
    render();
}

double PreviewDialog::effectiveZoom() const {
    if (m_zoom > 0) return m_zoom;
    const QSizeF paper = m_doc.paperSize();
    const double dpi = logicalDpiX();
    // The scroll area's own size, less its frame and a vertical scroll bar: the bars come and go with
    // the zoom, the area does not.
    const int frame = 2 * m_scroll->frameWidth() + 24;
    const QSize room(m_scroll->width() - frame - style()->pixelMetric(QStyle::PM_ScrollBarExtent),
                     m_scroll->height() - frame);
    const double byWidth = room.width() / (paper.width() / 25.4 * dpi);
    const double byHeight = room.height() / (paper.height() / 25.4 * dpi);
    return qMax(0.1, m_zoom < 0 ? qMin(byWidth, byHeight) : byWidth);
}

void PreviewDialog::render() {
    const int pages = m_doc.pageCount();
    m_lblPage->setText(QStringLiteral("第 %1 页 共 %2 页").arg(pages ? m_page + 1 : 0).arg(pages));
    m_cmdFirst->setEnabled(m_page > 0);
    m_cmdPrev->setEnabled(m_page > 0);
    m_cmdNext->setEnabled(m_page + 1 < pages);
    m_cmdLast->setEnabled(m_page + 1 < pages);
    const double ratio = devicePixelRatioF();
    QImage image = renderPage(m_doc, m_page, logicalDpiX() * effectiveZoom() * ratio);
    image.setDevicePixelRatio(ratio);
    m_picPage->setPixmap(QPixmap::fromImage(image));
    m_picPage->resize(m_picPage->sizeHint());
}

bool PreviewDialog::printDocument() {
    QString name = QPrinterInfo::defaultPrinterName();
    if (!prompts().choosePrinter(name)) return false;
    QPrinter printer(QPrinter::HighResolution);
    if (!name.isEmpty()) printer.setPrinterName(name);
    return printPages(m_doc, printer);
}

bool PreviewDialog::savePdf() {
    FileRequest request;
    request.mode = FileRequest::Save;
    request.title = QStringLiteral("保存PDF");
    request.filter = QStringLiteral("PDF 文件|*.pdf");
    request.flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
    request.fileName = m_doc.title() + QStringLiteral(".pdf");
    QString file = prompts().file(request);
    if (file.isEmpty()) return false;
    if (!file.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive)) file += QStringLiteral(".pdf");
    return writePdf(m_doc, file);
}

void PreviewDialog::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_PageDown:
        setPage(m_page + 1);
        return;
    case Qt::Key_PageUp:
        setPage(m_page - 1);
        return;
    case Qt::Key_Home:
        setPage(0);
        return;
    case Qt::Key_End:
        setPage(m_doc.pageCount() - 1);
        return;
    default:
        QDialog::keyPressEvent(event);
    }
}

bool PreviewDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_scroll && event->type() == QEvent::Resize && m_zoom <= 0) render();
    return QDialog::eventFilter(watched, event);
}

} // namespace zq
