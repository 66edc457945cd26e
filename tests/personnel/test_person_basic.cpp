#include "TestDb.h"

#include "admin/Demo.h"
#include "personnel/frmRs_PersonBasic.h"
#include "personnel/PersonBasicData.h"
#include "personnel/PersonBrowserData.h"
#include "services/ui/ComboLookups.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <memory>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {
QVariantMap transferSettings;
int transfers = 0;

int count(const QString& table, const QString& code) {
    return one(QStringLiteral("select count(*) from %1 where fcode='%2'").arg(table, code)).toInt();
}

void addPerson(const QString& code, const QString& name, const QString& idCard = {}) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fSfz,fSpday,fBmName,fBmCode,funit,fzt) values "
                        "('%1','%2','%3','2020-01-01','生产部','01','总公司',1)")
             .arg(code, name, idCard));
}

// A screen in the given mode for the person in hand, loaded as when shown.
std::unique_ptr<frmRs_PersonBasic> screen(int mode, const QString& code = {}) {
    G().PersonEditMode = qint16(mode);
    G().CurPersonCode = code;
    auto f = std::make_unique<frmRs_PersonBasic>();
    f->show();
    return f;
}

QComboBox* combo(frmRs_PersonBasic& f, const char* name) {
    return f.findChild<QComboBox*>(QLatin1String(name));
}

void choose(QComboBox* c, const QString& text) {
    const int i = c->findText(text);
    QVERIFY2(i >= 0, qPrintable(text));
    c->setCurrentIndex(i);
}

void fillRequired(frmRs_PersonBasic& f, const QString& code, const QString& name) {
    f.text2(0)->setText(code);
    f.text2(1)->setText(name);
    f.text2(25)->setText(QStringLiteral("2021/3/4"));
}
} // namespace

class TestPersonBasic : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    ConnectionSettings m_settings;

private slots:
    void initTestCase() {
        registerForm(QStringLiteral("frmRs_PersonAssignOk"), [](QWidget* parent) {
            auto* d = new QDialog(parent);
            d->setObjectName(QStringLiteral("frmRs_PersonAssignOk"));
            return d;
        });
        setModalRunner([](QDialog& d) {
            if (d.objectName() == QLatin1String("frmRs_PersonAssignOk")) {
                ++transfers;
                transferSettings.clear();
                for (const char* n : {"Text1_0", "Text1_2", "cboOldDept", "cboNewDept"})
                    transferSettings.insert(QLatin1String(n), d.property(n));
            }
            return int(QDialog::Accepted);
        });
    }

    void init() {
        m_settings = test::freshDatabase();
        m_prompts = &scriptPrompts();
        m_prompts->clear();
        test::actAsSupervisor();
        transfers = 0;
        exec("insert into tRs_Bm (fCode,fName,fYnxj) values ('01','生产部',0)");
        exec("insert into tRs_Bm (fCode,fName,fYnxj) values ('02','销售部',0)");
        exec("insert into tRs_Bm (fCode,fName,fYnxj,fRz,fgzname) values ('0101','车工',1,'','')");
    }

    void twoPersonsInARowKeepDepartmentPostAndUnit() {
        auto f = screen(1);
        f->setCompName(QStringLiteral("测试公司"));
        fillRequired(*f, "A01", "张三");
        f->text2(3)->setText(QStringLiteral("1990.5.6"));
        f->text2(4)->setText(QStringLiteral("  汉  "));
        choose(combo(*f, "ComBm"), QStringLiteral("生产部"));
        f->ComBm_Click();
        QVERIFY(m_prompts->messages().isEmpty()); // adding never asks for a transfer
        QVERIFY(combo(*f, "cboRz")->findText(QStringLiteral("车工")) >= 0);
        combo(*f, "cboRz")->setEditText(QStringLiteral("车工"));
        combo(*f, "CobFunit")->setEditText(QStringLiteral("总公司"));
        f->cmdOK_Click();
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select fBirthDay from tRsBasic where fCode='A01'"), QString("1990-05-06"));
        QCOMPARE(one("select fSpday from tRsBasic where fCode='A01'"), QString("2021-03-04"));
        QCOMPARE(one("select fMz from tRsBasic where fCode='A01'"), QString("汉")); // trimmed on insert
        QCOMPARE(one("select unit from tRsBasic where fCode='A01'"), QString("测试公司"));
        QCOMPARE(one("select fzt from tRsBasic where fCode='A01'"), QString::number(CurrentRsState()));
        QCOMPARE(G().CurPersonCode, QString("A01"));
        QCOMPARE(G().CurPersonDeptCode, QString("01"));
        // Ready for the next person: the boxes are empty, the combo boxes keep their values, and
        // the status line says whom it saved (no box to click away).
        QVERIFY(f->isVisible());
        QVERIFY(f->text2(0)->text().isEmpty());
        QVERIFY(m_prompts->messages().isEmpty());
        QVERIFY2(f->statusText().contains(QStringLiteral("已存盘")) && f->statusText().contains("A01") &&
                     f->statusText().contains(QStringLiteral("张三")) &&
                     f->statusText().contains(QStringLiteral("生产部")),
                 qPrintable(f->statusText()));
        fillRequired(*f, "A02", "李四");
        f->cmdOK_Click();
        QCOMPARE(one("select fBmName||'/'||fBmCode||'/'||fRz||'/'||funit from tRsBasic where fCode='A02'"),
                 QString("生产部/01/车工/总公司"));
    }

    // The fields a save refuses empty are marked; the department comes before the post, in the
    // form and in the tab chain.
    void requiredFieldsMarkedAndDepartmentBeforePost() {
        auto f = screen(1);
        for (int i = 0; i < kBasicFields; ++i) {
            auto* mark = f->findChild<QLabel*>(QStringLiteral("lblRequired(%1)").arg(i));
            QCOMPARE(bool(mark), i == 0 || i == 1 || i == 25);
            if (mark) QVERIFY(mark->isVisible());
        }
        QWidget* dept = combo(*f, "ComBm");
        QWidget* post = combo(*f, "cboRz");
        const auto place = [&](QWidget* w) { return f->mapFromGlobal(w->mapToGlobal(QPoint(0, 0))); };
        const QPoint d = place(dept);
        const QPoint p = place(post);
        QVERIFY2(d.y() < p.y() || (d.y() == p.y() && d.x() < p.x()),
                 qPrintable(QString("%1,%2 / %3,%4").arg(d.x()).arg(d.y()).arg(p.x()).arg(p.y())));
        QWidget* w = dept->nextInFocusChain();
        while (w != post && dept->isAncestorOf(w))
            w = w->nextInFocusChain(); // the department box's own parts
        QVERIFY2(w == post || post->isAncestorOf(w), qPrintable(w->objectName()));
    }

    void comboBoxesNeverChooseByThemselves() {
        // A new person without a chosen department is stored without one, in name and code alike.
        auto add = screen(1);
        QCOMPARE(combo(*add, "ComBm")->currentIndex(), -1);
        QCOMPARE(combo(*add, "ComGz")->currentIndex(), -1);
        fillRequired(*add, "N01", "新人");
        add->cmdOK_Click();
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select coalesce(fBmName,'')||'/'||coalesce(fBmCode,'')||'/'||coalesce(fgzname,'') "
                     "from tRsBasic where fCode='N01'"),
                 QString("//"));

        // Values the lists lack are shown, not replaced, and a save writes them back as they were.
        exec("insert into tRsBasic (fCode,fName,fSpday,fSex,fBmName,fBmCode,fgzname,fygxz,fzt) values "
             "('U01','旧人','2020-01-01','','旧部门','77','九十九级','外包',1)");
        auto change = screen(2, "U01");
        QCOMPARE(combo(*change, "ComGz")->currentIndex(), -1);
        QCOMPARE(combo(*change, "ComGz")->placeholderText(), QString("九十九级"));
        QCOMPARE(combo(*change, "ComSex")->currentIndex(), -1);
        change->text2(12)->setText("555");
        change->cmdOK_Click();
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select fSex||'/'||fBmName||'/'||fBmCode||'/'||fgzname||'/'||fygxz||'/'||fPhone "
                     "from tRsBasic where fCode='U01'"),
                 QString("/旧部门/77/九十九级/外包/555"));

        // A listed entry chosen by the clerk replaces the held value.
        auto again = screen(2, "U01");
        choose(combo(*again, "ComBm"), QStringLiteral("销售部"));
        again->ComBm_Click();
        m_prompts->clear();
        again->cmdOK_Click();
        QCOMPARE(one("select fBmName||'/'||fBmCode from tRsBasic where fCode='U01'"), QString("销售部/02"));
    }

    void anotherClientsChangeIsNeitherLostNorOverwritten() {
        addPerson("A01", "张三");
        auto f = screen(2, "A01");
        Connection other;
        other.open(m_settings);
        other.execute("update tRsBasic set fMz='回',fPhone='111' where fCode='A01'");
        f->text2(12)->setText("222");
        f->cmdOK_Click();
        QVERIFY(m_prompts->messages().last().startsWith(
            QStringLiteral("存盘错误!\n\n此记录在您打开之后已被他人修改")));
        QVERIFY(f->isVisible());
        QCOMPARE(f->text2(12)->text(), QString("222")); // the clerk's input stays
        QCOMPARE(one("select fPhone||fMz from tRsBasic where fCode='A01'"), QString("111回"));
        // Reopened, the clerk's change goes in beside the other client's.
        auto again = screen(2, "A01");
        again->text2(12)->setText("222");
        again->cmdOK_Click();
        QCOMPARE(one("select fPhone||fMz from tRsBasic where fCode='A01'"), QString("222回"));
    }

    void duplicatesAreRefused() {
        addPerson("B01", "王五", "110");
        addPerson("B02", "赵六", "220");
        auto add = screen(1);
        fillRequired(*add, "C01", "某人");
        add->text2(7)->setText("110");
        add->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("“身份证号”与他人(王五)重复，请重新输入。"));
        add->text2(7)->setText("330");
        add->text2(0)->setText("B01");
        add->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("“员工编号”与他人重复，请重新输入。"));
        QCOMPARE(one("select count(*) from tRsBasic"), QString("2"));

        // Changing B01: its own card passes, another's code is a duplicate.
        auto change = screen(2, "B01");
        QCOMPARE(change->text2(1)->text(), QString("王五"));
        change->text2(0)->setText("B02");
        change->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("“员工编号”与他人重复，请重新输入。"));
        // A person who has gone meanwhile.
        G().CurPersonCode = "Z99";
        change->text2(0)->setText("Z98");
        change->text2(7)->clear();
        change->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("此“员工编号”记录并不存在，请退出重新修改。"));
        QCOMPARE(one("select count(*) from tRsBasic"), QString("2"));
    }

    void quotesStopTheSave() {
        auto f = screen(1);
        fillRequired(*f, "Q01", "某人");
        f->text2(4)->setText("o'k");
        f->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("你在记录中输入了单引号,清检查后删除!"));
        QVERIFY(f->text2(4)->hasFocus() || !QApplication::focusWidget());
        f->text2(4)->setText("ok");
        combo(*f, "CobFunit")->setEditText("o'k");
        f->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("存盘错误!"));
        QCOMPARE(one("select count(*) from tRsBasic"), QString("0"));
        QCOMPARE(f->text2(0)->text(), QString("Q01")); // the input stays for another try
    }

    void controlCharactersNeverReachTheRecord() {
        // A NUL fails the server's statement and a bell has no place in a record: the boxes drop both
        // as they are pasted or committed, and the person is saved as read.
        auto f = screen(1);
        fillRequired(*f, "N01", "某人");
        QLineEdit* nation = f->text2(4);
        nation->setFocus();
        QGuiApplication::clipboard()->setText(QStringLiteral("汉") + QChar(0) + QStringLiteral("族") +
                                              QChar(7));
        QTest::keySequence(nation, QKeySequence::Paste);
        QCOMPARE(nation->text(), QString("汉族"));
        QLineEdit* name = f->text2(1);
        name->clear();
        name->setFocus();
        QInputMethodEvent commit;
        commit.setCommitString(QStringLiteral("张") + QChar(0) + QStringLiteral("三") + QChar(7));
        QApplication::sendEvent(name, &commit);
        QCOMPARE(name->text(), QString("张三"));
        f->cmdOK_Click();
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select fName||'/'||fMz from tRsBasic where fCode='N01'"), QString("张三/汉族"));
    }

    void codeChangeMovesChildRows() {
        SplitSpouseTable();
        addPerson("A01", "张三", "110");
        for (const char* t : {"trsWork", "trsFamily", "tRsBasic_P", "tRsDetail"})
            exec(QStringLiteral("insert into %1 (fcode) values ('A01')").arg(QLatin1String(t)));
        auto f = screen(2, "A01");
        f->text2(0)->setText("A09");
        f->cmdOK_Click();
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(count("tRsBasic", "A09"), 1);
        QCOMPARE(count("tRsBasic", "A01"), 0);
        QCOMPARE(count("trsWork", "A09"), 1);
        QCOMPARE(count("trsFamily", "A09"), 1);
        QCOMPARE(count("tRsBasic_P", "A01"), 1);
        QCOMPARE(count("tRsDetail", "A01"), 1);
        QCOMPARE(G().CurPersonCode, QString("A09"));
        QCOMPARE(f->result(), int(QDialog::Accepted));
    }

    void failingCascadeRollsBack() {
        addPerson("A01", "张三");
        exec("insert into trsWork (fcode) values ('A01')");
        exec("insert into trsFamily (fcode) values ('A01')");
        if (test::onServer())
            exec("alter table trsFamily add constraint no_a09 check (fcode <> 'A09')");
        else
            exec("create trigger no_a09 before update on trsFamily when new.fcode='A09' "
                 "begin select raise(abort,'refused'); end");
        auto f = screen(2, "A01");
        f->text2(0)->setText("A09");
        f->text2(1)->setText("张三丰");
        f->cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("存盘错误!"));
        QCOMPARE(one("select fName from tRsBasic where fCode='A01'"), QString("张三"));
        QCOMPARE(count("trsWork", "A01"), 1);
        QCOMPARE(G().CurPersonCode, QString("A01"));
        QVERIFY(f->isVisible());
        QCOMPARE(f->text2(0)->text(), QString("A09"));
    }

    void photoRoundTrip() {
        QTemporaryDir dir;
        G().PowerPath = dir.path();
        const auto picture = [&dir](const char* name, const QByteArray& bytes) {
            const QString path = dir.filePath(QLatin1String(name));
            QFile out(path);
            return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size() ? path : QString();
        };
        const QByteArray jpeg = demo::portraitJpeg(3);
        const QString file = picture("face.jpg", jpeg);
        QVERIFY(!file.isEmpty());
        {
            auto f = screen(1);
            fillRequired(*f, "P01", "某人");
            m_prompts->answerFile(file);
            f->mnuPicEdit_Click();
            QVERIFY(f->hasPicture());
            QCOMPARE(f->photoPath(), file);
            f->cmdOK_Click();
            QCOMPARE(PersonPhoto("P01"), jpeg);
            QVERIFY(!f->hasPicture());
        }
        {
            // The stored photo shows; a change of the home phone alone keeps it.
            auto f = screen(2, "P01");
            QVERIFY(f->hasPicture());
            f->text2(12)->setText("88886666");
            f->cmdOK_Click();
            QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
            QCOMPARE(one("select fPhone from tRsBasic where fCode='P01'"), QString("88886666"));
            QCOMPARE(PersonPhoto("P01"), jpeg);
        }
        const QByteArray other = demo::portraitJpeg(5);
        const QString otherFile = picture("other.jpg", other);
        QVERIFY(!otherFile.isEmpty());
        {
            // Another client's new photo, stored while this one was open, is neither cleared nor
            // overwritten by a save that chose or removed none...
            auto f = screen(2, "P01");
            Connection client;
            client.open(m_settings);
            client.execute("update tRsBasic set fphoto=? where fCode='P01'", {other});
            f->text2(12)->setText("1");
            f->cmdOK_Click();
            QCOMPARE(PersonPhoto("P01"), other);
            client.close();
        }
        {
            // ...nor by one that chose a picture of its own: the clerk hears why.
            auto f = screen(2, "P01");
            Connection client;
            client.open(m_settings);
            client.execute("update tRsBasic set fphoto=? where fCode='P01'", {jpeg});
            m_prompts->answerFile(otherFile);
            f->mnuPicEdit_Click();
            f->cmdOK_Click();
            QVERIFY(m_prompts->messages().last().startsWith(
                QStringLiteral("员工照片存盘错误!\n\n此记录在您打开之后已被他人修改")));
            QCOMPARE(PersonPhoto("P01"), jpeg);
            client.close();
        }
        {
            // 相片删除 and a save take the photo away.
            m_prompts->clear();
            auto f = screen(2, "P01");
            f->mnuPicDel_Click();
            QVERIFY(!f->hasPicture());
            f->cmdOK_Click();
            QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
            QVERIFY(PersonPhoto("P01").isEmpty());
        }
        auto f = screen(1);
        const QString bad = dir.filePath("bad.bmp");
        QFile junk(bad);
        QVERIFY(junk.open(QIODevice::WriteOnly));
        junk.write("not a picture");
        junk.close();
        m_prompts->answerFile(bad);
        f->mnuPicEdit_Click();
        QCOMPARE(m_prompts->messages().last(), QString("照片文件格式错误 !   "));
        QVERIFY(f->photoPath().isEmpty());
    }

    void transferPromptsOnChange() {
        addPerson("A01", "张三");
        G().CurPersonName = "张三";
        auto f = screen(2, "A01");
        m_prompts->answer(vbYes);
        choose(combo(*f, "ComBm"), QStringLiteral("销售部"));
        f->ComBm_Click();
        QCOMPARE(m_prompts->messages().last(), QString("是否生成调令:调动此人到别的部门?"));
        QCOMPARE(transfers, 1);
        QCOMPARE(transferSettings.value("cboOldDept").toString(), QString("生产部"));
        QCOMPARE(transferSettings.value("cboNewDept").toString(), QString("销售部"));
        QCOMPARE(transferSettings.value("Text1_2").toString(), QString("A01"));
        QCOMPARE(transferSettings.value("Text1_0").toString(), QString("1"));
        // Back to the loaded department: no question.
        const int asked = m_prompts->messages().size();
        choose(combo(*f, "ComBm"), QStringLiteral("生产部"));
        f->ComBm_Click();
        QCOMPARE(m_prompts->messages().size(), asked);
        m_prompts->answer(vbNo);
        combo(*f, "CobFunit")->setEditText(QStringLiteral("分公司"));
        f->CobFunit_Click();
        QCOMPARE(m_prompts->messages().last(), QString("真的要调动此人到别的分公司吗?"));
        QCOMPARE(transfers, 1);
    }

    void aTypedDateReplacesTheOfferedOne() {
        auto f = screen(1);
        QApplication::setActiveWindow(f.get());
        fillRequired(*f, "D01", "新人");
        QLineEdit* birth = f->text2(3);
        QTest::mouseClick(birth, Qt::LeftButton);
        QTRY_VERIFY(birth->hasFocus());
        QCoreApplication::processEvents();
        QCOMPARE(birth->text(), QDate::currentDate().toString("yyyy-MM-dd"));
        QCOMPARE(birth->selectedText(), birth->text());
        QTest::keyClicks(birth, "1990-05-06");
        QCOMPARE(birth->text(), QString("1990-05-06"));
        f->cmdOK_Click();
        QCOMPARE(one("select fBirthDay from tRsBasic where fCode='D01'"), QString("1990-05-06"));
    }

    void freeTextDateIsStoppedAtTheField() {
        auto f = screen(1);
        f->text2(3)->setText("明天");
        QVERIFY(!f->Text2_LostFocus(3));
        QVERIFY(m_prompts->messages().last().startsWith(QString("[日期格式] 应如: ")));
        QCOMPARE(f->text2(3)->text(), QDate::currentDate().toString("yyyy-MM-dd"));
        f->text2(3)->clear();
        QVERIFY(f->Text2_LostFocus(3)); // blank passes
    }

    void keysMoveBetweenFields() {
        auto f = screen(1);
        QApplication::setActiveWindow(f.get());
        f->text2(0)->setFocus();
        QTest::keyClick(f->text2(0), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), f->text2(1));
        QTest::keyClick(f->text2(1), Qt::Key_Down);
        QCOMPARE(QApplication::focusWidget(), combo(*f, "ComSex"));
        QTest::keyClick(combo(*f, "ComSex"), Qt::Key_Return);
        // An empty date field offers today.
        QCOMPARE(QApplication::focusWidget(), f->text2(3));
        QCOMPARE(f->text2(3)->text(), QDate::currentDate().toString("yyyy-MM-dd"));
        QTest::keyClick(f->text2(3), Qt::Key_Up);
        QCOMPARE(QApplication::focusWidget(), combo(*f, "ComSex"));
        QTest::keyClick(combo(*f, "CobFunit")->lineEdit(), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), f->text2(0));
        QVERIFY(m_prompts->messages().isEmpty()); // no save on Enter
    }

    void viewModeIsLocked() {
        addPerson("A01", "张三");
        auto f = screen(0, "A01");
        QVERIFY(!f->findChild<QPushButton*>("cmdOK")->isEnabled());
        QVERIFY(f->text2(0)->isReadOnly());
        QVERIFY(!combo(*f, "ComBm")->isEnabled());
        QCOMPARE(combo(*f, "ComBm")->currentText(), QString("生产部"));
        exec("update tRsBasic set fBmName='撤销部' where fCode='A01'");
        auto again = screen(2, "A01");
        QCOMPARE(combo(*again, "ComBm")->placeholderText(), QString("撤销部")); // shown, not listed
        QCOMPARE(ComboValue(combo(*again, "ComBm")), QString("撤销部"));
    }

    // A picture of the screen with a demo person, when asked for by ZQ_SHOT_BASIC (a PNG path).
    void screenshot() {
        const QString path = qEnvironmentVariable("ZQ_SHOT_BASIC");
        if (path.isEmpty()) QSKIP("no screenshot asked for");
        exec("delete from tRs_Bm");
        demo::Options o;
        o.persons = 5;
        demo::fill(conn(), o);
        G().PowerPath = QDir::tempPath();
        const QString code = one("select min(fCode) from tRsBasic");
        G().CurPersonName = one(QStringLiteral("select fName from tRsBasic where fCode='%1'").arg(code));
        if (PersonPhoto(code).isEmpty()) {
            QTemporaryDir dir;
            QFile face(dir.filePath("face.jpg"));
            QVERIFY(face.open(QIODevice::WriteOnly));
            face.write(demo::portraitJpeg(7));
            face.close();
            QVERIFY(StorePersonPhoto(code, face.fileName()));
        }
        auto f = screen(2, code);
        f->resize(f->sizeHint());
        QVERIFY(f->grab().save(path));
    }
};

ZQ_DB_TEST_MAIN(TestPersonBasic)
#include "test_person_basic.moc"
