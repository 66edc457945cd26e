#include "Print.h"

#include "CardDocument.h"
#include "PrintOutput.h"

#include "resources/Texts.h"
#include "services/ui/Grid.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"

#include <QGuiApplication>
#include <QTreeWidget>

namespace zq {

namespace {

// The busy pointer while a job is put together.
class BusyPointer {
public:
    BusyPointer()
        : m_on(qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) {
        if (m_on) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    }
    ~BusyPointer() { restore(); }
    void restore() {
        if (m_on) QGuiApplication::restoreOverrideCursor();
        m_on = false;
    }

private:
    bool m_on;
};

// Caption and field name of each printable dictionary row of a table.
QStringList dictionaryFields(const QString& lowerTable, const QString& more) {
    Recordset rs(conn(), QStringLiteral("select FieldName") + G().lang() +
                             QStringLiteral(",FieldName from rptListDetail ") + QStringLiteral("Where ") +
                             conn().dialect().lowerFunction() + QStringLiteral("(fTable)='") + lowerTable +
                             QStringLiteral("' And FieldType>-1 ") + more +
                             QStringLiteral("Order by fieldID"));
    QStringList fields;
    for (; !rs.eof(); rs.moveNext())
        fields << rs.text(0) << rs.text(1);
    return fields;
}

QString whereClause(const QString& filter) {
    return filter.isEmpty() ? QString() : QStringLiteral(" where ") + filter;
}

} // namespace

QStringList personFieldCollection() {
    return dictionaryFields(QStringLiteral("trsbasic"), {})
           << QStringLiteral("员工照片") << QStringLiteral("fPhoto");
}

QStringList detailFieldCollection() {
    return dictionaryFields(QStringLiteral("trsdetail"), QStringLiteral("And fieldname<>'fCode' "));
}

bool PrintRecords(const QString& templateKey, const QString& sheetKey, const QString& sql,
                  const QStringList& fields) {
    BusyPointer busy;
    Recordset rs(conn(), sql);
    if (rs.eof()) {
        busy.restore();
        ShowMsg(LoadText(148));
        return false;
    }
    CardLayout layout = loadLayout(templateKey, sheetKey);
    RecordTable records(rs, layout.photoFields());
    {
        const int total = ProgressScope::wanted() ? rs.recordCount() : 0;
        ProgressScope progress(layout.title, total);
        const bool read = records.read(rs, [&](int n) {
            return n % 25 != 0 || progress.step(n, QStringLiteral("正在读取第 %1 条记录").arg(n));
        });
        rs.close();
        if (!read) return false;
    }
    busy.restore();
    return PrintOutput::run(CardDocument(std::move(layout), std::move(records), fields));
}

void PrintPersonCard(qint16 mode, const QString& templateKey, const QString& sheetKey,
                     const QString& filter) {
    // Both modes print the same cards; the mode only tells who asked.
    Q_UNUSED(mode);
    const QStringList fields = personFieldCollection();
    PrintRecords(templateKey, sheetKey,
                 QStringLiteral("select * from tRsBasic") + whereClause(filter) +
                     QStringLiteral(" Order by fCode"),
                 fields);
}

void PrintPersonCardDetail(qint16 mode, const QString& templateKey, const QString& sheetKey,
                           const QString& filter) {
    Q_UNUSED(mode);
    const QStringList fields = personFieldCollection() + detailFieldCollection();
    // The person screen hands over its whole statement; a bare condition gets the same join.
    const QString sql = filter.trimmed().startsWith(QLatin1String("select"), Qt::CaseInsensitive)
                            ? filter
                            : QStringLiteral("Select a.*,b.fRsDetail1,b.fRsDetail2,b.fRsDetail3,b.fRsDetail4 "
                                             "from trsbasic a Left Join tRsDetail b On a.fCode=b.fCode") +
                                  whereClause(filter) + QStringLiteral(" order by a.fcode");
    PrintRecords(templateKey, sheetKey, sql, fields);
}

void PrintReportFlow(qint16 mode, const QString& templateKey, const QString& sheetKey, const QString& filter,
                     const QStringList& fields) {
    Q_UNUSED(mode);
    // The captions of the report screen.
    static const QStringList mainFields = {
        QStringLiteral("编号"),       QStringLiteral("fID"),      QStringLiteral("日期"),
        QStringLiteral("fDate"),      QStringLiteral("主题"),     QStringLiteral("fTitle"),
        QStringLiteral("报告内容"),   QStringLiteral("fContent"), QStringLiteral("报告人"),
        QStringLiteral("fFootnote1"), QStringLiteral("审核人"),   QStringLiteral("fFootnote2"),
        QStringLiteral("所属部门"),   QStringLiteral("fBmName"),  QStringLiteral("参考文件"),
        QStringLiteral("fFilePath")};
    PrintRecords(templateKey, sheetKey,
                 conn().dialect().selectTop(30, QStringLiteral("* from tRs_RptFlow") + whereClause(filter) +
                                                    QStringLiteral(" Order By fDate Desc")),
                 fields.isEmpty() ? mainFields : fields);
}

TableData tableOfGrid(const ZqGrid& grid) {
    TableData t;
    QVector<int> cols;
    // The row headers print as a first column when a screen keeps texts there.
    bool rowHeaders = false;
    for (int r = 1; r <= grid.maxRows() && !rowHeaders; ++r)
        rowHeaders = !grid.text(r, 0).isEmpty();
    if (rowHeaders && !grid.isColHidden(0)) cols << 0;
    for (int c = 1; c <= grid.maxCols(); ++c)
        if (!grid.isColHidden(c) && grid.colWidth(c) > 0) cols << c;
    for (int c : cols)
        t.columns << TableColumn{grid.headerText(c), c == 0 ? qMax(4.0, grid.colWidth(0)) : grid.colWidth(c),
                                 c > 0 && grid.colType(c) != ZqGrid::CellText ? Qt::AlignRight
                                                                              : Qt::AlignLeft};
    // Blank rows at the end are room for typing, not part of the list.
    int last = grid.maxRows();
    auto blank = [&](int r) {
        for (int c : cols)
            if (!grid.text(r, c).trimmed().isEmpty()) return false;
        return true;
    };
    while (last > 0 && blank(last))
        --last;
    t.rows.reserve(last);
    for (int r = 1; r <= last; ++r) {
        TableRow row;
        for (int c : cols)
            row.cells << (c == 0 ? grid.rowHeaderText(r) : grid.text(r, c));
        t.rows << row;
    }
    return t;
}

TableData tableOfTree(const QTreeWidget& tree) {
    TableData t;
    t.columns << TableColumn{tree.headerItem() ? tree.headerItem()->text(0) : QString(), 60};
    std::function<void(const QTreeWidgetItem*, int)> walk = [&](const QTreeWidgetItem* item, int level) {
        // Codes and counts stand behind tabs in the node texts.
        QString text = item->text(0);
        text.replace(QLatin1Char('\t'), QStringLiteral("    "));
        t.rows << TableRow{{text}, level};
        for (int i = 0; i < item->childCount(); ++i)
            walk(item->child(i), level + 1);
    };
    for (int i = 0; i < tree.topLevelItemCount(); ++i)
        walk(tree.topLevelItem(i), 0);
    return t;
}

void PrintGrid(QStringList items, ZqGrid* grid, const QString& title, const QString& text, bool listHeading) {
    if (!grid) return;
    BusyPointer busy;
    items += G().CompanyItems;
    TableDocument doc(tableOfGrid(*grid), {title, items, text, listHeading});
    busy.restore();
    PrintOutput::run(doc);
}

void PrintTreeView(QTreeWidget* tree, const QString& title) {
    if (!tree) return;
    BusyPointer busy;
    TableDocument doc(tableOfTree(*tree), {title, G().CompanyItems, {}, true}, TableDocument::Style::Outline);
    busy.restore();
    PrintOutput::run(doc);
}

void PrintText(const QString& title, const QString& text) {
    TableData t;
    t.columns << TableColumn{QString(), 60};
    for (const QString& line :
         QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")).split(QLatin1Char('\n')))
        t.rows << TableRow{{line.isEmpty() ? QStringLiteral(" ") : line}, 0};
    BusyPointer busy;
    TableDocument doc(t, {title, G().CompanyItems, {}, true}, TableDocument::Style::Outline);
    busy.restore();
    PrintOutput::run(doc);
}

} // namespace zq
