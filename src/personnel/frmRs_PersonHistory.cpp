#include "frmRs_PersonHistory.h"

#include "services/ChangeHistory.h"
#include "services/ui/Grid.h"
#include "services/ui/NamedWidgets.h"
#include "shell/Globals.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>

namespace zq {

frmRs_PersonHistory::frmRs_PersonHistory(QWidget* parent)
    : HistoryScreen(QStringLiteral("变更记录"), PersonHistoryColumns(), parent)
    , m_code(G().CurPersonCode)
    , m_name(G().CurPersonName)
    , m_field(named(new QComboBox(this), QStringLiteral("cboField"))) {
    setObjectName(QStringLiteral("frmRs_PersonHistory"));
    m_field->setMinimumContentsLength(14);
    auto* code = named(new QLabel(m_code, this), QStringLiteral("LabCode"));
    auto* name = named(new QLabel(m_name, this), QStringLiteral("LabName"));
    filters()->insertWidget(0, code);
    filters()->insertWidget(1, name);
    filters()->insertSpacing(2, 12);
    filters()->addSpacing(12);
    filters()->addWidget(new QLabel(QStringLiteral("字段"), this));
    filters()->addWidget(m_field);
    filters()->addStretch();
}

void frmRs_PersonHistory::load() {
    m_field->addItem(QStringLiteral("(全部字段)"));
    // Each entry: table, field and "资料.字段" for the eye.
    for (const QString& f : PersonHistoryFields(m_code))
        m_field->addItem(f.section(QLatin1Char('\t'), 2), f);
    HistoryScreen::load();
}

void frmRs_PersonHistory::fill() {
    PersonHistoryFilter f;
    f.from = fromDay();
    f.to = toDay();
    const QString chosen = m_field->currentData().toString();
    if (!chosen.isEmpty()) {
        f.table = chosen.section(QLatin1Char('\t'), 0, 0);
        f.field = chosen.section(QLatin1Char('\t'), 1, 1);
    }
    const QVector<QStringList> rows = PersonHistory(m_code, f);
    grid()->loadRows(rows);
    setCount(QStringLiteral("共 %1 条变更").arg(rows.size()));
}

QStringList frmRs_PersonHistory::printItems() const {
    return {QStringLiteral("编号"), m_code, QStringLiteral("姓名"), m_name};
}

} // namespace zq
