#include "BriefListDialog.h"

#include "shell/DbError.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <algorithm>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace zq {

namespace {
// The list of all lists, as callers ask for it.
const QString kAllLists = QStringLiteral("99999999");

} // namespace

BriefListDialog::BriefListDialog(int mode, const QString& code, QWidget* parent)
    : BriefDialog(mode, mode == 1 ? QStringLiteral("简码类别") : QStringLiteral("简码选择"), parent)
    , m_type(mode == 2 ? code : QString()) {
    auto* layout = new QVBoxLayout(this);
    auto* filterRow = new QHBoxLayout;
    filterRow->addWidget(new QLabel(QStringLiteral("查找:"), this));
    m_filter = new QLineEdit(this);
    m_filter->setObjectName(QStringLiteral("txtFilter"));
    filterRow->addWidget(m_filter);
    layout->addLayout(filterRow);

    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("lstItems"));
    m_list->setColumnCount(2);
    m_list->setHeaderLabels(
        {QStringLiteral("编码"), mode == 1 ? QStringLiteral("类别名称") : QStringLiteral("内容")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->header()->setStretchLastSection(true);
    m_list->setColumnWidth(0, 90);
    layout->addWidget(m_list);

    auto* buttons = new QHBoxLayout;
    if (mode == 2) {
        QPushButton* add = addButton(buttons, "cmdAdd", QStringLiteral("增加"));
        QPushButton* rename = addButton(buttons, "cmdRename", QStringLiteral("修改"));
        QPushButton* remove = addButton(buttons, "cmdDelete", QStringLiteral("删除"));
        QPushButton* up = addButton(buttons, "cmdUp", QStringLiteral("上移"));
        QPushButton* down = addButton(buttons, "cmdDown", QStringLiteral("下移"));
        connect(add, &QPushButton::clicked, this, &BriefListDialog::onAdd);
        connect(rename, &QPushButton::clicked, this, &BriefListDialog::onRename);
        connect(remove, &QPushButton::clicked, this, &BriefListDialog::onDelete);
        connect(up, &QPushButton::clicked, this, [this] { onMove(-1); });
        connect(down, &QPushButton::clicked, this, [this] { onMove(1); });
    }
    // Enter in the filter box takes the entry shown first.
    addOkCancel(buttons)->setDefault(true);
    layout->addLayout(buttons);
    connect(m_filter, &QLineEdit::textChanged, this, &BriefListDialog::applyFilter);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &BriefListDialog::accept);
    resize(360, 420);

    load(mode == 1 && code != kAllLists ? code : QString());
    m_filter->setFocus();
}

QString BriefListDialog::listSql() const {
    if (mode() == 1) return QStringLiteral("select briefType,briefName from brief Order By briefType");
    return QStringLiteral("select * from briefDetail where briefType=") + quoted(m_type) +
           QStringLiteral(" Order By briefcode");
}

void BriefListDialog::load(const QString& current) {
    m_items.clear();
    {
        Recordset rs(conn(), listSql());
        const bool lists = mode() == 1;
        for (; !rs.eof(); rs.moveNext())
            m_items.append({rs.text(lists ? QStringLiteral("briefType") : QStringLiteral("BriefCode")),
                            rs.text(lists ? QStringLiteral("briefName") : QStringLiteral("BriefName"))});
    }
    m_list->clear();
    QTreeWidgetItem* select = nullptr;
    for (int i = 0; i < m_items.size(); ++i) {
        auto* item = new QTreeWidgetItem(m_list, QStringList{m_items[i].code, m_items[i].name});
        item->setData(0, Qt::UserRole, i);
        if (!select && !current.isEmpty() && m_items[i].code == current) select = item;
    }
    if (select) m_list->setCurrentItem(select);
    applyFilter();
}

void BriefListDialog::applyFilter() {
    const QString text = m_filter->text().trimmed();
    QTreeWidgetItem* first = nullptr;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = m_list->topLevelItem(i);
        const bool shown = text.isEmpty() || item->text(0).contains(text, Qt::CaseInsensitive) ||
                           item->text(1).contains(text, Qt::CaseInsensitive);
        item->setHidden(!shown);
        if (shown && !first) first = item;
    }
    QTreeWidgetItem* current = m_list->currentItem();
    if (!current || current->isHidden()) m_list->setCurrentItem(first);
}

int BriefListDialog::currentRow() const {
    const QTreeWidgetItem* item = m_list->currentItem();
    return item && !item->isHidden() ? item->data(0, Qt::UserRole).toInt() : -1;
}

void BriefListDialog::selectRow(int row) {
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        if (m_list->topLevelItem(i)->data(0, Qt::UserRole).toInt() == row)
            m_list->setCurrentItem(m_list->topLevelItem(i));
}

QString BriefListDialog::answer() const {
    const int row = currentRow();
    if (row < 0) return {};
    return mode() == 1 ? m_items[row].code : m_items[row].name;
}

void BriefListDialog::accept() {
    // Nothing chosen is the same as cancelling.
    if (currentRow() < 0)
        reject();
    else
        BriefDialog::accept();
}

bool BriefListDialog::refuseQuote(const QString& text) {
    if (!text.contains(QLatin1Char('\''))) return false;
    ShowMsg(QStringLiteral("内容中不能含有单引号(')!"), vbExclamation, windowTitle());
    return true;
}

QString BriefListDialog::nextCode() const {
    // Entries are ordered by code: a new one goes last, with as many digits as the codes have.
    qint64 max = 0;
    int width = 2;
    bool numeric = true;
    for (const Item& it : m_items) {
        bool ok = false;
        const qint64 n = it.code.toLongLong(&ok);
        numeric = numeric && ok;
        max = std::max(max, n);
        width = std::max(width, int(it.code.size()));
    }
    if (numeric) return QStringLiteral("%1").arg(max + 1, width, 10, QLatin1Char('0'));
    QString code;
    for (qint64 n = m_items.size() + 1;; ++n) {
        code = QStringLiteral("%1").arg(n, width, 10, QLatin1Char('0'));
        if (std::none_of(m_items.cbegin(), m_items.cend(),
                         [&code](const Item& it) { return it.code == code; }))
            return code;
    }
}

void BriefListDialog::saveFailed(const QString& current) {
    ShowMsg(QStringLiteral("存盘错误!"), vbExclamation, windowTitle());
    load(current);
}

bool BriefListDialog::addEntry(const QString& name) {
    if (mode() != 2 || name.isEmpty() || refuseQuote(name)) return false;
    const QString code = nextCode();
    try {
        Recordset rs(conn(), QStringLiteral("select * from briefDetail where 1=2"), Cursor::Keyset,
                     Lock::Optimistic);
        rs.addNew();
        rs.setValue(QStringLiteral("briefType"), m_type);
        rs.setValue(QStringLiteral("BriefCode"), code);
        rs.setValue(QStringLiteral("BriefName"), name);
        rs.update();
    } catch (const DbError&) {
        saveFailed(QString());
        return false;
    }
    load(code);
    return true;
}

bool BriefListDialog::renameEntry(int row, const QString& name) {
    if (mode() != 2 || row < 0 || row >= m_items.size() || name.isEmpty() || refuseQuote(name)) return false;
    const QString code = m_items[row].code;
    try {
        Recordset rs(conn(), listSql(), Cursor::Keyset, Lock::Optimistic);
        rs.move(row);
        rs.setValue(QStringLiteral("BriefName"), name);
        rs.update();
    } catch (const DbError&) {
        saveFailed(code);
        return false;
    }
    load(code);
    return true;
}

bool BriefListDialog::deleteEntry(int row) {
    if (mode() != 2 || row < 0 || row >= m_items.size()) return false;
    try {
        Recordset rs(conn(), listSql(), Cursor::Keyset, Lock::Optimistic);
        rs.move(row);
        rs.deleteRow();
    } catch (const DbError&) {
        saveFailed(QString());
        return false;
    }
    load(row + 1 < m_items.size() ? m_items[row + 1].code : row > 0 ? m_items[row - 1].code : QString());
    return true;
}

bool BriefListDialog::moveEntry(int row, int step) {
    const int other = row + step;
    if (mode() != 2 || row < 0 || row >= m_items.size() || other < 0 || other >= m_items.size()) return false;
    // The order is the code order: the two entries swap codes. Each row is written once, since a
    // row's locator on the server changes when the row is written.
    const QString a = m_items[row].code, b = m_items[other].code;
    try {
        Transaction t(conn());
        Recordset rs(conn(), listSql(), Cursor::Keyset, Lock::Optimistic);
        const QString code = QStringLiteral("BriefCode");
        rs.move(row);
        rs.setValue(code, b);
        rs.update();
        rs.moveFirst();
        rs.move(other);
        rs.setValue(code, a);
        rs.update();
        t.commit();
    } catch (const DbError&) {
        saveFailed(a);
        return false;
    }
    load(b);
    return true;
}

void BriefListDialog::onAdd() {
    const auto name = InputBox(QStringLiteral("请输入新的内容:"), windowTitle());
    if (name) addEntry(name->trimmed());
}

void BriefListDialog::onRename() {
    const int row = currentRow();
    if (row < 0) return;
    const auto name = InputBox(QStringLiteral("请输入新的内容:"), windowTitle(), m_items[row].name);
    if (name && *name != m_items[row].name) renameEntry(row, name->trimmed());
}

void BriefListDialog::onDelete() {
    const int row = currentRow();
    if (row < 0) return;
    if (ShowMsg(QStringLiteral("确定删除 [") + m_items[row].name + QStringLiteral("] 吗?"),
                vbYesNo + vbQuestion, windowTitle()) == vbYes)
        deleteEntry(row);
}

void BriefListDialog::onMove(int step) {
    moveEntry(currentRow(), step);
}

} // namespace zq
