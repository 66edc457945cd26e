#include "PdfTools.h"
#include "TestDb.h"
#include "ZipFiles.h"

#include "documents/ArchiveData.h"
#include "documents/ArchiveFind.h"
#include "documents/frmWd_DeptDict.h"
#include "documents/frmWd_dict.h"
#include "documents/frmWd_Filer.h"
#include "printing/PrintOutput.h"
#include "services/Documents.h"
#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <memory>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCursor>
#include <QToolButton>
#include <QTreeWidget>

using namespace zq;

namespace {

void addRow(const QString& table, const QString& code, const QString& name, int kind,
            const QString& detail = {}, const QString& path = {}, int picture = 0, const QString& dept = {}) {
    if (table == QLatin1String("tWd_File0"))
        test::exec(QStringLiteral("insert into tWd_File0 (fCode,fName,fYnxj,fLimited,fColor,fDetail1) values "
                                  "(?,?,?,0,0,?)"),
                   {code, name, kind, detail});
    else
        test::exec(QStringLiteral(
                       "insert into tWd_File1 (fCode,fName,fYnxj,fBz,fFilePath,fBmCode,fDetail1,fLimited) "
                       "values (?,?,?,?,?,?,?,0)"),
                   {code, name, kind, picture, path, dept, detail});
}

void addDept(const QString& code, const QString& name) {
    test::exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fLimited,fColor,fYnxj) values (?,?,0,0,0)"),
               {code, name});
}

QString detail(const QString& table, const QString& code) {
    return test::one(QStringLiteral("select fDetail1 from %1 where fCode='%2'").arg(table, code));
}

} // namespace

class TestArchiveScreens : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    std::unique_ptr<CodeTreeScreen> m_form;
    QTemporaryDir m_dir;

    template <typename Screen> Screen& open(int state = 0) {
        auto* s = new Screen;
        s->setScreenState(state);
        m_form.reset(s);
        s->show();
        return *s;
    }
    template <typename T = QWidget> T* w(const QString& name) {
        T* found = m_form->findChild<T*>(name);
        if (!found) qFatal("no control %s", qPrintable(name));
        return found;
    }
    void click(const QString& name) { w<QAbstractButton>(name)->click(); }
    void clickNode(const QString& key) {
        QTreeWidget* tree = w<QTreeWidget>(QStringLiteral("Tree1"));
        QTreeWidgetItem* node = nullptr;
        for (QTreeWidgetItemIterator it(tree); *it; ++it)
            if ((*it)->data(0, Qt::UserRole).toString() == key) node = *it;
        if (!node) qFatal("no node %s", qPrintable(key));
        tree->setCurrentItem(node);
        m_form->Tree1_NodeClick(node);
    }
    bool hasNode(const QString& key) {
        for (QTreeWidgetItemIterator it(w<QTreeWidget>(QStringLiteral("Tree1"))); *it; ++it)
            if ((*it)->data(0, Qt::UserRole).toString() == key) return true;
        return false;
    }
    QString path(const QString& name) const { return m_dir.filePath(name); }

    void fillEntry(bool document, const QString& code, const QString& name) {
        w<QRadioButton>(QStringLiteral("OptType(%1)").arg(document ? 1 : 0))->click();
        w<QLineEdit>(QStringLiteral("TxtCode"))->setText(code);
        w<QLineEdit>(QStringLiteral("TxtName"))->setText(name);
    }

private slots:
    void init() {
        test::freshDatabase();
        test::actAsSupervisor();
        m_prompts = &scriptPrompts();
        setDocumentOpener([](const QString&) { return true; });
    }
    void cleanup() {
        m_form.reset();
        setDocumentOpener({});
    }

    void filerAddsChangesAndKeepsTheIndex() {
        addDept(QStringLiteral("01"), QStringLiteral("人力资源部"));
        auto& f = open<frmWd_Filer>();
        QVERIFY(!w<QFrame>(QStringLiteral("Picture1"))->isVisible());
        click(QStringLiteral("cmdAdd"));
        QCOMPARE(w<QLabel>(QStringLiteral("lblAction"))->text(), QStringLiteral("档案新建:"));
        // Empty fields are named by their labels, which follow the kind.
        fillEntry(false, {}, QStringLiteral("规章制度"));
        click(QStringLiteral("cmdSave"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("分类编码不能为空。"));
        fillEntry(false, QStringLiteral("01"), QStringLiteral("规章制度"));
        click(QStringLiteral("cmdSave"));
        // A new entry leaves the panel open and empty for the next.
        QVERIFY(w<QFrame>(QStringLiteral("Picture1"))->isVisible());
        QVERIFY(w<QLineEdit>(QStringLiteral("TxtCode"))->text().isEmpty());
        QVERIFY(hasNode(QStringLiteral("B01")));
        fillEntry(true, QStringLiteral("01"), QStringLiteral("员工手册"));
        click(QStringLiteral("cmdSave"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("档案编码已存在。"));
        fillEntry(true, QStringLiteral("0101"), QStringLiteral("规章制度"));
        click(QStringLiteral("cmdSave"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("档案名称已存在。"));
        fillEntry(true, QStringLiteral("0101"), QStringLiteral("员工手册"));
        w<QComboBox>(QStringLiteral("cboDept"))->setCurrentText(QStringLiteral("人力资源部"));
        click(QStringLiteral("cmdSave"));
        QCOMPARE(test::one(QStringLiteral("select fBmCode from tWd_File1 where fCode='0101'")),
                 QStringLiteral("01"));
        QCOMPARE(test::one(QStringLiteral("select count(*) from tSysLog where fText like '增加文档类:%'")),
                 QStringLiteral("2"));
        click(QStringLiteral("cmdCancel"));
        QVERIFY(FindInArchive(QStringLiteral("员工手册")).size() == 1);

        // Contents: typed, then another node asks to store them first.
        clickNode(QStringLiteral("B0101"));
        click(QStringLiteral("cmdDetail"));
        QVERIFY(!w<QPlainTextEdit>(QStringLiteral("Text1"))->isReadOnly());
        w<QPlainTextEdit>(QStringLiteral("Text1"))->setPlainText(QStringLiteral("新员工试用期为三个月"));
        m_prompts->answer(vbYes);
        clickNode(QStringLiteral("B01"));
        QCOMPARE(m_prompts->shown().at(m_prompts->shown().size() - 2).text,
                 QStringLiteral("填写内容内容已经改变，是否存盘？"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("(0101) 员工手册: 内容存盘完毕!"));
        QCOMPARE(detail(QStringLiteral("tWd_File1"), QStringLiteral("0101")),
                 QStringLiteral("新员工试用期为三个月"));
        QCOMPARE(FindInArchive(QStringLiteral("试用期")).value(0).code, QStringLiteral("0101"));

        // A quote cannot be stored; nothing changes.
        clickNode(QStringLiteral("B0101"));
        w<QPlainTextEdit>(QStringLiteral("Text1"))->setPlainText(QStringLiteral("it's"));
        click(QStringLiteral("cmdPosOk"));
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        QCOMPARE(detail(QStringLiteral("tWd_File1"), QStringLiteral("0101")),
                 QStringLiteral("新员工试用期为三个月"));
        m_prompts->answer(vbNo);
        click(QStringLiteral("cmdPosCancel"));
        QCOMPARE(w<QPlainTextEdit>(QStringLiteral("Text1"))->toPlainText(),
                 QStringLiteral("新员工试用期为三个月"));
        QVERIFY(w<QPlainTextEdit>(QStringLiteral("Text1"))->isReadOnly());

        // A change closes the panel; a changed class code leaves its children where they were.
        clickNode(QStringLiteral("B01"));
        click(QStringLiteral("cmdChg"));
        QCOMPARE(w<QLabel>(QStringLiteral("lblAction"))->text(), QStringLiteral("档案修改:"));
        w<QLineEdit>(QStringLiteral("TxtCode"))->setText(QStringLiteral("09"));
        click(QStringLiteral("cmdSave"));
        QVERIFY(!w<QFrame>(QStringLiteral("Picture1"))->isVisible());
        QCOMPARE(test::one(QStringLiteral("select count(*) from tWd_File1 where fCode in ('09','0101')")),
                 QStringLiteral("2"));
        QCOMPARE(f.currentCode(), QStringLiteral("09"));
    }

    void anotherClientsChangeIsNotOverwritten() {
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("01"), QStringLiteral("制度"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0101"), QStringLiteral("手册"), 1,
               QStringLiteral("旧"));
        open<frmWd_Filer>();
        clickNode(QStringLiteral("B0101"));
        click(QStringLiteral("cmdDetail"));
        w<QPlainTextEdit>(QStringLiteral("Text1"))->setPlainText(QStringLiteral("我的"));
        test::exec(QStringLiteral("update tWd_File1 set fDetail1='别人的' where fCode='0101'"));
        click(QStringLiteral("cmdPosOk"));
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        QCOMPARE(detail(QStringLiteral("tWd_File1"), QStringLiteral("0101")), QStringLiteral("别人的"));
        m_prompts->answer(vbNo);
        click(QStringLiteral("cmdPosCancel"));
        click(QStringLiteral("cmdChg"));
        w<QLineEdit>(QStringLiteral("TxtName"))->setText(QStringLiteral("手册二"));
        test::exec(QStringLiteral("update tWd_File1 set fName='别人改名' where fCode='0101'"));
        click(QStringLiteral("cmdSave"));
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        QCOMPARE(test::one(QStringLiteral("select fName from tWd_File1 where fCode='0101'")),
                 QStringLiteral("别人改名"));
    }

    void filerDeletesAndRefusesClassesWithEntries() {
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("01"), QStringLiteral("制度"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0101"), QStringLiteral("手册"), 1,
               QStringLiteral("加班规定"));
        ReindexArchive(false);
        open<frmWd_Filer>();
        clickNode(QStringLiteral("B01"));
        click(QStringLiteral("cmdDel"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("文档类 ( 制度 ) 尚有下级档案,不能删除。"));
        clickNode(QStringLiteral("B0101"));
        m_prompts->answer(vbYes);
        click(QStringLiteral("cmdDel"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("是否删除: 文档 ( 手册 ) ?"));
        QVERIFY(!hasNode(QStringLiteral("B0101")));
        QVERIFY(FindInArchive(QStringLiteral("加班")).isEmpty());
        clickNode(QStringLiteral("B01"));
        m_prompts->answer(vbYes);
        click(QStringLiteral("cmdDel"));
        QCOMPARE(w<QComboBox>(QStringLiteral("cboFiler"))->findText(QStringLiteral("制度")), -1);
        QCOMPARE(test::one(QStringLiteral("select count(*) from tWd_File1")), QStringLiteral("0"));
    }

    void filesAndPictures() {
        QImage picture(40, 30, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        QVERIFY(picture.save(path(QStringLiteral("yard.png"))));
        test::writeFile(path(QStringLiteral("notes.txt")), QStringLiteral("第一行\n第二行").toUtf8());
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("01"), QStringLiteral("照片"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0101"), QStringLiteral("厂区"), 1, {},
               path(QStringLiteral("yard.png")), 1);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0102"), QStringLiteral("已删"), 1, {},
               path(QStringLiteral("gone.png")), 1);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0103"), QStringLiteral("假图"), 1, {},
               path(QStringLiteral("notes.txt")), 1);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0104"), QStringLiteral("笔记"), 1, {},
               path(QStringLiteral("notes.txt")), 0);
        open<frmWd_Filer>();
        clickNode(QStringLiteral("B0101"));
        QVERIFY(w<QLabel>(QStringLiteral("imgPath"))->isVisible());
        QVERIFY(!w<QLabel>(QStringLiteral("imgPath"))->pixmap().isNull());
        QVERIFY(w<QRadioButton>(QStringLiteral("optDetail(0)"))->isChecked());
        QVERIFY(m_prompts->messages().isEmpty());
        clickNode(QStringLiteral("B0102"));
        QCOMPARE(m_prompts->messages().last(),
                 path(QStringLiteral("gone.png")) + QStringLiteral(" 文件已不存在"));
        QVERIFY(w<QRadioButton>(QStringLiteral("optDetail(1)"))->isChecked());
        QVERIFY(!w<QLabel>(QStringLiteral("imgPath"))->isVisible());
        clickNode(QStringLiteral("B0103"));
        QCOMPARE(m_prompts->messages().last(),
                 path(QStringLiteral("notes.txt")) + QStringLiteral(" 不是图形文件"));
        // A document's text comes into the contents.
        clickNode(QStringLiteral("B0104"));
        QVERIFY(w<QToolButton>(QStringLiteral("cmdDocOpen"))->isEnabled());
        click(QStringLiteral("cmdDetail"));
        QVERIFY(w<QToolButton>(QStringLiteral("cmdDocCopy"))->isVisible());
        click(QStringLiteral("cmdDocCopy"));
        QVERIFY(w<QPlainTextEdit>(QStringLiteral("Text1"))->toPlainText().contains(QStringLiteral("第二行")));
        m_prompts->answer(vbNo);
        click(QStringLiteral("cmdPosCancel"));
        // A path typed that leads nowhere is refused and emptied.
        click(QStringLiteral("cmdChg"));
        w<QLineEdit>(QStringLiteral("txtPath"))->setText(path(QStringLiteral("none.doc")));
        static_cast<frmWd_Filer&>(*m_form).txtPath_LostFocus();
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("该文件不存在!"));
        QVERIFY(w<QLineEdit>(QStringLiteral("txtPath"))->text().isEmpty());
        // A path with a quote cannot be stored; the entry stays as it was.
        w<QLineEdit>(QStringLiteral("txtPath"))->setText(path(QStringLiteral("it's.txt")));
        click(QStringLiteral("cmdSave"));
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        QVERIFY(w<QFrame>(QStringLiteral("Picture1"))->isVisible());
        QCOMPARE(test::one(QStringLiteral("select fFilePath from tWd_File1 where fCode='0104'")),
                 path(QStringLiteral("notes.txt")));
        click(QStringLiteral("cmdCancel"));
        // Opening a file gone since it was filed.
        test::exec(QStringLiteral("update tWd_File1 set fFilePath=? where fCode='0104'"),
                   {path(QStringLiteral("away.doc"))});
        clickNode(QStringLiteral("B0104"));
        click(QStringLiteral("cmdDocOpen"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("文件已不存在!"));
    }

    void filerStateAndPrint() {
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("01"), QStringLiteral("制度"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0101"), QStringLiteral("考勤办法"), 1);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("02"), QStringLiteral("合同"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0201"), QStringLiteral("销售合同"), 1);
        open<frmWd_Filer>(5);
        QVERIFY(w<QComboBox>(QStringLiteral("cboFiler"))->isEnabled());
        QCOMPARE(w<QComboBox>(QStringLiteral("cboFiler"))->currentIndex(), 0);
        QVERIFY(hasNode(QStringLiteral("B0201")));
        open<frmWd_Filer>(2);
        QVERIFY(!w<QComboBox>(QStringLiteral("cboFiler"))->isEnabled());
        QCOMPARE(m_form->windowTitle(), QStringLiteral("合同"));
        QVERIFY(hasNode(QStringLiteral("B0201")));
        QVERIFY(!hasNode(QStringLiteral("B0101")));
        const QString pdf = path(QStringLiteral("tree.pdf"));
        PrintOutput::setPdfPath(pdf);
        click(QStringLiteral("cmdPrint"));
        PrintOutput::setPdfPath(QString());
        QVERIFY(test::pdfText(pdf).contains(QStringLiteral("销售合同")));
        // A paper's text prints under its name.
        test::exec(QStringLiteral("update tWd_File1 set fDetail1=? where fCode='0201'"),
                   {QStringLiteral("甲方：示范实业\r\n乙方：某某贸易")});
        clickNode(QStringLiteral("B0201"));
        PrintOutput::setPdfPath(pdf);
        click(QStringLiteral("cmdTextPrint"));
        PrintOutput::setPdfPath(QString());
        const QString text = test::pdfText(pdf);
        QVERIFY2(text.contains(QStringLiteral("销售合同")) && text.contains(QStringLiteral("乙方：某某贸易")),
                 qPrintable(text));
    }

    void findListsHitsAndShowsThem() {
        addDept(QStringLiteral("01"), QStringLiteral("行政部"));
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("01"), QStringLiteral("制度"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("0101"), QStringLiteral("考勤办法"), 1,
               QStringLiteral("总则\r\n迟到三次记旷工半天"), {}, 0, QStringLiteral("01"));
        ReindexArchive(false);
        open<frmWd_Filer>();
        w<QLineEdit>(QStringLiteral("txtFind"))->setText(QStringLiteral("旷工"));
        m_form->findChild<ArchiveFind*>()->find();
        auto* list = w<QListWidget>(QStringLiteral("lstFound"));
        QCOMPARE(list->count(), 1);
        QVERIFY(list->item(0)->text().contains(QStringLiteral("迟到三次记旷工半天")));
        emit list->itemClicked(list->item(0));
        QCOMPARE(m_form->currentCode(), QStringLiteral("0101"));
        QVERIFY(w<QPlainTextEdit>(QStringLiteral("Text1"))->toPlainText().contains(QStringLiteral("旷工")));
        // The same in the view by department.
        open<frmWd_DeptDict>();
        w<QLineEdit>(QStringLiteral("txtFind"))->setText(QStringLiteral("考勤"));
        m_form->findChild<ArchiveFind*>()->find();
        list = w<QListWidget>(QStringLiteral("lstFound"));
        QCOMPARE(list->count(), 1);
        emit list->itemClicked(list->item(0));
        QCOMPARE(m_form->currentCode(), QStringLiteral("0101"));
        w<QLineEdit>(QStringLiteral("txtFind"))->setText(QStringLiteral("没有的词"));
        m_form->findChild<ArchiveFind*>()->find();
        QCOMPARE(w<QLabel>(QStringLiteral("lblFound"))->text(),
                 QStringLiteral("没有找到含有“没有的词”的文档"));
    }

    void dictionaryIsThePlainMember() {
        auto& d = open<frmWd_dict>();
        click(QStringLiteral("cmdAdd"));
        QCOMPARE(w<QLabel>(QStringLiteral("lblAction"))->text(), QStringLiteral("辞典新增:"));
        QVERIFY(!w<QFrame>(QStringLiteral("fraLeft"))->isEnabled());
        click(QStringLiteral("cmdSave"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("辞典编码不能为空。"));
        fillEntry(false, QStringLiteral("01"), QStringLiteral("管理术语"));
        QCOMPARE(w<QLabel>(QStringLiteral("lblCode"))->text(), QStringLiteral("分类编号:"));
        w<QLineEdit>(QStringLiteral("txtNumber"))->setText(QStringLiteral("25"));
        click(QStringLiteral("cmdSave"));
        fillEntry(true, QStringLiteral("01"), QStringLiteral("绩效"));
        click(QStringLiteral("cmdSave"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("编号已存在。"));
        fillEntry(true, QStringLiteral("0101"), QStringLiteral("绩效"));
        click(QStringLiteral("cmdSave"));
        click(QStringLiteral("cmdCancel"));
        QVERIFY(w<QFrame>(QStringLiteral("fraLeft"))->isEnabled());
        QCOMPARE(test::one(QStringLiteral("select fLimited from tWd_File0 where fCode='01'")).toDouble(),
                 0.0);
        QCOMPARE(test::one(QStringLiteral("select count(*) from tSysLog where fText like '增加辞典:%'")),
                 QStringLiteral("2"));
        // Codes come back with a save, whatever the box says.
        w<QCheckBox>(QStringLiteral("chkNoListCode"))->click();
        clickNode(QStringLiteral("B0101"));
        QCOMPARE(w<QTreeWidget>(QStringLiteral("Tree1"))->currentItem()->text(0), QStringLiteral("绩效"));
        click(QStringLiteral("cmdChg"));
        QCOMPARE(w<QLabel>(QStringLiteral("lblAction"))->text(), QStringLiteral("辞典修改:"));
        click(QStringLiteral("cmdSave"));
        QVERIFY(w<QTreeWidget>(QStringLiteral("Tree1"))
                    ->findItems(QStringLiteral("0101\t绩效"), Qt::MatchRecursive)
                    .size() == 1);
        // The root leaves the entry on show; contents stored with their message.
        clickNode(QStringLiteral("B0101"));
        clickNode(QStringLiteral("B"));
        QCOMPARE(d.currentCode(), QStringLiteral("0101"));
        QCOMPARE(w<QRadioButton>(QStringLiteral("optDetail"))->text(), QStringLiteral("内容 (绩效)"));
        click(QStringLiteral("cmdDetail"));
        w<QPlainTextEdit>(QStringLiteral("Text1"))->setPlainText(QStringLiteral("按月考核"));
        click(QStringLiteral("cmdPosOk"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("填写内容存盘完毕!"));
        QCOMPARE(detail(QStringLiteral("tWd_File0"), QStringLiteral("0101")), QStringLiteral("按月考核"));
        w<QPlainTextEdit>(QStringLiteral("Text1"))->setPlainText(QStringLiteral("'"));
        click(QStringLiteral("cmdPosOk"));
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        click(QStringLiteral("cmdQuit")); // disabled while the contents are open
        QVERIFY(m_form->isVisible());
    }

    void deptViewHangsDocumentsUnderDepartments() {
        QImage picture(20, 20, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(path(QStringLiteral("p.png"))));
        addDept(QStringLiteral("01"), QStringLiteral("总部"));
        addDept(QStringLiteral("0101"), QStringLiteral("行政部"));
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("7"), QStringLiteral("职责"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("8"), QStringLiteral("图片"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("701"), QStringLiteral("总部职责"), 1,
               QStringLiteral("统筹"), path(QStringLiteral("a.doc")), 0, QStringLiteral("01"));
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("702"), QStringLiteral("孤儿"), 1, {}, {}, 0,
               QStringLiteral("99"));
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("801"), QStringLiteral("合影"), 1, {},
               path(QStringLiteral("p.png")), 1, QStringLiteral("0101"));
        open<frmWd_DeptDict>();
        // The document without a department is told once and the rest still fills.
        QCOMPARE(m_prompts->messages().size(), 1);
        QVERIFY(m_prompts->messages().first().startsWith(QStringLiteral("[99]:部门编号已不存在，[孤儿]")));
        QCOMPARE(m_prompts->shown().first().title, QStringLiteral("人事管理"));
        QTreeWidgetItem* hq = w<QTreeWidget>(QStringLiteral("Tree1"))->topLevelItem(0)->child(0);
        QCOMPARE(hq->child(0)->data(0, Qt::UserRole).toString(), QStringLiteral("701R"));
        QCOMPARE(hq->child(1)->data(0, Qt::UserRole).toString(), QStringLiteral("B0101"));
        QVERIFY(hasNode(QStringLiteral("801R")));
        QVERIFY(!w<QPushButton>(QStringLiteral("cmdAdd"))->isVisible());
        clickNode(QStringLiteral("701R"));
        QCOMPARE(w<QPlainTextEdit>(QStringLiteral("Text1"))->toPlainText(), QStringLiteral("统筹"));
        QVERIFY(w<QToolButton>(QStringLiteral("cmdDocOpen"))->isEnabled());
        clickNode(QStringLiteral("801R"));
        QVERIFY(w<QRadioButton>(QStringLiteral("optDetail(0)"))->isChecked());
        QVERIFY(!w<QToolButton>(QStringLiteral("cmdDocOpen"))->isEnabled());
        clickNode(QStringLiteral("B01"));
        QVERIFY(w<QPlainTextEdit>(QStringLiteral("Text1"))->toPlainText().isEmpty());
        QVERIFY(!w<QToolButton>(QStringLiteral("cmdDocOpen"))->isEnabled());
        // A class chosen by the caller: only its documents, and the choice fixed.
        m_prompts->clear();
        open<frmWd_DeptDict>(2);
        QVERIFY(!w<QComboBox>(QStringLiteral("cboFiler"))->isEnabled());
        QVERIFY(hasNode(QStringLiteral("801R")));
        QVERIFY(!hasNode(QStringLiteral("701R")));
        QVERIFY(m_prompts->messages().isEmpty());
    }

    void deptViewNeverStoresWhatIsTyped() {
        addDept(QStringLiteral("01"), QStringLiteral("总部"));
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("7"), QStringLiteral("职责"), 0);
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("701"), QStringLiteral("总部职责"), 1,
               QStringLiteral("统筹"), {}, 0, QStringLiteral("01"));
        addRow(QStringLiteral("tWd_File1"), QStringLiteral("702"), QStringLiteral("总部制度"), 1,
               QStringLiteral("考勤"), {}, 0, QStringLiteral("01"));
        open<frmWd_DeptDict>();
        m_form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_form.get()));
        clickNode(QStringLiteral("701R"));
        auto* text = w<QPlainTextEdit>(QStringLiteral("Text1"));
        QVERIFY(!text->isReadOnly()); // typing is allowed...
        text->setFocus();
        text->moveCursor(QTextCursor::End);
        QTest::keyClicks(text, "abc");
        QCOMPARE(text->toPlainText(), QStringLiteral("统筹abc"));
        // ...but another paper is shown without a question, and nothing is stored.
        m_prompts->answer(vbYes);
        clickNode(QStringLiteral("702R"));
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(text->toPlainText(), QStringLiteral("考勤"));
        QCOMPARE(detail(QStringLiteral("tWd_File1"), QStringLiteral("701")), QStringLiteral("统筹"));
        text->setPlainText(QStringLiteral("改了"));
        m_prompts->answer(vbYes);
        click(QStringLiteral("cmdQuit"));
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(detail(QStringLiteral("tWd_File1"), QStringLiteral("702")), QStringLiteral("考勤"));
    }

    void menuKeysOpenTheScreens() {
        QStringList opened;
        setModalRunner([&](QDialog& d) {
            opened << d.objectName() + QLatin1Char(':') + d.property("State").toString();
            return 0;
        });
        for (const char* key : {"mnuWdFiler", "mnuWdDict", "mnuWdDept"})
            QVERIFY(runCommand(QLatin1String(key), 3, {}));
        setModalRunner({});
        QCOMPARE(opened, QStringList({QStringLiteral("frmWd_Filer:0"), QStringLiteral("frmWd_dict:0"),
                                      QStringLiteral("frmWd_DeptDict:3")}));
    }
};

ZQ_DB_TEST_MAIN(TestArchiveScreens)
#include "test_archive_screens.moc"
