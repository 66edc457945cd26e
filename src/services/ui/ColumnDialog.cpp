#include "ColumnDialog.h"

#include "SaveOrTell.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <algorithm>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace zq {

namespace {

bool sameWidth(const QString& a, const QString& b) {
    if (a.isEmpty() || b.isEmpty()) return a.isEmpty() == b.isEmpty();
    return Val(a) == Val(b);
}
} // namespace

ColumnDialog::ColumnDialog(const QString& table, QWidget* parent)
    : BriefDialog(5, QStringLiteral("栏目选项"), parent)
    , m_table(table) {
    {
        Recordset rs(conn(), sql());
        for (int pos = 0; !rs.eof(); rs.moveNext(), ++pos) {
            const QString caption0 = rs.text(5).trimmed();
            // A field without a caption is not in use and never offered.
            if (caption0.isEmpty()) continue;
            const QString caption = rs.text(2).trimmed();
            m_fields.append({pos, rs.text(1), caption.isEmpty() ? caption0 : caption, rs.val(3) == 1,
                             int(rs.val(0)), rs.text(4).trimmed()});
        }
    }

    auto* layout = new QVBoxLayout(this);
    m_grid = new QTableWidget(this);
    m_grid->setObjectName(QStringLiteral("grdColumns"));
    m_grid->setColumnCount(3);
    m_grid->setHorizontalHeaderLabels(
        {QStringLiteral("栏目"), QStringLiteral("字段"), QStringLiteral("宽度")});
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_grid->verticalHeader()->setVisible(false);
    layout->addWidget(m_grid);

    auto* buttons = new QHBoxLayout;
    QPushButton* up = addButton(buttons, "cmdUp", QStringLiteral("上移"));
    QPushButton* down = addButton(buttons, "cmdDown", QStringLiteral("下移"));
    addOkCancel(buttons);
    layout->addLayout(buttons);
    connect(up, &QPushButton::clicked, this, [this] { moveRow(m_grid->currentRow(), -1); });
    connect(down, &QPushButton::clicked, this, [this] { moveRow(m_grid->currentRow(), 1); });
    resize(420, 480);
    fill();
}

QString ColumnDialog::sql() const {
    return QStringLiteral("select FieldID,FieldName,FieldName") + G().lang() +
           QStringLiteral(",FieldSelected,FieldGridWidth,FieldName_0 from RptListDetail where ftable=") +
           quoted(m_table) + QStringLiteral(" order by fieldId");
}

void ColumnDialog::fill() {
    m_grid->setRowCount(int(m_fields.size()));
    for (int r = 0; r < m_fields.size(); ++r) {
        const Field& f = m_fields[r];
        auto* caption = new QTableWidgetItem(f.caption);
        caption->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        caption->setCheckState(f.selected ? Qt::Checked : Qt::Unchecked);
        caption->setData(Qt::UserRole, r);
        auto* name = new QTableWidgetItem(f.name);
        name->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        auto* width = new QTableWidgetItem(f.width);
        width->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable);
        m_grid->setItem(r, 0, caption);
        m_grid->setItem(r, 1, name);
        m_grid->setItem(r, 2, width);
    }
    if (!m_fields.isEmpty()) m_grid->setCurrentCell(0, 0);
}

void ColumnDialog::moveRow(int row, int step) {
    const int other = row + step;
    if (row < 0 || other < 0 || row >= m_grid->rowCount() || other >= m_grid->rowCount()) return;
    for (int c = 0; c < m_grid->columnCount(); ++c) {
        QTableWidgetItem* a = m_grid->takeItem(row, c);
        QTableWidgetItem* b = m_grid->takeItem(other, c);
        m_grid->setItem(row, c, b);
        m_grid->setItem(other, c, a);
    }
    m_grid->setCurrentCell(other, m_grid->currentColumn() < 0 ? 0 : m_grid->currentColumn());
}

bool ColumnDialog::save() {
    struct Change {
        int field;
        bool selected;
        int fieldId;
        QString width;
    };
    QVector<Change> now;
    bool reordered = false;
    QStringList list;
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        const int f = m_grid->item(r, 0)->data(Qt::UserRole).toInt();
        const bool selected = m_grid->item(r, 0)->checkState() == Qt::Checked;
        const QString width = m_grid->item(r, 2)->text().trimmed();
        if (!width.isEmpty() && Val(width) <= 0) {
            ShowMsg(QStringLiteral("[") + m_fields[f].caption + QStringLiteral("]的宽度应是大于0的数字!"),
                    vbExclamation, windowTitle());
            return false;
        }
        reordered = reordered || f != r;
        now.append({f, selected, m_fields[f].fieldId, width});
        if (selected) list << m_fields[f].name;
    }
    if (list.isEmpty()) {
        ShowMsg(QStringLiteral("请至少选择一个栏目!"), vbExclamation, windowTitle());
        return false;
    }
    if (reordered) {
        // The rows take the present numbers in their new order, so the pinned key fields (-2, -1)
        // and the fields not offered keep their places; the numbers are made distinct on the way.
        QVector<int> ids;
        for (const Field& f : m_fields)
            ids << f.fieldId;
        std::sort(ids.begin(), ids.end());
        for (int r = 0; r < now.size(); ++r)
            now[r].fieldId = r == 0 ? ids[0] : std::max(ids[r], now[r - 1].fieldId + 1);
    }

    bool changed = false;
    const bool saved = SaveOrTell(this, [&] {
        Transaction t(conn());
        Recordset rs(conn(), sql(), Cursor::Keyset, Lock::Optimistic);
        for (const Change& c : now) {
            const Field& f = m_fields[c.field];
            const bool select = c.selected != f.selected, order = c.fieldId != f.fieldId,
                       width = !sameWidth(c.width, f.width);
            if (!select && !order && !width) continue;
            rs.moveFirst();
            rs.move(f.position);
            if (select) rs.setValue(QStringLiteral("FieldSelected"), c.selected ? 1 : 0);
            if (order) rs.setValue(QStringLiteral("FieldID"), c.fieldId);
            if (width)
                rs.setValue(QStringLiteral("FieldGridWidth"), c.width.isEmpty() ? QVariant() : Val(c.width));
            rs.update();
            changed = true;
        }
        t.commit();
    });
    if (!saved) return false;
    m_answer = changed ? list.join(QLatin1Char(',')) : QString();
    return true;
}

void ColumnDialog::accept() {
    if (save()) BriefDialog::accept();
}

} // namespace zq
