#include "LogViewerDialog.h"

#include "Fonts.h"
#include "LoginKit.h"

#include "resources/Texts.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

#include "services/Spreadsheets.h"
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kTitle = QStringLiteral("操作日志");
// More lines than anyone reads on a screen; the filter narrows them.
constexpr int kMaxLines = 10000;

QDateEdit* dateBox(QWidget* owner, const char* name, const QDate& date) {
    auto* d = new QDateEdit(date, owner);
    d->setObjectName(QLatin1String(name));
    d->setCalendarPopup(true);
    d->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    d->setMinimumWidth(d->fontMetrics().horizontalAdvance(QStringLiteral("0000-00-00")) + 48);
    return d;
}

const QStringList& header() {
    static const QStringList h = {QStringLiteral("时间"), QStringLiteral("用户"), QStringLiteral("模块"),
                                  QStringLiteral("内容")};
    return h;
}
} // namespace

LogViewerDialog::LogViewerDialog(Connection& db, QWidget* parent)
    : QDialog(parent)
    , m_db(db)
    , m_from(dateBox(this, "dtpFrom", QDate::currentDate().addDays(-30)))
    , m_to(dateBox(this, "dtpTo", QDate::currentDate()))
    , m_user(new QComboBox(this))
    , m_text(new QLineEdit(this))
    , m_grid(new QTableWidget(this))
    , m_count(new QLabel(this)) {
    setObjectName(QStringLiteral("frmLogViewer"));
    setWindowTitle(kTitle);
    setFont(uiFont());
    resize(900, 560);

    m_user->setObjectName(QStringLiteral("cboUser"));
    m_text->setObjectName(QStringLiteral("txtText"));
    m_grid->setObjectName(QStringLiteral("grdLog"));
    m_count->setObjectName(QStringLiteral("lblCount"));

    const QString lang = G().lang();
    for (Recordset rs(m_db, QStringLiteral("select Model_Name,Model_Name%1 from tSysFunc").arg(lang));
         !rs.eof(); rs.moveNext())
        m_captions.insert(rs.text(0).toLower(), rs.text(1));

    m_user->addItem(QStringLiteral("(全部)"));
    m_user->addItems(logUsers(m_db));

    auto* seekButton = namedButton(this, "cmdSeek", QStringLiteral("查询"));
    seekButton->setDefault(true);
    auto* filter = new QHBoxLayout;
    filter->addWidget(new QLabel(QStringLiteral("日期从"), this));
    filter->addWidget(m_from);
    filter->addWidget(new QLabel(QStringLiteral("到"), this));
    filter->addWidget(m_to);
    filter->addSpacing(8);
    filter->addWidget(new QLabel(QStringLiteral("用户"), this));
    filter->addWidget(m_user);
    filter->addSpacing(8);
    filter->addWidget(new QLabel(QStringLiteral("内容含"), this));
    filter->addWidget(m_text, 1);
    filter->addWidget(seekButton);

    m_grid->setColumnCount(int(header().size()));
    m_grid->setHorizontalHeaderLabels(header());
    m_grid->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_grid->horizontalHeader()->setStretchLastSection(true);
    m_grid->verticalHeader()->setVisible(false);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 8);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setAlternatingRowColors(true);

    auto* exportButton = namedButton(this, "cmdExport", QStringLiteral("导出Excel..."));
    auto* close = namedButton(this, "cmdClose", QStringLiteral("关闭"));
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_count, 1);
    bottom->addWidget(exportButton);
    bottom->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(filter);
    layout->addWidget(m_grid, 1);
    layout->addLayout(bottom);

    connect(seekButton, &QPushButton::clicked, this, &LogViewerDialog::seek);
    connect(m_text, &QLineEdit::returnPressed, this, &LogViewerDialog::seek);
    connect(exportButton, &QPushButton::clicked, this, &LogViewerDialog::exportLog);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    seek();
}

QString LogViewerDialog::moduleCaption(const QString& key) const {
    return m_captions.value(key.toLower(), key);
}

void LogViewerDialog::seek() {
    LogFilter f;
    f.from = m_from->date();
    f.to = m_to->date();
    f.user = m_user->currentIndex() > 0 ? m_user->currentText() : QString();
    f.text = m_text->text().trimmed();
    f.limit = kMaxLines;
    if (f.text.contains(QLatin1Char('\''))) {
        ShowMsg(LoadText(183), vbExclamation, kTitle);
        return;
    }
    try {
        m_entries = readLog(m_db, f);
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    for (LogEntry& e : m_entries)
        e.module = moduleCaption(e.module);

    m_grid->setRowCount(int(m_entries.size()));
    for (int r = 0; r < m_entries.size(); ++r) {
        const LogEntry& e = m_entries[r];
        const QStringList cells = {e.time, e.user, e.module, e.text};
        for (int c = 0; c < cells.size(); ++c)
            m_grid->setItem(r, c, new QTableWidgetItem(cells[c]));
    }
    m_count->setText(m_entries.size() >= kMaxLines
                         ? QStringLiteral("共 %1 条 (只显示最新的 %1 条, 请缩小查询范围)").arg(kMaxLines)
                         : QStringLiteral("共 %1 条").arg(m_entries.size()));
}

bool LogViewerDialog::exportLog() {
    if (m_entries.isEmpty()) {
        ShowMsg(QStringLiteral("没有可导出的记录!"), vbExclamation, kTitle);
        return false;
    }
    FileRequest r;
    r.mode = FileRequest::Save;
    r.title = QStringLiteral("导出操作日志");
    r.filter = QStringLiteral("Excel 文件|*.xlsx|CSV 文件|*.csv|所有文件|*");
    r.flags = cdlOFNOverwritePrompt | cdlOFNPathMustExist;
    r.fileName =
        QStringLiteral("操作日志_%1.xlsx").arg(QDate::currentDate().toString(QStringLiteral("yyyyMMdd")));
    QString file = prompts().file(r);
    if (file.isEmpty()) return false;
    if (QFileInfo(file).suffix().isEmpty()) file += QStringLiteral(".xlsx");
    QVector<SheetColumn> columns;
    for (const QString& caption : header())
        columns.append({caption, CellKind::Text, 0, caption == header().first() ? 20.0 : 16.0});
    QVector<QStringList> rows;
    rows.reserve(m_entries.size());
    for (const LogEntry& e : m_entries)
        rows << QStringList{e.time, e.user, e.module, e.text};
    ListRowSource source(std::move(columns), std::move(rows));
    QString error;
    if (ExportRows(file, source, QStringLiteral("操作日志"), &error) < 0) {
        ShowMsg(QStringLiteral("无法写入文件: %1\n%2").arg(file, error), vbExclamation, kTitle);
        return false;
    }
    ShowMsg(QStringLiteral("已导出 %1 条记录到 %2").arg(m_entries.size()).arg(file), vbInformation, kTitle);
    return true;
}

} // namespace zq
