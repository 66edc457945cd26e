#include "Controls.h"
#include "TestDb.h"

#include "printing/frmRs_list.h"
#include "printing/frmRs_RptSet.h"
#include "services/ui/BriefDialog.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"

#include <QApplication>
#include <QCheckBox>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

using namespace zq;
using test::child;
using test::click;
using test::exec;

namespace {
QString stored(const QString& column, const QString& field = QStringLiteral("fMz")) {
    Recordset rs(conn(),
                 QStringLiteral("select %1 from RptListDetail where ftable='tRsBasic' and FieldName='%2'")
                     .arg(column, field));
    return rs.text(0);
}

void type(QLineEdit* box, const QString& text) {
    box->clear();
    QInputMethodEvent commit;
    commit.setCommitString(text);
    QApplication::sendEvent(box, &commit);
}

void person(const QString& code, const QString& name, int state) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('%1','%2',%3,'01')")
             .arg(code, name)
             .arg(state));
}
} // namespace

class TestFieldSettings : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        G().RptSetResult = QStringLiteral("old");
    }

    void renamesCaptionAndBriefList() {
        frmRs_RptSet dlg;
        dlg.setProperty("TabelName", QStringLiteral("tRsBasic"));
        dlg.setProperty("Field", QStringLiteral("fMz"));
        dlg.show();
        auto* name = child<QLineEdit>(dlg, "TxtName");
        auto* item = child<QLineEdit>(dlg, "txtItemNo");
        QCOMPARE(name->text(), stored(QStringLiteral("FieldName_0")));
        QCOMPARE(item->text(), stored(QStringLiteral("FieldBriefType")));
        QVERIFY(item->isVisible());

        // The brief list is picked from the lists, by their code.
        setBriefDriver([](BriefDialog& d) {
            QCOMPARE(d.mode(), 1);
            d.reject();
        });
        click(dlg, "Command3");
        setBriefDriver({});
        QCOMPARE(item->text(), stored(QStringLiteral("FieldBriefType"))); // a cancelled pick changes nothing

        type(name, QStringLiteral("族别"));
        type(item, QStringLiteral("mz"));
        click(dlg, "cmdOK");
        QCOMPARE(dlg.result(), int(QDialog::Accepted));
        QCOMPARE(G().RptSetResult, QStringLiteral("族别"));
        QCOMPARE(stored(QStringLiteral("FieldName_0")), QStringLiteral("族别"));
        QCOMPARE(stored(QStringLiteral("FieldBriefType")), QStringLiteral("mz"));
    }

    void findsTheFieldByCaptionAndCancelKeepsIt() {
        exec(QStringLiteral("update RptListDetail set FieldBriefType='mz' where ftable='tRsBasic' and "
                            "FieldName='fMz'"));
        frmRs_RptSet dlg;
        dlg.setProperty("TabelName", QStringLiteral("tRsBasic"));
        dlg.setProperty("ModelName", stored(QStringLiteral("FieldName_0")));
        dlg.setProperty("ItemEnable", qint16(-1));
        dlg.show();
        QVERIFY(!child<QLineEdit>(dlg, "txtItemNo")->isVisible());
        QVERIFY(!child<QPushButton>(dlg, "Command3")->isVisible());
        type(child<QLineEdit>(dlg, "TxtName"), QStringLiteral("民族别"));
        QTest::keyClick(&dlg, Qt::Key_Escape);
        QCOMPARE(G().RptSetResult, stored(QStringLiteral("FieldName_0")));

        // Saving with the item box hidden writes its stored brief list back unchanged.
        frmRs_RptSet again;
        again.setProperty("TabelName", QStringLiteral("tRsBasic"));
        again.setProperty("ModelName", stored(QStringLiteral("FieldName_0")));
        again.setProperty("ItemEnable", qint16(-1));
        again.show();
        click(again, "cmdOK");
        QCOMPARE(G().RptSetResult, stored(QStringLiteral("FieldName_0"))); // unchanged: callers see no change
        QCOMPARE(stored(QStringLiteral("FieldBriefType")), QStringLiteral("mz"));
    }

    void unknownFieldAndQuotes() {
        frmRs_RptSet dlg;
        dlg.setProperty("TabelName", QStringLiteral("tRsBasic"));
        dlg.setProperty("Field", QStringLiteral("fNoSuch"));
        dlg.show();
        QVERIFY(!child<QPushButton>(dlg, "cmdOK")->isEnabled());
        click(dlg, "cmdCancel");
        QCOMPARE(G().RptSetResult, QString());

        G().RptSetResult = QStringLiteral("old");
        frmRs_RptSet quote;
        quote.setProperty("TabelName", QStringLiteral("tRsBasic"));
        quote.setProperty("Field", QStringLiteral("fMz"));
        quote.show();
        const QString before = stored(QStringLiteral("FieldName_0"));
        child<QLineEdit>(quote, "TxtName")->setText(QStringLiteral("民'族")); // pasted past the key filter
        click(quote, "cmdOK");
        QCOMPARE(m_prompts->messages(), QStringList({"存盘错误!"}));
        QVERIFY(quote.isVisible());
        QCOMPARE(stored(QStringLiteral("FieldName_0")), before);
        QCOMPARE(G().RptSetResult, QStringLiteral("old"));
    }

    void staffPicker() {
        exec(QStringLiteral("delete from tRsBasic"));
        G().CurPersonCode = QStringLiteral("X");
        G().CurPersonName = QStringLiteral("Y");
        {
            frmRs_list empty;
            empty.show();
            QCOMPARE(m_prompts->messages(), QStringList({"无在职人员记录存在!"}));
            click(empty, "cmdSel"); // nothing chosen: nothing happens
            QVERIFY(empty.isVisible());
            click(empty, "cmdSelCancel");
            QCOMPARE(G().CurPersonCode, QString());
            QCOMPARE(G().CurPersonName, QString());
        }

        person(QStringLiteral("002"), QStringLiteral("李四"), 1);
        person(QStringLiteral("001"), QStringLiteral("张三"), 1);
        person(QStringLiteral("003"), QStringLiteral("王五"), 3);
        frmRs_list dlg;
        dlg.show();
        auto* list = child<QListWidget>(dlg, "lstLook");
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->item(0)->text(), QStringLiteral("001\t张三"));
        child<QCheckBox>(dlg, "chkDeptLimit")->click(); // no department scope: still everybody serving
        QCOMPARE(list->count(), 2);
        list->setCurrentRow(1);
        click(dlg, "cmdSel");
        QCOMPARE(dlg.result(), int(QDialog::Accepted));
        QCOMPARE(G().CurPersonCode, QStringLiteral("002"));
        QCOMPARE(G().CurPersonName, QStringLiteral("李四"));

        frmRs_list closed;
        closed.show();
        closed.close(); // the close box is a cancel
        QCOMPARE(G().CurPersonCode, QString());
        QCOMPARE(G().CurPersonName, QString());
    }
};

ZQ_DB_TEST_MAIN(TestFieldSettings)
#include "test_fieldsettings.moc"
