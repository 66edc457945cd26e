#include "frmRs_list.h"

#include "services/Lookups.h"
#include "services/ui/InputAidsUi.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "StaffListData.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

frmRs_list::frmRs_list(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_list"));
    setWindowTitle(QStringLiteral("职员列表"));

    m_lstLook = new QListWidget(this);
    m_lstLook->setObjectName(QStringLiteral("lstLook"));
    m_lstLook->setUniformItemSizes(true); // a whole company of names stays quick to show
    auto* label = new QLabel(QStringLiteral("选择员工："), this);
    label->setBuddy(m_lstLook);
    m_chkDeptLimit = new QCheckBox(QStringLiteral("限定本部门"), this);
    m_chkDeptLimit->setObjectName(QStringLiteral("chkDeptLimit"));
    auto* cmdSel = new QPushButton(QStringLiteral("确定"), this);
    cmdSel->setObjectName(QStringLiteral("cmdSel"));
    cmdSel->setDefault(true);
    auto* cmdSelCancel = new QPushButton(QStringLiteral("取消>>"), this);
    cmdSelCancel->setObjectName(QStringLiteral("cmdSelCancel"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_chkDeptLimit);
    buttons->addStretch();
    buttons->addWidget(cmdSel);
    buttons->addWidget(cmdSelCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_lstLook);
    layout->addLayout(buttons);
    resize(320, 420);

    connect(m_chkDeptLimit, &QCheckBox::clicked, this, &frmRs_list::fillList);
    connect(cmdSel, &QPushButton::clicked, this, &frmRs_list::cmdSel_Click);
    connect(cmdSelCancel, &QPushButton::clicked, this, &frmRs_list::cmdSelCancel_Click);
    connect(m_lstLook, &QListWidget::itemDoubleClicked, this, &frmRs_list::cmdSel_Click);
}

void frmRs_list::showEvent(QShowEvent* event) {
    if (!m_loaded) load();
    QDialog::showEvent(event);
}

void frmRs_list::load() {
    m_loaded = true;
    CenterForm(this);
    fillList();
}

void frmRs_list::fillList() {
    const QStringList items = ServingStaff(m_chkDeptLimit->isChecked());
    m_lstLook->clear();
    m_lstLook->addItems(items);
    if (items.isEmpty()) ShowMsg(QStringLiteral("无在职人员记录存在!"), vbInformation);
    m_lstLook->setFocus();
}

void frmRs_list::cmdSel_Click() {
    const QListWidgetItem* item = m_lstLook->currentItem();
    if (!item || !item->isSelected()) return;
    const QString text = item->text();
    const qsizetype tab = text.indexOf(QLatin1Char('\t'));
    G().CurPersonCode = tab < 0 ? text : text.left(tab);
    G().CurPersonName = tab < 0 ? QString() : text.mid(tab + 1);
    GetActivePerson(G().CurPersonCode);
    accept();
}

void frmRs_list::cmdSelCancel_Click() {
    G().CurPersonCode.clear();
    G().CurPersonName.clear();
    QDialog::reject();
}

void frmRs_list::reject() {
    cmdSelCancel_Click(); // closing the window is a cancel: the caller must not take a stale person
}

} // namespace zq
