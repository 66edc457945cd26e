#include "PersonImportDialog.h"

#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kTitle = QStringLiteral("导入员工");
} // namespace

PersonImportDialog::PersonImportDialog(const QString& path, bool mayAdd, bool mayUpdate, QWidget* parent)
    : QDialog(parent)
    , m_plan(PrepareImport(path))
    , m_mayAdd(mayAdd) {
    setObjectName(QStringLiteral("PersonImportDialog"));
    setWindowTitle(kTitle + QStringLiteral(" - ") + QFileInfo(path).fileName());
    resize(900, 640);
    auto* layout = new QVBoxLayout(this);
    auto* file =
        new QLabel(m_plan.error.isEmpty() ? QStringLiteral("表头在%1, 数据 %2 行。请核对每列对应的字段:")
                                                .arg(m_plan.headerPlace())
                                                .arg(m_plan.rows.size())
                                          : m_plan.error,
                   this);
    file->setObjectName(QStringLiteral("lblFile"));
    layout->addWidget(file);
    m_map = new QTableWidget(this);
    m_map->setObjectName(QStringLiteral("tblMap"));
    m_map->setColumnCount(2);
    m_map->setHorizontalHeaderLabels({QStringLiteral("文件中的列"), QStringLiteral("对应字段")});
    m_map->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_map, 2);
    m_unmapped = new QLabel(this);
    m_unmapped->setObjectName(QStringLiteral("lblUnmapped"));
    m_unmapped->setWordWrap(true);
    layout->addWidget(m_unmapped);

    auto* options = new QHBoxLayout;
    m_update = new QCheckBox(QStringLiteral("按员工编号更新已有的人 (只改对应的列)"), this);
    m_update->setObjectName(QStringLiteral("chkUpdate"));
    m_update->setEnabled(mayUpdate);
    m_goodOnly = new QCheckBox(QStringLiteral("只导入正确的行"), this);
    m_goodOnly->setObjectName(QStringLiteral("chkGoodOnly"));
    m_cmdCheck = NamedButton(this, QStringLiteral("cmdCheck"), QStringLiteral("检查(&K)"));
    options->addWidget(m_update);
    options->addWidget(m_goodOnly);
    options->addStretch();
    options->addWidget(m_cmdCheck);
    layout->addLayout(options);

    m_counts = new QLabel(this);
    m_counts->setObjectName(QStringLiteral("lblCounts"));
    layout->addWidget(m_counts);
    m_issues = new QTableWidget(this);
    m_issues->setObjectName(QStringLiteral("tblIssues"));
    m_issues->setColumnCount(4);
    m_issues->setHorizontalHeaderLabels(
        {QStringLiteral("行号"), QStringLiteral("员工编号"), QStringLiteral("类别"), QStringLiteral("原因")});
    m_issues->horizontalHeader()->setStretchLastSection(true);
    m_issues->setEditTriggers(QAbstractItemView::NoEditTriggers);
    layout->addWidget(m_issues, 3);

    auto* buttons = new QHBoxLayout;
    m_cmdExport = NamedButton(this, QStringLiteral("cmdExportIssues"), QStringLiteral("导出问题行..."));
    m_cmdImport = NamedButton(this, QStringLiteral("cmdImport"), QStringLiteral("导入(&I)"));
    auto* cancel = NamedButton(this, QStringLiteral("cmdCancel"), QStringLiteral("取消"));
    buttons->addWidget(m_cmdExport);
    buttons->addStretch();
    buttons->addWidget(m_cmdImport);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);

    connect(m_cmdCheck, &QPushButton::clicked, this, &PersonImportDialog::runCheck);
    connect(m_cmdExport, &QPushButton::clicked, this, &PersonImportDialog::exportIssues);
    connect(m_cmdImport, &QPushButton::clicked, this, &PersonImportDialog::runImport);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_update, &QCheckBox::toggled, this, &PersonImportDialog::mappingChanged);
    fillMapping();
    mappingChanged();
    m_cmdCheck->setEnabled(m_plan.error.isEmpty());
}

void PersonImportDialog::fillMapping() {
    m_map->setRowCount(int(m_plan.headers.size()));
    for (int c = 0; c < m_plan.headers.size(); ++c) {
        auto* header = new QTableWidgetItem(ColumnLetters(c) + QStringLiteral(": ") + m_plan.headers.at(c));
        header->setFlags(header->flags() & ~Qt::ItemIsEditable);
        m_map->setItem(c, 0, header);
        auto* combo = new QComboBox(m_map);
        combo->setObjectName(QStringLiteral("cboMap%1").arg(c));
        combo->addItem(QStringLiteral("(不导入)"), QString());
        // The clerk knows the fields by their captions; the column's name stays at hand as a tip.
        for (const ImportField& f : ImportFields()) {
            combo->addItem(ImportCaption(f.field), f.field);
            combo->setItemData(combo->count() - 1, f.field, Qt::ToolTipRole);
        }
        combo->setCurrentIndex(qMax(0, combo->findData(m_plan.fields.value(c))));
        connect(combo, &QComboBox::currentIndexChanged, this, [this, c, combo] {
            m_plan.fields[c] = combo->currentData().toString();
            mappingChanged();
        });
        m_map->setCellWidget(c, 1, combo);
    }
}

// Any change of mapping or option makes the last check stale: import waits for a new one.
void PersonImportDialog::mappingChanged() {
    const QStringList out = m_plan.unmapped();
    m_unmapped->setText(out.isEmpty() ? QStringLiteral("每一列都有对应的字段。")
                                      : QStringLiteral("不导入的列: ") + out.join(QStringLiteral(", ")));
    m_checked = false;
    m_cmdImport->setEnabled(false);
    m_cmdExport->setEnabled(false);
}

void PersonImportDialog::runCheck() {
    const QString mapping = CheckMapping(m_plan);
    if (!mapping.isEmpty()) {
        ShowMsg(mapping, vbExclamation, kTitle);
        return;
    }
    try {
        m_check = CheckImport(m_plan, m_update->isChecked());
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    if (!m_mayAdd && m_check.added > 0)
        for (ImportRow& r : m_check.accepted)
            if (!r.update) {
                m_check.issues << RowIssue{r.row, r.values.value(QStringLiteral("fCode")),
                                           QStringLiteral("无权新增员工"), true};
                ++m_check.refused;
            }
    if (!m_mayAdd) {
        m_check.accepted.removeIf([](const ImportRow& r) { return !r.update; });
        m_check.added = 0;
    }
    m_counts->setText(QStringLiteral("新增 %1 人, 修改 %2 人, 未变 %3 人, 拒绝 %4 行, 有警告 %5 行")
                          .arg(m_check.added)
                          .arg(m_check.updated)
                          .arg(m_check.unchanged)
                          .arg(m_check.refused)
                          .arg(m_check.warnings));
    m_issues->setRowCount(int(m_check.issues.size()));
    for (int i = 0; i < m_check.issues.size(); ++i) {
        const RowIssue& issue = m_check.issues.at(i);
        const QStringList cells{QString::number(issue.row), issue.code,
                                issue.refused ? QStringLiteral("拒绝") : QStringLiteral("警告"),
                                issue.reason};
        for (int c = 0; c < cells.size(); ++c)
            m_issues->setItem(i, c, new QTableWidgetItem(cells.at(c)));
    }
    m_checked = true;
    m_cmdExport->setEnabled(!m_check.issues.isEmpty());
    m_cmdImport->setEnabled(m_check.error.isEmpty() && !m_check.accepted.isEmpty());
}

void PersonImportDialog::exportIssues() {
    FileRequest r;
    r.mode = FileRequest::Save;
    r.title = QStringLiteral("导出问题行");
    r.filter = QStringLiteral("Excel 文件 (*.xlsx)|*.xlsx|CSV 文件 (*.csv)|*.csv");
    r.flags = cdlOFNOverwritePrompt | cdlOFNPathMustExist;
    r.fileName = QStringLiteral("导入问题行.xlsx"); // in the user's documents, or where he saved last
    const QString path = prompts().file(r);
    if (path.isEmpty()) return;
    ListRowSource rows = IssueRows(m_check);
    QString error;
    if (ExportRows(path, rows, QStringLiteral("问题行"), &error) < 0) ShowMsg(error, vbExclamation, kTitle);
}

void PersonImportDialog::runImport() {
    if (!m_checked) return;
    if (m_check.refused > 0 && !m_goodOnly->isChecked()) {
        ShowMsg(QStringLiteral("有 %1 行被拒绝, 什么也没有写。请改正文件, 或勾选“只导入正确的行”。")
                    .arg(m_check.refused),
                vbExclamation, kTitle);
        return;
    }
    try {
        m_written = WriteImport(m_check, m_goodOnly->isChecked());
    } catch (const DbError& e) {
        ShowMsg(QStringLiteral("导入失败, 什么也没有写:\n") + e.message(), vbExclamation, kTitle);
        return;
    }
    if (m_written) {
        ShowMsg(QStringLiteral("已导入: 新增 %1 人, 修改 %2 人。").arg(m_check.added).arg(m_check.updated),
                vbInformation, kTitle);
        accept();
    }
}

bool ImportPersons(QWidget* parent, bool mayUpdate) {
    FileRequest r;
    r.mode = FileRequest::Open;
    r.title = kTitle;
    r.filter = QStringLiteral("电子表格 (*.xlsx;*.csv)|*.xlsx;*.csv|所有文件|*");
    r.flags = cdlOFNFileMustExist | cdlOFNHideReadOnly;
    const QString path = prompts().file(r);
    if (path.isEmpty()) return false;
    PersonImportDialog dialog(path, true, mayUpdate, parent);
    showModal(dialog);
    return dialog.written();
}

} // namespace zq
