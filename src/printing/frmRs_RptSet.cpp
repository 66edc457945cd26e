#include "frmRs_RptSet.h"

#include "FieldSettingsData.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

namespace {} // namespace

frmRs_RptSet::frmRs_RptSet(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_RptSet"));
    setWindowTitle(QStringLiteral("项目设置"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    m_txtName = new QLineEdit(this);
    m_txtName->setObjectName(QStringLiteral("TxtName"));
    m_txtItemNo = new QLineEdit(this);
    m_txtItemNo->setObjectName(QStringLiteral("txtItemNo"));
    auto* nameLabel = new QLabel(QStringLiteral("称谓："), this);
    nameLabel->setBuddy(m_txtName);
    m_label1 = new QLabel(QStringLiteral("项目编号："), this);
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setBuddy(m_txtItemNo);
    m_command3 = NamedButton(this, "Command3", QStringLiteral("查找项目内容"));
    m_cmdOK = NamedButton(this, "cmdOK", QStringLiteral("确定"));
    auto* cmdCancel = NamedButton(this, "cmdCancel", QStringLiteral("取消>>"));

    auto* fields = new QGridLayout;
    fields->addWidget(nameLabel, 0, 0);
    fields->addWidget(m_txtName, 0, 1, 1, 2);
    fields->addWidget(m_label1, 1, 0);
    fields->addWidget(m_txtItemNo, 1, 1);
    fields->addWidget(m_command3, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdOK);
    buttons->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);

    attachKeyFilter(m_txtItemNo, 8);
    attachKeyFilter(m_txtName, 30);
    SendTabOnEnter(m_txtItemNo);
    SendTabOnEnter(m_txtName);

    connect(m_cmdOK, &QPushButton::clicked, this, &frmRs_RptSet::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmRs_RptSet::cmdCancel_Click);
    connect(m_command3, &QPushButton::clicked, this, &frmRs_RptSet::Command3_Click);
}

void frmRs_RptSet::showEvent(QShowEvent* event) {
    if (!m_loaded) load();
    QDialog::showEvent(event);
}

void frmRs_RptSet::load() {
    m_loaded = true;
    CenterForm(this);
    // Grid headers may change the caption only; the master record's captions also the brief list.
    const bool captionOnly = m_itemEnable == -1;
    m_label1->setVisible(!captionOnly);
    m_txtItemNo->setVisible(!captionOnly);
    m_command3->setVisible(!captionOnly);

    FieldSetting s;
    try {
        s = ReadFieldSetting(m_tabelName, m_field, m_modelName);
    } catch (const DbError&) {
        // A name that cannot be looked up (it holds a quote) is a field that is not there.
    }
    if (!s.found) {
        m_cmdOK->setEnabled(false);
        return;
    }
    m_txtItemNo->setText(s.briefType);
    m_txtName->setText(s.caption);
    m_txtName->setProperty("tag", s.caption);
    if (m_field.isEmpty()) m_field = s.field;
    m_txtItemNo->setEnabled(s.itemEnabled);
    m_command3->setEnabled(s.itemEnabled);
}

void frmRs_RptSet::cmdOK_Click() {
    const QString name = m_txtName->text();
    if (name.isEmpty()) return;
    if (!SaveOrTell(this, [&] { WriteFieldSetting(m_tabelName, m_field, name, m_txtItemNo->text()); }))
        return;
    G().RptSetResult = name;
    accept();
}

void frmRs_RptSet::cmdCancel_Click() {
    G().RptSetResult = m_txtName->property("tag").toString();
    QDialog::reject();
}

void frmRs_RptSet::reject() {
    cmdCancel_Click(); // Esc and the close box cancel too
}

void frmRs_RptSet::Command3_Click() {
    const QString code = ShowBriefDialog(QString(), QStringLiteral("99999999"), 1);
    if (!code.isEmpty()) m_txtItemNo->setText(code);
}

} // namespace zq
