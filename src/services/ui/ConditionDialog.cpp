#include "ConditionDialog.h"

#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace zq {

namespace {

bool isNumber(const QString& text) {
    static const QRegularExpression re(QStringLiteral("^[+-]?(\\d+\\.?\\d*|\\.\\d+)$"));
    return re.match(text).hasMatch();
}

QString literal(const ConditionRow& row, const QString& value) {
    if (row.numeric) return checked(value.trimmed());
    return quoted(value);
}

const QString kAnd = QStringLiteral("and");
const QString kOr = QStringLiteral("or");

} // namespace

const QStringList& conditionOperators() {
    static const QStringList ops = {QStringLiteral("="),    QStringLiteral("<>"),     QStringLiteral(">"),
                                    QStringLiteral(">="),   QStringLiteral("<"),      QStringLiteral("<="),
                                    QStringLiteral("like"), QStringLiteral("between")};
    return ops;
}

QString conditionTerm(const ConditionRow& row) {
    if (row.op == QLatin1String("between"))
        return row.field + QStringLiteral(">=") + literal(row, row.value) + QStringLiteral(" and ") +
               row.field + QStringLiteral("<=") + literal(row, row.value2);
    if (row.op == QLatin1String("like"))
        return row.field + QStringLiteral(" like ") + quoted(WildcardToLike(row.value));
    return row.field + row.op + literal(row, row.value);
}

QString composeCondition(const QString& table, const QVector<ConditionRow>& rows) {
    // "and" binds tighter than "or": the rows fall into groups at each "or".
    QStringList groups;
    QStringList terms;
    for (int i = 0; i < rows.size(); ++i) {
        if (i > 0 && rows[i].join == kOr) {
            groups << terms.join(QStringLiteral(" and "));
            terms.clear();
        }
        terms << conditionTerm(rows[i]);
    }
    if (!terms.isEmpty()) groups << terms.join(QStringLiteral(" and "));
    if (groups.size() <= 1) return groups.value(0);
    // Callers put an alias before every term that follows an "and", so a parenthesis cannot open
    // the condition; the groups go into a sub-query on the row's code instead.
    return QStringLiteral("fCode in (select fCode from ") + table + QStringLiteral(" where ") +
           groups.join(QStringLiteral(" or ")) + QLatin1Char(')');
}

ConditionDialog::ConditionDialog(const QString& table, const QString& start, QWidget* parent)
    : BriefDialog(3, QStringLiteral("条件查询"), parent)
    , m_table(table)
    , m_start(start) {
    {
        Recordset rs(conn(),
                     QStringLiteral("select FieldName,FieldName") + G().lang() +
                         QStringLiteral(",FieldDataType,FieldBriefType,FieldName_0 from RptListDetail "
                                        "where ftable=") +
                         quoted(table) + QStringLiteral(" Order by OrderID"));
        for (; !rs.eof(); rs.moveNext()) {
            // A field without a caption is not in use.
            if (rs.text(4).trimmed().isEmpty()) continue;
            const int type = int(rs.val(2));
            QString caption = rs.text(1).trimmed();
            if (caption.isEmpty()) caption = rs.text(4).trimmed();
            m_fields.append({rs.text(0), caption, type == 2 || type == 3, rs.text(3)});
        }
    }

    auto* layout = new QVBoxLayout(this);
    auto* editor = new QGridLayout;
    m_join = new QComboBox(this);
    m_join->setObjectName(QStringLiteral("cboJoin"));
    m_join->addItem(QStringLiteral("并且"), kAnd);
    m_join->addItem(QStringLiteral("或者"), kOr);
    m_field = new QComboBox(this);
    m_field->setObjectName(QStringLiteral("cboField"));
    for (const Field& f : m_fields)
        m_field->addItem(f.caption, f.name);
    m_op = new QComboBox(this);
    m_op->setObjectName(QStringLiteral("cboOperator"));
    m_op->addItems(conditionOperators());
    m_value = new QComboBox(this);
    m_value->setObjectName(QStringLiteral("cboValue"));
    m_value->setEditable(true);
    m_value->setMinimumWidth(140);
    m_value2 = new QLineEdit(this);
    m_value2->setObjectName(QStringLiteral("txtValue2"));
    editor->addWidget(new QLabel(QStringLiteral("关系"), this), 0, 0);
    editor->addWidget(new QLabel(QStringLiteral("栏目"), this), 0, 1);
    editor->addWidget(new QLabel(QStringLiteral("比较"), this), 0, 2);
    editor->addWidget(new QLabel(QStringLiteral("值"), this), 0, 3);
    editor->addWidget(new QLabel(QStringLiteral("至"), this), 0, 4);
    editor->addWidget(m_join, 1, 0);
    editor->addWidget(m_field, 1, 1);
    editor->addWidget(m_op, 1, 2);
    editor->addWidget(m_value, 1, 3);
    editor->addWidget(m_value2, 1, 4);
    layout->addLayout(editor);

    auto* rowButtons = new QHBoxLayout;
    QPushButton* add = addButton(rowButtons, "cmdAddRow", QStringLiteral("添加条件"));
    QPushButton* remove = addButton(rowButtons, "cmdRemoveRow", QStringLiteral("删除条件"));
    QPushButton* clear = addButton(rowButtons, "cmdClear", QStringLiteral("清除"));
    rowButtons->addStretch();
    layout->addLayout(rowButtons);

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("lstConditions"));
    layout->addWidget(m_list);
    layout->addWidget(new QLabel(QStringLiteral("条件:"), this));
    m_preview = new QPlainTextEdit(this);
    m_preview->setObjectName(QStringLiteral("txtPreview"));
    m_preview->setReadOnly(true);
    m_preview->setMaximumHeight(70);
    layout->addWidget(m_preview);

    auto* buttons = new QHBoxLayout;
    addOkCancel(buttons);
    layout->addLayout(buttons);

    connect(add, &QPushButton::clicked, this, &ConditionDialog::addRow);
    connect(remove, &QPushButton::clicked, this, &ConditionDialog::removeRow);
    connect(clear, &QPushButton::clicked, this, [this] {
        m_rows.clear();
        refresh();
    });
    connect(m_field, &QComboBox::currentIndexChanged, this, &ConditionDialog::onFieldChanged);
    connect(m_op, &QComboBox::currentIndexChanged, this, &ConditionDialog::onOperatorChanged);
    resize(560, 380);
    onFieldChanged();
    onOperatorChanged();
    refresh();
}

void ConditionDialog::onFieldChanged() {
    // A field with a brief list offers its entries as values.
    m_value->clear();
    const int i = m_field->currentIndex();
    if (i >= 0 && !m_fields[i].briefType.isEmpty()) {
        Recordset rs(conn(), QStringLiteral("select BriefName from briefDetail where briefType=") +
                                 quoted(m_fields[i].briefType) + QStringLiteral(" Order By briefcode"));
        for (; !rs.eof(); rs.moveNext())
            m_value->addItem(rs.text(0));
    }
    m_value->setCurrentIndex(-1);
    m_value->setEditText(QString());
}

void ConditionDialog::onOperatorChanged() {
    const bool between = m_op->currentText() == QLatin1String("between");
    m_value2->setEnabled(between);
    if (!between) m_value2->clear();
}

bool ConditionDialog::addRow() {
    const int i = m_field->currentIndex();
    if (i < 0) return false;
    ConditionRow row;
    row.join = m_rows.isEmpty() ? kAnd : m_join->currentData().toString();
    row.field = m_fields[i].name;
    row.numeric = m_fields[i].numeric;
    row.op = m_op->currentText();
    row.value = m_value->currentText();
    row.value2 = row.op == QLatin1String("between") ? m_value2->text() : QString();
    const QString title = windowTitle();
    if (row.value.contains(QLatin1Char('\'')) || row.value2.contains(QLatin1Char('\''))) {
        ShowMsg(QStringLiteral("条件值中不能含有单引号(')!"), vbExclamation, title);
        return false;
    }
    const bool between = row.op == QLatin1String("between");
    if ((row.numeric || row.op == QLatin1String("like") || between) && row.value.trimmed().isEmpty()) {
        ShowMsg(QStringLiteral("请输入条件值!"), vbExclamation, title);
        return false;
    }
    if (between && row.value2.trimmed().isEmpty()) {
        ShowMsg(QStringLiteral("请输入条件值!"), vbExclamation, title);
        return false;
    }
    if (row.numeric && row.op != QLatin1String("like") &&
        (!isNumber(row.value.trimmed()) || (between && !isNumber(row.value2.trimmed())))) {
        ShowMsg(QStringLiteral("[") + m_fields[i].caption + QStringLiteral("]是数值, 请输入数字!"),
                vbExclamation, title);
        return false;
    }
    m_rows.append(row);
    m_value->setEditText(QString());
    m_value2->clear();
    refresh();
    return true;
}

void ConditionDialog::removeRow() {
    const int row = m_list->currentRow();
    if (row < 0 || row >= m_rows.size()) return;
    m_rows.remove(row);
    refresh();
}

void ConditionDialog::refresh() {
    m_list->clear();
    for (int r = 0; r < m_rows.size(); ++r) {
        const ConditionRow& row = m_rows[r];
        QString caption = row.field;
        for (const Field& f : m_fields)
            if (f.name == row.field) caption = f.caption;
        QString text =
            r == 0 ? QString() : (row.join == kOr ? QStringLiteral("或者 ") : QStringLiteral("并且 "));
        text += caption + QLatin1Char(' ') + row.op + QLatin1Char(' ') + row.value;
        if (!row.value2.isEmpty()) text += QStringLiteral(" ~ ") + row.value2;
        m_list->addItem(text);
    }
    m_join->setEnabled(!m_rows.isEmpty());
    m_preview->setPlainText(answer());
}

QString ConditionDialog::answer() const {
    const QString composed = composeCondition(m_table, m_rows);
    if (m_start.isEmpty()) return composed;
    if (composed.isEmpty()) return m_start;
    return m_start + QStringLiteral(" and ") + composed;
}

void ConditionDialog::accept() {
    // A row typed but not yet added counts, as the user sees it in the editor.
    if (!m_value->currentText().trimmed().isEmpty() && !addRow()) return;
    BriefDialog::accept();
}

} // namespace zq
