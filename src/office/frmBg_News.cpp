#include "frmBg_News.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

using namespace office;

namespace {

OfficeScreen::Kind newsKind() {
    OfficeScreen::Kind k;
    k.objectName = QStringLiteral("frmBg_News");
    k.caption = QStringLiteral("新闻公告");
    k.rows = QStringLiteral("公告");
    k.emptyContent = QStringLiteral("请输入公告内容!");
    k.deleteQuestion = QStringLiteral("确定: 删除当前公告 ?");
    k.documents = false;
    k.stepHint0 = QStringLiteral("上一条公告");
    k.stepHint1 = QStringLiteral("下一条公告");
    return k;
}

} // namespace

frmBg_News::frmBg_News(QWidget* parent)
    : OfficeScreen(newsKind(), parent) {
    m_lblNew = named(new QLabel(QStringLiteral("新"), this), QStringLiteral("lblNew"));
    m_lblNew->setToolTip(QStringLiteral("上次查看公告以后发布"));
    m_lblNew->setStyleSheet(QStringLiteral("color: #c00000; font-weight: bold;"));
    m_lblNew->hide();
    m_lblUnread = named(new QLabel(this), QStringLiteral("lblUnread"));

    QBoxLayout* top = dateRow();
    top->insertWidget(4, m_lblNew);
    top->insertWidget(6, m_lblUnread);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_txtContent, 1);
    layout->addLayout(deptAndFileRow());
    layout->addLayout(buttonRow({m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdSeek}));
    ready();
}

void frmBg_News::beforeList() {
    const QString user = G().UserName;
    if (user.isEmpty()) return;
    try {
        m_unread = news::UnreadCount(user, G().UserDeptCode);
        m_opened = news::OpenBoard(user);
    } catch (const DbError&) {
        // The board works without the count: nothing is marked.
        m_unread = 0;
        m_opened.clear();
    }
    m_lblUnread->setText(m_unread > 0 ? QStringLiteral("上次查看以后新发布 %1 条").arg(m_unread) : QString());
}

void frmBg_News::showFields(const Recordset& rs) {
    m_lblNew->setVisible(m_unread > 0 && news::IsUnread(rs, m_opened, G().UserName));
}

void frmBg_News::clearFields() {
    m_lblNew->hide();
}

bool frmBg_News::mayChange() const {
    return G().isSupervisor();
}

void frmBg_News::saveRow(int id, const RowSnapshot& loaded) {
    news::WriteNotice(
        id, {m_dtpDate->date(), StoredText(m_txtContent->toPlainText()), m_cboDept->currentText()}, loaded);
}

} // namespace zq
