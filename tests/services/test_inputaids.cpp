#include "resources/Texts.h"
#include "services/InputAids.h"
#include "services/ui/InputAidsUi.h"
#include "shell/Prompts.h"

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;

namespace {
// Runs a key through the filter the way the key-press handler does; true when it passes.
bool passes(QLineEdit& box, QChar c, int max, bool numeric) {
    int key = c.unicode() > 127 ? -int(c.unicode()) : int(c.unicode());
    int m = max;
    int num = numeric ? -1 : 0;
    FilterKeyInput(&box, key, m, num);
    return key != 0;
}

void commit(QLineEdit& box, const QString& text) {
    QInputMethodEvent ev;
    ev.setCommitString(text);
    QApplication::sendEvent(&box, &ev);
}
} // namespace

class TestInputAids : public QObject {
    Q_OBJECT
private slots:
    void byteLengthsAndCuts() {
        QCOMPARE(ByteLen("ab张三"), 6);
        ScriptedPrompts& p = scriptPrompts();
        QCOMPARE(LimitLength("张三", 3, ""), QString("张")); // the second would take the count to 4
        QCOMPARE(LimitLength("a张三", 4, ""), QString("a张"));
        QCOMPARE(LimitLength("张三", 4, "姓名"), QString("张三"));
        QVERIFY(p.messages().isEmpty());
        QCOMPARE(LimitLength("abcdef", 4, "备注"), QString("abcd"));
        QCOMPARE(p.messages(), QStringList{"备注长度超出限定字符(4个),自动截取!"});
        QCOMPARE(p.shown().last().style, 64);
    }

    void textHelpers() {
        QCOMPARE(SplitTabText("01\t财务部", 1), QString("01"));
        QCOMPARE(SplitTabText("01\t财务部", 2), QString("财务部"));
        QCOMPARE(SplitTabText("财务部", 1), QString("财务部"));
        QCOMPARE(SplitTabText("财务部", 2), QString("财务部"));

        const QString longLine(700, QLatin1Char('x'));
        QCOMPARE(ClipTextLines(longLine, 300), longLine);
        QCOMPARE(ClipTextLines("a\rb\rc", 4),
                 QString("a\r\nb\r\n ...")); // the maximum is tested between lines only
        QCOMPARE(ClipTextLines("a\r", 10), QString("a\r\n"));

        QCOMPARE(QualifyFieldList("a", "fCode,fName"), QString("a.fCode,a.fName"));
        QCOMPARE(QualifyFieldList("a", ""), QString());
        QCOMPARE(QualifyCondition("fSex='男' and fZt=1", "a", -1), QString(" a.fsex='男' and  a.fzt=1"));
        QCOMPARE(QualifyCondition("fZt=1 and 1=1", "b", -1), QString(" b.fzt=1 and 1=1"));
        QCOMPARE(QualifyCondition("fCode, fName", "a", 0), QString(" a.fcode, a.fname"));
        QCOMPARE(QualifyCondition("", "a", -1), QString());
        QCOMPARE(QualifyCondition("fCode,fName", "a.", 0), QString(" a.fcode, a.fname"));
        QCOMPARE(StripTrailingSlash("C:\\zq\\"), QString("C:\\zq"));
        QCOMPARE(StripTrailingSlash("/opt/zq/"), QString("/opt/zq"));
        QCOMPARE(StripTrailingSlash("/opt/zq"), QString("/opt/zq"));
    }

    void lengthLimitOnKeys() {
        QLineEdit box;
        box.setText("abc");
        QVERIFY(!passes(box, QChar(0x5F20), 4, false)); // a double-byte character would need 5
        QVERIFY(passes(box, 'd', 4, false));
        box.setText("abcd");
        QVERIFY(!passes(box, 'e', 4, false));
        box.selectAll(); // typing over a selection frees its length
        QVERIFY(passes(box, 'e', 4, false));
        int backspace = 8, max = 4, num = 0;
        box.deselect();
        FilterKeyInput(&box, backspace, max, num);
        QCOMPARE(backspace, 8);
    }

    void numericRules() {
        QLineEdit box;
        box.setText("12");
        box.setCursorPosition(2);
        QVERIFY(!passes(box, 'e', 10, true));
        QVERIFY(!passes(box, 'd', 10, true));
        QVERIFY(!passes(box, ',', 10, true));
        QVERIFY(!passes(box, 'x', 10, true));
        QVERIFY(passes(box, '.', 10, true));
        QVERIFY(passes(box, '5', 10, true));
        box.setCursorPosition(0);
        QVERIFY(passes(box, '-', 10, true)); // "-12"
        box.setCursorPosition(1);
        QVERIFY(!passes(box, '-', 10, true));
        box.setText("");
        QVERIFY(!passes(box, '-', 10, true)); // a lone sign is not a number
        box.setText("-12");
        box.setCursorPosition(0);
        QVERIFY(!passes(box, '-', 10, true)); // "--12"
    }

    void pasteTooLongIsRefusedInSimplified() {
        QLineEdit box;
        box.setText("ab");
        QGuiApplication::clipboard()->setText("张三李四");
        ScriptedPrompts& p = scriptPrompts();
        int key = 22, max = 6, num = 0;
        FilterKeyInput(&box, key, max, num);
        QCOMPARE(key, 0);
        QCOMPARE(p.messages(), QStringList{textById(144)});
        QCOMPARE(p.shown().last().style, 64);
        QGuiApplication::clipboard()->setText("张三");
        key = 22;
        FilterKeyInput(&box, key, max, num);
        QCOMPARE(key, 22);
    }

    void filterOnAWidget() {
        QLineEdit box;
        attachKeyFilter(&box, 4);
        QTest::keyClicks(&box, "abcdef");
        QCOMPARE(box.text(), QString("abcd"));
        box.clear();
        commit(box, "张三李"); // two characters fit, the third is swallowed
        QCOMPARE(box.text(), QString("张三"));

        QLineEdit num;
        attachKeyFilter(&num, 10, true);
        QTest::keyClicks(&num, "1e2.5x");
        QCOMPARE(num.text(), QString("12.5"));
    }

    void pickFileKeepsItsFlags() {
        QTemporaryDir dir;
        const QString existing = dir.filePath("a.txt");
        QFile f(existing);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.close();
        const QString filter = "文本文件 (.Txt) |*.txt|所有文件 (*.*) |*.*";

        ScriptedPrompts& p = scriptPrompts();
        p.answerFile(existing);
        QCOMPARE(PickFile(1, 8, "", "选择文档文件", filter), existing);
        QCOMPARE(p.shown().last().style, 4100);
        p.answerFile(dir.filePath("missing.txt")); // mode 1: the file must exist
        QCOMPARE(PickFile(1, 8, "", "选择文档文件", filter), QString());

        p.answerFile(dir.filePath("new.txt"));
        p.answer(vbYes); // asked before the new file is made
        QCOMPARE(PickFile(2, 8, "", "保存", filter), dir.filePath("new.txt"));
        p.answerFile(dir.filePath("new.txt"));
        p.answer(vbNo);
        QCOMPARE(PickFile(2, 8, "", "保存", filter), QString());
        p.answerFile(dir.filePath("nodir/new.txt")); // the path must exist
        QCOMPARE(PickFile(2, 8, "", "保存", filter), QString());
        p.answerFile(""); // cancel
        QCOMPARE(PickFile(2, 8, "", "保存", filter), QString());
    }
};

QTEST_MAIN(TestInputAids)
#include "test_inputaids.moc"
