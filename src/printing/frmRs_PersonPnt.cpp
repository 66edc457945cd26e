#include "frmRs_PersonPnt.h"

#include "PrintOutput.h"
#include "SheetDocument.h"

#include "services/ui/InputAidsUi.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kPrinterFailed = QStringLiteral("打印机出错,请检查打印机是否联结好或打印机自身故障!");
// picPaper is the page at the screen's resolution: 11907 by 16726.5 twips.
constexpr double kPreviewDpi = 96;
} // namespace

frmRs_PersonPnt::frmRs_PersonPnt(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_PersonPnt"));
    setWindowTitle(QStringLiteral("个人简历"));

    static const char* const names[3] = {"optPaper0", "optPaper1", "optPaper2"};
    static const char* const captions[3] = {"全部", "正面", "反面"};
    auto* options = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) {
        m_optPaper[i] = new QRadioButton(QString::fromUtf8(captions[i]), this);
        m_optPaper[i]->setObjectName(QLatin1String(names[i]));
        options->addWidget(m_optPaper[i]);
    }
    m_optPaper[0]->setChecked(true);
    m_txtMany = new QLineEdit(QStringLiteral("1"), this);
    m_txtMany->setObjectName(QStringLiteral("TxtMany"));
    m_txtMany->setValidator(new QIntValidator(1, 999, m_txtMany)); // digits only
    m_txtMany->setMaximumWidth(50);
    auto* many = new QLabel(QStringLiteral("份数:"), this);
    many->setBuddy(m_txtMany);
    m_chkPai = new QCheckBox(QStringLiteral("空白简历"), this);
    m_chkPai->setObjectName(QStringLiteral("ChkPai"));
    auto button = [this](const char* name, const QString& text) {
        auto* b = new QPushButton(text, this);
        b->setObjectName(QLatin1String(name));
        return b;
    };
    auto* cmdPreview = button("cmdPreview", QStringLiteral("预览(&L)"));
    auto* cmdPrint = button("cmdPrint", QStringLiteral("打印(&P)"));
    auto* cmdPdf = button("cmdPdf", QStringLiteral("保存为PDF"));
    auto* cmdQuit = button("cmdQuit", QStringLiteral("退出>>"));

    m_picture2 = new QWidget(this);
    m_picture2->setObjectName(QStringLiteral("Picture2"));
    m_picture2->setMinimumSize(640, 560);
    m_picture2->setAutoFillBackground(true);
    QPalette grey = m_picture2->palette();
    grey.setColor(QPalette::Window, Qt::darkGray);
    m_picture2->setPalette(grey);
    m_picPaper = new QLabel(m_picture2);
    m_picPaper->setObjectName(QStringLiteral("picPaper"));
    m_picPaper->setGeometry(10, 10, qRound(11907 / 1440.0 * kPreviewDpi),
                            qRound(16726.5 / 1440.0 * kPreviewDpi));
    m_picPaper->installEventFilter(this);

    auto* bar = new QHBoxLayout;
    bar->addLayout(options);
    bar->addSpacing(12);
    bar->addWidget(many);
    bar->addWidget(m_txtMany);
    bar->addWidget(m_chkPai);
    bar->addStretch();
    for (QPushButton* b : {cmdPreview, cmdPrint, cmdPdf, cmdQuit})
        bar->addWidget(b);
    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_lblStatus->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(m_picture2, 1);
    layout->addWidget(m_lblStatus);
    resize(900, 700);

    connect(cmdPreview, &QPushButton::clicked, this, &frmRs_PersonPnt::cmdPreview_Click);
    connect(cmdPrint, &QPushButton::clicked, this, &frmRs_PersonPnt::cmdPrint_Click);
    connect(cmdPdf, &QPushButton::clicked, this, &frmRs_PersonPnt::cmdPdf_Click);
    connect(cmdQuit, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_optPaper[1], &QRadioButton::clicked, this, &frmRs_PersonPnt::cmdPreview_Click);
    connect(m_optPaper[2], &QRadioButton::clicked, this, &frmRs_PersonPnt::cmdPreview_Click);
    connect(m_chkPai, &QCheckBox::clicked, this, &frmRs_PersonPnt::cmdPreview_Click);
}

frmRs_PersonPnt::~frmRs_PersonPnt() = default;

void frmRs_PersonPnt::showEvent(QShowEvent* event) {
    if (!m_loaded) load();
    QDialog::showEvent(event);
}

void frmRs_PersonPnt::load() {
    m_loaded = true;
    m_code = G().CurPersonCode;
    CenterForm(this);
    cmdPreview_Click();
}

int frmRs_PersonPnt::copies() const {
    return qMax(1, m_txtMany->text().toInt());
}

SheetDocument frmRs_PersonPnt::sheet(int sides, int copies) const {
    const bool blank = m_chkPai->isChecked() || m_code.isEmpty();
    return SheetDocument(blank ? QStringList() : QStringList{m_code}, SheetSides(sides), copies, blank);
}

void frmRs_PersonPnt::cmdPreview_Click() {
    // One side at a time: "全部" cannot be previewed.
    if (m_optPaper[0]->isChecked()) m_optPaper[1]->setChecked(true);
    PrintPage = m_optPaper[2]->isChecked() ? 2 : 1;
    const SheetDocument doc = sheet(PrintPage, 1);
    m_picPaper->setPixmap(QPixmap::fromImage(renderPage(doc, 0, kPreviewDpi)));
    const QStringList misfits = doc.misfits();
    m_lblStatus->setText(misfits.isEmpty() ? QString() : misfits.join(QLatin1Char('\n')));
    m_lblStatus->setStyleSheet(misfits.isEmpty() ? QString() : QStringLiteral("color: #b00000"));
}

QString frmRs_PersonPnt::status() const {
    return m_lblStatus->text();
}

void frmRs_PersonPnt::warnMisfits(const SheetDocument& doc) {
    QStringList misfits = doc.misfits();
    if (misfits.isEmpty()) return;
    const qsizetype all = misfits.size();
    if (all > 8) {
        misfits.resize(8);
        misfits << QStringLiteral("……共%1处").arg(all);
    }
    ShowMsg(QStringLiteral("以下内容在纸上放不下，请缩短后再打印：\n") + misfits.join(QLatin1Char('\n')),
            vbExclamation, windowTitle());
}

bool frmRs_PersonPnt::cmdPrint_Click() {
    PrintPage = m_optPaper[1]->isChecked() ? 1 : m_optPaper[2]->isChecked() ? 2 : 0;
    const SheetDocument doc = sheet(PrintPage, copies());
    // A program without windows prints into its PDF.
    if (!PrintOutput::pdfPath().isEmpty()) {
        const bool done = writePdf(doc, PrintOutput::pdfPath());
        warnMisfits(doc);
        return done;
    }
    const QString name = QPrinterInfo::defaultPrinterName();
    QPrinter printer(QPrinter::HighResolution);
    if (!name.isEmpty()) printer.setPrinterName(name);
    if (name.isEmpty() || !printer.isValid() || !printPages(doc, printer)) {
        ShowMsg(kPrinterFailed, vbExclamation, windowTitle());
        return false;
    }
    warnMisfits(doc);
    return true;
}

bool frmRs_PersonPnt::cmdPdf_Click() {
    PrintPage = m_optPaper[1]->isChecked() ? 1 : m_optPaper[2]->isChecked() ? 2 : 0;
    FileRequest request;
    request.mode = FileRequest::Save;
    request.title = QStringLiteral("保存为PDF");
    request.filter = QStringLiteral("PDF 文件|*.pdf");
    request.flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
    request.fileName = QStringLiteral("个人简历%1.pdf").arg(m_code);
    QString file = prompts().file(request);
    if (file.isEmpty()) return false;
    if (!file.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive)) file += QStringLiteral(".pdf");
    const SheetDocument doc = sheet(PrintPage, 1);
    const bool done = writePdf(doc, file);
    warnMisfits(doc);
    return done;
}

bool frmRs_PersonPnt::eventFilter(QObject* watched, QEvent* event) {
    // Dragging the page: the pointer changes on the press, the page follows on the release.
    if (watched == m_picPaper) {
        if (event->type() == QEvent::MouseButtonPress) {
            m_dragFrom = static_cast<QMouseEvent*>(event)->globalPosition().toPoint();
            m_picPaper->setCursor(Qt::ClosedHandCursor);
        } else if (event->type() == QEvent::MouseButtonRelease) {
            const QPoint to = static_cast<QMouseEvent*>(event)->globalPosition().toPoint();
            m_picPaper->move(m_picPaper->pos() + to - m_dragFrom);
            m_picPaper->unsetCursor();
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace zq
