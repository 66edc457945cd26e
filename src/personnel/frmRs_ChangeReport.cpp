#include "frmRs_ChangeReport.h"

#include "services/ChangeHistory.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/Grid.h"
#include "services/ui/NamedWidgets.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace zq {

namespace {
const QString kAllDepts = QStringLiteral("==所有部门==");
}

frmRs_ChangeReport::frmRs_ChangeReport(QWidget* parent)
    : HistoryScreen(QStringLiteral("人事变动报表"), CompanyHistoryColumns(), parent)
    , m_dept(named(new QComboBox(this), QStringLiteral("cboDept")))
    , m_kind(named(new QComboBox(this), QStringLiteral("cboKind"))) {
    setObjectName(QStringLiteral("frmRs_ChangeReport"));
    m_dept->setMinimumContentsLength(12);
    for (int k = 0; k <= kChangeKinds; ++k)
        m_kind->addItem(ChangeKindCaption(k));
    filters()->addSpacing(12);
    filters()->addWidget(new QLabel(QStringLiteral("部门"), this));
    filters()->addWidget(m_dept);
    filters()->addWidget(new QLabel(QStringLiteral("变动"), this));
    filters()->addWidget(m_kind);
    filters()->addStretch();
    // A report is of a period: the period is on from the start.
    findChild<QCheckBox*>(QStringLiteral("chkDate"))->setChecked(true);
    auto* del = NamedButton(this, QStringLiteral("cmdDelHistory"), QStringLiteral("删除历史"));
    del->setVisible(G().isSupervisor());
    buttons()->insertWidget(1, del);
    connect(del, &QPushButton::clicked, this, [this] { guarded([this] { deleteHistory(); }); });
}

void frmRs_ChangeReport::load() {
    const QString own = G().UserDeptCode;
    // A user with a department reports on his own branch.
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_dept, own, 0, 0);
    if (own.isEmpty()) m_dept->insertItem(0, kAllDepts);
    m_dept->setCurrentIndex(0);
    HistoryScreen::load();
}

QString frmRs_ChangeReport::branch() const {
    const QString own = G().UserDeptCode;
    if (m_dept->currentIndex() < 0 || m_dept->currentText() == kAllDepts) return own;
    const QString code = CodeFromName(QStringLiteral("tRs_Bm"), m_dept->currentText());
    return code.isEmpty() ? own : code;
}

void frmRs_ChangeReport::fill() {
    CompanyHistoryFilter f;
    f.from = fromDay();
    f.to = toDay();
    f.deptCode = branch();
    f.kind = m_kind->currentIndex();
    grid()->loadPaged(CompanyHistoryQuery(f));
    const QVector<qint64> counts = CompanyHistoryCounts(f);
    QStringList parts;
    for (int k = 1; k <= kChangeKinds; ++k)
        parts << QStringLiteral("%1 %2").arg(ChangeKindCaption(k)).arg(counts[k]);
    setCount(QStringLiteral("共 %1 条变更   ").arg(counts[0]) + parts.join(QStringLiteral("   ")) +
             (f.kind > 0 ? QStringLiteral("   (列出 %1 条)").arg(counts[f.kind]) : QString()));
}

QStringList frmRs_ChangeReport::printItems() const {
    const QString period = fromDay().isValid()
                               ? fromDay().toString(QStringLiteral("yyyy-MM-dd")) + QStringLiteral(" 至 ") +
                                     toDay().toString(QStringLiteral("yyyy-MM-dd"))
                               : QStringLiteral("全部");
    return {QStringLiteral("期间"), period, QStringLiteral("部门"), m_dept->currentText(), QStringLiteral("变动"),
            m_kind->currentText()};
}

void frmRs_ChangeReport::deleteHistory() {
    if (!G().isSupervisor()) return;
    const std::optional<QString> answer =
        InputBox(QStringLiteral("删除此日期之前的全部变更记录 (yyyy-mm-dd):"), windowTitle(),
                 QDate::currentDate().addYears(-1).toString(QStringLiteral("yyyy-MM-dd")));
    if (!answer || answer->trimmed().isEmpty()) return;
    const QDate day = QDate::fromString(answer->trimmed(), QStringLiteral("yyyy-MM-dd"));
    if (!day.isValid()) {
        ShowMsg(QStringLiteral("[日期格式] 应如: ") + QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")) +
                    QStringLiteral("."),
                vbExclamation, windowTitle());
        return;
    }
    if (ShowMsg(QStringLiteral("真的要删除 %1 之前的全部变更记录吗?").arg(day.toString(QStringLiteral("yyyy-MM-dd"))),
                vbYesNo + vbQuestion, windowTitle()) != vbYes)
        return;
    const qint64 n = DeleteHistoryBefore(day);
    ShowMsg(QStringLiteral("已删除 %1 条变更记录。").arg(n), vbInformation, windowTitle());
    seek();
}

} // namespace zq
